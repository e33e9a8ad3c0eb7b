#include "picking/PolytopeIntersectFunctor.h"

#include "picking/CKVOSGIntersectionVisitor.h"
#include "picking/CKVOSGPolytopeIntersector.h"

#include <osg/Notify>

#include <algorithm>
#include <cfloat>
#include <utility>

namespace Kelvor {
namespace PolytopeIntersectorUtils {

namespace {

constexpr unsigned int kPointBit = 1;
constexpr unsigned int kLineBit = 2;
constexpr unsigned int kTriangleBit = 4;

} // namespace

template <typename Vec3>
IntersectFunctor<Vec3>::IntersectFunctor()
{
    // Enough for a quad clipped by a window box without reallocating.
    mVertices.reserve(10);
    mClipped.reserve(10);
}

template <typename Vec3>
osg::Polytope& IntersectFunctor<Vec3>::polytope() const
{
    return mSettings->mPolytopeIntersector->getPolytope();
}

template <typename Vec3>
void IntersectFunctor<Vec3>::operator()(osg::Vec3 const& v0, bool)
{
    point(Vec3(v0), mPrimitiveIndex++);
}

template <typename Vec3>
void IntersectFunctor<Vec3>::operator()(osg::Vec3 const& v0, osg::Vec3 const& v1, bool)
{
    line(Vec3(v0), Vec3(v1), mPrimitiveIndex++);
}

template <typename Vec3>
void IntersectFunctor<Vec3>::operator()(osg::Vec3 const& v0, osg::Vec3 const& v1, osg::Vec3 const& v2, bool)
{
    Vec3 const vertices[3] = {Vec3(v0), Vec3(v1), Vec3(v2)};
    polygon(vertices, 3, mPrimitiveIndex++);
}

template <typename Vec3>
void IntersectFunctor<Vec3>::operator()(osg::Vec3 const& v0, osg::Vec3 const& v1, osg::Vec3 const& v2,
                                        osg::Vec3 const& v3, bool)
{
    Vec3 const vertices[4] = {Vec3(v0), Vec3(v1), Vec3(v2), Vec3(v3)};
    polygon(vertices, 4, mPrimitiveIndex++);
}

template <typename Vec3>
void IntersectFunctor<Vec3>::point(Vec3 const& v0, unsigned int primitiveIndex)
{
    if (done() || !(mSettings->mPrimitiveMask & kPointBit))
        return;
    osg::Polytope const& planes = polytope();
    osg::Polytope::ClippingMask const mask = planes.getCurrentMask();
    osg::Polytope::ClippingMask selector = 1;
    for (osg::Plane const& plane : planes.getPlaneList())
    {
        if ((mask & selector) && plane.distance(v0) < 0.0)
            return;
        selector <<= 1;
    }
    mVertices.assign(1, v0);
    addIntersection(primitiveIndex);
}

template <typename Vec3>
void IntersectFunctor<Vec3>::line(Vec3 const& v0, Vec3 const& v1, unsigned int primitiveIndex)
{
    if (done() || !(mSettings->mPrimitiveMask & kLineBit))
        return;
    mVertices.clear();
    mVertices.push_back(v0);
    mVertices.push_back(v1);
    if (clip(false))
        addIntersection(primitiveIndex);
}

template <typename Vec3>
void IntersectFunctor<Vec3>::polygon(Vec3 const* vertices, unsigned int count, unsigned int primitiveIndex)
{
    if (done() || !(mSettings->mPrimitiveMask & kTriangleBit))
        return;
    mVertices.assign(vertices, vertices + count);
    if (clip(true))
        addIntersection(primitiveIndex);
}

template <typename Vec3>
bool IntersectFunctor<Vec3>::clip(bool closed)
{
    osg::Polytope const& planes = polytope();
    osg::Polytope::ClippingMask const mask = planes.getCurrentMask();
    if (!mask)
        return true;
    osg::Polytope::ClippingMask selector = 1;
    for (osg::Plane const& plane : planes.getPlaneList())
    {
        if (mask & selector)
        {
            mClipped.clear();
            std::size_t const n = mVertices.size();
            // A polygon is clipped as a loop, so that its closing edge is cut
            // too and the result stays a closed polygon for the next plane.
            std::size_t const edges = closed ? n : n - 1;
            for (std::size_t i = 0; i < n; ++i)
            {
                Vec3 const& current = mVertices[i];
                value_type const d1 = value_type(plane.distance(current));
                if (d1 >= 0)
                    mClipped.push_back(current);
                if (i < edges)
                {
                    Vec3 const& next = mVertices[(i + 1) % n];
                    value_type const d2 = value_type(plane.distance(next));
                    if ((d1 < 0 && d2 > 0) || (d1 > 0 && d2 < 0))
                    {
                        value_type const r = d1 / (d1 - d2);
                        mClipped.push_back(current * (value_type(1) - r) + next * r);
                    }
                }
            }
            mVertices.swap(mClipped);
            // What merely touches a plane stays in: a zero-area selection
            // box is two coinciding planes, and it must still find what it
            // lies on.
            if (mVertices.empty())
                return false;
        }
        selector <<= 1;
    }
    return true;
}

template <typename Vec3>
void IntersectFunctor<Vec3>::addIntersection(unsigned int primitiveIndex)
{
    CKVOSGPolytopeIntersector& intersector = *mSettings->mPolytopeIntersector;
    osg::Plane const& reference = intersector.getReferencePlane();
    bool const keepsPoints = intersector.keepsPoints();

    Vec3 centre(0, 0, 0);
    double maxDistance = -DBL_MAX;
    for (Vec3 const& v : mVertices)
    {
        centre += v;
        if (keepsPoints)
            maxDistance = std::max(maxDistance, double(reference.distance(v)));
    }
    centre /= value_type(mVertices.size());

    if (mSettings->mFrame == Settings::kNoFrame)
    {
        osgUtil::IntersectionVisitor& visitor = *mSettings->mIntersectionVisitor;
        mSettings->mFrame = intersector.addFrame(visitor, mSettings->mDrawable,
                                                 CKVOSGIntersectionVisitor::currentInstanceIndexOf(visitor));
    }
    CKVOSGPolytopeIntersector::Hit hit;
    hit.distance = reference.distance(centre);
    hit.localPoint = osgUtil::PolytopeIntersector::Vec3_type(centre);
    hit.primitiveIndex = primitiveIndex;
    hit.frame = mSettings->mFrame;
    if (keepsPoints)
    {
        typedef osgUtil::PolytopeIntersector::Vec3_type Point;
        constexpr std::size_t kMax = osgUtil::PolytopeIntersector::Intersection::MaxNumIntesectionPoints;
        Point points[kMax];
        std::size_t const count = std::min(mVertices.size(), kMax);
        for (std::size_t i = 0; i < count; ++i)
            points[i] = Point(mVertices[i]);
        intersector.addHit(hit, maxDistance, points, static_cast<unsigned int>(count));
    }
    else
        intersector.addHit(hit, 0.0, nullptr, 0);
    mHit = true;
}

template <typename Vec3>
void IntersectFunctor<Vec3>::walk(osg::KdTree const& tree, osg::KdTree::KdNode const& node)
{
    if (node.first < 0)
    {
        leaf(tree, ~node.first, node.second);
        return;
    }
    osg::Polytope& planes = polytope();
    if (!planes.contains(node.bb))
        return;
    // Planes that hold the whole box need no testing below it.
    planes.pushCurrentMask();
    if (node.first > 0)
        walk(tree, tree.getNode(node.first));
    if (node.second >= 1)
        walk(tree, tree.getNode(node.second));
    planes.popCurrentMask();
}

template <typename Vec3>
void IntersectFunctor<Vec3>::leaf(osg::KdTree const& tree, int first, int count)
{
    osg::Vec3Array const* vertices = tree.getVertices();
    osg::KdTree::Indices const& primitives = tree.getPrimitiveIndices();
    osg::KdTree::Indices const& indices = tree.getVertexIndices();
    if (!vertices)
        return;
    for (int i = first; i < first + count; ++i)
    {
        unsigned int at = primitives[i];
        unsigned int const source = indices[at++];
        unsigned int const size = indices[at++];
        auto v = [&](unsigned int k) { return Vec3((*vertices)[indices[at + k]]); };
        switch (size)
        {
        case 1:
            point(v(0), source);
            break;
        case 2:
            line(v(0), v(1), source);
            break;
        case 3:
        {
            Vec3 const triangle[3] = {v(0), v(1), v(2)};
            polygon(triangle, 3, source);
            break;
        }
        case 4:
        {
            Vec3 const quad[4] = {v(0), v(1), v(2), v(3)};
            polygon(quad, 4, source);
            break;
        }
        default:
            OSG_WARN << "Warning: KdTree::intersect() encounted unsupported primitive size of " << size << std::endl;
            break;
        }
    }
}

template class IntersectFunctor<osg::Vec3f>;
template class IntersectFunctor<osg::Vec3d>;

} // namespace PolytopeIntersectorUtils
} // namespace Kelvor
