// Every glyph technique the text library can ask for (plain, shadow,
// outline, distance field and their mixes) compiles and links in the text
// program, alone and with the frame's switches on.
#include "programs/CKVProgramKinds.h"
#include "support/GLTest.h"

#include <gtest/gtest.h>

#include <osg/Program>
#include <osg/State>
#include <osg/StateSet>

#include <string>
#include <utility>
#include <vector>

namespace Kelvor {
namespace {

using Defines = std::vector<std::pair<std::string, std::string>>;

std::string buildVariant(osg::Program& program, osg::State& state, Defines const& defines)
{
    osg::ref_ptr<osg::StateSet> stateSet = new osg::StateSet;
    for (auto const& d : defines)
        stateSet->setDefine(d.first, d.second);
    state.pushStateSet(stateSet.get());
    osg::Program::PerContextProgram* pcp = program.getPCP(state);
    program.compileGLObjects(state);
    std::string problems;
    for (unsigned int i = 0; i < program.getNumShaders(); ++i) {
        osg::Shader::PerContextShader* pcs = program.getShader(i)->getPCS(state);
        if (pcs && pcs->isCompiled())
            continue;
        std::string log;
        if (pcs)
            pcs->getInfoLog(log);
        problems += program.getShader(i)->getName() + ":\n" + log;
    }
    if (!pcp->isLinked()) {
        std::string log;
        pcp->getInfoLog(log);
        problems += "link:\n" + log;
    }
    state.popStateSet();
    return problems;
}

using TextShaderGLTest = GLTest;

TEST_F(TextShaderGLTest, EveryGlyphTechniqueBuilds)
{
    Defines const size = {{"GLYPH_DIMENSION", "64.0"}, {"TEXTURE_DIMENSION", "1024.0"}};
    Defines const backdrop = {{"BACKDROP_COLOR", "vec4(0.0, 0.0, 0.0, 1.0)"}};
    std::vector<Defines> const techniques = {
        {},
        {{"SHADOW", "vec2(0.07, -0.07)"}},
        {{"OUTLINE", "0.07"}},
        {{"SIGNED_DISTANCE_FIELD", "1"}},
        {{"SIGNED_DISTANCE_FIELD", "1"}, {"OUTLINE", "0.07"}},
        {{"SIGNED_DISTANCE_FIELD", "1"}, {"SHADOW", "vec2(0.07, -0.07)"}},
    };
    Defines const frame = {{"_USE_TAA", ""}, {"_USE_SILHOUETTE", ""}, {"_USE_VOLUMETRICLIGHT", ""},
                           {"_USE_CLIP_TEST", ""}};

    osg::ref_ptr<osg::Program> program = CKVProgramKinds::createProgram(13);
    ASSERT_TRUE(program.valid());
    bool const ran = context().runWithContext([&](osg::State& state) {
        for (Defines technique : techniques) {
            technique.insert(technique.end(), size.begin(), size.end());
            if (technique.size() > size.size())
                technique.insert(technique.end(), backdrop.begin(), backdrop.end());
            for (bool withFrame : {false, true}) {
                Defines defines = technique;
                if (withFrame)
                    defines.insert(defines.end(), frame.begin(), frame.end());
                std::string names;
                for (auto const& d : defines)
                    names += d.first + " ";
                EXPECT_EQ(buildVariant(*program, state, defines), "") << names;
            }
        }
        program->releaseGLObjects(&state);
    });
    ASSERT_TRUE(ran);
}

} // namespace
} // namespace Kelvor
