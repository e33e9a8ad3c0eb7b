#include "picking/CKVScenePicker.h"

#include "picking/CKVOSGIntersectionVisitor.h"
#include "picking/CKVOSGLineSegmentIntersector.h"
#include "picking/CKVOSGPolytopeIntersector.h"
#include "picking/CKVPickHitResolver.h"

#include "TarnwickRender/CKVSelectionResult.h"

#include <algorithm>

namespace Kelvor {

namespace {

bool firstResolved(osgUtil::LineSegmentIntersector& intersector, CKVSelectionResult& result)
{
    for (osgUtil::LineSegmentIntersector::Intersection const& record : intersector.getIntersections())
    {
        if (CKVPickHitResolver::resolve(record, result))
            return true;
    }
    return false;
}

} // namespace

CKVScenePicker::CKVScenePicker(osg::Camera* camera)
    : mCamera(camera)
{
}

bool CKVScenePicker::pick(CKVPoint3D const& pixel, CKVSelectionResult& result) const
{
    if (!mCamera || !mCamera->getViewport())
        return false;
    double const height = mCamera->getViewport()->height();
    osg::ref_ptr<CKVOSGLineSegmentIntersector> intersector =
        new CKVOSGLineSegmentIntersector(osgUtil::Intersector::WINDOW, pixel.x, height - pixel.y);
    CKVOSGIntersectionVisitor visitor(intersector.get());
    visitor.setTraversalMask(~0u);
    visitor.setUseInstanceSearch(mUseInstanceSearch);
    mCamera->accept(visitor);
    return firstResolved(*intersector, result);
}

bool CKVScenePicker::intersect(CKVPoint3D const& start, CKVPoint3D const& end, CKVSelectionResult& result) const
{
    if (!mCamera || !mCamera->getViewport())
        return false;
    osg::ref_ptr<CKVOSGLineSegmentIntersector> intersector =
        new CKVOSGLineSegmentIntersector(osg::Vec3d(start.x, start.y, start.z), osg::Vec3d(end.x, end.y, end.z));
    CKVOSGIntersectionVisitor visitor(intersector.get());
    visitor.setTraversalMask(~0u);
    visitor.setUseInstanceSearch(mUseInstanceSearch);
    mCamera->accept(visitor);
    return firstResolved(*intersector, result);
}

bool CKVScenePicker::select(CKVPoint3D const& corner1, CKVPoint3D const& corner2, unsigned int maxCount,
                            std::vector<CKVSelectionResult>& results) const
{
    if (maxCount == 0 || !mCamera || !mCamera->getViewport())
        return false;
    double const height = mCamera->getViewport()->height();
    double const x1 = corner1.x;
    double const y1 = height - corner1.y;
    double const x2 = corner2.x;
    double const y2 = height - corner2.y;
    osg::ref_ptr<CKVOSGPolytopeIntersector> intersector = new CKVOSGPolytopeIntersector(
        osgUtil::Intersector::WINDOW, std::min(x1, x2), std::min(y1, y2), std::max(x1, x2), std::max(y1, y2));
    // Only the centre of each hit is read.
    intersector->setKeepsPoints(false);
    CKVOSGIntersectionVisitor visitor(intersector.get());
    visitor.setTraversalMask(~0u);
    visitor.setUseInstanceSearch(mUseInstanceSearch);
    mCamera->accept(visitor);

    results.clear();
    // What an instance resolved to, kept for when its hits come back after
    // another's: an instance answers alike whatever primitive was hit.
    struct Known
    {
        CKVDrawable const* drawable = nullptr;
        CKVSceneNode const* sceneNode = nullptr;
    };
    std::vector<Known> known(intersector->getFrameCount());
    // Hits of instances side by side alternate, so a rectangle lists about
    // as many results as it has hits: room for them at once spares copying
    // every result as the list grows.
    CKVOSGPolytopeIntersector::Hits const& hits = intersector->getHits();
    results.reserve(std::min<std::size_t>(maxCount, hits.size()));
    CKVOSGPolytopeIntersector::Hit const* lastInstanceHit = nullptr;
    for (CKVOSGPolytopeIntersector::Hit const& hit : hits)
    {
        if (results.size() >= maxCount)
            break;
        // Another primitive of the instance resolved just before: it names
        // the same drawable, which is already the last one listed.
        if (lastInstanceHit && intersector->sameInstance(*lastInstanceHit, hit))
            continue;
        lastInstanceHit = nullptr;
        Known& answer = known[hit.frame];
        if (answer.drawable)
        {
            lastInstanceHit = &hit;
            if (!results.empty() && results.back().getDrawable() == answer.drawable)
                continue;
            CKVOSGPolytopeIntersector::Frame const& frame = intersector->frameOf(hit);
            osg::Vec3d const world = CKVPickHitResolver::worldPoint(osg::Vec3d(hit.localPoint), frame.matrix.get());
            results.emplace_back();
            CKVSelectionResult& result = results.back();
            result.setPosition(CKVPoint3D(world.x(), world.y(), world.z()));
            result.setDrawable(answer.drawable);
            result.setInstanceIndex(frame.instanceIndex);
            result.setSceneNode(answer.sceneNode);
            continue;
        }
        CKVSelectionResult result;
        if (!CKVPickHitResolver::resolve(*intersector, hit, result))
            continue;
        if (result.getInstanceIndex() != CKVSelectionResult::kNoInstance)
        {
            lastInstanceHit = &hit;
            answer.drawable = result.getDrawable();
            answer.sceneNode = result.getSceneNode();
        }
        if (!results.empty() && results.back().getDrawable() == result.getDrawable())
            continue;
        results.push_back(result);
    }
    return !results.empty();
}

} // namespace Kelvor
