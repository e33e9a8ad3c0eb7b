#include "programs/CKVProgramKinds.h"
#include "programs/CKVProgramManager.h"
#include "support/GLTest.h"

#include "ProgramVariantBuild.h"

#include <gtest/gtest.h>

#include <osg/GLExtensions>
#include <osg/Program>
#include <osg/Shader>
#include <osg/State>
#include <osg/StateSet>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace Kelvor {
namespace {

char const* const kNotBindless = "_USE_NOT_BINDLESS_TEXTURE";

using programtest::buildVariant;
using programtest::DefineSet;
using programtest::describe;

// None, each alone and all of the kind's defines, each set with `always`
// added. (Every small subset is built by the define combinations test.)
std::vector<DefineSet> combinations(DefineSet const& listened, DefineSet const& always)
{
    DefineSet varying;
    for (std::string const& d : listened)
    {
        if (std::find(always.begin(), always.end(), d) == always.end())
            varying.push_back(d);
    }
    std::vector<DefineSet> sets = {{}};
    for (std::string const& d : varying)
        sets.push_back({d});
    sets.push_back(varying);
    for (DefineSet& s : sets)
        s.insert(s.end(), always.begin(), always.end());
    return sets;
}

class ProgramVariantsGLTest : public GLTest
{
protected:
    // Builds every combination for the kind and reports the first failures.
    void expectAllVariantsBuild(unsigned int kind, DefineSet const& always)
    {
        CKVProgramKinds::Kind const* entry = CKVProgramKinds::find(kind);
        ASSERT_NE(entry, nullptr) << "kind " << kind;
        osg::ref_ptr<osg::Program> program = CKVProgramKinds::createProgram(kind);
        ASSERT_TRUE(program.valid()) << "kind " << kind;

        int failures = 0;
        bool const ran = context().runWithContext([&](osg::State& state) {
            for (DefineSet const& defines : combinations(entry->defines, always))
            {
                std::string const problems = buildVariant(*program, state, defines);
                if (problems.empty() || ++failures > 3)
                    continue;
                ADD_FAILURE() << "kind " << kind << " with " << describe(defines) << "\n" << problems;
            }
            program->releaseGLObjects(&state);
        });
        ASSERT_TRUE(ran);
        EXPECT_EQ(failures, 0) << "kind " << kind;
    }
};

// llvmpipe has no bindless textures, and its compiler rejects the bindless
// layout unless the extension is on. Mesa can be asked to advertise it, which
// lets the bindless branches be compiled and linked (nothing draws through
// them). The request must come before the first context of a process and
// would hide a missing guard from the other build tests, so this test runs itself
// again in a child process that has it.
TEST_F(ProgramVariantsGLTest, BindlessBranchesBuildWhereTheExtensionIsOn)
{
    char const* const override = "+GL_ARB_bindless_texture";
    char const* const current = std::getenv("MESA_EXTENSION_OVERRIDE");
    if (!current || std::string(current) != override)
    {
        char self[4096] = {};
        ssize_t const length = readlink("/proc/self/exe", self, sizeof(self) - 1);
        ASSERT_GT(length, 0);
        std::string const command = std::string("MESA_EXTENSION_OVERRIDE=") + override + " '" +
                                    self + "' --gtest_filter=" +
                                    ::testing::UnitTest::GetInstance()->current_test_info()->test_suite_name() +
                                    "." + ::testing::UnitTest::GetInstance()->current_test_info()->name();
        int const status = std::system(command.c_str());
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "child run failed: " << command;
        return;
    }

    bool supported = false;
    ASSERT_TRUE(context().runWithContext([&](osg::State& state) {
        supported = osg::isGLExtensionSupported(state.getContextID(), "GL_ARB_bindless_texture");
    }));
    if (!supported)
        GTEST_SKIP() << "this driver cannot be made to accept GL_ARB_bindless_texture";
    // Without _USE_NOT_BINDLESS_TEXTURE: the albedo and noise samplers are
    // handles.
    expectAllVariantsBuild(1, {"_USE_TEXTURE", "_USE_ANTI_REPEAR_TEXTURE"});
    expectAllVariantsBuild(6, {});
}

// Turning a root define on recompiles only the shaders that listen to it.
TEST_F(ProgramVariantsGLTest, DirtyDefineRecompilesOnlyListeningShaders)
{
    struct Manager : CKVProgramManager
    {
    } manager;
    osg::ref_ptr<osg::Program> surface = manager.getProgram(CKVProgramParam(CKVProgramParam::kSurface));
    osg::ref_ptr<osg::Program> depth = manager.getProgram(CKVProgramParam(CKVProgramParam::kDepthOnly));
    ASSERT_TRUE(surface.valid());
    ASSERT_TRUE(depth.valid());

    ASSERT_TRUE(context().runWithContext([&](osg::State& state) {
        DefineSet const defines = {kNotBindless, "_USE_FOG"};
        ASSERT_EQ(buildVariant(*surface, state, defines), "");
        ASSERT_EQ(buildVariant(*depth, state, defines), "");

        osg::ref_ptr<osg::StateSet> stateSet = new osg::StateSet;
        for (std::string const& d : defines)
            stateSet->setDefine(d);
        state.pushStateSet(stateSet.get());
        manager.dirtyDefine("_USE_FOG");
        for (unsigned int i = 0; i < 2; ++i)
        {
            EXPECT_TRUE(surface->getShader(i)->getPCS(state)->needsCompile()) << i;
            EXPECT_FALSE(depth->getShader(i)->getPCS(state)->needsCompile()) << i;
        }
        EXPECT_TRUE(surface->getPCP(state)->needsLink());
        EXPECT_FALSE(depth->getPCP(state)->needsLink());
        state.popStateSet();

        surface->releaseGLObjects(&state);
        depth->releaseGLObjects(&state);
    }));
}

} // namespace
} // namespace Kelvor
