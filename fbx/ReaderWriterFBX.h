#pragma once

#include "fbx/CKVFBXSceneHandle.h"
#include "fbx/CKVOSGAnimationManager.h"

#include <osgDB/ReaderWriter>

namespace Kelvor {

// Reads FBX files (through assimp) into a skinned, animatable scene graph:
// see KVFBXSceneBuilder for the graph and KVFBXAnimationBuilder for clips.
// Every clip of a file is registered on an animation manager, which is the
// update callback of the returned node; the manager also learns the last
// clip delivered. Two things go beyond a plain reader:
// - an outer manager (setAnimationManager) receives the clips instead of
//   one made per read;
// - a scene handle, given by address to readNode, is filled by the first
//   read of a character; a later read with the filled handle takes only the
//   clips of the file, bound to that character's skeleton, and returns an
//   empty group.
class ReaderWriterFBX : public osgDB::ReaderWriter
{
public:
    ReaderWriterFBX();

    char const* className() const override { return "FBX reader/writer"; }

    void setAnimationManager(CKVOSGAnimationManager* manager) { m_animationManager = manager; }
    CKVOSGAnimationManager* getAnimationManager() const { return m_animationManager.get(); }

    ReadResult readNode(std::string const& file, Options const* options) const override;
    ReadResult readNode(std::string const& file, Options const* options,
                        osg::ref_ptr<CKVFBXSceneHandle>* scene) const;

    // Makes one instance known to osgDB's registry, once.
    static void registerWithRegistry();

    // The post-processing asked of assimp: triangles, at most four weights
    // per vertex (what the rig deformation takes), normals where missing.
    static unsigned int importFlags();

private:
    osg::ref_ptr<CKVOSGAnimationManager> m_animationManager;
};

} // namespace Kelvor
