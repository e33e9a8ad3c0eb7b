#pragma once

#include <osg/Array>
#include <osg/BoundingBox>
#include <osg/Polytope>
#include <osg/Vec3d>

#include <cstdint>
#include <vector>

namespace Kelvor {

// A bounding-volume hierarchy over the placements of one instanced geometry:
// each instance's box is the shape's vertex box carried through its matrix
// (four rows, as the geometry draws them) and widened a little, so that the
// hierarchy never drops an instance that the exact per-instance test would
// hit. Queries only name candidates; the caller still tests each one exactly.
class CKVInstanceBVH
{
public:
    // The four rows of the instance matrices, R1 first.
    struct Rows
    {
        osg::Vec4Array const* row[4] = {};
        std::size_t count() const { return row[0] ? row[0]->size() : 0u; }
    };

    // Boxes of every instance, six floats each (minimum, then maximum).
    static std::vector<float> instanceBoxes(Rows const& rows, osg::BoundingBox const& shape);

    // Builds over `boxes` (six floats per instance).
    void build(std::vector<float> const& boxes);
    // New boxes for the same instances: the tree keeps its shape and only
    // its node boxes change. False, with nothing changed, when the number
    // of instances differs.
    bool refit(std::vector<float> const& boxes);

    std::size_t instanceCount() const { return mOrder.size(); }
    std::size_t nodeCount() const { return mNodes.size(); }

    // Instances whose box the segment from `start` to `end` touches, in
    // ascending index order.
    void alongSegment(osg::Vec3d const& start, osg::Vec3d const& end, std::vector<unsigned int>& out) const;
    // Instances whose box is not wholly outside one of the planes, in
    // ascending index order.
    void inPolytope(osg::Polytope const& polytope, std::vector<unsigned int>& out) const;

private:
    static constexpr std::size_t kFloatsPerBox = 6;
    static constexpr unsigned int kLeafSize = 4;

    struct Node
    {
        float low[3];
        float high[3];
        // Leaf: the first entry in mOrder and how many. Inner node: `first`
        // is the right child (the left child follows the node) and `count`
        // is 0.
        std::uint32_t first;
        std::uint32_t count;
    };

    std::uint32_t buildNode(std::uint32_t begin, std::uint32_t end, std::vector<float> const& boxes);
    void fitNodes(std::vector<float> const& boxes);
    template <typename Test>
    void collect(Test const& overlaps, std::vector<unsigned int>& out) const;

    std::vector<std::uint32_t> mOrder;
    std::vector<Node> mNodes;
};

} // namespace Kelvor
