#include "apps/ifc/IfcShapeIndex.h"

#include <string>
#include <unordered_map>

namespace Kelvor {

IfcShapeIndex::IfcShapeIndex(IfcShapeMatcher matcher) : mMatcher(matcher) {}

void IfcShapeIndex::build(std::vector<IfcProductGeometry> const& products)
{
    mShapes.clear();
    // Only products with equal counts can match, so each is compared with
    // the shapes of its own bucket alone.
    std::unordered_map<std::string, std::vector<std::size_t>> buckets;
    for (std::size_t p = 0; p < products.size(); ++p) {
        std::vector<std::size_t>& candidates = buckets[IfcShapeMatcher::topologyKey(products[p])];
        IfcShapeUse use;
        use.product = p;
        bool placed = false;
        for (std::size_t s : candidates) {
            if (mMatcher.match(products[mShapes[s].uses.front().product], products[p], use.placement)) {
                mShapes[s].uses.push_back(use);
                placed = true;
                break;
            }
        }
        if (!placed) {
            candidates.push_back(mShapes.size());
            mShapes.emplace_back();
            mShapes.back().uses.push_back(use);
        }
    }
}

unsigned int IfcShapeIndex::getNumSharedShape() const
{
    unsigned int count = 0;
    for (IfcShape const& shape : mShapes)
        count += shape.isShared() ? 1u : 0u;
    return count;
}

unsigned int IfcShapeIndex::getNumInstance() const
{
    unsigned int count = 0;
    for (IfcShape const& shape : mShapes)
        count += shape.isShared() ? static_cast<unsigned int>(shape.uses.size()) : 0u;
    return count;
}

} // namespace Kelvor
