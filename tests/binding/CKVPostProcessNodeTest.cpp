#include "effects/CKVPostProcessNode.h"
#include "scene/CKVSceneNodeImp.h"
#include "viewer/CKVOSGCamera.h"

#include "TarnwickRender/CKVSceneNode.h"

#include <osg/Geode>
#include <osg/ShapeDrawable>
#include <osgUtil/CullVisitor>
#include <osgUtil/RenderStage>
#include <osgUtil/StateGraph>

#include <gtest/gtest.h>

namespace Kelvor {
namespace {

class HostNode : public CKVSceneNode
{
public:
    HostNode() = default;
};

osg::ref_ptr<CKVOSGCamera> makeMainCamera()
{
    osg::ref_ptr<CKVOSGCamera> camera = new CKVOSGCamera;
    camera->setViewport(0, 0, 200, 100);
    camera->setClearColor(osg::Vec4(0.1f, 0.2f, 0.3f, 1.0f));
    camera->setClearMask(GL_STENCIL_BUFFER_BIT);
    camera->setCullingMode(15);
    camera->setSmallFeatureCullingPixelSize(3.0f);
    camera->setComputeNearFarMode(osg::CullSettings::DO_NOT_COMPUTE_NEAR_FAR);
    camera->setProjectionMatrixAsPerspective(60.0, 2.0, 0.01, 1000.0);
    return camera;
}

osg::ref_ptr<osg::Geode> boxAt(osg::Vec3 const& centre)
{
    osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    geode->addDrawable(new osg::ShapeDrawable(new osg::Box(centre, 2.0f)));
    return geode;
}

// Culls `root` as the main camera's scene, without GL.
void cull(CKVPostProcessNode& root, osg::Camera& camera, osg::Matrixd const& view)
{
    osg::ref_ptr<osgUtil::CullVisitor> visitor = new osgUtil::CullVisitor;
    osg::ref_ptr<osgUtil::StateGraph> graph = new osgUtil::StateGraph;
    osg::ref_ptr<osgUtil::RenderStage> stage = new osgUtil::RenderStage;
    visitor->setStateGraph(graph.get());
    visitor->setRenderStage(stage.get());
    visitor->pushViewport(camera.getViewport());
    visitor->pushProjectionMatrix(new osg::RefMatrix(camera.getProjectionMatrix()));
    visitor->pushModelViewMatrix(new osg::RefMatrix(view), osg::Transform::ABSOLUTE_RF);
    root.accept(*visitor);
    visitor->popModelViewMatrix();
    visitor->popProjectionMatrix();
    visitor->popViewport();
}

TEST(CKVPostProcessNodeTest, TakesTheMainCameraSettingsForTheScenePass)
{
    osg::ref_ptr<CKVOSGCamera> main = makeMainCamera();
    osg::ref_ptr<CKVPostProcessNode> root = new CKVPostProcessNode(main.get(), new osg::FloatArray(112), 4);
    // Renders the scene before the window's own pass, into its targets.
    EXPECT_EQ(root->getRenderOrder(), osg::Camera::PRE_RENDER);
    EXPECT_EQ(root->getRenderTargetImplementation(), osg::Camera::FRAME_BUFFER_OBJECT);
    EXPECT_EQ(root->getClearColor(), main->getClearColor());
    EXPECT_EQ(root->getCullingMode(), 15u);
    EXPECT_FLOAT_EQ(root->getSmallFeatureCullingPixelSize(), 3.0f);
    EXPECT_FALSE(root->isActive()) << "no effect is on yet";
    EXPECT_EQ(root->getSamples(), 4);
    ASSERT_NE(root->getStateSet(), nullptr);
    EXPECT_EQ(root->getStateSet()->getUniform("nearFar"), root->getNearFarUniform());
}

TEST(CKVPostProcessNodeTest, RefusesNodesThatAreNotOurs)
{
    osg::ref_ptr<CKVPostProcessNode> root = new CKVPostProcessNode(makeMainCamera().get(), new osg::FloatArray(112), 0);
    kv_shared_ptr<HostNode> node = new HostNode;
    EXPECT_FALSE(root->addSceneNode(nullptr));
    EXPECT_FALSE(root->addSceneNode(node.get()));
    EXPECT_FALSE(root->removeSceneNode(node.get()));
    EXPECT_FALSE(root->removeSceneNode(nullptr));
    EXPECT_EQ(root->getNumSceneNodes(), 0u);
    EXPECT_EQ(root->getNumChildren(), 0u);
    // The refused node keeps only the references its holders gave it.
    EXPECT_EQ(node->refCount(), 1u);
}

TEST(CKVPostProcessNodeTest, AttachesOurNodesOnceAndBackgroundsUnderTheGISGroup)
{
    osg::ref_ptr<CKVPostProcessNode> root = new CKVPostProcessNode(makeMainCamera().get(), new osg::FloatArray(112), 0);
    kv_shared_ptr<CKVSceneNodeImp> building = new CKVSceneNodeImp;
    kv_shared_ptr<CKVSceneNodeImp> background = new CKVSceneNodeImp;
    background->setName("KV_GISBackGround");

    EXPECT_TRUE(root->addSceneNode(building.get()));
    EXPECT_TRUE(root->addSceneNode(building.get()));
    EXPECT_TRUE(root->addSceneNode(background.get()));
    EXPECT_EQ(root->getNumSceneNodes(), 2u);
    ASSERT_EQ(root->getNumChildren(), 1u);
    EXPECT_EQ(root->getChild(0), building->getOSGNode());
    ASSERT_EQ(root->getGISGroup()->getNumChildren(), 1u);
    EXPECT_EQ(root->getGISGroup()->getChild(0), background->getOSGNode());

    EXPECT_TRUE(root->removeSceneNode(building.get()));
    EXPECT_FALSE(root->removeSceneNode(building.get()));
    EXPECT_TRUE(root->removeSceneNode(background.get()));
    EXPECT_EQ(root->getNumChildren(), 0u);
    EXPECT_EQ(root->getGISGroup()->getNumChildren(), 0u);
    EXPECT_EQ(building->refCount(), 1u);
}

TEST(CKVPostProcessNodeTest, ResizeFollowsTheWindowAndIgnoresZero)
{
    osg::ref_ptr<CKVPostProcessNode> root = new CKVPostProcessNode(makeMainCamera().get(), new osg::FloatArray(112), 0);
    root->resize(0, 300);
    EXPECT_EQ(root->getViewport()->width(), 200);
    root->resize(640, 480);
    EXPECT_EQ(root->getViewport()->width(), 640);
    EXPECT_EQ(root->getViewport()->height(), 480);
}

TEST(CKVPostProcessNodeTest, CullClampsNearAndFarToTheScene)
{
    osg::ref_ptr<CKVOSGCamera> main = makeMainCamera();
    osg::ref_ptr<CKVPostProcessNode> root = new CKVPostProcessNode(main.get(), new osg::FloatArray(112), 0);
    root->addChild(boxAt(osg::Vec3(0.0f, 0.0f, 0.0f)));
    // Ten units from a box whose bounding sphere has radius sqrt(3).
    osg::Matrixd const view = osg::Matrixd::lookAt(osg::Vec3d(0, -10, 0), osg::Vec3d(0, 0, 0), osg::Vec3d(0, 0, 1));

    cull(*root, *main, view);

    osg::Vec2f nearFar;
    root->getNearFarUniform()->get(nearFar);
    double const radius = std::sqrt(3.0);
    // OpenSceneGraph pulls near in and pushes far out by a few percent.
    EXPECT_GT(nearFar.x(), 0.9 * (10.0 - radius));
    EXPECT_LT(nearFar.x(), 10.0 - radius);
    EXPECT_GT(nearFar.y(), 10.0 + radius);
    EXPECT_LT(nearFar.y(), 1.1 * (10.0 + radius));

    // The camera keeps the projection the frame was culled with.
    double fovy = 0, aspect = 0, zNear = 0, zFar = 0;
    ASSERT_TRUE(main->getCullProjection().getPerspective(fovy, aspect, zNear, zFar));
    EXPECT_NEAR(zNear, nearFar.x(), 1e-3);
    EXPECT_NEAR(zFar, nearFar.y(), 1e-2);
    EXPECT_NEAR(fovy, 60.0, 1e-3);
    EXPECT_NEAR(aspect, 2.0, 1e-6);
}

TEST(CKVPostProcessNodeTest, SceneBehindTheEyeLeavesTheProjection)
{
    osg::ref_ptr<CKVOSGCamera> main = makeMainCamera();
    osg::ref_ptr<CKVPostProcessNode> root = new CKVPostProcessNode(main.get(), new osg::FloatArray(112), 0);
    root->addChild(boxAt(osg::Vec3(0.0f, -50.0f, 0.0f)));
    osg::Matrixd const view = osg::Matrixd::lookAt(osg::Vec3d(0, -10, 0), osg::Vec3d(0, 0, 0), osg::Vec3d(0, 0, 1));

    cull(*root, *main, view);

    osg::Vec2f nearFar(-1.0f, -1.0f);
    root->getNearFarUniform()->get(nearFar);
    EXPECT_EQ(nearFar, osg::Vec2f(0.0f, 0.0f));
    EXPECT_EQ(main->getCullProjection(), main->getProjectionMatrix());
}

} // namespace
} // namespace Kelvor
