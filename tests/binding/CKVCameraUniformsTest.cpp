#include "binding/CKVCameraUniforms.h"
#include "binding/CKVUniformBlock.h"

#include "TarnwickRender/CKVCamera.h"

#include <gtest/gtest.h>

namespace Kelvor {
namespace {

TEST(CKVCameraUniformsTest, FixedProjectionKeepsAngleAndAspectWithFixedPlanes)
{
    osg::Matrixd const projection = osg::Matrixd::perspective(45.0, 1.5, 3.0, 70.0);
    osg::Matrixf fixed;
    ASSERT_TRUE(CKVCameraUniforms::fixedProjection(projection, fixed));
    double fovy = 0.0, aspect = 0.0, zNear = 0.0, zFar = 0.0;
    ASSERT_TRUE(osg::Matrixd(fixed).getPerspective(fovy, aspect, zNear, zFar));
    EXPECT_NEAR(fovy, 45.0, 1e-3);
    EXPECT_NEAR(aspect, 1.5, 1e-4);
    EXPECT_NEAR(zNear, CKVCameraUniforms::kFixedNear, 1e-4);
    // A float matrix keeps the far plane only roughly at a ratio of 10^7,
    // but far beyond the scene's own far plane.
    EXPECT_GT(zFar, 0.5 * CKVCameraUniforms::kFixedFar);

    osg::Matrixf untouched(osg::Matrixf::scale(2.0f, 2.0f, 2.0f));
    osg::Matrixf const before = untouched;
    EXPECT_FALSE(CKVCameraUniforms::fixedProjection(osg::Matrixd::ortho(-1, 1, -1, 1, 1, 10), untouched));
    EXPECT_EQ(untouched, before);
}

TEST(CKVCameraUniformsTest, ScaleOnlyViewDropsTranslation)
{
    osg::Matrixd const view =
        osg::Matrixd::lookAt(osg::Vec3d(10.0, -20.0, 5.0), osg::Vec3d(0.0, 0.0, 0.0), osg::Vec3d(0.0, 0.0, 1.0));
    osg::Matrixd const rotation(CKVCameraUniforms::scaleOnlyView(view));
    EXPECT_NEAR(rotation.getTrans().length(), 0.0, 1e-6);
    // The same directions as the view: a direction is carried alike.
    osg::Vec3d const direction(0.3, 0.4, 0.5);
    osg::Vec3d const expected = osg::Matrixd::transform3x3(direction, view);
    osg::Vec3d const got = osg::Matrixd::transform3x3(direction, rotation);
    EXPECT_NEAR((expected - got).length(), 0.0, 1e-5);
}

TEST(CKVCameraUniformsTest, OrthographicCaptureLooksFromHighAbove)
{
    CKVCamera camera;
    camera.setLookAt(CKVPoint3D(3.0, 4.0, 5.0), CKVPoint3D(0.0, 0.0, 0.0), CKVVector3D(0.0, 0.0, 1.0));
    EXPECT_EQ(CKVCameraUniforms::capturePosition(camera), osg::Vec3f(3.0f, 4.0f, 5.0f));
    camera.setProjectMode(CKVCamera::kOrthographic);
    EXPECT_EQ(CKVCameraUniforms::capturePosition(camera), osg::Vec3f(3.0f, 4.0f, 200000.0f));
    EXPECT_EQ(CKVCameraUniforms::position(camera), osg::Vec3f(3.0f, 4.0f, 5.0f));
}

TEST(CKVUniformBlockTest, WritesInPlaceAndRefusesWhatDoesNotFit)
{
    CKVUniformBlock block(2, 16);
    ASSERT_TRUE(block.valid());
    EXPECT_EQ(block.getBinding()->getIndex(), 2u);
    EXPECT_EQ(block.getBinding()->getSize(), 64);
    EXPECT_NE(block.getArray()->getBufferObject(), nullptr);

    unsigned int const modified = block.getArray()->getModifiedCount();
    float const rgb[3] = {0.1f, 0.2f, 0.3f};
    EXPECT_TRUE(block.set(13, rgb, 3));
    EXPECT_GT(block.getArray()->getModifiedCount(), modified);
    EXPECT_FLOAT_EQ(block.get(15), 0.3f);

    EXPECT_FALSE(block.set(14, rgb, 3));
    EXPECT_FALSE(block.set(~0u, rgb, 3));
    EXPECT_FLOAT_EQ(block.get(14), 0.2f);
    EXPECT_FLOAT_EQ(block.get(16), 0.0f);
}

} // namespace
} // namespace Kelvor
