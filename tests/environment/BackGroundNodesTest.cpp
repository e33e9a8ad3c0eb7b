// The helper nodes of full-screen and environment drawing must vanish from
// every bound: otherwise a full-screen triangle or sky cube would widen the
// scene's bound and the near/far range computed from it.
#include "environment/CBGGeode.h"
#include "environment/CBGGeometry.h"
#include "environment/CBGGroup.h"
#include "environment/CFullScreenTriangleGeometry.h"

#include <osg/Geode>
#include <osg/Group>
#include <osg/ShapeDrawable>

#include <gtest/gtest.h>

#include <string>

using namespace Kelvor;

namespace {

osg::ref_ptr<osg::Geode> unitBoxAt(osg::Vec3f const& centre)
{
    osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    geode->addDrawable(new osg::ShapeDrawable(new osg::Box(centre, 1.0f)));
    return geode;
}

// A triangle far away from the box, so that it would move the bound if it
// counted.
osg::ref_ptr<osg::Geometry> farTriangle(osg::Geometry* geometry)
{
    osg::ref_ptr<osg::Vec3Array> vertices = new osg::Vec3Array;
    vertices->push_back(osg::Vec3f(1000.0f, 0.0f, 0.0f));
    vertices->push_back(osg::Vec3f(1001.0f, 0.0f, 0.0f));
    vertices->push_back(osg::Vec3f(1000.0f, 1.0f, 0.0f));
    geometry->setVertexArray(vertices.get());
    geometry->addPrimitiveSet(new osg::DrawArrays(GL_TRIANGLES, 0, 3));
    return geometry;
}

} // namespace

TEST(BackGroundNodesTest, HelpersUnderAGroupLeaveItsBoundAsIfAbsent)
{
    osg::ref_ptr<osg::Group> plain = new osg::Group;
    plain->addChild(unitBoxAt(osg::Vec3f(2.0f, 3.0f, 4.0f)));
    osg::BoundingSphere const expected = plain->getBound();

    osg::ref_ptr<osg::Group> mixed = new osg::Group;
    mixed->addChild(unitBoxAt(osg::Vec3f(2.0f, 3.0f, 4.0f)));

    osg::ref_ptr<CBGGeode> geode = new CBGGeode;
    geode->addDrawable(farTriangle(new osg::Geometry));
    mixed->addChild(geode);

    osg::ref_ptr<CBGGroup> group = new CBGGroup;
    group->addChild(unitBoxAt(osg::Vec3f(-500.0f, 0.0f, 0.0f)));
    mixed->addChild(group);

    osg::ref_ptr<osg::Geode> holder = new osg::Geode;
    holder->addDrawable(farTriangle(new CBGGeometry));
    mixed->addChild(holder);

    osg::BoundingSphere const bound = mixed->getBound();
    EXPECT_NEAR(bound.center().x(), expected.center().x(), 1e-4);
    EXPECT_NEAR(bound.center().y(), expected.center().y(), 1e-4);
    EXPECT_NEAR(bound.center().z(), expected.center().z(), 1e-4);
    EXPECT_NEAR(bound.radius(), expected.radius(), 1e-4);

    // Each reports an invalid bound of its own and is never culled.
    EXPECT_FALSE(geode->getBound().valid());
    EXPECT_FALSE(group->getBound().valid());
    EXPECT_FALSE(holder->getBound().valid());
    EXPECT_FALSE(geode->getCullingActive());
    EXPECT_FALSE(group->getCullingActive());
}

TEST(BackGroundNodesTest, GeometryBoxIsInvertedWhateverItHolds)
{
    osg::ref_ptr<CBGGeometry> geometry = new CBGGeometry;
    farTriangle(geometry.get());
    osg::BoundingBox const box = geometry->getBoundingBox();
    EXPECT_FALSE(box.valid());
    EXPECT_FLOAT_EQ(box.xMin(), 3.402823e+38f);
    EXPECT_FLOAT_EQ(box.zMax(), -3.402823e+38f);
    EXPECT_FALSE(geometry->getCullingActive());
}

TEST(BackGroundNodesTest, ClassNamesAreThoseOtherCullCodeCompares)
{
    // Cull callbacks recognise these by name, not by cast.
    EXPECT_EQ(std::string(osg::ref_ptr<CBGGeode>(new CBGGeode)->className()), "CBGGeode");
    EXPECT_EQ(std::string(osg::ref_ptr<CBGGroup>(new CBGGroup)->className()), "CBGGroup");
    EXPECT_EQ(std::string(osg::ref_ptr<CBGGeometry>(new CBGGeometry)->className()), "CBGGeometry");
    osg::ref_ptr<CFullScreenTriangleGeometry> triangle = new CFullScreenTriangleGeometry;
    EXPECT_EQ(std::string(triangle->className()), "CFillScreenTriangleGeometry");
    EXPECT_FALSE(triangle->getBound().valid());
    EXPECT_EQ(triangle->getVertexArray(), nullptr);

    // A copy keeps the invalid bound: the callback comes with the class.
    osg::ref_ptr<osg::Object> copy = osg::ref_ptr<CBGGeode>(new CBGGeode)->clone(osg::CopyOp::SHALLOW_COPY);
    auto* geodeCopy = dynamic_cast<CBGGeode*>(copy.get());
    ASSERT_NE(geodeCopy, nullptr);
    geodeCopy->addDrawable(farTriangle(new osg::Geometry));
    EXPECT_FALSE(geodeCopy->getBound().valid());
}
