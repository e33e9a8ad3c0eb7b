#include "SceneNodeTestScene.h"

#include "programs/CKVProgramManager.h"

#include "TarnwickGeometry/KVMatrixConvert.h"
#include "TarnwickRender/CKVCullingState.h"
#include "TarnwickRender/CKVScelectAbilityState.h"
#include "TarnwickRender/CKVTransformState.h"
#include "TarnwickRender/CKVVisibilityState.h"

#include <osgUtil/UpdateVisitor>

#include <gtest/gtest.h>

namespace Kelvor {
namespace {

using namespace SceneNodeTestScene;
using Names = std::set<std::string>;

// One bridged node holding a square of half size 1 at the origin.
struct OneNode
{
    OneNode() : node(makeNode()), root(new osg::Group)
    {
        node->getOSGNode()->addChild(makeQuad("quad", 1.0f));
        root->addChild(node->getOSGNode());
    }
    void update()
    {
        osgUtil::UpdateVisitor visitor;
        root->accept(visitor);
    }
    Names cull(double distance, float lodScale = 1.0f) { return cullNames(root.get(), osg::Vec3d(0, 0, distance), lodScale); }
    Names pick() { return pickNames(root.get(), osg::Vec3d(0.5, 0.5, 10), osg::Vec3d(0.5, 0.5, -10)); }

