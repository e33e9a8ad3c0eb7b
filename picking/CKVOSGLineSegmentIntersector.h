#pragma once

#include <osgUtil/LineSegmentIntersector>

namespace Kelvor {

// A line segment intersector that knows buffer geometry: the extent that
// counts for a CKVOSGGeometry is the host's box of its vertex data (one
// instance's shape, in the frame the intersector is cloned into for that
// instance), and a geometry with culling switched off is tested along the
// whole segment. The instance a hit belongs to travels in the record's
// matrix (see CKVInstanceMatrix).
class CKVOSGLineSegmentIntersector : public osgUtil::LineSegmentIntersector
{
public:
    CKVOSGLineSegmentIntersector(osg::Vec3d const& start, osg::Vec3d const& end);
    CKVOSGLineSegmentIntersector(CoordinateFrame frame, double x, double y);
    CKVOSGLineSegmentIntersector(CoordinateFrame frame, osg::Vec3d const& start, osg::Vec3d const& end,
                                 CKVOSGLineSegmentIntersector* parent = nullptr);

    osgUtil::Intersector* clone(osgUtil::IntersectionVisitor& visitor) override;
    void intersect(osgUtil::IntersectionVisitor& visitor, osg::Drawable* drawable) override;
    using osgUtil::LineSegmentIntersector::intersect;
};

} // namespace Kelvor
