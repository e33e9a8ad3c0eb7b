#pragma once

#include <osg/Program>
#include <osg/StateSet>

#include <set>
#include <string>

namespace Kelvor {

// Source assembly for a program whose switches are written into its source
// instead of going through OSG's define variants (the final full-screen
// composition): the defines a state set has on, among those wanted, become
// "#define" lines, and the shader is only given new text when they change.
class KVDefineBlock
{
public:
    // "#define NAME\n" for each name both wanted and present in the list,
    // in name order. A define's value and override flags play no part.
    static std::string assemble(std::set<std::string> const& wanted,
                                osg::StateSet::DefineList const& defines);

    // Assembles the block from the state set's defines; when it differs from
    // `keptText`, gives the program's shader `shaderIndex` the source
    // "#version 420 core\n" + block + body and keeps the block. Returns
    // whether the source was replaced. False, with nothing changed, for a
    // null program or state set or a missing shader. An empty block equals
    // an empty `keptText`, so the caller gives the shader its first source
    // (the version line and the body) itself.
    static bool rebuild(osg::Program* program, unsigned int shaderIndex,
                        std::set<std::string> const& wanted, osg::StateSet const* stateSet,
                        std::string const& body, std::string& keptText);
};

} // namespace Kelvor
