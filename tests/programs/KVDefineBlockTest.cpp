#include "programs/KVDefineBlock.h"

#include <gtest/gtest.h>

#include <osg/Program>
#include <osg/Shader>
#include <osg/StateSet>

#include <set>
#include <string>

namespace Kelvor {
namespace {

std::set<std::string> const kWanted = {"_USE_COLOR_GRADING", "_USE_DOF", "_USE_SHADOW",
                                       "_USE_VOLUMETRICLIGHT"};

TEST(KVDefineBlock, WritesTheWantedDefinesPresentInNameOrder)
{
    osg::ref_ptr<osg::StateSet> stateSet = new osg::StateSet;
    stateSet->setDefine("_USE_VOLUMETRICLIGHT");
    stateSet->setDefine("_USE_FOG");  // not wanted
    stateSet->setDefine("_USE_DOF");
    EXPECT_EQ(KVDefineBlock::assemble(kWanted, stateSet->getDefineList()),
              "#define _USE_DOF\n#define _USE_VOLUMETRICLIGHT\n");
    EXPECT_EQ(KVDefineBlock::assemble({}, stateSet->getDefineList()), "");
    EXPECT_EQ(KVDefineBlock::assemble(kWanted, osg::StateSet::DefineList()), "");
}

TEST(KVDefineBlock, ReplacesTheSourceOnlyWhenTheListChanges)
{
    std::string const body = "void main() {}\n";
    osg::ref_ptr<osg::Program> program = new osg::Program;
    program->addShader(new osg::Shader(osg::Shader::VERTEX, "#version 420 core\nvoid main() {}\n"));
    program->addShader(new osg::Shader(osg::Shader::FRAGMENT, "#version 420 core\n" + body));
    osg::ref_ptr<osg::StateSet> stateSet = new osg::StateSet;
    std::string kept;

    // Nothing on yet: equal to the empty text kept.
    EXPECT_FALSE(KVDefineBlock::rebuild(program.get(), 1, kWanted, stateSet.get(), body, kept));

    stateSet->setDefine("_USE_SHADOW");
    ASSERT_TRUE(KVDefineBlock::rebuild(program.get(), 1, kWanted, stateSet.get(), body, kept));
    EXPECT_EQ(program->getShader(1)->getShaderSource(),
              "#version 420 core\n#define _USE_SHADOW\nvoid main() {}\n");
    EXPECT_EQ(kept, "#define _USE_SHADOW\n");

    // An update arriving at the same list must not touch the shader (setting
    // a source recompiles it): a marker source survives.
    program->getShader(1)->setShaderSource("marker");
    stateSet->setDefine("_USE_FOG");
    EXPECT_FALSE(KVDefineBlock::rebuild(program.get(), 1, kWanted, stateSet.get(), body, kept));
    EXPECT_EQ(program->getShader(1)->getShaderSource(), "marker");

    stateSet->removeDefine("_USE_SHADOW");
    ASSERT_TRUE(KVDefineBlock::rebuild(program.get(), 1, kWanted, stateSet.get(), body, kept));
    EXPECT_EQ(program->getShader(1)->getShaderSource(), "#version 420 core\n" + body);
    EXPECT_EQ(program->getShader(0)->getShaderSource(), "#version 420 core\nvoid main() {}\n");

    EXPECT_FALSE(KVDefineBlock::rebuild(nullptr, 1, kWanted, stateSet.get(), body, kept));
    EXPECT_FALSE(KVDefineBlock::rebuild(program.get(), 1, kWanted, nullptr, body, kept));
    stateSet->setDefine("_USE_DOF");
    EXPECT_FALSE(KVDefineBlock::rebuild(program.get(), 2, kWanted, stateSet.get(), body, kept));
    EXPECT_EQ(kept, "");
}

} // namespace
} // namespace Kelvor
