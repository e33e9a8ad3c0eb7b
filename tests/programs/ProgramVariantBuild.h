#pragma once

#include <osg/Program>
#include <osg/Shader>
#include <osg/State>
#include <osg/StateSet>

#include <string>
#include <vector>

namespace Kelvor {
namespace programtest {

using DefineSet = std::vector<std::string>;

// Compiles and links the variant of `program` that `defines` select, the way
// a draw would: the defines come from a state set on the state's stack.
// Empty on success, otherwise what the compiler and the linker said.
inline std::string buildVariant(osg::Program& program, osg::State& state, DefineSet const& defines)
{
    osg::ref_ptr<osg::StateSet> stateSet = new osg::StateSet;
    for (std::string const& d : defines)
        stateSet->setDefine(d);
    state.pushStateSet(stateSet.get());
    osg::Program::PerContextProgram* pcp = program.getPCP(state);
    program.compileGLObjects(state);

    std::string problems;
    for (unsigned int i = 0; i < program.getNumShaders(); ++i) {
        osg::Shader* shader = program.getShader(i);
        osg::Shader::PerContextShader* pcs = shader->getPCS(state);
        if (pcs && pcs->isCompiled())
            continue;
        std::string log;
        if (pcs)
            pcs->getInfoLog(log);
        problems += shader->getName() + " does not compile:\n" + log + "\n";
    }
    if (pcp && !pcp->isLinked()) {
        std::string log;
        pcp->getInfoLog(log);
        problems += "link fails:\n" + log + "\n";
    }
    state.popStateSet();
    return problems;
}

// "{ A B }", for failure messages.
inline std::string describe(DefineSet const& defines)
{
    std::string text = "{";
    for (std::string const& d : defines)
        text += " " + d;
    return text + " }";
}

} // namespace programtest
} // namespace Kelvor
