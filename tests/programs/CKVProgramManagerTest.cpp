#include "programs/CKVProgramKinds.h"
#include "programs/CKVProgramManager.h"

#include <gtest/gtest.h>

#include <osg/Program>
#include <osg/Shader>
#include <osg/StateSet>

#include <set>
#include <string>

namespace Kelvor {
namespace {

// A manager of its own per test, so that cache contents do not leak between
// tests through the process-wide instance.
class TestProgramManager : public CKVProgramManager
{
};

CKVProgramParam param(unsigned int type, unsigned int bits = 0)
{
    CKVProgramParam p(static_cast<CKVProgramParam::Type>(type));
    p.addParam(static_cast<CKVProgramParam::Param>(bits));
    return p;
}

std::set<std::string> defineNames(osg::StateSet const& stateSet)
{
    std::set<std::string> names;
    for (auto const& d : stateSet.getDefineList())
        names.insert(d.first);
    return names;
}

TEST(CKVProgramManager, NamesAssignedBitsAndGivesEmptyTextOtherwise)
{
    TestProgramManager manager;
    EXPECT_STREQ(manager.getDefineName(1), "_USE_TEXTURE");
    EXPECT_STREQ(manager.getDefineName(64), "_USE_FOG");
    EXPECT_STREQ(manager.getDefineName(8192), "_USE_ANTI_REPEAR_TEXTURE");
    // Unassigned bits, combinations and nonsense: empty, never null.
    for (int unknown : {0, 3, 256, 512, 16384, -1})
    {
        ASSERT_NE(manager.getDefineName(unknown), nullptr) << unknown;
        EXPECT_STREQ(manager.getDefineName(unknown), "") << unknown;
    }
}

TEST(CKVProgramManager, KindZeroAndNullStateSetAreLeftAlone)
{
    TestProgramManager manager;
    osg::ref_ptr<osg::StateSet> stateSet = new osg::StateSet;
    stateSet->setDefine("_USE_TEXTURE");
    stateSet->setDefine("_USE_PBR");

    manager.applyDefines(stateSet.get(), param(0, 128));
    EXPECT_EQ(defineNames(*stateSet), (std::set<std::string>{"_USE_PBR", "_USE_TEXTURE"}));
    manager.applyDefines(nullptr, param(3, 1));

    EXPECT_FALSE(manager.getProgram(param(0)).valid());
    EXPECT_EQ(manager.getCachedProgramCount(), 0u);
}

TEST(CKVProgramManager, NodeDefinesFollowTheNodeBitsOnly)
{
    TestProgramManager manager;
    osg::ref_ptr<osg::StateSet> stateSet = new osg::StateSet;
    // Left from an earlier parameter; the new one lacks these bits.
    stateSet->setDefine("_USE_ALPHA_TEST");
    stateSet->setDefine("_USE_ANTI_REPEAR_TEXTURE");
    // Belongs to someone else and must survive.
    stateSet->setDefine("_USE_CLIP_TEST");

    // 64 (fog) and 2 (shadow) are root switches; 256 has no define.
    manager.applyDefines(stateSet.get(), param(1, 1 | 2 | 64 | 128 | 256 | 1024 | 2048));
    EXPECT_EQ(defineNames(*stateSet),
              (std::set<std::string>{"_USE_ANIMATION_CLIPTEST", "_USE_CLIP_TEST",
                                     "_USE_HIGHLIGHT_STYLE", "_USE_INSTANCE_MATRIX",
                                     "_USE_TEXTURE"}));
    EXPECT_EQ(stateSet->getDefinePair("_USE_TEXTURE")->second, osg::StateAttribute::ON);

    manager.applyDefines(stateSet.get(), param(1, 4096 | 8192));
    EXPECT_EQ(defineNames(*stateSet),
              (std::set<std::string>{"_USE_ALPHA_TEST", "_USE_ANTI_REPEAR_TEXTURE",
                                     "_USE_CLIP_TEST"}));
}

TEST(CKVProgramManager, PhysicallyBasedDefineFollowsKindThree)
{
    TestProgramManager manager;
    osg::ref_ptr<osg::StateSet> stateSet = new osg::StateSet;

    manager.applyDefines(stateSet.get(), param(3, 1));
    EXPECT_NE(stateSet->getDefinePair("_USE_PBR"), nullptr);

    // Back to simple lighting: the define goes, the variant changes.
    manager.applyDefines(stateSet.get(), param(1, 1));
    EXPECT_EQ(stateSet->getDefinePair("_USE_PBR"), nullptr);
    EXPECT_NE(stateSet->getDefinePair("_USE_TEXTURE"), nullptr);

    manager.applyDefines(stateSet.get(), param(3));
    manager.applyDefines(stateSet.get(), param(2));
    EXPECT_EQ(stateSet->getDefinePair("_USE_PBR"), nullptr);
}

TEST(CKVProgramManager, CachesOneProgramPerDistinctParameter)
{
    TestProgramManager manager;
    osg::ref_ptr<osg::Program> surface = manager.getProgram(param(1, 1));
    ASSERT_TRUE(surface.valid());
    EXPECT_EQ(manager.getProgram(param(1, 1)), surface);

    // Same sources, but a different bit or kind is a program of its own.
    osg::ref_ptr<osg::Program> instanced = manager.getProgram(param(1, 1 | 128));
    osg::ref_ptr<osg::Program> pbr = manager.getProgram(param(3, 1));
    ASSERT_TRUE(instanced.valid() && pbr.valid());
    EXPECT_NE(instanced, surface);
    EXPECT_NE(pbr, surface);
    EXPECT_NE(pbr->getShader(0), surface->getShader(0));
    EXPECT_EQ(manager.getCachedProgramCount(), 3u);

    // Out of range: null, and nothing is cached.
    EXPECT_FALSE(manager.getProgram(param(25)).valid());
    EXPECT_FALSE(manager.getProgram(param(1000, 1)).valid());
    EXPECT_EQ(manager.getCachedProgramCount(), 3u);
}

// The kinds whose sources exist build; the others answer null until theirs land.
TEST(CKVProgramKinds, BuildsTheKindsThatHaveSources)
{
    std::set<unsigned int> const built = {1, 2, 3, 6, 7, 8, 9, 13, 14, 15, 16, 19, 20, 21, 23, 24};
    for (unsigned int kind = 0; kind <= 25; ++kind)
    {
        osg::ref_ptr<osg::Program> program = CKVProgramKinds::createProgram(kind);
        EXPECT_EQ(program.valid(), built.count(kind) == 1) << "kind " << kind;
        if (!program.valid())
            continue;
        CKVProgramKinds::Kind const* entry = CKVProgramKinds::find(kind);
        ASSERT_NE(entry, nullptr);
        ASSERT_EQ(program->getNumShaders(), entry->stages.size()) << "kind " << kind;
        for (unsigned int i = 0; i < program->getNumShaders(); ++i)
        {
            osg::Shader const* shader = program->getShader(i);
            EXPECT_EQ(shader->getType(), entry->stages[i].type);
            // Joined sources never carry a second version line.
            std::string const& source = shader->getShaderSource();
            EXPECT_EQ(source.find("#version", 1), std::string::npos) << shader->getName();
        }
    }
}

TEST(CKVProgramKinds, StagesListenToTheirKindsDefines)
{
    // Surface: both stages vary with the fog, the fragment stage with the
    // bindless extension declared in front.
    osg::ref_ptr<osg::Program> surface = CKVProgramKinds::createProgram(1);
    ASSERT_TRUE(surface.valid());
    for (unsigned int i = 0; i < 2; ++i)
    {
        osg::Shader const* shader = surface->getShader(i);
        EXPECT_EQ(shader->getShaderDefinesMode(), osg::Shader::USE_MANUAL_SETTINGS);
        EXPECT_EQ(shader->getShaderDefines().count("_USE_FOG"), 1u);
    }
    std::string const& fragment = surface->getShader(1)->getShaderSource();
    EXPECT_EQ(fragment.rfind("#version 420 core\n#extension GL_ARB_bindless_texture : enable\n", 0), 0u);
    // The program gathered the list: variants are chosen by it.
    EXPECT_EQ(surface->getShaderDefines().count("_USE_NOT_BINDLESS_TEXTURE"), 1u);

    // Depth only: the vertex stage varies with the clip planes, the fragment
    // stage never varies.
    osg::ref_ptr<osg::Program> depth = CKVProgramKinds::createProgram(20);
    ASSERT_TRUE(depth.valid());
    EXPECT_EQ(depth->getShader(0)->getShaderDefines(), (osg::ShaderDefines{"_USE_CLIP_TEST"}));
    EXPECT_TRUE(depth->getShader(1)->getShaderDefines().empty());
    EXPECT_EQ(depth->getShader(1)->getShaderDefinesMode(), osg::Shader::USE_MANUAL_SETTINGS);

    // The clip planes have no effect on the instanced reflection.
    osg::ref_ptr<osg::Program> reflectedInstanced = CKVProgramKinds::createProgram(7);
    ASSERT_TRUE(reflectedInstanced.valid());
    EXPECT_EQ(reflectedInstanced->getShaderDefines().count("_USE_CLIP_TEST"), 0u);
    EXPECT_EQ(CKVProgramKinds::createProgram(6)->getShaderDefines().count("_USE_CLIP_TEST"), 1u);
}

} // namespace
} // namespace Kelvor
