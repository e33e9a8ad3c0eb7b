#include "viewer/CKVCullVisitor.h"
#include "viewer/CKVOSGCamera.h"
#include "viewer/CKVRenderer.h"
#include "viewer/CKVSceneView.h"
#include "viewer/CKVViewer.h"

#include <gtest/gtest.h>

#include <osg/Geode>
#include <osg/Geometry>
#include <osg/Group>
#include <osg/MatrixTransform>

#include <string>

namespace Kelvor {
namespace {

osgUtil::SceneView* sceneViewOf(osg::Camera* camera, unsigned int index)
{
    auto* renderer = dynamic_cast<osgViewer::Renderer*>(camera->getRenderer());
    return renderer ? renderer->getSceneView(index) : nullptr;
}

std::string classOf(osg::Object const* object)
{
    return object ? object->className() : "null";
}

std::string classOf(osg::NodeVisitor const* visitor)
{
    return visitor ? visitor->className() : "null";
}

// Draws nothing itself; counts how often the camera would have drawn.
struct CountingDrawCallback : osg::Camera::DrawCallback
{
    void operator()(osg::RenderInfo&) const override { ++count; }
    mutable int count = 0;
};

TEST(CKVViewer, EveryCameraCullsThroughTheBackendSceneViewAndVisitor)
{
    osg::ref_ptr<CKVViewer> viewer = new CKVViewer;
    osg::ref_ptr<CKVOSGCamera> mainCamera = new CKVOSGCamera;
    mainCamera->setName("MainCamera");
    viewer->setCamera(mainCamera.get());
    osg::ref_ptr<osg::Camera> slave = new osg::Camera;
    slave->setName("slave");
    viewer->addSlave(slave.get(), false);

    for (osg::Camera* camera : {static_cast<osg::Camera*>(mainCamera.get()), slave.get()}) {
        SCOPED_TRACE(camera->getName());
        ASSERT_NE(dynamic_cast<CKVRenderer*>(camera->getRenderer()), nullptr);
        ASSERT_NE(camera->getStats(), nullptr);
        EXPECT_EQ(camera->getStats()->getName(), camera->getName());

        osgUtil::SceneView* first = sceneViewOf(camera, 0);
        ASSERT_NE(first, nullptr);
        EXPECT_EQ(classOf(first), "CKVSceneView");
        EXPECT_EQ(first->getCamera(), camera);
        EXPECT_EQ(classOf(first->getCullVisitor()), "CKVCullVisitor");
        EXPECT_EQ(classOf(first->getCullVisitorLeft()), "CKVCullVisitor");
        EXPECT_EQ(classOf(first->getCullVisitorRight()), "CKVCullVisitor");
        // Left shares the central visitor's identity, right has its own.
        EXPECT_EQ(first->getCullVisitorLeft()->getIdentifier(), first->getCullVisitor()->getIdentifier());
        EXPECT_NE(first->getCullVisitorRight()->getIdentifier(), first->getCullVisitor()->getIdentifier());
        // No head light: our scenes carry no fixed-function lighting.
        EXPECT_EQ(first->getLightingMode(), osgUtil::SceneView::NO_SCENEVIEW_LIGHT);

        // The idle second scene view stays the stock one.
        EXPECT_EQ(classOf(sceneViewOf(camera, 1)), "SceneView");
    }
    // The slave's global state set is the master's, its own is secondary.
    EXPECT_EQ(sceneViewOf(slave.get(), 0)->getGlobalStateSet(), mainCamera->getStateSet());
    EXPECT_EQ(sceneViewOf(slave.get(), 0)->getSecondaryStateSet(), slave->getStateSet());

    viewer->removeSlave(0);

    // The camera a viewer starts with, before any setCamera, gets it too.
    EXPECT_NE(dynamic_cast<CKVRenderer*>(osg::ref_ptr<CKVViewer>(new CKVViewer)->getCamera()->getRenderer()), nullptr);
}

TEST(CKVSceneView, ReappliedDefaultsKeepTheBackendCullVisitor)
{
    osg::ref_ptr<CKVSceneView> sceneView = new CKVSceneView;
    sceneView->setDefaults();
    ASSERT_EQ(classOf(sceneView->getCullVisitor()), "CKVCullVisitor");
    EXPECT_EQ(sceneView->getCullVisitor()->getRenderStage(), sceneView->getRenderStage());

    osg::ref_ptr<osgUtil::CullVisitor> copy = sceneView->getCullVisitor()->clone();
    EXPECT_EQ(classOf(copy.get()), "CKVCullVisitor");
}

TEST(CKVViewer, FrameWithoutValidContextDrawsNothingAndClearsRedrawRequest)
{
    osg::ref_ptr<CKVViewer> viewer = new CKVViewer;
    osg::ref_ptr<CountingDrawCallback> draws = new CountingDrawCallback;
    viewer->getCamera()->setInitialDrawCallback(draws.get());
    viewer->setSceneData(new osg::Group);
    viewer->getViewerStats()->collectStats("update", true);

    viewer->requestRedraw();
    ASSERT_TRUE(viewer->getRequestRedraw());
    viewer->advance(1.0);
    viewer->renderingTraversals();

    EXPECT_EQ(draws->count, 0);
    EXPECT_FALSE(viewer->getRequestRedraw());
    // The frame still counts as a frame for the statistics.
    double taken = -1.0;
    EXPECT_TRUE(viewer->getViewerStats()->getAttribute(viewer->getFrameStamp()->getFrameNumber(),
                                                       "Rendering traversals time taken", taken));
    EXPECT_GE(taken, 0.0);
}

TEST(CKVViewer, SceneStatisticsCountUniqueAndInstancedParts)
{
    osg::ref_ptr<osg::Geometry> triangle = new osg::Geometry;
    osg::ref_ptr<osg::Vec3Array> vertices = new osg::Vec3Array;
    vertices->push_back(osg::Vec3(0, 0, 0));
    vertices->push_back(osg::Vec3(1, 0, 0));
    vertices->push_back(osg::Vec3(0, 1, 0));
    triangle->setVertexArray(vertices.get());
    triangle->addPrimitiveSet(new osg::DrawArrays(GL_TRIANGLES, 0, 3));
    triangle->getOrCreateStateSet();
    osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    geode->addDrawable(triangle.get());
    // One geode under two transforms: unique once, instanced twice.
    osg::ref_ptr<osg::Group> root = new osg::Group;
    for (int i = 0; i < 2; ++i) {
        osg::ref_ptr<osg::MatrixTransform> transform = new osg::MatrixTransform;
        transform->addChild(geode.get());
        root->addChild(transform.get());
    }

    osg::ref_ptr<CKVViewer> viewer = new CKVViewer;
    viewer->setSceneData(root.get());
    viewer->getViewerStats()->collectStats("scene", true);
    viewer->advance(1.0);
    viewer->renderingTraversals();

    unsigned int const frame = viewer->getFrameStamp()->getFrameNumber();
    auto attribute = [&](char const* name) {
        double value = -1.0;
        EXPECT_TRUE(viewer->getViewerStats()->getAttribute(frame, name, value)) << name;
        return value;
    };
    EXPECT_EQ(attribute("Number of unique Geode"), 1.0);
    EXPECT_EQ(attribute("Number of instanced Geode"), 2.0);
    EXPECT_EQ(attribute("Number of unique Transform"), 2.0);
    EXPECT_EQ(attribute("Number of unique Vertices"), 3.0);
    EXPECT_EQ(attribute("Number of instanced Vertices"), 6.0);
    EXPECT_EQ(attribute("Number of unique Primitives"), 1.0);
    EXPECT_EQ(attribute("Number of instanced Primitives"), 2.0);
    EXPECT_EQ(attribute("Number of unique StateSet"), 1.0);
    EXPECT_EQ(attribute("Number of instanced Stateset"), 2.0);
}

} // namespace
} // namespace Kelvor
