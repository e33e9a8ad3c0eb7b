#include "picking/CKVInstanceBVH.h"

#include <osg/Plane>

#include <algorithm>
#include <cmath>
#include <limits>

namespace Kelvor {

namespace {

// How much each instance box grows: a share of its size and of the
// coordinates' magnitude, so that rounding in the exact test (float
// vertices, a query transformed into the instance's frame) cannot put a hit
// just outside the box that stood for it.
constexpr double kRelativeMargin = 1e-4;
constexpr double kMagnitudeMargin = 1e-5;
constexpr double kAbsoluteMargin = 1e-6;
// Below this share of the product of its row lengths, the determinant of an
// instance's 3x3 part counts as zero.
constexpr double kSingularShare = 1e-9;

// True when the query cannot be carried into the instance's frame: the
// exact test then works with whatever the failed inverse left, which no box
// bounds.
bool singular(osg::Vec4 const& r1, osg::Vec4 const& r2, osg::Vec4 const& r3)
{
    double const det = double(r1[0]) * (double(r2[1]) * r3[2] - double(r2[2]) * r3[1]) -
                       double(r1[1]) * (double(r2[0]) * r3[2] - double(r2[2]) * r3[0]) +
                       double(r1[2]) * (double(r2[0]) * r3[1] - double(r2[1]) * r3[0]);
    auto length = [](osg::Vec4 const& r) { return std::sqrt(double(r[0]) * r[0] + double(r[1]) * r[1] + double(r[2]) * r[2]); };
    double const scale = length(r1) * length(r2) * length(r3);
    return !(std::fabs(det) > kSingularShare * scale);
}

double centreOf(std::vector<float> const& boxes, std::uint32_t instance, int axis)
{
    return 0.5 * (double(boxes[instance * 6 + axis]) + double(boxes[instance * 6 + 3 + axis]));
}

} // namespace

std::vector<float> CKVInstanceBVH::instanceBoxes(Rows const& rows, osg::BoundingBox const& shape)
{
    std::size_t const count = rows.count();
    std::vector<float> boxes(count * kFloatsPerBox);
    osg::Vec3d const centre = osg::Vec3d(shape.center());
    osg::Vec3d const half = osg::Vec3d(shape._max - shape._min) * 0.5;
    for (std::size_t i = 0; i < count; ++i)
    {
        osg::Vec4 const& r1 = (*rows.row[0])[i];
        osg::Vec4 const& r2 = (*rows.row[1])[i];
        osg::Vec4 const& r3 = (*rows.row[2])[i];
        osg::Vec4 const& r4 = (*rows.row[3])[i];
        float* box = &boxes[i * kFloatsPerBox];
        bool const unbounded = singular(r1, r2, r3);
        for (int axis = 0; axis < 3; ++axis)
        {
            // Points are rows: p' = x r1 + y r2 + z r3 + r4.
            double const mid = centre.x() * r1[axis] + centre.y() * r2[axis] + centre.z() * r3[axis] + r4[axis];
            double const reach = half.x() * std::fabs(r1[axis]) + half.y() * std::fabs(r2[axis]) +
                                 half.z() * std::fabs(r3[axis]);
            double const margin =
                kRelativeMargin * reach + kMagnitudeMargin * (std::fabs(mid) + reach) + kAbsoluteMargin;
            double low = mid - reach - margin;
            double high = mid + reach + margin;
            if (unbounded || !(low <= high))
            {
                // A matrix without an inverse, or with NaN or infinite
                // entries: no box can stand for what the exact test makes
                // of it, so the instance is always a candidate.
                low = -std::numeric_limits<float>::max();
                high = std::numeric_limits<float>::max();
            }
            // Clamped first: a double beyond the float range has no float.
            double const largest = std::numeric_limits<float>::max();
            low = std::max(low, -largest);
            high = std::min(high, largest);
            box[axis] = std::nextafter(float(low), -std::numeric_limits<float>::infinity());
            box[3 + axis] = std::nextafter(float(high), std::numeric_limits<float>::infinity());
        }
    }
    return boxes;
}

void CKVInstanceBVH::build(std::vector<float> const& boxes)
{
    std::size_t const count = boxes.size() / kFloatsPerBox;
    mOrder.resize(count);
    for (std::uint32_t i = 0; i < count; ++i)
        mOrder[i] = i;
    mNodes.clear();
    mNodes.reserve(count / kLeafSize * 2 + 1);
    if (count > 0)
        buildNode(0, static_cast<std::uint32_t>(count), boxes);
    fitNodes(boxes);
}

std::uint32_t CKVInstanceBVH::buildNode(std::uint32_t begin, std::uint32_t end, std::vector<float> const& boxes)
{
    std::uint32_t const index = static_cast<std::uint32_t>(mNodes.size());
    mNodes.push_back(Node{{0, 0, 0}, {0, 0, 0}, begin, end - begin});
    if (end - begin <= kLeafSize)
        return index;

    // Split at the median centre along the axis where the centres spread
    // most: balanced, so the depth stays logarithmic whatever the layout.
    double low[3], high[3];
    for (int axis = 0; axis < 3; ++axis)
    {
        low[axis] = std::numeric_limits<double>::max();
        high[axis] = -std::numeric_limits<double>::max();
    }
    for (std::uint32_t i = begin; i < end; ++i)
    {
        for (int axis = 0; axis < 3; ++axis)
        {
            double const c = centreOf(boxes, mOrder[i], axis);
            low[axis] = std::min(low[axis], c);
            high[axis] = std::max(high[axis], c);
        }
    }
    int axis = 0;
    for (int a = 1; a < 3; ++a)
    {
        if (high[a] - low[a] > high[axis] - low[axis])
            axis = a;
    }
    std::uint32_t const middle = begin + (end - begin) / 2;
    std::nth_element(mOrder.begin() + begin, mOrder.begin() + middle, mOrder.begin() + end,
                     [&](std::uint32_t a, std::uint32_t b) { return centreOf(boxes, a, axis) < centreOf(boxes, b, axis); });

    buildNode(begin, middle, boxes);
    std::uint32_t const right = buildNode(middle, end, boxes);
    mNodes[index].first = right;
    mNodes[index].count = 0;
    return index;
}

bool CKVInstanceBVH::refit(std::vector<float> const& boxes)
{
    if (boxes.size() / kFloatsPerBox != mOrder.size())
        return false;
    fitNodes(boxes);
    return true;
}

void CKVInstanceBVH::fitNodes(std::vector<float> const& boxes)
{
    // Children come after their parent, so one pass from the back fits
    // every node after both of its children.
    for (std::size_t n = mNodes.size(); n-- > 0;)
    {
        Node& node = mNodes[n];
        float low[3] = {std::numeric_limits<float>::max(), std::numeric_limits<float>::max(),
                        std::numeric_limits<float>::max()};
        float high[3] = {-std::numeric_limits<float>::max(), -std::numeric_limits<float>::max(),
                         -std::numeric_limits<float>::max()};
        auto grow = [&](float const* lo, float const* hi) {
            for (int axis = 0; axis < 3; ++axis)
            {
                low[axis] = std::min(low[axis], lo[axis]);
                high[axis] = std::max(high[axis], hi[axis]);
            }
        };
        if (node.count > 0)
        {
            for (std::uint32_t i = node.first; i < node.first + node.count; ++i)
            {
                float const* box = &boxes[mOrder[i] * kFloatsPerBox];
                grow(box, box + 3);
            }
        }
        else
        {
            Node const& left = mNodes[n + 1];
            Node const& right = mNodes[node.first];
            grow(left.low, left.high);
            grow(right.low, right.high);
        }
        std::copy(low, low + 3, node.low);
        std::copy(high, high + 3, node.high);
    }
}

template <typename Test>
void CKVInstanceBVH::collect(Test const& overlaps, std::vector<unsigned int>& out) const
{
    out.clear();
    if (mNodes.empty())
        return;
    std::vector<std::uint32_t> stack;
    stack.push_back(0);
    while (!stack.empty())
    {
        Node const& node = mNodes[stack.back()];
        std::uint32_t const index = stack.back();
        stack.pop_back();
        if (!overlaps(node))
            continue;
        if (node.count > 0)
        {
            out.insert(out.end(), mOrder.begin() + node.first, mOrder.begin() + node.first + node.count);
            continue;
        }
        stack.push_back(node.first);
        stack.push_back(index + 1);
    }
    // The exact tests run in index order, as a test of every instance
    // would: hits at equal distance keep the order they would have had.
    std::sort(out.begin(), out.end());
}

void CKVInstanceBVH::alongSegment(osg::Vec3d const& start, osg::Vec3d const& end, std::vector<unsigned int>& out) const
{
    osg::Vec3d const direction = end - start;
    collect(
        [&](Node const& node) {
            // Slabs: the part of [0, 1] inside all three pairs of planes.
            double enter = 0.0, leave = 1.0;
            for (int axis = 0; axis < 3; ++axis)
            {
                double const from = start[axis];
                double const along = direction[axis];
                if (along == 0.0)
                {
                    if (from < node.low[axis] || from > node.high[axis])
                        return false;
                    continue;
                }
                double t0 = (node.low[axis] - from) / along;
                double t1 = (node.high[axis] - from) / along;
                if (t0 > t1)
                    std::swap(t0, t1);
                enter = std::max(enter, t0);
                leave = std::min(leave, t1);
                if (enter > leave)
                    return false;
            }
            return true;
        },
        out);
}

void CKVInstanceBVH::inPolytope(osg::Polytope const& polytope, std::vector<unsigned int>& out) const
{
    osg::Polytope::PlaneList const& planes = polytope.getPlaneList();
    collect(
        [&](Node const& node) {
            for (osg::Plane const& plane : planes)
            {
                // The corner furthest along the plane's normal: when even
                // that one is behind the plane, the whole box is.
                auto const& p = plane.asVec4();
                double const reach = p[0] * (p[0] >= 0 ? node.high[0] : node.low[0]) +
                                     p[1] * (p[1] >= 0 ? node.high[1] : node.low[1]) +
                                     p[2] * (p[2] >= 0 ? node.high[2] : node.low[2]) + p[3];
                if (reach < 0.0)
                    return false;
            }
            return true;
        },
        out);
}

} // namespace Kelvor
