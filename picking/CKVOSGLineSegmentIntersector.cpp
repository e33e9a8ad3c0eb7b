#include "picking/CKVOSGLineSegmentIntersector.h"

#include "scene/CKVOSGGeometry.h"


#include <cstring>

namespace Kelvor {

CKVOSGLineSegmentIntersector::CKVOSGLineSegmentIntersector(osg::Vec3d const& start, osg::Vec3d const& end)
    : osgUtil::LineSegmentIntersector(start, end)
{
}

CKVOSGLineSegmentIntersector::CKVOSGLineSegmentIntersector(CoordinateFrame frame, double x, double y)
    : osgUtil::LineSegmentIntersector(frame, x, y)
{
}

CKVOSGLineSegmentIntersector::CKVOSGLineSegmentIntersector(CoordinateFrame frame, osg::Vec3d const& start,
                                                           osg::Vec3d const& end,
                                                           CKVOSGLineSegmentIntersector* parent)
    : osgUtil::LineSegmentIntersector(frame, start, end, parent)
{
}

osgUtil::Intersector* CKVOSGLineSegmentIntersector::clone(osgUtil::IntersectionVisitor& visitor)
{
    osg::Vec3d start = _start;
    osg::Vec3d end = _end;
    if (_coordinateFrame != MODEL || visitor.getModelMatrix())
    {
        osg::Matrix const toLocal = getTransformation(visitor, _coordinateFrame);
        start = start * toLocal;
        end = end * toLocal;
    }
    // Hits go to the list of the intersector that the query was made with.
    osg::ref_ptr<CKVOSGLineSegmentIntersector> copy =
        new CKVOSGLineSegmentIntersector(MODEL, start, end, _parent ? static_cast<CKVOSGLineSegmentIntersector*>(_parent) : this);
    copy->setIntersectionLimit(getIntersectionLimit());
    copy->setPrecisionHint(getPrecisionHint());
    return copy.release();
}

void CKVOSGLineSegmentIntersector::intersect(osgUtil::IntersectionVisitor& visitor, osg::Drawable* drawable)
{
    if (std::strcmp(drawable->className(), CKVOSGGeometry::s_className) != 0)
    {
        osgUtil::LineSegmentIntersector::intersect(visitor, drawable);
        return;
    }
    if (getIntersectionLimit() == LIMIT_ONE && containsIntersections())
        return;

    osg::BoundingBox const box = static_cast<CKVOSGGeometry*>(drawable)->getVertexBound();
    osg::Vec3d start = _start;
    osg::Vec3d end = _end;
    if (drawable->getCullingActive() && !intersectAndClip(start, end, box))
        return;
    if (visitor.getDoDummyTraversal())
        return;
    osgUtil::LineSegmentIntersector::intersect(visitor, drawable, start, end);
}

} // namespace Kelvor
