#pragma once

#include "apps/ifc/IfcMesh.h"
#include "TarnwickGeometry/CKVPoint3D.h"
#include "TarnwickRender/CKVLogicBufferGeometry.h"

namespace Kelvor {

// Fills a host part (a logic buffer with vertices and indices of its own)
// from a mesh. Positions are stored relative to `origin` because the GPU
// sees floats and models may lie far from zero. Faces are shaded flat: a
// vertex is split where triangles of different orientation meet, and
// shared where they lie in one plane.
class IfcPartBuilder
{
public:
    // False, leaving the part as it was, for a mesh without a triangle of
    // non-zero area or a part that a geometry already holds.
    static bool fill(IfcMesh const& mesh, CKVPoint3D const& origin, CKVLogicBufferGeometry& part);
};

} // namespace Kelvor
