#pragma once

#include <osgUtil/PolytopeIntersector>

#include <deque>
#include <vector>

namespace Kelvor {

// A polytope intersector that knows buffer geometry in the same two ways as
// CKVOSGLineSegmentIntersector: the host's vertex box stands for a
// CKVOSGGeometry's extent, and its instances are tried one by one by
// CKVOSGIntersectionVisitor. The primitive tests are our own
// (PolytopeIntersectorUtils::IntersectFunctor), since the stock ones are not
// exposed.
//
// The records are our own too. The stock record has no instance index, and
// the stock set orders by distance, primitive, path and drawable only: two
// instances of one geometry at the same depth would count as one hit and the
// second would be dropped. Our record adds the index and orders by it last.
//
// Records are gathered in a flat list and put in order once, when they are
// first read: a selection over thousands of instances makes hundreds of
// thousands of them, and an ordered set paid a cache miss per level of its
// tree for each. The order and the records kept are the set's: nearest
// first, and of records that compare equal only the first one found.
class CKVOSGPolytopeIntersector : public osgUtil::PolytopeIntersector
{
public:
    struct Intersection : public osgUtil::PolytopeIntersector::Intersection
    {
        unsigned int instanceIndex = 0;

        bool operator<(Intersection const& other) const;
    };
    typedef std::vector<Intersection> Intersections;

    explicit CKVOSGPolytopeIntersector(osg::Polytope const& polytope);
    CKVOSGPolytopeIntersector(CoordinateFrame frame, osg::Polytope const& polytope);
    // The window-frame box of an area selection (see the base constructor).
    CKVOSGPolytopeIntersector(CoordinateFrame frame, double xMin, double yMin, double xMax, double yMax);

    osgUtil::Intersector* clone(osgUtil::IntersectionVisitor& visitor) override;
    void intersect(osgUtil::IntersectionVisitor& visitor, osg::Drawable* drawable) override;
    void reset() override;
    bool containsIntersections() override;

    // The hits of the query, nearest to the reference plane first; a clone
    // answers with its parent's.
    Intersections& getIntersections();
    void insertIntersection(Intersection intersection);

private:
    CKVOSGPolytopeIntersector& root();
    void putInOrder();

    // In order, and what was found since, in the order found. A deque:
    // growing it moves nothing (the records cannot be moved cheaply).
    Intersections mIntersections;
    std::deque<Intersection> mFound;
};

} // namespace Kelvor
