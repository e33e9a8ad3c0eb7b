#include "PickingTestScene.h"

#include "picking/CKVOSGIntersectionVisitor.h"
#include "picking/CKVOSGPolytopeIntersector.h"
#include "picking/CKVScenePicker.h"

#include "TarnwickRender/CKVSelectionResult.h"

#include <osg/Geometry>
#include <osg/Group>
#include <osg/KdTree>

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace Kelvor {
namespace {

class AreaSelectTest : public ::testing::Test
{
protected:
    // Selects over the world rectangle with corners (x1, y1) and (x2, y2).
    std::vector<CKVSelectionResult> select(double x1, double y1, double x2, double y2, unsigned int maxCount = 10)
    {
        std::vector<CKVSelectionResult> results;
        bool const found = CKVScenePicker(mScene.camera())
                               .select(PickingScene::pixelOver(x1, y1), PickingScene::pixelOver(x2, y2), maxCount,
                                       results);
        EXPECT_EQ(found, !results.empty());
        return results;
    }

    static std::vector<CKVDrawable const*> drawablesOf(std::vector<CKVSelectionResult> const& results)
    {
        std::vector<CKVDrawable const*> drawables;
        for (CKVSelectionResult const& result : results)
            drawables.push_back(result.getDrawable());
        return drawables;
    }

    PickingScene mScene;
    kv_shared_ptr<CKVDrawable> mA = new CKVDrawable(1);
    kv_shared_ptr<CKVDrawable> mB = new CKVDrawable(2);
    kv_shared_ptr<CKVDrawable> mC = new CKVDrawable(3);
};

TEST_F(AreaSelectTest, DragDirectionDoesNotMatterAndMaxCountBoundsTheResult)
{
    mScene.add({PickingScene::square(-4, 0, 2, 1.0, mA.get()), PickingScene::square(4, 0, 1, 1.0, mB.get())});
    mScene.add({PickingScene::square(0, 6, 0, 1.0, mC.get())});

    std::vector<CKVSelectionResult> const forward = select(-6, 2, 6, -2);
    EXPECT_EQ(drawablesOf(forward), (std::vector<CKVDrawable const*>{mA.get(), mB.get()})) << "nearest first";
    std::vector<CKVSelectionResult> const backward = select(6, -2, -6, 2);
    ASSERT_EQ(drawablesOf(backward), drawablesOf(forward));
    for (std::size_t i = 0; i < forward.size(); ++i)
    {
        EXPECT_DOUBLE_EQ(backward[i].getPosition().x, forward[i].getPosition().x);
        EXPECT_DOUBLE_EQ(backward[i].getPosition().y, forward[i].getPosition().y);
    }
    // The position is the centre of the part of the hit primitive inside.
    EXPECT_NEAR(forward[0].getPosition().z, 2.0, 1e-4);
    EXPECT_LT(forward[0].getPosition().x, -3.0);

    EXPECT_EQ(drawablesOf(select(-6, 2, 6, -2, 1)), (std::vector<CKVDrawable const*>{mA.get()}));
    EXPECT_TRUE(select(-2, 3, 2, 2).empty()) << "between the squares";

    std::vector<CKVSelectionResult> none{CKVSelectionResult()};
    EXPECT_FALSE(CKVScenePicker(mScene.camera()).select(PickingScene::pixelOver(-6, 2), PickingScene::pixelOver(6, -2), 0, none));
    EXPECT_FALSE(CKVScenePicker(nullptr).select(PickingScene::pixelOver(-6, 2), PickingScene::pixelOver(6, -2), 5, none));
}

// Hits are listed in depth order; a drawable is merged only with the entry
// right before it.
TEST_F(AreaSelectTest, DrawableReturningAfterAnotherIsListedAgain)
{
    mScene.add({PickingScene::square(0, 0, 3, 1.0, mA.get())});
    mScene.add({PickingScene::square(0, 0, 2, 1.0, mB.get())});
    mScene.add({PickingScene::square(0, 0, 1, 1.0, mA.get())});
    EXPECT_EQ(drawablesOf(select(-2, 2, 2, -2)), (std::vector<CKVDrawable const*>{mA.get(), mB.get(), mA.get()}));
}

TEST_F(AreaSelectTest, ZeroAreaRectangleFindsWhatItLiesOn)
{
    mScene.add({PickingScene::square(0, 0, 0, 1.0, mA.get())});
    EXPECT_EQ(drawablesOf(select(0.3, 0.3, 0.3, 0.3)), (std::vector<CKVDrawable const*>{mA.get()}));
    EXPECT_TRUE(select(3, 3, 3, 3).empty());
}

// Instances of one geometry side by side at one depth hit the same
// primitive at the same distance; each must still count.
TEST_F(AreaSelectTest, InstancesAtTheSameDepthAreEachSelected)
{
    mScene.add({PickingScene::square(0, 0, 0, 1.0, nullptr), PickingScene::instanceAt(-5, 0, 0, mA.get()),
                PickingScene::instanceAt(0, 0, 0, mB.get()), PickingScene::instanceAt(5, 0, 0, mC.get())});
    std::vector<CKVSelectionResult> const results = select(-8, 2, 8, -2);
    std::vector<CKVDrawable const*> const drawables = drawablesOf(results);
    EXPECT_EQ(std::set<CKVDrawable const*>(drawables.begin(), drawables.end()),
              (std::set<CKVDrawable const*>{mA.get(), mB.get(), mC.get()}));
    for (CKVSelectionResult const& result : results)
        EXPECT_NE(result.getInstanceIndex(), CKVSelectionResult::kNoInstance);

    EXPECT_EQ(drawablesOf(select(4, 2, 8, -2)), (std::vector<CKVDrawable const*>{mC.get()}));
}

osg::ref_ptr<osg::Geometry> triangle(osg::Vec3 const& a, osg::Vec3 const& b, osg::Vec3 const& c)
{
    osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
    osg::ref_ptr<osg::Vec3Array> vertices = new osg::Vec3Array;
    vertices->push_back(a);
    vertices->push_back(b);
    vertices->push_back(c);
    geometry->setVertexArray(vertices.get());
    geometry->addPrimitiveSet(new osg::DrawArrays(GL_TRIANGLES, 0, 3));
    return geometry;
}

// Runs a model-frame polytope over `node` and returns the records.
CKVOSGPolytopeIntersector::Intersections intersect(osg::Node& node, osg::Polytope const& polytope,
                                                   bool useKdTrees = false, bool doubles = false)
{
    osg::ref_ptr<CKVOSGPolytopeIntersector> intersector = new CKVOSGPolytopeIntersector(polytope);
    if (doubles)
        intersector->setPrecisionHint(osgUtil::Intersector::USE_DOUBLE_CALCULATIONS);
    CKVOSGIntersectionVisitor visitor(intersector.get());
    visitor.setUseKdTreeWhenAvailable(useKdTrees);
    node.accept(visitor);
    return intersector->getIntersections();
}

// The triangle's first vertex lies outside: its closing edge must be cut by
// the second plane as well, or a corner of the clipped polygon goes missing.
TEST(PolytopeClipTest, TriangleStraddlingPlanesIsClippedToItsInsidePart)
{
    osg::ref_ptr<osg::Geometry> geometry = triangle(osg::Vec3(-1, 0, 0), osg::Vec3(1, 0, 0), osg::Vec3(1, 1, 0));
    geometry->setCullingActive(false);
    osg::Polytope polytope;
    polytope.add(osg::Plane(1, 0, 0, 0));     // x >= 0
    polytope.add(osg::Plane(0, 1, 0, -0.25)); // y >= 0.25

    for (bool doubles : {false, true})
    {
        CKVOSGPolytopeIntersector::Intersections const hits = intersect(*geometry, polytope, false, doubles);
        ASSERT_EQ(hits.size(), 1u);
        CKVOSGPolytopeIntersector::Intersection const& hit = *hits.begin();
        // Inside part: (1, 0.25), (1, 1), (0, 0.5), (0, 0.25).
        ASSERT_EQ(hit.numIntersectionPoints, 4u);
        for (unsigned int i = 0; i < hit.numIntersectionPoints; ++i)
        {
            EXPECT_GE(hit.intersectionPoints[i].x(), -1e-6);
            EXPECT_GE(hit.intersectionPoints[i].y(), 0.25 - 1e-6);
        }
        EXPECT_NEAR(hit.localIntersectionPoint.x(), 0.5, 1e-6);
        EXPECT_NEAR(hit.localIntersectionPoint.y(), 0.5, 1e-6);
        EXPECT_EQ(hit.primitiveIndex, 0u);
        EXPECT_EQ(hit.drawable.get(), geometry.get());
    }

    osg::Polytope beyond;
    beyond.add(osg::Plane(1, 0, 0, -1.5)); // x >= 1.5
    EXPECT_TRUE(intersect(*geometry, beyond).empty());
}

// Enough hits for the bulk ordering, most of them at a depth that others
// share, and every primitive reached along two paths: the records come out
// strictly in the record order (depth, primitive, path), each exactly once.
TEST(PolytopeClipTest, ManyHitsComeOutInRecordOrderEachOnce)
{
    constexpr int kTriangles = 3000;
    constexpr int kDepths = 7;
    osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
    osg::ref_ptr<osg::Vec3Array> vertices = new osg::Vec3Array;
    for (int i = 0; i < kTriangles; ++i)
    {
        float const x = 0.001f * float(i);
        float const z = float(i % kDepths) - 3.0f;
        vertices->push_back(osg::Vec3(x, 0, z));
        vertices->push_back(osg::Vec3(x + 0.5f, 0, z));
        vertices->push_back(osg::Vec3(x, 1, z));
    }
    geometry->setVertexArray(vertices.get());
    geometry->addPrimitiveSet(new osg::DrawArrays(GL_TRIANGLES, 0, GLsizei(vertices->size())));
    osg::ref_ptr<osg::Group> root = new osg::Group;
    for (int path = 0; path < 2; ++path)
    {
        osg::ref_ptr<osg::Group> parent = new osg::Group;
        parent->addChild(geometry.get());
        root->addChild(parent.get());
    }
    osg::Polytope polytope;
    polytope.add(osg::Plane(1, 0, 0, 1));   // x >= -1
    polytope.add(osg::Plane(-1, 0, 0, 10)); // x <= 10
    polytope.add(osg::Plane(0, 0, 1, 10));  // z >= -10

    for (bool doubles : {false, true})
    {
        CKVOSGPolytopeIntersector::Intersections const hits = intersect(*root, polytope, false, doubles);
        ASSERT_EQ(hits.size(), std::size_t(2 * kTriangles));
        std::size_t outOfOrder = 0;
        for (std::size_t i = 1; i < hits.size(); ++i)
            outOfOrder += (hits[i - 1] < hits[i]) ? 0 : 1;
        EXPECT_EQ(outOfOrder, 0u);
        EXPECT_EQ(hits.front().distance, hits[1].distance) << "depths must be shared for the test to mean something";
    }
}

TEST(PolytopeClipTest, KdTreeWalkFindsTheSamePrimitivesAndWarnsAboutOddSizes)
{
    osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
    osg::ref_ptr<osg::Vec3Array> vertices = new osg::Vec3Array;
    for (int i = 0; i < 8; ++i)
    {
        vertices->push_back(osg::Vec3(float(i), 0, 0));
        vertices->push_back(osg::Vec3(float(i) + 0.5f, 0, 0));
        vertices->push_back(osg::Vec3(float(i), 1, 0));
    }
    geometry->setVertexArray(vertices.get());
    geometry->addPrimitiveSet(new osg::DrawArrays(GL_TRIANGLES, 0, GLsizei(vertices->size())));
    osg::Polytope polytope;
    polytope.add(osg::Plane(1, 0, 0, -2.9)); // x >= 2.9
    polytope.add(osg::Plane(-1, 0, 0, 5.2)); // x <= 5.2

    auto indicesOf = [](CKVOSGPolytopeIntersector::Intersections const& hits) {
        std::vector<unsigned int> indices;
        for (auto const& hit : hits)
            indices.push_back(hit.primitiveIndex);
        std::sort(indices.begin(), indices.end());
        return indices;
    };
    std::vector<unsigned int> const plain = indicesOf(intersect(*geometry, polytope));
    EXPECT_EQ(plain, (std::vector<unsigned int>{3, 4, 5}));

    osg::ref_ptr<osg::KdTreeBuilder> builder = new osg::KdTreeBuilder;
    builder->_buildOptions._targetNumTrianglesPerLeaf = 2;
    geometry->accept(*builder);
    ASSERT_NE(dynamic_cast<osg::KdTree*>(geometry->getShape()), nullptr);
    EXPECT_EQ(indicesOf(intersect(*geometry, polytope, true)), plain);

    // A leaf entry of five vertices is not a primitive the tests know.
    osg::ref_ptr<osg::KdTree> odd = new osg::KdTree;
    odd->setVertices(vertices.get());
    odd->getVertexIndices() = {0, 5, 0, 1, 2, 3, 4};
    odd->getPrimitiveIndices() = {0};
    osg::KdTree::KdNode leaf(-1, 1);
    leaf.bb.expandBy(osg::Vec3(0, 0, 0));
    leaf.bb.expandBy(osg::Vec3(8, 1, 0));
    odd->addNode(leaf);
    geometry->setShape(odd.get());
    NotifyCaptureScope notices;
    EXPECT_TRUE(intersect(*geometry, polytope, true).empty());
    EXPECT_NE(notices.text().find("Warning: KdTree::intersect() encounted unsupported primitive size of 5"),
              std::string::npos)
        << notices.text();
}

} // namespace
} // namespace Kelvor
