#include "FBXTestFiles.h"
#include "FBXTestSupport.h"

#include "fbx/CKVOSGAnimationManager.h"
#include "fbx/KVAssimpConvert.h"
#include "fbx/ReaderWriterFBX.h"

#include <assimp/anim.h>

#include <osg/NodeVisitor>
#include <osg/Texture2D>
#include <osgAnimation/Channel>
#include <osgAnimation/Bone>
#include <osgAnimation/RigGeometry>
#include <osgDB/Registry>

#include <gtest/gtest.h>
#include <osg/io_utils>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <set>
#include <unistd.h>

namespace Kelvor {
namespace {

// Everything the reader built, by kind.
class Collect : public osg::NodeVisitor
{
public:
    Collect() : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN) {}
    void apply(osg::Transform& node) override
    {
        if (auto* bone = dynamic_cast<osgAnimation::Bone*>(&node))
            bones[bone->getName()] = bone;
        traverse(node);
    }
    void apply(osg::Drawable& drawable) override
    {
        if (auto* rig = dynamic_cast<osgAnimation::RigGeometry*>(&drawable))
            rigs.push_back(rig);
    }
    std::map<std::string, osgAnimation::Bone*> bones;
    std::vector<osgAnimation::RigGeometry*> rigs;
};

unsigned int countNodes(aiNode const* node)
{
    unsigned int count = 1;
    for (unsigned int c = 0; c < node->mNumChildren; ++c)
        count += countNodes(node->mChildren[c]);
    return count;
}

// The pose of one node at `tick`, from assimp's keys: vectors linearly,
// rotations with assimp's own interpolation.
aiMatrix4x4 localAt(aiNode const* node, aiAnimation const& clip, double tick)
{
    for (unsigned int c = 0; c < clip.mNumChannels; ++c) {
        aiNodeAnim const& ch = *clip.mChannels[c];
        if (ch.mNodeName != node->mName)
            continue;
        auto vec = [tick](aiVectorKey const* keys, unsigned int n) {
            if (tick <= keys[0].mTime || n == 1)
                return keys[0].mValue;
            for (unsigned int k = 1; k < n; ++k) {
                if (tick <= keys[k].mTime) {
                    float const f = float((tick - keys[k - 1].mTime) / (keys[k].mTime - keys[k - 1].mTime));
                    return keys[k - 1].mValue + (keys[k].mValue - keys[k - 1].mValue) * f;
                }
            }
            return keys[n - 1].mValue;
        };
        auto quat = [tick](aiQuatKey const* keys, unsigned int n) {
            if (tick <= keys[0].mTime || n == 1)
                return keys[0].mValue;
            for (unsigned int k = 1; k < n; ++k) {
                if (tick <= keys[k].mTime) {
                    float const f = float((tick - keys[k - 1].mTime) / (keys[k].mTime - keys[k - 1].mTime));
                    aiQuaternion out;
                    aiQuaternion::Interpolate(out, keys[k - 1].mValue, keys[k].mValue, f);
                    return out;
                }
            }
            return keys[n - 1].mValue;
        };
        aiVector3D scale(1, 1, 1), position;
        aiQuaternion rotation;
        aiVector3D restScale, restPosition;
        aiQuaternion restRotation;
        node->mTransformation.Decompose(restScale, restRotation, restPosition);
        scale = ch.mNumScalingKeys ? vec(ch.mScalingKeys, ch.mNumScalingKeys) : restScale;
        position = ch.mNumPositionKeys ? vec(ch.mPositionKeys, ch.mNumPositionKeys) : restPosition;
        rotation = ch.mNumRotationKeys ? quat(ch.mRotationKeys, ch.mNumRotationKeys) : restRotation;
        return aiMatrix4x4(scale, rotation, position);
    }
    return node->mTransformation;
}

void globalsAt(aiNode const* node, aiMatrix4x4 const& parent, aiAnimation const& clip, double tick,
               std::map<std::string, aiMatrix4x4>& out)
{
    aiMatrix4x4 const global = parent * localAt(node, clip, tick);
    out[node->mName.C_Str()] = global;
    for (unsigned int c = 0; c < node->mNumChildren; ++c)
        globalsAt(node->mChildren[c], global, clip, tick, out);
}

double earliestTick(aiAnimation const& clip)
{
    double earliest = 0.0;
    for (unsigned int c = 0; c < clip.mNumChannels; ++c) {
        aiNodeAnim const& ch = *clip.mChannels[c];
        if (ch.mNumPositionKeys) earliest = std::min(earliest, ch.mPositionKeys[0].mTime);
        if (ch.mNumRotationKeys) earliest = std::min(earliest, ch.mRotationKeys[0].mTime);
        if (ch.mNumScalingKeys) earliest = std::min(earliest, ch.mScalingKeys[0].mTime);
    }
    return earliest;
}

// Rotation and scale to 1e-4, the translation row to `distance`.
void expectNearMatrix(aiMatrix4x4 const& expected, osg::Matrixd const& actual, double distance,
                      std::string const& what)
{
    osg::Matrixd const e = toOsgMatrix(expected);
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            ASSERT_NEAR(e(r, c), actual(r, c), r == 3 ? distance : 1e-4) << what << " (" << r << "," << c << ")";
}

struct Rig
{
    std::string path;
    unsigned int weightedBones;
    double durationSeconds;
};

class ReaderWriterFBXRigTest : public ::testing::TestWithParam<Rig>
{
};

// The sample rigs: the skeleton, the skin's bones, the clip and its
// channels as assimp reads them.
TEST_P(ReaderWriterFBXRigTest, BuildsSkeletonSkinAndClipOfTheFile)
{
    Rig const rig = GetParam();
    Assimp::Importer importer;
    aiScene const* scene = readWithAssimp(importer, rig.path);
    ASSERT_NE(scene, nullptr);
    ASSERT_GE(scene->mNumAnimations, 1u);

    osg::ref_ptr<CKVOSGAnimationManager> manager = new CKVOSGAnimationManager;
    ReaderWriterFBX reader;
    reader.setAnimationManager(manager.get());
    osg::ref_ptr<CKVFBXSceneHandle> handle;
    osgDB::ReaderWriter::ReadResult result = reader.readNode(rig.path, nullptr, &handle);
    ASSERT_TRUE(result.validNode()) << result.message();
    osg::ref_ptr<osg::Node> node = result.takeNode();
    EXPECT_EQ(node->getUpdateCallback(), manager.get());
    ASSERT_TRUE(handle.valid());
    EXPECT_EQ(handle->getNodeCount(), countNodes(scene->mRootNode)) << "every node can be animated";

    Collect collect;
    node->accept(collect);
    EXPECT_EQ(collect.bones.size(), handle->getNodeCount());
    ASSERT_FALSE(collect.rigs.empty());
    std::set<std::string> weighted;
    for (auto* geometry : collect.rigs)
        for (auto const& influence : *geometry->getInfluenceMap())
            weighted.insert(influence.first);
    EXPECT_EQ(weighted.size(), rig.weightedBones);

    aiAnimation const& clip = *scene->mAnimations[0];
    unsigned int expectedChannels = 0;
    for (unsigned int c = 0; c < clip.mNumChannels; ++c) {
        aiNodeAnim const& ch = *clip.mChannels[c];
        EXPECT_TRUE(handle->hasNode(ch.mNodeName.C_Str())) << ch.mNodeName.C_Str();
        expectedChannels += (ch.mNumPositionKeys > 0) + (ch.mNumRotationKeys > 0) + (ch.mNumScalingKeys > 0);
    }
    osgAnimation::Animation* animation = manager->getLastAnimation();
    ASSERT_NE(animation, nullptr);
    ASSERT_EQ(manager->getAnimationList().size(), 1u);
    EXPECT_EQ(animation->getChannels().size(), expectedChannels);
    EXPECT_NEAR(animation->getDuration(), rig.durationSeconds, 1e-6);
}

// Halfway through the clip, bones and skin stand where assimp's keys put
// them: every node's matrix in skeleton space, and every skinned vertex.
TEST_P(ReaderWriterFBXRigTest, PoseAtATimeMatchesTheKeysAndSkinsTheMesh)
{
    Rig const rig = GetParam();
    Assimp::Importer importer;
    aiScene const* scene = readWithAssimp(importer, rig.path);
    ASSERT_NE(scene, nullptr);
    aiAnimation const& clip = *scene->mAnimations[0];
    double const tps = clip.mTicksPerSecond > 0.0 ? clip.mTicksPerSecond : 25.0;

    osg::ref_ptr<CKVOSGAnimationManager> manager = new CKVOSGAnimationManager;
    ReaderWriterFBX reader;
    reader.setAnimationManager(manager.get());
    osg::ref_ptr<osg::Node> node = reader.readNode(rig.path, nullptr).takeNode();
    ASSERT_TRUE(node.valid());
    Collect collect;
    node->accept(collect);

    updateAt(*node, 0.0, 1);
    manager->playAnimation(manager->getLastAnimation());
    double const seconds = 0.45 * rig.durationSeconds;
    updateAt(*node, seconds, 2);

    std::map<std::string, aiMatrix4x4> globals;
    globalsAt(scene->mRootNode, aiMatrix4x4(), clip, seconds * tps + earliestTick(clip), globals);
    double const size = 1e-3 * std::max(1.0, double(node->getBound().radius()));
    for (auto const& [name, bone] : collect.bones)
        expectNearMatrix(globals[name], bone->getMatrixInSkeletonSpace(), size, name);

    // The first skinned mesh, deformed by hand from assimp's weights.
    aiMesh const* mesh = nullptr;
    for (unsigned int m = 0; m < scene->mNumMeshes && !mesh; ++m)
        if (scene->mMeshes[m]->HasBones())
            mesh = scene->mMeshes[m];
    ASSERT_NE(mesh, nullptr);
    std::vector<aiVector3D> expected(mesh->mNumVertices, aiVector3D(0, 0, 0));
    std::vector<float> weightSum(mesh->mNumVertices, 0.0f);
    for (unsigned int b = 0; b < mesh->mNumBones; ++b) {
        aiBone const& bone = *mesh->mBones[b];
        aiMatrix4x4 const skin = globals[bone.mName.C_Str()] * bone.mOffsetMatrix;
        for (unsigned int w = 0; w < bone.mNumWeights; ++w)
        {
            expected[bone.mWeights[w].mVertexId] += (skin * mesh->mVertices[bone.mWeights[w].mVertexId]) * bone.mWeights[w].mWeight;
            weightSum[bone.mWeights[w].mVertexId] += bone.mWeights[w].mWeight;
        }
    }
    // Weights are normalised per vertex: the sample rigs have vertices whose
    // weights sum to 0.97 or 1.2, which would shrink or swell the skin.
    for (unsigned int i = 0; i < expected.size(); ++i)
        if (weightSum[i] > 0.0f)
            expected[i] /= weightSum[i];
    osgAnimation::RigGeometry* skinned = nullptr;
    for (auto* r : collect.rigs)
        if (r->getName() == mesh->mName.C_Str())
            skinned = r;
    ASSERT_NE(skinned, nullptr);
    auto const* vertices = dynamic_cast<osg::Vec3Array const*>(skinned->getVertexArray());
    ASSERT_NE(vertices, nullptr);
    ASSERT_EQ(vertices->size(), expected.size());
    unsigned int moved = 0;
    for (unsigned int i = 0; i < expected.size(); ++i) {
        osg::Vec3 const e(expected[i].x, expected[i].y, expected[i].z);
        ASSERT_LT(((*vertices)[i] - e).length(), size) << "vertex " << i << " expected " << e << " got " << (*vertices)[i];
        moved += (toOsgVec3(mesh->mVertices[i]) - e).length() > size * 10;
    }
    EXPECT_GT(moved, 0u) << "the chosen time should deform the skin";
}

INSTANTIATE_TEST_SUITE_P(SampleRigs, ReaderWriterFBXRigTest,
                         ::testing::Values(Rig{kSkeletonRig, 13, 20.0 / 24.0}, Rig{kHuesitosRig, 9, 39.0 / 25.0}));

// A clip read with a filled handle binds to the character's skeleton: no
// second skeleton, only the clip on the same manager.
TEST(ReaderWriterFBXTest, LaterReadWithTheHandleDeliversOnlyTheClip)
{
    osg::ref_ptr<CKVOSGAnimationManager> manager = new CKVOSGAnimationManager;
    ReaderWriterFBX reader;
    reader.setAnimationManager(manager.get());
    osg::ref_ptr<CKVFBXSceneHandle> handle;
    ASSERT_TRUE(reader.readNode(kSkeletonRig, nullptr, &handle).validNode());
    CKVFBXSceneHandle* first = handle.get();
    osgAnimation::Animation* firstClip = manager->getLastAnimation();

    osgDB::ReaderWriter::ReadResult again = reader.readNode(kSkeletonRig, nullptr, &handle);
    ASSERT_TRUE(again.validNode());
    EXPECT_EQ(handle.get(), first) << "the handle stays the character's";
    Collect collect;
    again.getNode()->accept(collect);
    EXPECT_TRUE(collect.bones.empty());
    EXPECT_EQ(manager->getAnimationList().size(), 2u);
    ASSERT_NE(manager->getLastAnimation(), firstClip);
    EXPECT_EQ(manager->getLastAnimation()->getChannels().size(), firstClip->getChannels().size());
}

// Where a clip puts "Mover" along x at `seconds`.
float moverXAt(osgAnimation::Animation const& clip, double seconds)
{
    for (osg::ref_ptr<osgAnimation::Channel> const& channel : clip.getChannels()) {
        auto const* translate = dynamic_cast<osgAnimation::Vec3LinearChannel const*>(channel.get());
        if (translate && channel->getTargetName() == "Mover") {
            osg::Vec3f value;
            const_cast<osgAnimation::Vec3LinearChannel*>(translate)->getSamplerTyped()->getValueAt(seconds, value);
            return value.x();
        }
    }
    return -1.0f;
}

// Of a file with several clips the reader registers the one asked for by
// name; a clip whose take starts after its first keys keeps their times.
TEST(ReaderWriterFBXTest, ClipsOfAFileAreChosenByNameAndKeepTheirTiming)
{
    std::string const dir = fbxtest::scratchDirectory();
    ASSERT_TRUE(fbxtest::writeFile(dir, "clips.fbx", {"walk", "run", "jump"}));
    ASSERT_TRUE(fbxtest::startClipAt(dir + "/clips.fbx", "jump", 2));
    std::string const path = dir + "/clips.fbx";

    osg::ref_ptr<CKVOSGAnimationManager> all = new CKVOSGAnimationManager;
    ReaderWriterFBX reader;
    reader.setAnimationManager(all.get());
    osg::ref_ptr<CKVFBXSceneHandle> handle;
    ASSERT_TRUE(reader.readNode(path, nullptr, &handle).validNode());
    EXPECT_EQ(all->getAnimationList().size(), 3u) << "without a name, every clip";

    struct Case {
        char const* asked;
        char const* played;
        double at;
        float x;
        double duration;
    };
    // jump's take starts at its third key: 0.5 s in is halfway from 32 to
    // 33, and it lasts from there to its last key.
    Case const cases[] = {{"walk", "walk", 0.5, 10.5f, 4.0}, {"run", "run", 1.5, 21.5f, 4.0},
                          {"jump", "jump", 0.5, 32.5f, 2.0}, {"swim", "walk", 0.0, 10.0f, 4.0}};
    for (Case const& c : cases) {
        osg::ref_ptr<CKVOSGAnimationManager> manager = new CKVOSGAnimationManager;
        ReaderWriterFBX clipReader;
        clipReader.setAnimationManager(manager.get());
        clipReader.setClipName(c.asked);
        ASSERT_TRUE(clipReader.readNode(path, nullptr, &handle).validNode()) << c.asked;
        ASSERT_EQ(manager->getAnimationList().size(), 1u) << c.asked;
        osgAnimation::Animation* clip = manager->getLastAnimation();
        ASSERT_NE(clip, nullptr);
        EXPECT_EQ(clip->getName(), c.played);
        EXPECT_NEAR(moverXAt(*clip, c.at), c.x, 1e-3) << c.asked;
        EXPECT_NEAR(clip->getDuration(), c.duration, 1e-6) << c.asked;
    }
}

// The material state of the drawables under a bone.
osg::StateSet const* meshStateOf(osgAnimation::Bone const& bone)
{
    for (unsigned int i = 0; i < bone.getNumChildren(); ++i) {
        osg::Geode const* geode = bone.getChild(i)->asGeode();
        if (geode && geode->getNumDrawables() > 0)
            return geode->getDrawable(0)->getStateSet();
    }
    return nullptr;
}

osg::Vec4 texel(osg::StateSet const& state)
{
    auto const* texture = dynamic_cast<osg::Texture2D const*>(state.getTextureAttribute(0, osg::StateAttribute::TEXTURE));
    if (!texture || !texture->getImage())
        return osg::Vec4(-1, -1, -1, -1);
    return texture->getImage()->getColor(0, 0);
}

TEST(ReaderWriterFBXTest, MeshesCarryTheFilesColoursAndTextures)
{
    std::string const dir = fbxtest::scratchDirectory();
    ASSERT_TRUE(fbxtest::writeFile(dir, "materials.fbx", {"walk"}));
    ReaderWriterFBX reader;
    osgDB::ReaderWriter::ReadResult result = reader.readNode(dir + "/materials.fbx", nullptr);
    ASSERT_TRUE(result.validNode());
    Collect collect;
    result.getNode()->accept(collect);

    for (char const* name : {"Mover", "Textured", "Embedded"})
        ASSERT_NE(collect.bones[name], nullptr) << name;
    osg::StateSet const* plain = meshStateOf(*collect.bones["Mover"]);
    ASSERT_NE(plain, nullptr);
    osg::Vec4 colour;
    ASSERT_NE(plain->getUniform("AlbedoColor_V4"), nullptr);
    plain->getUniform("AlbedoColor_V4")->get(colour);
    EXPECT_NEAR((colour - osg::Vec4(0.8f, 0.1f, 0.1f, 1.0f)).length(), 0.0, 1e-5);
    EXPECT_EQ(plain->getTextureAttribute(0, osg::StateAttribute::TEXTURE), nullptr);

    struct Case {
        char const* node;
        osg::Vec4 colour;
    };
    for (Case const& c : {Case{"Textured", osg::Vec4(0, 1, 0, 1)}, Case{"Embedded", osg::Vec4(0, 0, 1, 1)}}) {
        osg::StateSet const* state = meshStateOf(*collect.bones[c.node]);
        ASSERT_NE(state, nullptr) << c.node;
        EXPECT_NEAR((texel(*state) - c.colour).length(), 0.0, 1e-3) << c.node;
        EXPECT_NE(state->getDefinePair("_USE_TEXTURE"), nullptr) << c.node;
    }
}

TEST(ReaderWriterFBXTest, RefusesMissingForeignAndBrokenFiles)
{
    ReaderWriterFBX reader;
    EXPECT_EQ(reader.readNode("/nonexistent/character.fbx", nullptr).status(),
              osgDB::ReaderWriter::ReadResult::FILE_NOT_FOUND);
    EXPECT_EQ(reader.readNode("/usr/share/assimp/models/OBJ/box.obj", nullptr).status(),
              osgDB::ReaderWriter::ReadResult::FILE_NOT_HANDLED);

    std::string const broken = "/tmp/kv_broken_" + std::to_string(::getpid()) + ".fbx";
    {
        std::ofstream out(broken);
        out << "this is not an FBX file\n";
    }
    osg::ref_ptr<CKVFBXSceneHandle> handle;
    osgDB::ReaderWriter::ReadResult result = reader.readNode(broken, nullptr, &handle);
    std::remove(broken.c_str());
    EXPECT_FALSE(result.validNode());
    EXPECT_FALSE(handle.valid()) << "a failed read fills no handle";
}

// The library registers the reader for the extension, ahead of any plugin.
TEST(ReaderWriterFBXTest, IsTheRegistrysReaderForFbx)
{
    osgDB::ReaderWriter* found = osgDB::Registry::instance()->getReaderWriterForExtension("fbx");
    ASSERT_NE(found, nullptr);
    EXPECT_STREQ(found->className(), ReaderWriterFBX().className());
    EXPECT_NE(dynamic_cast<ReaderWriterFBX*>(found), nullptr);
}

} // namespace
} // namespace Kelvor
