#pragma once

#include <osg/Referenced>

#include <set>
#include <string>

namespace Kelvor {

// What the FBX reader keeps of a character between reads: the names of the
// nodes its skeleton can animate. The first read of a character fills it;
// an animation file read later with the same handle is applied to that
// skeleton, its channels bound by node name, and channels for nodes the
// character lacks are dropped rather than left unbound.
class CKVFBXSceneHandle : public osg::Referenced
{
public:
    CKVFBXSceneHandle() = default;

    void addNode(std::string const& name) { mNodes.insert(name); }
    bool hasNode(std::string const& name) const { return mNodes.count(name) != 0; }
    std::size_t getNodeCount() const { return mNodes.size(); }

    // The file the character was read from.
    void setSourceFile(std::string const& file) { mSourceFile = file; }
    std::string const& getSourceFile() const { return mSourceFile; }

protected:
    ~CKVFBXSceneHandle() override = default;

private:
    std::set<std::string> mNodes;
    std::string mSourceFile;
};

} // namespace Kelvor