    kv_shared_ptr<CKVSceneNodeImp> node;
    osg::ref_ptr<osg::Group> root;
};

TEST(SceneNodeTraversalTest, HiddenNodesAreUpdatedButNeitherDrawnNorPicked)
{
    OneNode scene;
    auto* visibility = addState<CKVVisibilityState>(*scene.node);
    visibility->removeVisibility(CKVVisibilityState::kDisplay);
    visibility->addVisibility(CKVVisibilityState::kUserMode1);
    auto* transform = addState<CKVTransformState>(*scene.node);
    transform->setTransformMode(CKVTransformState::kAutoTransform);
    transform->setBasePosition(CKVPoint3D(0.0, 0.0, 3.0));
    EXPECT_TRUE(scene.cull(10).empty());
    EXPECT_TRUE(scene.pick().empty());

    scene.update();
    EXPECT_EQ(scene.node->getOSGNode()->getPosition(), osg::Vec3d(0.0, 0.0, 3.0));
    EXPECT_FALSE(transform->isDirty());
    EXPECT_FALSE(scene.node->getUpdateMode(CKVSceneNode::kStatesChanged));

    visibility->addVisibility(CKVVisibilityState::kDisplay);
    EXPECT_EQ(scene.cull(10), Names{"quad"});
    EXPECT_EQ(scene.pick(), Names{"quad"});

    // Not selectable: drawn, never picked.
    addState<CKVScelectAbilityState>(*scene.node)->removeSelectAbility(CKVVisibilityState::kDisplay);
    EXPECT_TRUE(scene.pick().empty());
    EXPECT_EQ(scene.cull(10), Names{"quad"});
}

TEST(SceneNodeTraversalTest, RangesAreClosedBelowAndOpenAbove)
{
    OneNode scene;
    auto* culling = addState<CKVCullingState>(*scene.node);
    culling->setCullingMode(CKVRenderLOD::kEyeDistance);
    culling->setDistance(10.0f, 20.0f);
    EXPECT_TRUE(scene.cull(9.5).empty());
    EXPECT_EQ(scene.cull(10), Names{"quad"});
    EXPECT_EQ(scene.cull(19.5), Names{"quad"});
    EXPECT_TRUE(scene.cull(20).empty());

    // In units of the bound's radius, sqrt 2 here.
    culling->setCullingMode(CKVRenderLOD::kRadiusDistance);
    EXPECT_EQ(scene.cull(20), Names{"quad"});
    EXPECT_TRUE(scene.cull(10).empty());

    // Pixel size: the square is large on screen, and a pick, which has no
    // screen, sees size 0. The size is divided by the LOD scale.
    culling->setCullingMode(CKVRenderLOD::kPixelSize);
    culling->setDistance(0.0f, 1.0f);
    EXPECT_TRUE(scene.cull(10).empty());
    EXPECT_EQ(scene.pick(), Names{"quad"});
    EXPECT_EQ(scene.cull(10, 1.0e6f), Names{"quad"});
}

TEST(SceneNodeTraversalTest, RadiusModeOnAZeroRadiusBoundGivesZero)
{
    kv_shared_ptr<CKVSceneNodeImp> node = makeNode();
    osg::ref_ptr<osg::Geometry> point = new osg::Geometry;
    point->setName("point");
    point->setVertexArray(new osg::Vec3Array(1));
    point->addPrimitiveSet(new osg::DrawArrays(GL_POINTS, 0, 1));
    node->getOSGNode()->addChild(point.get());
    ASSERT_EQ(node->getOSGNode()->getBound().radius(), 0.0f);

    auto* culling = addState<CKVCullingState>(*node);
    culling->setCullingMode(CKVRenderLOD::kRadiusDistance);
    culling->setDistance(0.0f, 1.0f);
    EXPECT_EQ(cullNames(node->getOSGNode(), osg::Vec3d(0, 0, 1000)), Names{"point"});
    culling->setDistance(0.5f, 1.0f);
    EXPECT_TRUE(cullNames(node->getOSGNode(), osg::Vec3d(0, 0, 1)).empty());
}

// A host level group: the group's own value picks among the levels by their
// ranges, whatever the group's own range; other children always go.
TEST(SceneNodeTraversalTest, LevelGroupChoosesOneLevelByTheGroupsValue)
{
    kv_shared_ptr<CKVSceneNodeImp> group = makeNode();
    auto* groupCulling = addState<CKVCullingState>(*group);
    groupCulling->setCullingMode(CKVRenderLOD::kEyeDistance);
    groupCulling->setCullingChild(true);
    groupCulling->setDistance(0.0f, 1.0f);

    std::vector<kv_shared_ptr<CKVSceneNodeImp>> children;
    float const bounds[] = {0.0f, 10.0f, 30.0f, 1000.0f};
    char const* const names[] = {"near", "middle", "far", "unranged"};
    for (int i = 0; i < 4; ++i) {
        children.push_back(makeNode());
        children.back()->getOSGNode()->addChild(makeQuad(names[i], 1.0f));
        if (i < 3)
            addState<CKVCullingState>(*children.back())->setDistance(bounds[i], bounds[i + 1]);
        ASSERT_TRUE(group->addChildNode(children.back().get()));
    }
    group->getOSGNode()->addChild(makeQuad("plain", 1.0f));

    osg::Node* scene = group->getOSGNode();
    EXPECT_EQ(cullNames(scene, osg::Vec3d(0, 0, 5)), (Names{"near", "unranged", "plain"}));
    EXPECT_EQ(cullNames(scene, osg::Vec3d(0, 0, 10)), (Names{"middle", "unranged", "plain"}));
    EXPECT_EQ(cullNames(scene, osg::Vec3d(0, 0, 100)), (Names{"far", "unranged", "plain"}));
    EXPECT_EQ(cullNames(scene, osg::Vec3d(0, 0, 2000)), (Names{"unranged", "plain"}));

    // A clone has no host node: it traverses everything.
    osg::ref_ptr<osg::Node> copy = static_cast<osg::Node*>(scene->clone(osg::CopyOp::SHALLOW_COPY));
    EXPECT_EQ(copy->className(), CKVOSGTransformNode::s_className);
    EXPECT_EQ(cullNames(copy.get(), osg::Vec3d(0, 0, 2000)).size(), 5u);
}

TEST(SceneNodeTraversalTest, MatricesComeFromTheHostTransform)
{
    kv_shared_ptr<CKVSceneNodeImp> node = makeNode();
    CKVOSGTransformNode* osgNode = node->getOSGNode();
    osg::Matrixd const parent = osg::Matrixd::rotate(0.5, osg::Vec3d(0, 0, 1)) * osg::Matrixd::translate(7, 8, 9);
    osg::Matrixd matrix = parent;
    EXPECT_TRUE(osgNode->computeLocalToWorldMatrix(matrix, nullptr));
    EXPECT_EQ(matrix, parent);

    auto* transform = addState<CKVTransformState>(*node);
    CKVMatrix3D host = CKVMatrix3D::translation(CKVVector3D(1.0 / 3.0, 2.0, 3.0));
    host(0, 1) = 0.25;
    transform->setMatrix(host);
    transform->setTransformMode(CKVTransformState::kMatrix);
    osgNode->computeLocalToWorldMatrix(matrix, nullptr);
    EXPECT_EQ(matrix, toOsgMatrix(host) * parent);
    matrix.makeIdentity();
    osgNode->computeWorldToLocalMatrix(matrix, nullptr);
    EXPECT_TRUE((matrix * toOsgMatrix(host)).isIdentity());

    // Mode 0 ignores the host matrix: absolute gives identity, not the argument.
    osgNode->setReferenceFrame(osg::Transform::ABSOLUTE_RF);
    transform->setTransformMode(CKVTransformState::kNone);
    matrix = parent;
    osgNode->computeLocalToWorldMatrix(matrix, nullptr);
    EXPECT_TRUE(matrix.isIdentity());
}

TEST(SceneNodeTraversalTest, AutoTransformIsAppliedInSinglePrecisionAndWrittenBack)
{
    OneNode scene;
    CKVOSGTransformNode* osgNode = scene.node->getOSGNode();
    auto* transform = addState<CKVTransformState>(*scene.node);
    transform->setTransformMode(CKVTransformState::kAutoTransform);
    transform->setBasePosition(CKVPoint3D(1.0e6 + 0.1, -2.0e6 - 0.3, 1.0 / 3.0));
    transform->setAutoScale(true);
    transform->setRotationMode(CKVTransformState::kRotateToAxis);
    transform->setRotationAxis(CKVVector3D(0.0, 0.0, 1.0), CKVVector3D(0.0, -1.0, 0.0));
    scene.update();

    // The nearest floats, written out: a computed expectation could be
    // rounded (or not) the same way as the code under test.
    osg::Vec3d const position(1000000.125, -2000000.25, 0.3333333432674408);
    EXPECT_EQ(osgNode->getPosition(), position);
    EXPECT_TRUE(osgNode->getAutoScaleToScreen());
    EXPECT_EQ(osgNode->getAutoRotateMode(), osg::AutoTransform::ROTATE_TO_AXIS);
    EXPECT_EQ(osgNode->getNormal(), osg::Vec3(0.0f, -1.0f, 0.0f));

    // The effective matrix reaches the host from the forward computation only.
    CKVMatrix3D const sentinel = CKVMatrix3D::translation(CKVVector3D(-1.0, -1.0, -1.0));
    transform->setMatrix(sentinel);
    osg::Matrixd matrix;
    osgNode->computeWorldToLocalMatrix(matrix, nullptr);
    EXPECT_TRUE(transform->getMatrix().isEqualTo(sentinel));
    osgNode->computeLocalToWorldMatrix(matrix, nullptr);
    EXPECT_EQ(transform->getMatrix()(0, 3), position.x());
    EXPECT_FALSE(transform->isDirty());

    transform->setTransformMode(CKVTransformState::kMatrix);
    scene.update();
    EXPECT_FALSE(osgNode->getAutoScaleToScreen());
    EXPECT_EQ(osgNode->getAutoRotateMode(), osg::AutoTransform::NO_ROTATION);
}

TEST(SceneNodeTraversalTest, ProgramParameterReachesTheStateSetInTheUpdate)
{
    OneNode scene;
    CKVProgramParam param(CKVProgramParam::kSurface);
    param.addParam(CKVProgramParam::kUseTexture);
    scene.node->setProgramParam(param);
    scene.update();

    osg::StateSet* stateSet = scene.node->getOSGNode()->getStateSet();
    ASSERT_NE(stateSet, nullptr);
    osg::ref_ptr<osg::Program> expected = CKVProgramManager::instance().getProgram(param);
    ASSERT_TRUE(expected.valid());
    EXPECT_EQ(stateSet->getAttribute(osg::StateAttribute::PROGRAM), expected.get());
    EXPECT_NE(stateSet->getDefinePair(CKVProgramManager::instance().getDefineName(CKVProgramParam::kUseTexture)),
              nullptr);
    EXPECT_FALSE(scene.node->getUpdateMode(CKVSceneNode::kProgramParamChanged));
}

} // namespace
} // namespace Kelvor
