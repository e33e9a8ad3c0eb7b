#pragma once

#include "TarnwickGeometry/CKVMatrix3D.h"

#include <cstddef>
#include <vector>

namespace Kelvor {

// One placement of a shape: the product that shows it, and the rigid motion
// that carries the shape's first use (in world coordinates) onto this one.
struct IfcShapeUse
{
    std::size_t product = 0;
    CKVMatrix3D placement;
};

// A shape and every product that shows it. The first use is the shape's
// reference and has the identity placement. A shape with more than one use
// is drawn once, instanced.
struct IfcShape
{
    std::vector<IfcShapeUse> uses;

    bool isShared() const { return uses.size() > 1; }
};

} // namespace Kelvor
