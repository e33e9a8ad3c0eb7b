#include "programs/KVDefineBlock.h"

namespace Kelvor {

std::string KVDefineBlock::assemble(std::set<std::string> const& wanted,
                                    osg::StateSet::DefineList const& defines)
{
    // Both collections are sorted by name: one walk in step finds the
    // common names.
    std::string text;
    auto w = wanted.begin();
    auto d = defines.begin();
    while (w != wanted.end() && d != defines.end())
    {
        if (*w < d->first)
            ++w;
        else if (d->first < *w)
            ++d;
        else
        {
            text += "#define ";
            text += *w;
            text += "\n";
            ++w;
            ++d;
        }
    }
    return text;
}

bool KVDefineBlock::rebuild(osg::Program* program, unsigned int shaderIndex,
                            std::set<std::string> const& wanted, osg::StateSet const* stateSet,
                            std::string const& body, std::string& keptText)
{
    if (!program || !stateSet || shaderIndex >= program->getNumShaders())
        return false;
    osg::Shader* shader = program->getShader(shaderIndex);
    if (!shader)
        return false;

    std::string const text = assemble(wanted, stateSet->getDefineList());
    // An unchanged list must not touch the source: setting it recompiles.
    if (text == keptText)
        return false;
    shader->setShaderSource("#version 420 core\n" + text + body);
    keptText = text;
    return true;
}

} // namespace Kelvor
