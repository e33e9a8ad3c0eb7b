#include "fbx/KVFBXSceneBuilder.h"

#include "fbx/CKVFBXSceneHandle.h"
#include "fbx/KVAssimpConvert.h"

#include <assimp/scene.h>

#include <osg/Geode>
#include <osg/Geometry>
#include <osgAnimation/RigGeometry>
#include <osgAnimation/StackedQuaternionElement>
#include <osgAnimation/StackedScaleElement>
#include <osgAnimation/StackedTranslateElement>
#include <osgAnimation/UpdateBone>

namespace Kelvor {

namespace {

// Positions, normals and texture coordinates as they are, triangles only
// (points and lines of a mixed mesh are left out). With `toSkeleton`, the
// positions and normals are carried into skeleton space.
osg::ref_ptr<osg::Geometry> makeGeometry(aiMesh const& mesh, osg::Matrixd const* toSkeleton)
{
    osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
    geometry->setName(mesh.mName.C_Str());
    osg::ref_ptr<osg::Vec3Array> vertices = new osg::Vec3Array(mesh.mNumVertices);
    for (unsigned int i = 0; i < mesh.mNumVertices; ++i)
        (*vertices)[i] = toSkeleton ? toOsgVec3(mesh.mVertices[i]) * *toSkeleton : toOsgVec3(mesh.mVertices[i]);
    geometry->setVertexArray(vertices.get());

    if (mesh.mNormals) {
        osg::Matrixd const normalMatrix =
            toSkeleton ? osg::Matrixd::inverse(*toSkeleton) : osg::Matrixd::identity();
        osg::ref_ptr<osg::Vec3Array> normals = new osg::Vec3Array(mesh.mNumVertices);
        for (unsigned int i = 0; i < mesh.mNumVertices; ++i) {
            osg::Vec3 n = toOsgVec3(mesh.mNormals[i]);
            if (toSkeleton)
                n = osg::Matrixd::transform3x3(normalMatrix, n);
            n.normalize();
            (*normals)[i] = n;
        }
        geometry->setNormalArray(normals.get(), osg::Array::BIND_PER_VERTEX);
    }
    if (mesh.mTextureCoords[0]) {
        osg::ref_ptr<osg::Vec2Array> texCoords = new osg::Vec2Array(mesh.mNumVertices);
        for (unsigned int i = 0; i < mesh.mNumVertices; ++i)
            (*texCoords)[i].set(mesh.mTextureCoords[0][i].x, mesh.mTextureCoords[0][i].y);
        geometry->setTexCoordArray(0, texCoords.get(), osg::Array::BIND_PER_VERTEX);
    }

    osg::ref_ptr<osg::DrawElementsUInt> triangles = new osg::DrawElementsUInt(GL_TRIANGLES);
    for (unsigned int f = 0; f < mesh.mNumFaces; ++f) {
        aiFace const& face = mesh.mFaces[f];
        if (face.mNumIndices != 3)
            continue;
        triangles->push_back(face.mIndices[0]);
        triangles->push_back(face.mIndices[1]);
        triangles->push_back(face.mIndices[2]);
    }
    geometry->addPrimitiveSet(triangles.get());
    return geometry;
}

} // namespace

osg::ref_ptr<osg::Group> KVFBXSceneBuilder::build(aiScene const& scene, CKVFBXSceneHandle* handle,
                                                  std::string const& fileDirectory)
{
    KVFBXSceneBuilder builder(scene, fileDirectory);
    builder.mSkeleton = new osgAnimation::Skeleton;
    builder.mSkeleton->setDefaultUpdateCallback();
    builder.mSkins = new osg::Geode;
    builder.mSkins->setName("skins");

    osg::ref_ptr<osg::Group> root = new osg::Group;
    root->addChild(builder.mSkeleton.get());
    if (scene.mRootNode) {
        root->setName(scene.mRootNode->mName.C_Str());
        osg::ref_ptr<osgAnimation::Bone> top = builder.buildBone(*scene.mRootNode, osg::Matrixd::identity(), handle);
        builder.mSkeleton->addChild(top.get());
    }
    for (auto const& skin : builder.mPendingSkins)
        builder.addSkinnedMesh(*skin.first, skin.second);
    // After the bones: skins are deformed in the update traversal once the
    // bones of this frame have been posed.
    if (builder.mSkins->getNumChildren() > 0)
        builder.mSkeleton->addChild(builder.mSkins.get());
    return root;
}

osg::ref_ptr<osgAnimation::Bone> KVFBXSceneBuilder::buildBone(aiNode const& node, osg::Matrixd const& parentGlobal,
                                                              CKVFBXSceneHandle* handle)
{
    std::string const name = node.mName.C_Str();
    osg::Matrixd const local = toOsgMatrix(node.mTransformation);
    osg::Matrixd const global = local * parentGlobal;

    osg::ref_ptr<osgAnimation::Bone> bone = new osgAnimation::Bone(name);
    bone->setMatrix(local);
    mBones.emplace(name, bone.get());
    if (handle)
        handle->addNode(name);

    // The rest pose as the stacked elements that clips drive; a node that no
    // clip animates keeps it.
    osg::Vec3d translation, scale;
    osg::Quat rotation, scaleOrientation;
    local.decompose(translation, rotation, scale, scaleOrientation);
    osg::ref_ptr<osgAnimation::UpdateBone> update = new osgAnimation::UpdateBone(name);
    update->getStackedTransforms().push_back(new osgAnimation::StackedTranslateElement("translate", translation));
    update->getStackedTransforms().push_back(new osgAnimation::StackedQuaternionElement("quaternion", rotation));
    update->getStackedTransforms().push_back(new osgAnimation::StackedScaleElement("scale", scale));
    bone->setUpdateCallback(update.get());

    for (unsigned int c = 0; c < node.mNumChildren; ++c)
        bone->addChild(buildBone(*node.mChildren[c], global, handle).get());

    osg::ref_ptr<osg::Geode> rigid;
    for (unsigned int m = 0; m < node.mNumMeshes; ++m) {
        aiMesh const* mesh = mScene.mMeshes[node.mMeshes[m]];
        if (!mesh || mesh->mNumVertices == 0)
            continue;
        if (mesh->HasBones()) {
            // Skinned once every bone exists: a mesh may come before its
            // skeleton in the node tree.
            mPendingSkins.push_back({mesh, global});
            continue;
        }
        if (!rigid) {
            rigid = new osg::Geode;
            bone->addChild(rigid.get());
        }
        osg::ref_ptr<osg::Geometry> geometry = makeGeometry(*mesh, nullptr);
        geometry->setStateSet(mMaterials.stateSetFor(mesh->mMaterialIndex));
        rigid->addDrawable(geometry.get());
    }
    return bone;
}

void KVFBXSceneBuilder::addSkinnedMesh(aiMesh const& mesh, osg::Matrixd const& meshGlobal)
{
    // A bone's offset takes mesh space to the bone's space at bind time.
    // The skin is kept in skeleton space, so the inverse bind matrix of a
    // bone is the offset after leaving skeleton space: the same for every
    // mesh of a consistent file, as one bone has only one such matrix.
    osg::Matrixd const toMesh = osg::Matrixd::inverse(meshGlobal);
    osg::ref_ptr<osgAnimation::VertexInfluenceMap> influences = new osgAnimation::VertexInfluenceMap;
    for (unsigned int b = 0; b < mesh.mNumBones; ++b) {
        aiBone const& source = *mesh.mBones[b];
        std::string const name = source.mName.C_Str();
        auto const bone = mBones.find(name);
        if (bone == mBones.end())
            continue;
        bone->second->setInvBindMatrixInSkeletonSpace(toMesh * toOsgMatrix(source.mOffsetMatrix));
        osgAnimation::VertexInfluence& influence = (*influences)[name];
        influence.setName(name);
        for (unsigned int w = 0; w < source.mNumWeights; ++w)
            influence.push_back(osgAnimation::VertexIndexWeight(source.mWeights[w].mVertexId,
                                                                source.mWeights[w].mWeight));
    }

    osg::ref_ptr<osgAnimation::RigGeometry> rig = new osgAnimation::RigGeometry;
    rig->setName(mesh.mName.C_Str());
    rig->setSourceGeometry(makeGeometry(mesh, &meshGlobal).get());
    rig->setInfluenceMap(influences.get());
    rig->setDataVariance(osg::Object::DYNAMIC);
    rig->setStateSet(mMaterials.stateSetFor(mesh.mMaterialIndex));
    mSkins->addDrawable(rig.get());
}

} // namespace Kelvor
