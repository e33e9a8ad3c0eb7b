#include "PickingTestScene.h"

#include "picking/CKVInstanceMatrix.h"
#include "picking/CKVOSGIntersectionVisitor.h"
#include "picking/CKVOSGLineSegmentIntersector.h"
#include "picking/CKVScenePicker.h"
#include "scene/CKVTextGeometryImp.h"

#include "TarnwickRender/CKVLogicRenderObject.h"
#include "TarnwickRender/CKVRenderCallback.h"
#include "TarnwickRender/CKVSelectionResult.h"

#include <osg/Geometry>

#include <gtest/gtest.h>

#include <stdexcept>

namespace Kelvor {
namespace {

class LinePickTest : public ::testing::Test
{
protected:
    bool pickAt(double x, double y, CKVSelectionResult& result) const
    {
        return CKVScenePicker(mScene.camera()).pick(PickingScene::pixelOver(x, y), result);
    }

    PickingScene mScene;
    kv_shared_ptr<CKVDrawable> mA = new CKVDrawable(1);
    kv_shared_ptr<CKVDrawable> mB = new CKVDrawable(2);
    kv_shared_ptr<CKVDrawable> mC = new CKVDrawable(3);
};

TEST_F(LinePickTest, PickReportsTheInstanceThatWasHitAndItsWorldPosition)
{
    mScene.add({PickingScene::square(0, 0, 0, 1.0, nullptr), PickingScene::instanceAt(-5, 0, 1, mA.get()),
                PickingScene::instanceAt(0, 0, 2, mB.get()), PickingScene::instanceAt(5, 3, 3, mC.get())});

    CKVSelectionResult result;
    ASSERT_TRUE(pickAt(5.4, 2.6, result));
    EXPECT_EQ(result.getDrawable(), mC.get());
    EXPECT_EQ(result.getInstanceIndex(), 2u);
    EXPECT_NEAR(result.getPosition().x, 5.4, 1e-6);
    EXPECT_NEAR(result.getPosition().y, 2.6, 1e-6);
    EXPECT_NEAR(result.getPosition().z, 3.0, 1e-6) << "on the instance's own plane";

    ASSERT_TRUE(pickAt(-5.5, 0.5, result));
    EXPECT_EQ(result.getDrawable(), mA.get());
    EXPECT_EQ(result.getInstanceIndex(), 0u);

    // Between the instances lies nothing, even inside the geometry's bound.
    CKVSelectionResult untouched;
    EXPECT_FALSE(pickAt(2.5, 0, untouched));
    EXPECT_FALSE(untouched.valid());
}

TEST_F(LinePickTest, SegmentIntersectionReturnsTheNearestHitAlongTheSegment)
{
    mScene.add({PickingScene::square(0, 0, 0, 1.0, mA.get())});
    mScene.add({PickingScene::square(0, 0, 4, 1.0, mB.get())});

    CKVScenePicker const picker(mScene.camera());
    CKVSelectionResult result;
    ASSERT_TRUE(picker.intersect(CKVPoint3D(0.5, 0.5, 10), CKVPoint3D(0.5, 0.5, -10), result));
    EXPECT_EQ(result.getDrawable(), mB.get());
    EXPECT_NEAR(result.getPosition().z, 4.0, 1e-6);
    ASSERT_TRUE(picker.intersect(CKVPoint3D(0.5, 0.5, -10), CKVPoint3D(0.5, 0.5, 10), result));
    EXPECT_EQ(result.getDrawable(), mA.get()) << "from below the lower square comes first";
    EXPECT_FALSE(picker.intersect(CKVPoint3D(0.5, 0.5, 10), CKVPoint3D(0.5, 0.5, 5), result)) << "ends above both";
}

// The host's box of its vertex data decides which segments reach the
// triangles; with culling off the whole segment is tested.
TEST_F(LinePickTest, HostVertexBoxRejectsUnlessCullingIsOff)
{
    CKVBufferGeometryImp* host = mScene.add({PickingScene::square(0, 0, 0, 1.0, mA.get())});
    CKVOSGGeometry* geometry = host->getOSGGeometry();
    // The drawable's vertices grow to 3 units without the host knowing.
    osg::Vec3Array* vertices = static_cast<osg::Vec3Array*>(geometry->getVertexArray());
    for (osg::Vec3& v : *vertices)
        v *= 3.0f;
    vertices->dirty();
    geometry->dirtyBound();

    CKVSelectionResult result;
    EXPECT_TRUE(pickAt(0.5, 0.5, result)) << "inside the host's box";
    EXPECT_FALSE(pickAt(2.5, 2.5, result)) << "on a triangle, but outside the host's box";

    geometry->setCullingActive(false);
    ASSERT_TRUE(pickAt(2.5, 2.5, result));
    EXPECT_EQ(result.getDrawable(), mA.get());
    EXPECT_NEAR(result.getPosition().x, 2.5, 1e-6);
}

TEST_F(LinePickTest, HitWithoutAHostDrawableFallsThroughToTheNextHit)
{
    mScene.add({PickingScene::square(0, 0, 0, 1.0, mA.get())});
    // A plain geometry in front (sky, water, helpers have no host drawable).
    osg::ref_ptr<osg::Geometry> plain = new osg::Geometry;
    osg::ref_ptr<osg::Vec3Array> corners = new osg::Vec3Array;
    corners->push_back(osg::Vec3(-2, -2, 5));
    corners->push_back(osg::Vec3(2, -2, 5));
    corners->push_back(osg::Vec3(2, 2, 5));
    corners->push_back(osg::Vec3(-2, 2, 5));
    plain->setVertexArray(corners.get());
    plain->addPrimitiveSet(new osg::DrawArrays(GL_QUADS, 0, 4));
    mScene.camera()->addChild(plain.get());
    // And a buffer geometry whose parts have no drawable, in between.
    mScene.add({PickingScene::square(0, 0, 3, 1.5, nullptr)});

    CKVSelectionResult result;
    ASSERT_TRUE(pickAt(0.2, 0.2, result));
    EXPECT_EQ(result.getDrawable(), mA.get());
    EXPECT_NEAR(result.getPosition().z, 0.0, 1e-6);
    EXPECT_FALSE(pickAt(1.8, 1.8, result)) << "only drawables without a host object there";
}

TEST_F(LinePickTest, TextLabelInFrontResolvesToTheLabel)
{
    mScene.add({PickingScene::square(0, 0, 0, 4.0, mA.get())});
    CKVTextGeometry* made = CKVRenderCallback::createTextGeometry();
    ASSERT_TRUE(made && made->isKindOf(CKVTextGeometryImp::desc()));
    kv_shared_ptr<CKVTextGeometryImp> text(static_cast<CKVTextGeometryImp*>(made));
    text->setFontSize(2.0f);
    text->setPosition(CKVPoint3D(0, 0, 2));
    text->setText(L"H");
    text->setLogicObject(new CKVLogicRenderObject(mB.get()));
    mScene.camera()->addChild(text->getOSGText());

    osg::BoundingBox const box = text->getOSGText()->getBoundingBox();
    ASSERT_TRUE(box.valid());
    CKVSelectionResult result;
    ASSERT_TRUE(pickAt(box.center().x(), box.center().y(), result));
    EXPECT_EQ(result.getDrawable(), mB.get());
    EXPECT_NEAR(result.getPosition().z, 2.0, 1e-4);

    // Without its logic object the label no longer hides the square.
    text->setLogicObject(nullptr);
    ASSERT_TRUE(pickAt(box.center().x(), box.center().y(), result));
    EXPECT_EQ(result.getDrawable(), mA.get());
}

TEST_F(LinePickTest, BrokenInstanceRowsThrowOutOfTheQuery)
{
    CKVBufferGeometryImp* host = mScene.add(
        {PickingScene::square(0, 0, 0, 1.0, nullptr), PickingScene::instanceAt(-5, 0, 0, mA.get()),
         PickingScene::instanceAt(5, 0, 0, mB.get())});
    static_cast<osg::Vec4Array*>(host->getOSGGeometry()->getInstanceMatrixRow(3))->resize(1);

    // The command's dispatch turns it into a failed query.
    CKVSelectionResult result;
    EXPECT_THROW(pickAt(5, 0, result), std::out_of_range);
}

TEST_F(LinePickTest, QueriesFailWithoutCameraOrViewport)
{
    mScene.add({PickingScene::square(0, 0, 0, 1.0, mA.get())});
    CKVSelectionResult result;
    EXPECT_FALSE(CKVScenePicker(nullptr).pick(PickingScene::pixelOver(0, 0), result));
    EXPECT_FALSE(CKVScenePicker(nullptr).intersect(CKVPoint3D(0, 0, 10), CKVPoint3D(0, 0, -10), result));
    mScene.camera()->setViewport(nullptr);
    EXPECT_FALSE(CKVScenePicker(mScene.camera()).pick(PickingScene::pixelOver(0, 0), result));
    EXPECT_FALSE(result.valid());
}

// The instance index travels in the record's matrix and survives the sort
// of the records; the visitor's own index is 0 outside the loop.
TEST(LinePickRecordTest, RecordsCarryTheInstanceThroughTheirMatrix)
{
    PickingScene scene;
    kv_shared_ptr<CKVDrawable> drawable = new CKVDrawable(7);
    scene.add({PickingScene::square(0, 0, 0, 1.0, nullptr), PickingScene::instanceAt(0, 0, 1, drawable.get()),
               PickingScene::instanceAt(0, 0, 3, drawable.get()), PickingScene::instanceAt(0, 0, 2, drawable.get())});

    osg::ref_ptr<CKVOSGLineSegmentIntersector> intersector =
        new CKVOSGLineSegmentIntersector(osg::Vec3d(0.5, 0.2, 10), osg::Vec3d(0.5, 0.2, -10));
    CKVOSGIntersectionVisitor visitor(intersector.get());
    scene.camera()->accept(visitor);
    EXPECT_EQ(visitor.getCurrentInstanceIndex(), 0u);

    std::vector<unsigned int> order;
    for (auto const& record : intersector->getIntersections())
        order.push_back(CKVInstanceMatrix::instanceIndexOf(record.matrix.get()));
    EXPECT_EQ(order, (std::vector<unsigned int>{1, 2, 0})) << "nearest first: z 3, 2, 1";

    // The limit-one mode stops at the first hit.
    osg::ref_ptr<CKVOSGLineSegmentIntersector> once =
        new CKVOSGLineSegmentIntersector(osg::Vec3d(0.5, 0.2, 10), osg::Vec3d(0.5, 0.2, -10));
    once->setIntersectionLimit(osgUtil::Intersector::LIMIT_ONE);
    CKVOSGIntersectionVisitor onceVisitor(once.get());
    scene.camera()->accept(onceVisitor);
    EXPECT_EQ(once->getIntersections().size(), 1u);
}

} // namespace
} // namespace Kelvor
