#pragma once

#include "picking/CKVOSGPolytopeIntersector.h"

#include <osg/Node>
#include <osg/Vec3d>
#include <osgUtil/LineSegmentIntersector>

namespace Kelvor {

class CKVSelectionResult;

// Turns an intersection record into the host's answer: the host drawable
// that the hit belongs to and the hit's world position. The record's path is
// walked from the leaf towards the root; a buffer geometry answers through
// its logic buffers (by instance and primitive), a text label through its
// logic object, and anything else is passed over. A node with no host
// drawable (sky, water, helpers) therefore never hides what lies behind it:
// the caller moves on to the next record.
class CKVPickHitResolver
{
public:
    // What both kinds of record tell about a hit.
    struct Hit
    {
        osg::NodePath const* nodePath = nullptr;
        osg::Drawable* drawable = nullptr;
        osg::RefMatrixd const* matrix = nullptr;
        osg::Vec3d localPoint;
        unsigned int primitiveIndex = 0;
        unsigned int instanceIndex = 0;
    };

    // True, with `result` filled, when some node on the path has a host
    // drawable; `result` is untouched otherwise.
    static bool resolve(Hit const& hit, CKVSelectionResult& result);
    // Where a point of the hit's model frame lies in the world.
    static osg::Vec3d worldPoint(osg::Vec3d const& local, osg::RefMatrixd const* matrix);
    static bool resolve(osgUtil::LineSegmentIntersector::Intersection const& record, CKVSelectionResult& result);
    static bool resolve(CKVOSGPolytopeIntersector const& intersector, CKVOSGPolytopeIntersector::Hit const& hit,
                        CKVSelectionResult& result);
};

} // namespace Kelvor
