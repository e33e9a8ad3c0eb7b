#pragma once

// Small FBX files made by the tests themselves, written as ASCII FBX through
// assimp's exporter (its binary FBX cannot be read back by the same assimp).
// A root node holds "Mover", a triangle with a plain colour material, and
// under it "Textured" (a texture file beside the FBX file) and "Embedded"
// (a texture inside it). Every clip moves "Mover" along x, one key a second
// from 0 to 4 s: clip k (from 0) goes from x = 10 (k + 1) up by one a second.

#include <assimp/Exporter.hpp>
#include <assimp/scene.h>

#include <osg/Image>
#include <osgDB/FileUtils>
#include <osgDB/Registry>
#include <osgDB/WriteFile>

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace Kelvor {
namespace fbxtest {

constexpr int kKeysPerClip = 5;
// FBX counts time in these units per second.
constexpr long long kFbxTimePerSecond = 46186158000LL;

inline osg::ref_ptr<osg::Image> solidImage(unsigned char r, unsigned char g, unsigned char b)
{
    osg::ref_ptr<osg::Image> image = new osg::Image;
    image->allocateImage(2, 2, 1, GL_RGBA, GL_UNSIGNED_BYTE);
    for (int i = 0; i < 4; ++i) {
        unsigned char* p = image->data() + 4 * i;
        p[0] = r, p[1] = g, p[2] = b, p[3] = 255;
    }
    return image;
}

inline float clipStartX(std::size_t clip)
{
    return 10.0f * static_cast<float>(clip + 1);
}

// A directory of its own for this test process.
inline std::string scratchDirectory()
{
    std::string const dir = ::testing::TempDir() + "kv_fbx_" + std::to_string(::getpid());
    osgDB::makeDirectory(dir + "/textures");
    return dir;
}

namespace detail {

inline aiNode* meshNode(char const* name, unsigned int mesh)
{
    aiNode* node = new aiNode(name);
    node->mNumMeshes = 1;
    node->mMeshes = new unsigned int[1]{mesh};
    return node;
}

inline aiMesh* triangle(unsigned int material)
{
    aiMesh* mesh = new aiMesh;
    mesh->mPrimitiveTypes = aiPrimitiveType_TRIANGLE;
    mesh->mNumVertices = 3;
    mesh->mVertices = new aiVector3D[3]{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    mesh->mTextureCoords[0] = new aiVector3D[3]{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    mesh->mNumUVComponents[0] = 2;
    mesh->mNumFaces = 1;
    mesh->mFaces = new aiFace[1];
    mesh->mFaces[0].mNumIndices = 3;
    mesh->mFaces[0].mIndices = new unsigned int[3]{0, 1, 2};
    mesh->mMaterialIndex = material;
    return mesh;
}

inline aiMaterial* material(aiColor4D const& colour, char const* texture)
{
    aiMaterial* m = new aiMaterial;
    m->AddProperty(&colour, 1, AI_MATKEY_COLOR_DIFFUSE);
    if (texture) {
        aiString path(texture);
        m->AddProperty(&path, AI_MATKEY_TEXTURE_DIFFUSE(0));
    }
    return m;
}

inline aiAnimation* clip(std::string const& name, float startX)
{
    aiAnimation* animation = new aiAnimation;
    animation->mName = aiString(name);
    animation->mTicksPerSecond = 1.0;
    animation->mDuration = kKeysPerClip - 1;
    aiNodeAnim* channel = new aiNodeAnim;
    channel->mNodeName = aiString("Mover");
    channel->mNumPositionKeys = kKeysPerClip;
    channel->mPositionKeys = new aiVectorKey[kKeysPerClip];
    for (int k = 0; k < kKeysPerClip; ++k)
        channel->mPositionKeys[k] = aiVectorKey(k, aiVector3D(startX + k, 0, 0));
    channel->mNumRotationKeys = 1;
    channel->mRotationKeys = new aiQuatKey[1]{aiQuatKey(0.0, aiQuaternion())};
    channel->mNumScalingKeys = 1;
    channel->mScalingKeys = new aiVectorKey[1]{aiVectorKey(0.0, aiVector3D(1, 1, 1))};
    animation->mNumChannels = 1;
    animation->mChannels = new aiNodeAnim*[1]{channel};
    return animation;
}

} // namespace detail

// The base colour of "Mover" and the colours of the two textures.
inline aiColor4D const kMoverColour(0.8f, 0.1f, 0.1f, 1.0f);

// Writes `directory`/`file` with the clips named, and the texture file
// "textures/wall.png" (green) beside it; the embedded texture is blue.
inline bool writeFile(std::string const& directory, std::string const& file, std::vector<std::string> const& clips)
{
    osg::ref_ptr<osg::Image> green = solidImage(0, 255, 0);
    if (!osgDB::writeImageFile(*green, directory + "/textures/wall.png"))
        return false;
    std::ostringstream png;
    osgDB::ReaderWriter* writer = osgDB::Registry::instance()->getReaderWriterForExtension("png");
    if (!writer || !writer->writeImage(*solidImage(0, 0, 255), png).success())
        return false;
    std::string const bytes = png.str();

    aiScene scene;
    scene.mRootNode = new aiNode("Root");
    aiNode* mover = detail::meshNode("Mover", 0);
    aiNode* children[] = {detail::meshNode("Textured", 1), detail::meshNode("Embedded", 2)};
    mover->addChildren(2, children);
    scene.mRootNode->addChildren(1, &mover);
    scene.mNumMeshes = 3;
    scene.mMeshes = new aiMesh*[3]{detail::triangle(0), detail::triangle(1), detail::triangle(2)};
    scene.mNumMaterials = 3;
    scene.mMaterials = new aiMaterial*[3]{detail::material(kMoverColour, nullptr),
                                          detail::material(aiColor4D(1, 1, 1, 1), "textures/wall.png"),
                                          detail::material(aiColor4D(1, 1, 1, 1), "*0")};
    aiTexture* embedded = new aiTexture;
    embedded->mWidth = static_cast<unsigned int>(bytes.size());
    embedded->mHeight = 0;
    // The file's bytes, in texels as assimp keeps them.
    embedded->pcData = new aiTexel[(bytes.size() + sizeof(aiTexel) - 1) / sizeof(aiTexel)];
    std::copy(bytes.begin(), bytes.end(), reinterpret_cast<char*>(embedded->pcData));
    scene.mNumTextures = 1;
    scene.mTextures = new aiTexture*[1]{embedded};
    scene.mNumAnimations = static_cast<unsigned int>(clips.size());
    scene.mAnimations = new aiAnimation*[clips.size()];
    for (std::size_t c = 0; c < clips.size(); ++c)
        scene.mAnimations[c] = detail::clip(clips[c], clipStartX(c));

    Assimp::Exporter exporter;
    return exporter.Export(&scene, "fbxa", directory + "/" + file) == AI_SUCCESS;
}

// Moves the start of the clip's take to `startSeconds` (its end stays at
// the last key): its earlier keys then come before its start, below zero.
inline bool startClipAt(std::string const& path, std::string const& clip, int startSeconds)
{
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    std::string content = text.str();
    std::size_t const stack = content.find("\"AnimStack::" + clip + "\"");
    if (stack == std::string::npos)
        return false;
    auto setTime = [&](char const* property, long long value) {
        std::string const key = std::string("P: \"") + property + "\", \"KTime\", \"Time\", \"\", ";
        std::size_t const at = content.find(key, stack);
        if (at == std::string::npos)
            return false;
        std::size_t const number = at + key.size();
        content.replace(number, content.find_first_of("\r\n", number) - number, std::to_string(value));
        return true;
    };
    if (!setTime("LocalStart", startSeconds * kFbxTimePerSecond) ||
        !setTime("LocalStop", (kKeysPerClip - 1) * kFbxTimePerSecond))
        return false;
    std::ofstream(path) << content;
    return true;
}

} // namespace fbxtest
} // namespace Kelvor
