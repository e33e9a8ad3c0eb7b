#pragma once

#include "fbx/KVFBXMaterialBuilder.h"

#include <osg/Geode>
#include <osg/Group>
#include <osg/ref_ptr>
#include <osgAnimation/Bone>
#include <osgAnimation/Skeleton>

#include <map>
#include <string>
#include <utility>
#include <vector>

struct aiMesh;
struct aiNode;
struct aiScene;

namespace Kelvor {

class CKVFBXSceneHandle;

// Builds the scene graph of an imported character. The node tree becomes
// one osgAnimation::Skeleton with one Bone per node, whatever the node is
// (armature, bone, mesh holder or helper), because clips animate nodes of
// every kind. Each bone starts at its node's transform and is driven by the
// stacked elements "translate", "quaternion" and "scale" under the node's
// name. Skinned meshes become RigGeometry under the skeleton itself, in
// skeleton space, with each vertex's weights normalised by the deformation
// (files are not always exact there); other meshes hang under their node's
// bone and move with it. Each mesh gets its material's state set.
class KVFBXSceneBuilder
{
public:
    // The character's root: a group holding the skeleton. The handle, if
    // given, learns every node name. Texture files are looked for relative
    // to `fileDirectory`, the directory of the file read.
    static osg::ref_ptr<osg::Group> build(aiScene const& scene, CKVFBXSceneHandle* handle,
                                          std::string const& fileDirectory);

private:
    KVFBXSceneBuilder(aiScene const& scene, std::string const& fileDirectory)
        : mScene(scene)
        , mMaterials(scene, fileDirectory)
    {
    }

    osg::ref_ptr<osgAnimation::Bone> buildBone(aiNode const& node, osg::Matrixd const& parentGlobal,
                                               CKVFBXSceneHandle* handle);
    void addSkinnedMesh(aiMesh const& mesh, osg::Matrixd const& meshGlobal);

    aiScene const& mScene;
    KVFBXMaterialBuilder mMaterials;
    osg::ref_ptr<osgAnimation::Skeleton> mSkeleton;
    std::map<std::string, osgAnimation::Bone*> mBones;
    osg::ref_ptr<osg::Geode> mSkins;
    std::vector<std::pair<aiMesh const*, osg::Matrixd>> mPendingSkins;
};

} // namespace Kelvor
