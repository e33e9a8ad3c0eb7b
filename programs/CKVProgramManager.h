#pragma once

#include "TarnwickCommon/CKVAString.h"
#include "TarnwickRender/CKVProgramParam.h"

#include <osg/Program>
#include <osg/StateSet>
#include <osg/ref_ptr>

#include <cstddef>
#include <map>
#include <set>
#include <string>

namespace Kelvor {

// Turns a CKVProgramParam into a shared osg::Program of one of the program
// kinds, and names the define each parameter bit stands for.
//
// Variants are not compiled by hand: every shader carries the list of define
// names it listens to, and OSG compiles the variant matching the defines
// active on the state-set stack. A node therefore sets only its own defines
// (applyDefines); effects set theirs on the root and then call dirtyDefine.
class CKVProgramManager
{
public:
    static CKVProgramManager& instance();
    virtual ~CKVProgramManager();

    // The cached program of the parameter, made on first request. Null for a
    // kind outside 1..24 or a kind whose sources are not built in; nothing is
    // cached then. Parameters that differ in any bit get distinct programs.
    osg::ref_ptr<osg::Program> getProgram(CKVProgramParam const& param);

    // Makes the node's own defines match the parameter: the bits 1, 128,
    // 1024, 2048, 8192, 4096 and _USE_PBR for kind 3. A null state set or
    // kind 0 leaves everything untouched.
    void applyDefines(osg::StateSet* stateSet, CKVProgramParam const& param) const;

    // The define of a parameter bit, or "" (never null) for an unknown value.
    char const* getDefineName(int param) const;

    // Recompiles, on next use, the cached shaders that listen to the define.
    // Call it after changing a define on a state set above compiled programs.
    void dirtyDefine(std::string const& name);

    std::size_t getCachedProgramCount() const { return mPrograms.size(); }

    // The program of the final full-screen pass, outside the cache: its
    // owner rewrites the fragment source (shader 1) whenever its switches
    // change (KVDefineBlock), so the program cannot be shared. Both shaders
    // list `defines` with manual define settings. Null when the sources are
    // not built in.
    osg::ref_ptr<osg::Program> createPostProcessProgram(std::set<std::string> const& defines) const;
    // The fragment text of that program without version line or defines.
    static char const* getPostProcessFragmentBody();

protected:
    // Protected so that tests can make a private manager by derivation.
    CKVProgramManager();

private:
    CKVProgramManager(CKVProgramManager const&) = delete;
    CKVProgramManager& operator=(CKVProgramManager const&) = delete;

    std::map<int, CKVAString> mDefineNames;
    std::map<CKVProgramParam, osg::ref_ptr<osg::Program>> mPrograms;
};

} // namespace Kelvor
