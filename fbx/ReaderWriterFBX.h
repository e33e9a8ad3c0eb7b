#pragma once

#include "fbx/CKVFBXSceneHandle.h"
#include "fbx/CKVOSGAnimationManager.h"

#include <osgDB/ReaderWriter>

#include <string>

struct aiScene;

namespace Kelvor {

// Reads FBX files (through assimp) into a skinned, animatable scene graph:
// see KVFBXSceneBuilder for the graph and KVFBXAnimationBuilder for clips.
// The clips of a file are registered on an animation manager, which is the
// update callback of the returned node; the manager also learns the last
// clip delivered. Materials and textures (base colour, texture files beside
// the file, embedded textures) come with the meshes: see
// KVFBXMaterialBuilder. Three things go beyond a plain reader:
// - an outer manager (setAnimationManager) receives the clips instead of
//   one made per read;
// - a scene handle, given by address to readNode, is filled by the first
//   read of a character; a later read with the filled handle takes only the
//   clips of the file, bound to that character's skeleton, and returns an
//   empty group;
// - a clip name (setClipName): of a file with several clips only the clip
//   of that name is registered and delivered. A name that is not among them
//   takes the file's first clip, so that a file of one clip plays under
//   whatever name the host gives it.
class ReaderWriterFBX : public osgDB::ReaderWriter
{
public:
    ReaderWriterFBX();

    char const* className() const override { return "FBX reader/writer"; }

    void setAnimationManager(CKVOSGAnimationManager* manager) { m_animationManager = manager; }
    CKVOSGAnimationManager* getAnimationManager() const { return m_animationManager.get(); }
    // Empty: every clip of the file, the last one delivered.
    void setClipName(std::string const& name) { m_clipName = name; }

    ReadResult readNode(std::string const& file, Options const* options) const override;
    ReadResult readNode(std::string const& file, Options const* options,
                        osg::ref_ptr<CKVFBXSceneHandle>* scene) const;

    // Makes one instance known to osgDB's registry, once.
    static void registerWithRegistry();

    // The post-processing asked of assimp: triangles, at most four weights
    // per vertex (what the rig deformation takes), normals where missing.
    static unsigned int importFlags();

    // The clip of that name (or of that name after an armature's "|"), the
    // first clip when none has it; -1 for a file without clips.
    static int clipIndex(aiScene const& scene, std::string const& name);

private:
    osg::ref_ptr<CKVOSGAnimationManager> m_animationManager;
    std::string m_clipName;
};

} // namespace Kelvor
