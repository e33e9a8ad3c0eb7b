#include "viewer/CKVAxisHandle.h"

#include "scene/CKVSceneNodeImp.h"

#include "TarnwickGeometry/KVMatrixConvert.h"
#include "TarnwickRender/CKVCamera.h"

#include <osgViewer/GraphicsWindow>

#include <gtest/gtest.h>

namespace Kelvor {
namespace {

// The handle on a window object that never touches GL.
class AxisHandleTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        mWindow = new osgViewer::GraphicsWindowEmbedded(0, 0, 640, 480);
        mHandle = new CKVAxisHandle;
        ASSERT_TRUE(mHandle->initialize(mWindow.get()));
    }
    void TearDown() override
    {
        if (mHandle.valid())
            mHandle->releaseGraphicsContext();
    }

    osg::ref_ptr<osgViewer::GraphicsWindowEmbedded> mWindow;
    kv_shared_ptr<CKVAxisHandle> mHandle;
};

TEST_F(AxisHandleTest, SlaveCameraDrawsTheHandleOnTheWindowAndInitializesOnce)
{
    osg::Camera* camera = mHandle->getCamera();
    ASSERT_NE(camera, nullptr);
    EXPECT_EQ(camera->getGraphicsContext(), mWindow.get());
    // The handle draws over the scene: clearing would wipe the picture.
    EXPECT_EQ(camera->getClearMask(), 0u);
    ASSERT_NE(mHandle->getRootNode(), nullptr);
    ASSERT_EQ(camera->getNumChildren(), 1u);
    EXPECT_EQ(camera->getChild(0), mHandle->getRootNode()->getOSGNode());
    EXPECT_FALSE(mHandle->initialize(mWindow.get())) << "a second initialisation";
}

TEST_F(AxisHandleTest, UpdateLooksAtTheOriginFromAHundredUnitsAlongTheCameraDirection)
{
    CKVCamera host;
    // Far away and off-centre: only the direction may count.
    host.setLookAt(CKVPoint3D(510.0, -390.0, 125.0), CKVPoint3D(10.0, 10.0, 5.0), CKVVector3D(0.0, 0.0, 1.0));
    mHandle->update(host);

    osg::Vec3d eye, centre, up;
    mHandle->getCamera()->getViewMatrixAsLookAt(eye, centre, up, 100.0);
    osg::Vec3d direction(500.0, -400.0, 120.0);
    direction.normalize();
    EXPECT_NEAR((eye - direction * 100.0).length(), 0.0, 1e-5);
    EXPECT_NEAR(centre.length(), 0.0, 1e-5) << "100 units ahead of the eye is the origin";
    // The host camera's own view, without its position, has the same up and
    // the same rotation.
    osg::Matrixd hostView = toOsgMatrix(host.getViewMatrix());
    osg::Matrixd handleView = mHandle->getCamera()->getViewMatrix();
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            EXPECT_NEAR(handleView(row, column), hostView(row, column), 1e-9) << row << "," << column;

    // A second camera replaces the first.
    host.setLookAt(CKVPoint3D(0.0, 0.0, 3.0), CKVPoint3D(0.0, 0.0, 0.0), CKVVector3D(0.0, 1.0, 0.0));
    mHandle->update(host);
    mHandle->getCamera()->getViewMatrixAsLookAt(eye, centre, up, 100.0);
    EXPECT_NEAR((eye - osg::Vec3d(0.0, 0.0, 100.0)).length(), 0.0, 1e-5);
    EXPECT_NEAR((up - osg::Vec3d(0.0, 1.0, 0.0)).length(), 0.0, 1e-5);
}

TEST(AxisHandleWithoutWindowTest, EveryOperationIsHarmlessBeforeInitialize)
{
    kv_shared_ptr<CKVAxisHandle> handle(new CKVAxisHandle);
    CKVCamera camera;
    handle->update(camera);
    handle->resize(640, 480);
    handle->setVisible(false);
    handle->setVisible(true);
    handle->releaseGraphicsContext();
    EXPECT_EQ(handle->getCamera(), nullptr);
    EXPECT_EQ(handle->getRootNode(), nullptr);
    EXPECT_FALSE(handle->initialize(nullptr));
    EXPECT_EQ(handle->getCamera(), nullptr);
}

} // namespace
} // namespace Kelvor
