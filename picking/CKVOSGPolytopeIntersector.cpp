#include "picking/CKVOSGPolytopeIntersector.h"

#include "picking/PolytopeIntersectFunctor.h"
#include "scene/CKVOSGGeometry.h"


#include <osg/KdTree>
#include <osg/TemplatePrimitiveFunctor>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

namespace Kelvor {

namespace {

template <typename Vec3>
void intersectPrimitives(osg::Drawable& drawable, osg::KdTree const* tree, PolytopeIntersectorUtils::Settings* settings)
{
    osg::TemplatePrimitiveFunctor<PolytopeIntersectorUtils::IntersectFunctor<Vec3>> functor;
    functor.setSettings(settings);
    if (tree)
        functor.walk(*tree, tree->getNode(0));
    else
        drawable.accept(functor);
}

} // namespace

bool CKVOSGPolytopeIntersector::Intersection::operator<(Intersection const& other) const
{
    osgUtil::PolytopeIntersector::Intersection const& base = *this;
    osgUtil::PolytopeIntersector::Intersection const& otherBase = other;
    if (base < otherBase)
        return true;
    if (otherBase < base)
        return false;
    return instanceIndex < other.instanceIndex;
}

CKVOSGPolytopeIntersector::CKVOSGPolytopeIntersector(osg::Polytope const& polytope)
    : osgUtil::PolytopeIntersector(polytope)
{
}

CKVOSGPolytopeIntersector::CKVOSGPolytopeIntersector(CoordinateFrame frame, osg::Polytope const& polytope)
    : osgUtil::PolytopeIntersector(frame, polytope)
{
}

CKVOSGPolytopeIntersector::CKVOSGPolytopeIntersector(CoordinateFrame frame, double xMin, double yMin, double xMax,
                                                     double yMax)
    : osgUtil::PolytopeIntersector(frame, xMin, yMin, xMax, yMax)
{
}

CKVOSGPolytopeIntersector& CKVOSGPolytopeIntersector::root()
{
    // Only our clone() sets the parent, and always to one of ours.
    return _parent ? *static_cast<CKVOSGPolytopeIntersector*>(_parent) : *this;
}

void CKVOSGPolytopeIntersector::insertIntersection(Intersection intersection)
{
    root().mFound.push_back(std::move(intersection));
}

CKVOSGPolytopeIntersector::Intersections& CKVOSGPolytopeIntersector::getIntersections()
{
    CKVOSGPolytopeIntersector& owner = root();
    if (!owner.mFound.empty())
        owner.putInOrder();
    return owner.mIntersections;
}

void CKVOSGPolytopeIntersector::putInOrder()
{
    // Everything in the order it was found: what was put in order before
    // came first.
    std::vector<Intersection*> found;
    found.reserve(mIntersections.size() + mFound.size());
    for (Intersection& record : mIntersections)
        found.push_back(&record);
    for (Intersection& record : mFound)
        found.push_back(&record);

    // Sorted through small keys: the distance decides almost every
    // comparison without touching the records themselves.
    struct Key
    {
        double distance;
        Intersection* record;
    };
    std::vector<Key> keys;
    keys.reserve(found.size());
    for (Intersection* record : found)
        keys.push_back(Key{record->distance, record});
    // Stable, so that of equal records the one found first comes first.
    std::stable_sort(keys.begin(), keys.end(), [](Key const& a, Key const& b) {
        if (a.distance < b.distance)
            return true;
        if (b.distance < a.distance)
            return false;
        return *a.record < *b.record;
    });
    Intersections ordered;
    ordered.reserve(keys.size());
    for (Key const& key : keys)
    {
        if (!ordered.empty() && !(ordered.back() < *key.record))
            continue;
        ordered.push_back(std::move(*key.record));
    }
    mIntersections.swap(ordered);
    mFound.clear();
}

bool CKVOSGPolytopeIntersector::containsIntersections()
{
    CKVOSGPolytopeIntersector& owner = root();
    return !owner.mIntersections.empty() || !owner.mFound.empty();
}

void CKVOSGPolytopeIntersector::reset()
{
    osgUtil::PolytopeIntersector::reset();
    mIntersections.clear();
    mFound.clear();
}

osgUtil::Intersector* CKVOSGPolytopeIntersector::clone(osgUtil::IntersectionVisitor& visitor)
{
    osg::ref_ptr<CKVOSGPolytopeIntersector> copy;
    if (_coordinateFrame == MODEL && !visitor.getModelMatrix())
    {
        copy = new CKVOSGPolytopeIntersector(_polytope);
        copy->_referencePlane = _referencePlane;
    }
    else
    {
        osg::Matrix matrix;
        osg::RefMatrix const* const window = visitor.getWindowMatrix();
        osg::RefMatrix const* const projection = visitor.getProjectionMatrix();
        osg::RefMatrix const* const view = visitor.getViewMatrix();
        osg::RefMatrix const* const model = visitor.getModelMatrix();
        // Model to the intersector's frame: model, then view, projection and
        // window as far as the frame goes.
        switch (_coordinateFrame)
        {
        case WINDOW:
            if (window)
                matrix.preMult(*window);
            // fall through
        case PROJECTION:
            if (projection)
                matrix.preMult(*projection);
            // fall through
        case VIEW:
            if (view)
                matrix.preMult(*view);
            // fall through
        case MODEL:
            if (model)
                matrix.preMult(*model);
            break;
        }
        osg::Polytope transformed;
        transformed.setAndTransformProvidingInverse(_polytope, matrix);
        copy = new CKVOSGPolytopeIntersector(transformed);
        copy->_referencePlane = _referencePlane;
        copy->_referencePlane.transformProvidingInverse(matrix);
    }
    copy->_parent = _parent ? _parent : this;
    copy->setIntersectionLimit(getIntersectionLimit());
    copy->setPrimitiveMask(getPrimitiveMask());
    copy->setPrecisionHint(getPrecisionHint());
    return copy.release();
}

void CKVOSGPolytopeIntersector::intersect(osgUtil::IntersectionVisitor& visitor, osg::Drawable* drawable)
{
    if (reachedLimit())
        return;

    osg::BoundingBox const box = std::strcmp(drawable->className(), CKVOSGGeometry::s_className) == 0
                                     ? static_cast<CKVOSGGeometry*>(drawable)->getVertexBound()
                                     : drawable->getBoundingBox();
    if (drawable->getCullingActive() && !_polytope.contains(box))
        return;

    osg::ref_ptr<PolytopeIntersectorUtils::Settings> settings = new PolytopeIntersectorUtils::Settings;
    settings->mPolytopeIntersector = this;
    settings->mIntersectionVisitor = &visitor;
    settings->mDrawable = drawable;
    settings->mLimitOneIntersection =
        getIntersectionLimit() == LIMIT_ONE_PER_DRAWABLE || getIntersectionLimit() == LIMIT_ONE;
    settings->mPrimitiveMask = getPrimitiveMask();

    osg::KdTree const* tree = nullptr;
    osg::Shape const* shape = drawable->getShape();
    if (visitor.getUseKdTreeWhenAvailable() && shape && std::strcmp(shape->className(), "KdTree") == 0)
    {
        tree = static_cast<osg::KdTree const*>(shape);
        if (tree->getNodes().empty())
            tree = nullptr;
    }

    if (getPrecisionHint() == USE_DOUBLE_CALCULATIONS)
        intersectPrimitives<osg::Vec3d>(*drawable, tree, settings.get());
    else
        intersectPrimitives<osg::Vec3f>(*drawable, tree, settings.get());
}

} // namespace Kelvor
