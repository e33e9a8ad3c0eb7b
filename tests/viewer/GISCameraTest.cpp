#include "viewer/CKVGISCamera.h"

#include "effects/CKVPostProcessNode.h"
#include "scene/CKVSceneNodeImp.h"
#include "viewer/CKVOSGCamera.h"
#include "viewer/DepthFunc.h"
#include "viewer/DepthRange.h"

#include <osg/Geode>
#include <osg/Shape>
#include <osg/ShapeDrawable>
#include <osgViewer/GraphicsWindow>

#include <gtest/gtest.h>

namespace Kelvor {
namespace {

// A window object that never touches GL: enough to check who points at it.
osg::ref_ptr<osgViewer::GraphicsWindowEmbedded> offscreenWindow()
{
    return new osgViewer::GraphicsWindowEmbedded(0, 0, 320, 240);
}

osg::ref_ptr<osg::Geode> boxAt(osg::Vec3 const& centre, float size)
{
    osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    geode->addDrawable(new osg::ShapeDrawable(new osg::Box(centre, size)));
    return geode;
}

TEST(GISCameraTest, SharesTheMainViewAndDrawsAtTheFarEndOfTheDepthRange)
{
    osg::ref_ptr<osgViewer::GraphicsWindowEmbedded> window = offscreenWindow();
    osg::ref_ptr<CKVOSGCamera> main = new CKVOSGCamera;
    main->setGraphicsContext(window.get());
    main->setViewport(0, 0, 320, 240);

    osg::ref_ptr<CKVGISCamera> gis = new CKVGISCamera(main.get());
    // Drawn inside the main pass, over what it already drew.
    EXPECT_EQ(gis->getRenderOrder(), osg::Camera::NESTED_RENDER);
    EXPECT_EQ(gis->getClearMask(), 0u);
    EXPECT_EQ(gis->getGraphicsContext(), window.get());
    // One viewport for both: resizing the main camera resizes this one.
    EXPECT_EQ(gis->getViewport(), main->getViewport());

    osg::StateSet const* stateSet = gis->getStateSet();
    ASSERT_NE(stateSet, nullptr);
    auto const* range = dynamic_cast<DepthRange const*>(
        stateSet->getAttribute(static_cast<osg::StateAttribute::Type>(DepthRange::kType)));
    ASSERT_NE(range, nullptr);
    EXPECT_EQ(range->getZNear(), 1.0);
    EXPECT_EQ(range->getZFar(), 1.0);
    auto const* function = dynamic_cast<DepthFunc const*>(
        stateSet->getAttribute(static_cast<osg::StateAttribute::Type>(DepthFunc::kType)));
    ASSERT_NE(function, nullptr);
    EXPECT_EQ(function->getFunction(), static_cast<GLenum>(GL_LEQUAL));
    EXPECT_EQ(stateSet->getMode(GL_BLEND) & osg::StateAttribute::ON, osg::StateAttribute::ON);

    // Detach before the window goes, as the render context does.
    gis->setGraphicsContext(nullptr);
    main->setGraphicsContext(nullptr);
}

TEST(GISCameraTest, NeverWidensTheBoundOfWhatHoldsIt)
{
    osg::ref_ptr<CKVGISCamera> gis = new CKVGISCamera(nullptr);
    // Far-away background content below it changes nothing either.
    gis->addChild(boxAt(osg::Vec3(1000.0f, 0.0f, 0.0f), 10.0f).get());
    osg::BoundingSphere const own = gis->getBound();
    EXPECT_FALSE(own.valid());
    EXPECT_EQ(own.center(), osg::Vec3f(0.0f, 0.0f, 0.0f));
    EXPECT_EQ(own.radius(), -1.0f);

    osg::ref_ptr<osg::Group> parent = new osg::Group;
    parent->addChild(boxAt(osg::Vec3(0.0f, 0.0f, 0.0f), 2.0f).get());
    float const modelRadius = parent->getBound().radius();
    parent->addChild(gis.get());
    EXPECT_FLOAT_EQ(parent->getBound().radius(), modelRadius);
    EXPECT_EQ(parent->getBound().center(), osg::Vec3f(0.0f, 0.0f, 0.0f));
    // An invalid bound also keeps it out of view-frustum culling.
    EXPECT_FALSE(gis->isCullingActive());
}

TEST(GISCameraTest, TheRootHandsItsBackgroundGroupToTheGISCamera)
{
    osg::ref_ptr<CKVOSGCamera> main = new CKVOSGCamera;
    main->setViewport(0, 0, 64, 48);
    osg::ref_ptr<osg::FloatArray> cameraInfo = new osg::FloatArray(112);
    osg::ref_ptr<CKVPostProcessNode> root = new CKVPostProcessNode(main.get(), cameraInfo.get(), 0);
    kv_shared_ptr<CKVSceneNodeImp> background(new CKVSceneNodeImp);
    background->setName("KV_GISBackGround");
    ASSERT_TRUE(root->addSceneNode(background.get()));

    osg::ref_ptr<CKVGISCamera> first = new CKVGISCamera(main.get());
    root->setGISCamera(first.get());
    EXPECT_EQ(root->getGISCamera(), first.get());
    ASSERT_EQ(first->getNumChildren(), 1u);
    EXPECT_EQ(first->getChild(0), root->getGISGroup());
    EXPECT_TRUE(root->getGISGroup()->containsNode(background->getOSGNode()));

    // A replacement takes the group with it; the old camera keeps nothing.
    osg::ref_ptr<CKVGISCamera> second = new CKVGISCamera(main.get());
    root->setGISCamera(second.get());
    EXPECT_EQ(first->getNumChildren(), 0u);
    ASSERT_EQ(second->getNumChildren(), 1u);
    EXPECT_EQ(second->getChild(0), root->getGISGroup());
    root->setGISCamera(nullptr);
    EXPECT_EQ(second->getNumChildren(), 0u);
}

} // namespace
} // namespace Kelvor
