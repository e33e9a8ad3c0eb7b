#include "viewer/CKVAxisHandle.h"

#include "scene/CKVSceneNodeImp.h"

#include "TarnwickCommon/CKVRuntimeClass.h"
#include "TarnwickGeometry/KVMatrixConvert.h"
#include "TarnwickRender/CKVCamera.h"
#include "TarnwickRender/CKVMaterialState.h"
#include "TarnwickRender/CKVVisibilityState.h"

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

    CKVVisibilityState const* rootVisibility() const
    {
        CKVSceneNodeState const* state = mHandle->getRootNode()->getStateSet()->getState(CKVSceneNodeState::kVisibility);
        return state && state->isKindOf(CKVVisibilityState::desc()) ? static_cast<CKVVisibilityState const*>(state)
                                                                      : nullptr;
    }

    osg::ref_ptr<osgViewer::GraphicsWindowEmbedded> mWindow;
    kv_shared_ptr<CKVAxisHandle> mHandle;
};

TEST_F(AxisHandleTest, SlaveCameraIsAFixedOrthoViewOfTwoHundredPixels)
{
    osg::Camera* camera = mHandle->getCamera();
    ASSERT_NE(camera, nullptr);
    EXPECT_EQ(camera->getName(), "slave_axis");
    EXPECT_EQ(camera->getGraphicsContext(), mWindow.get());
    ASSERT_NE(camera->getViewport(), nullptr);
    EXPECT_EQ(camera->getViewport()->x(), 0);
    EXPECT_EQ(camera->getViewport()->y(), 0);
    EXPECT_EQ(camera->getViewport()->width(), 200);
    EXPECT_EQ(camera->getViewport()->height(), 200);
    EXPECT_FALSE(camera->getAllowEventFocus());
    EXPECT_EQ(camera->getClearMask(), 0u);
    EXPECT_EQ(camera->getReferenceFrame(), osg::Transform::ABSOLUTE_RF);
    EXPECT_EQ(camera->getProjectionResizePolicy(), osg::Camera::FIXED);
    double left = 0, right = 0, bottom = 0, top = 0, zNear = 0, zFar = 0;
    ASSERT_TRUE(camera->getProjectionMatrixAsOrtho(left, right, bottom, top, zNear, zFar));
    EXPECT_NEAR(left, -100.0, 1e-9);
    EXPECT_NEAR(right, 100.0, 1e-9);
    EXPECT_NEAR(bottom, -100.0, 1e-9);
    EXPECT_NEAR(top, 100.0, 1e-9);
    EXPECT_NEAR(zNear, 0.1, 1e-9);
    EXPECT_NEAR(zFar, 200.0, 1e-9);

    ASSERT_NE(mHandle->getRootNode(), nullptr);
    ASSERT_EQ(camera->getNumChildren(), 1u);
    EXPECT_EQ(camera->getChild(0), mHandle->getRootNode()->getOSGNode());
    EXPECT_FALSE(mHandle->initialize(mWindow.get())) << "a second initialisation";
}

TEST_F(AxisHandleTest, ArrowsAreShaftAndHeadInRedGreenBlueOrder)
{
    CKVSceneNodeImp* root = mHandle->getRootNode();
    ASSERT_EQ(root->getNumChildNode(), 6u);
    unsigned char const expected[3][3] = {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}};
    for (unsigned int i = 0; i < 6; ++i) {
        CKVSceneNode* node = root->getChildNode(i);
        ASSERT_TRUE(node->isKindOf(CKVSceneNodeImp::desc())) << i;
        EXPECT_EQ(node->getNumRenderObject(), 1u) << i;
        EXPECT_EQ(node->getProgramParam().getType(), CKVProgramParam::kSurface) << i;
        CKVSceneNodeState const* state = node->getStateSet()->getState(CKVSceneNodeState::kMaterial);
        ASSERT_TRUE(state && state->isKindOf(CKVMaterialState::desc())) << i;
        CKVBasicMaterial const* material = static_cast<CKVMaterialState const*>(state)->getMaterial();
        ASSERT_NE(material, nullptr) << i;
        unsigned char r = 0, g = 0, b = 0, a = 0;
        material->getRGBA(r, g, b, a);
        unsigned char const* rgb = expected[i / 2];
        EXPECT_EQ(r, rgb[0]) << i;
        EXPECT_EQ(g, rgb[1]) << i;
        EXPECT_EQ(b, rgb[2]) << i;
        EXPECT_EQ(a, 255) << i;
    }
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

TEST_F(AxisHandleTest, ResizeGivesAHundredPixelsWhateverTheSize)
{
    for (auto const& size : {std::make_pair(1280, 1024), std::make_pair(0, 0), std::make_pair(50, 30)}) {
        mHandle->resize(size.first, size.second);
        osg::Viewport const* viewport = mHandle->getCamera()->getViewport();
        EXPECT_EQ(viewport->x(), 0);
        EXPECT_EQ(viewport->y(), 0);
        EXPECT_EQ(viewport->width(), 100) << size.first;
        EXPECT_EQ(viewport->height(), 100) << size.first;
    }
}

TEST_F(AxisHandleTest, SetVisibleHidesAndShowsTheWholeHandle)
{
    EXPECT_EQ(rootVisibility(), nullptr) << "visible without any state";
    mHandle->setVisible(false);
    ASSERT_NE(rootVisibility(), nullptr);
    EXPECT_FALSE(rootVisibility()->getVisibility(CKVVisibilityState::kDisplay));
    mHandle->setVisible(true);
    ASSERT_NE(rootVisibility(), nullptr);
    EXPECT_TRUE(rootVisibility()->getVisibility(CKVVisibilityState::kDisplay));
    EXPECT_EQ(mHandle->getRootNode()->getStateSet()->getNumState(), 1u) << "one visibility state, replaced";
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

TEST(AxisHandleWithoutWindowTest, ModuleRegistersACreatableRecord)
{
    CKVRuntimeClass const* record = CKVRuntimeClass::find("CKVAxisHandle");
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record, CKVAxisHandle::desc());
    EXPECT_EQ(record->base(), CKVSharedObject::desc());
    CKVObject* object = record->createObject();
    ASSERT_NE(object, nullptr);
    ASSERT_TRUE(object->isKindOf(CKVAxisHandle::desc()));
    kv_shared_ptr<CKVAxisHandle> handle(static_cast<CKVAxisHandle*>(object));
    EXPECT_EQ(handle->getCamera(), nullptr);
}

} // namespace
} // namespace Kelvor
