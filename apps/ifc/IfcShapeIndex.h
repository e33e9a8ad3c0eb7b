#pragma once

#include "apps/ifc/IfcProductGeometry.h"
#include "apps/ifc/IfcShape.h"
#include "apps/ifc/IfcShapeMatcher.h"

#include <vector>

namespace Kelvor {

// Sorts products into shapes: each product joins the first earlier shape it
// matches rigidly, or starts a new one. Every product lands in exactly one
// shape, and shapes come in the order of their first product.
class IfcShapeIndex
{
public:
    explicit IfcShapeIndex(IfcShapeMatcher matcher = IfcShapeMatcher());

    void build(std::vector<IfcProductGeometry> const& products);

    std::vector<IfcShape> const& getShapes() const { return mShapes; }
    // Shapes with more than one use, and the uses they have together.
    unsigned int getNumSharedShape() const;
    unsigned int getNumInstance() const;

private:
    IfcShapeMatcher mMatcher;
    std::vector<IfcShape> mShapes;
};

} // namespace Kelvor
