#pragma once

#include "apps/ifc/IfcProductGeometry.h"
#include "TarnwickGeometry/CKVMatrix3D.h"

#include <string>

namespace Kelvor {

// Decides whether two products show the same shape moved rigidly. IFC++
// evaluates a shape again for every product that maps it, so repeats have
// to be found in the results: the meshes must agree in colours and counts,
// and every vertex of the other product must lie where the matching vertex
// of the reference lands after one rotation and translation. Evaluations of
// one shape number their vertices alike, which gives the correspondence;
// the triangles may be cut differently and are compared by area. Mirror
// images do not match: their faces would turn inside out.
class IfcShapeMatcher
{
public:
    // `tolerance` is the largest vertex deviation in metres.
    explicit IfcShapeMatcher(double tolerance = 1.0e-4);

    // True when `other` is `reference` moved rigidly; then `placement` maps
    // the reference's world coordinates onto the other's.
    bool match(IfcProductGeometry const& reference, IfcProductGeometry const& other, CKVMatrix3D& placement) const;

    // Equal for any two products that can match (colours, vertex and
    // triangle counts per mesh), so candidates can be bucketed by it.
    static std::string topologyKey(IfcProductGeometry const& product);

private:
    double mTolerance;
};

} // namespace Kelvor
