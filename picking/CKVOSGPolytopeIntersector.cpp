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

// A hit's place in the order, kept apart from the hit so that sorting
// moves little and reads nothing else.
struct DepthKey
{
    std::uint64_t bits;
    unsigned int primitiveIndex;
    unsigned int frame;
    std::size_t index;
};

// A depth as an unsigned number in the same order; both zeros alike, as
// they compare equal.
std::uint64_t orderedBits(double distance)
{
    if (distance == 0.0)
        distance = 0.0;
    std::uint64_t bits;
    std::memcpy(&bits, &distance, sizeof bits);
    constexpr std::uint64_t kSign = std::uint64_t(1) << 63;
    return (bits & kSign) ? ~bits : (bits | kSign);
}

// Least significant digit first, so that equal keys keep their order.
void radixSort(std::vector<DepthKey>& keys)
{
    // Below this the buckets cost more than a comparison sort.
    constexpr std::size_t kSmall = 4096;
    if (keys.size() < kSmall)
    {
        std::stable_sort(keys.begin(), keys.end(),
                         [](DepthKey const& a, DepthKey const& b) { return a.bits < b.bits; });
        return;
    }
    // Few enough buckets that the scattered writes stay in cache.
    constexpr unsigned int kDigitBits = 11;
    constexpr std::size_t kBuckets = std::size_t(1) << kDigitBits;
    std::vector<DepthKey> scratch(keys.size());
    std::vector<std::size_t> counts(kBuckets);
    for (unsigned int shift = 0; shift < 64; shift += kDigitBits)
    {
        std::fill(counts.begin(), counts.end(), 0);
        for (DepthKey const& key : keys)
            ++counts[(key.bits >> shift) & (kBuckets - 1)];
        // A digit every key shares orders nothing.
        if (counts[(keys.front().bits >> shift) & (kBuckets - 1)] == keys.size())
            continue;
        std::size_t offset = 0;
        for (std::size_t& count : counts)
            offset += std::exchange(count, offset);
        for (DepthKey const& key : keys)
            scratch[counts[(key.bits >> shift) & (kBuckets - 1)]++] = key;
        keys.swap(scratch);
    }
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

CKVOSGPolytopeIntersector const& CKVOSGPolytopeIntersector::root() const
{
    return _parent ? *static_cast<CKVOSGPolytopeIntersector const*>(_parent) : *this;
}

unsigned int CKVOSGPolytopeIntersector::addFrame(osgUtil::IntersectionVisitor& visitor,
                                                 osg::Drawable* drawable, unsigned int instanceIndex)
{
    CKVOSGPolytopeIntersector& owner = root();
    // Instances of one geometry come one after another along one path.
    osg::NodePath const& path = visitor.getNodePath();
    if (owner.mPaths.empty() || owner.mPaths.back() != path)
        owner.mPaths.push_back(path);
    Frame frame;
    frame.path = static_cast<unsigned int>(owner.mPaths.size() - 1);
    frame.drawable = drawable;
    frame.matrix = visitor.getModelMatrix();
    frame.instanceIndex = instanceIndex;
    owner.mFrames.push_back(std::move(frame));
    return static_cast<unsigned int>(owner.mFrames.size() - 1);
}

void CKVOSGPolytopeIntersector::addHit(Hit const& hit, double maxDistance, Vec3_type const* points,
                                       unsigned int count)
{
    CKVOSGPolytopeIntersector& owner = root();
    owner.mHits.push_back(hit);
    owner.mIntersectionsCurrent = false;
    if (!owner.mKeepsPoints)
        return;
    Points kept;
    kept.maxDistance = maxDistance;
    kept.count = std::min<unsigned int>(count, Intersection::MaxNumIntesectionPoints);
    std::copy(points, points + kept.count, kept.points);
    owner.mPoints.push_back(kept);
}

bool CKVOSGPolytopeIntersector::frameLess(unsigned int a, unsigned int b) const
{
    // Past depth and primitive, the stock record's order goes on with path
    // and drawable; ours ends with the instance.
    if (a == b)
        return false;
    Frame const& fa = mFrames[a];
    Frame const& fb = mFrames[b];
    if (fa.path != fb.path)
    {
        osg::NodePath const& pa = mPaths[fa.path];
        osg::NodePath const& pb = mPaths[fb.path];
        if (pa < pb)
            return true;
        if (pb < pa)
            return false;
    }
    if (fa.drawable != fb.drawable)
        return fa.drawable < fb.drawable;
    return fa.instanceIndex < fb.instanceIndex;
}

bool CKVOSGPolytopeIntersector::sameInstance(Hit const& a, Hit const& b) const
{
    CKVOSGPolytopeIntersector const& owner = root();
    if (a.frame == b.frame)
        return true;
    Frame const& fa = owner.mFrames[a.frame];
    Frame const& fb = owner.mFrames[b.frame];
    return fa.instanceIndex == fb.instanceIndex && fa.drawable == fb.drawable &&
           (fa.path == fb.path || owner.mPaths[fa.path] == owner.mPaths[fb.path]);
}

CKVOSGPolytopeIntersector::Hits const& CKVOSGPolytopeIntersector::getHits()
{
    CKVOSGPolytopeIntersector& owner = root();
    if (owner.mOrdered != owner.mHits.size())
        owner.putInOrder();
    return owner.mHits;
}

void CKVOSGPolytopeIntersector::putInOrder()
{
    // Ordered by depth with a radix sort (a selection finds hundreds of
    // thousands of hits), which keeps the order found among equal depths;
    // only runs of equal depth are then sorted by the rest of the order. Of
    // equal hits the one found first (or put in order before) comes first.
    std::vector<DepthKey> keys(mHits.size());
    for (std::size_t i = 0; i < mHits.size(); ++i)
        keys[i] = DepthKey{orderedBits(mHits[i].distance), mHits[i].primitiveIndex, mHits[i].frame, i};
    radixSort(keys);
    auto rest = [this](DepthKey const& a, DepthKey const& b) {
        if (a.primitiveIndex != b.primitiveIndex)
            return a.primitiveIndex < b.primitiveIndex;
        if (a.frame != b.frame)
        {
            if (frameLess(a.frame, b.frame))
                return true;
            if (frameLess(b.frame, a.frame))
                return false;
        }
        return a.index < b.index;
    };
    for (std::size_t first = 0; first < keys.size();)
    {
        std::size_t last = first + 1;
        while (last < keys.size() && keys[last].bits == keys[first].bits)
            ++last;
        if (last - first > 1)
            std::sort(keys.begin() + first, keys.begin() + last, rest);
        first = last;
    }
    Hits ordered;
    ordered.reserve(keys.size());
    std::vector<Points> orderedPoints;
    orderedPoints.reserve(mPoints.size());
    DepthKey const* previous = nullptr;
    for (DepthKey const& key : keys)
    {
        bool const same = previous && previous->bits == key.bits && previous->primitiveIndex == key.primitiveIndex &&
                          !frameLess(previous->frame, key.frame) && !frameLess(key.frame, previous->frame);
        if (same)
            continue;
        previous = &key;
        ordered.push_back(mHits[key.index]);
        if (key.index < mPoints.size())
            orderedPoints.push_back(mPoints[key.index]);
    }
    mHits.swap(ordered);
    mPoints.swap(orderedPoints);
    mOrdered = mHits.size();
}

CKVOSGPolytopeIntersector::Intersections& CKVOSGPolytopeIntersector::getIntersections()
{
    CKVOSGPolytopeIntersector& owner = root();
    Hits const& hits = owner.getHits();
    if (owner.mIntersectionsCurrent)
        return owner.mIntersections;
    owner.mIntersections.clear();
    owner.mIntersections.reserve(hits.size());
    for (std::size_t i = 0; i < hits.size(); ++i)
    {
        Hit const& hit = hits[i];
        Frame const& frame = owner.mFrames[hit.frame];
        Intersection record;
        record.distance = hit.distance;
        record.nodePath = owner.mPaths[frame.path];
        record.drawable = frame.drawable;
        record.matrix = frame.matrix;
        record.localIntersectionPoint = hit.localPoint;
        record.primitiveIndex = hit.primitiveIndex;
        record.instanceIndex = frame.instanceIndex;
        if (i < owner.mPoints.size())
        {
            Points const& points = owner.mPoints[i];
            record.maxDistance = points.maxDistance;
            record.numIntersectionPoints = points.count;
            std::copy(points.points, points.points + points.count, record.intersectionPoints);
        }
        owner.mIntersections.push_back(std::move(record));
    }
    owner.mIntersectionsCurrent = true;
    return owner.mIntersections;
}

bool CKVOSGPolytopeIntersector::containsIntersections()
{
    return !root().mHits.empty();
}

void CKVOSGPolytopeIntersector::reset()
{
    osgUtil::PolytopeIntersector::reset();
    mPaths.clear();
    mFrames.clear();
    mHits.clear();
    mOrdered = 0;
    mPoints.clear();
    mIntersections.clear();
    mIntersectionsCurrent = true;
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
    copy->mKeepsPoints = mKeepsPoints;
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
