#pragma once

#include <osgUtil/PolytopeIntersector>

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
// Records are gathered compactly and put in order once, when they are first
// read: a selection over thousands of instances finds hundreds of thousands
// of primitives. A hit keeps its depth, primitive and centre; what all hits
// of one drawable of one instance share (path, drawable, matrix, instance)
// is kept once, as a frame, and paths are shared between frames. The full
// records with their clipped points are made only for those who ask for
// them. The order and the records kept are an ordered set's: nearest first,
// and of records that compare equal only the first one found.
class CKVOSGPolytopeIntersector : public osgUtil::PolytopeIntersector
{
public:
    struct Intersection : public osgUtil::PolytopeIntersector::Intersection
    {
        unsigned int instanceIndex = 0;

        bool operator<(Intersection const& other) const;
    };
    typedef std::vector<Intersection> Intersections;

    // What the hits of one drawable of one instance share.
    struct Frame
    {
        unsigned int path = 0;
        osg::ref_ptr<osg::Drawable> drawable;
        osg::ref_ptr<osg::RefMatrix> matrix;
        unsigned int instanceIndex = 0;
    };
    // One primitive with some part inside.
    struct Hit
    {
        double distance = 0.0;
        Vec3_type localPoint;
        unsigned int primitiveIndex = 0;
        unsigned int frame = 0;
    };
    typedef std::vector<Hit> Hits;

    explicit CKVOSGPolytopeIntersector(osg::Polytope const& polytope);
    CKVOSGPolytopeIntersector(CoordinateFrame frame, osg::Polytope const& polytope);
    // The window-frame box of an area selection (see the base constructor).
    CKVOSGPolytopeIntersector(CoordinateFrame frame, double xMin, double yMin, double xMax, double yMax);

    osgUtil::Intersector* clone(osgUtil::IntersectionVisitor& visitor) override;
    void intersect(osgUtil::IntersectionVisitor& visitor, osg::Drawable* drawable) override;
    void reset() override;
    bool containsIntersections() override;

    // Keep each hit's clipped points and farthest depth for
    // getIntersections() (on by default; a selection needs neither). Set
    // before the query.
    void setKeepsPoints(bool keep) { mKeepsPoints = keep; }
    bool keepsPoints() const { return root().mKeepsPoints; }

    // The hits of the query, nearest to the reference plane first; a clone
    // answers with its parent's.
    Hits const& getHits();
    Frame const& frameOf(Hit const& hit) const { return root().mFrames[hit.frame]; }
    std::size_t getFrameCount() const { return root().mFrames.size(); }
    osg::NodePath const& pathOf(Hit const& hit) const { return root().mPaths[frameOf(hit).path]; }
    // Whether two hits belong to the same drawable of the same instance
    // reached along the same path.
    bool sameInstance(Hit const& a, Hit const& b) const;

    // The same as full records.
    Intersections& getIntersections();

    // The frame of the hits about to be added, made from the visitor's
    // path and matrix.
    unsigned int addFrame(osgUtil::IntersectionVisitor& visitor, osg::Drawable* drawable,
                          unsigned int instanceIndex);
    // `points` is read when points are kept.
    void addHit(Hit const& hit, double maxDistance, Vec3_type const* points, unsigned int count);

private:
    struct Points
    {
        double maxDistance = 0.0;
        unsigned int count = 0;
        Vec3_type points[osgUtil::PolytopeIntersector::Intersection::MaxNumIntesectionPoints];
    };

    CKVOSGPolytopeIntersector& root();
    CKVOSGPolytopeIntersector const& root() const;
    void putInOrder();
    bool frameLess(unsigned int a, unsigned int b) const;

    std::vector<osg::NodePath> mPaths;
    std::vector<Frame> mFrames;
    // The first mOrdered hits are in order; the rest as found.
    Hits mHits;
    std::size_t mOrdered = 0;
    std::vector<Points> mPoints;
    bool mKeepsPoints = true;
    Intersections mIntersections;
    bool mIntersectionsCurrent = true;
};

} // namespace Kelvor
