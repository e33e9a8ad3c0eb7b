#pragma once

#include <osg/Array>
#include <osg/Drawable>
#include <osg/Referenced>
#include <osg/ref_ptr>
#include <osgUtil/IntersectionVisitor>

namespace Kelvor {

class CKVOSGPolytopeIntersector;

namespace PolytopeIntersectorUtils {

// What the primitive tests of one drawable share: where hits go, the visitor
// whose path and matrix they record, and which primitives count.
struct Settings : public osg::Referenced
{
    CKVOSGPolytopeIntersector* mPolytopeIntersector = nullptr;
    osgUtil::IntersectionVisitor* mIntersectionVisitor = nullptr;
    osg::Drawable* mDrawable = nullptr;
    // Left empty: the tests take their vertices from the functor's calls.
    osg::ref_ptr<osg::Vec3Array> mVertices;
    // Stop after the first hit on the drawable.
    bool mLimitOneIntersection = false;
    // Bit 1 points, bit 2 lines, bit 4 triangles (and quads).
    unsigned int mPrimitiveMask = 7;
    // The intersector's frame for this drawable's hits, made at the first.
    static constexpr unsigned int kNoFrame = ~0u;
    unsigned int mFrame = kNoFrame;

protected:
    ~Settings() override = default;
};

} // namespace PolytopeIntersectorUtils
} // namespace Kelvor
