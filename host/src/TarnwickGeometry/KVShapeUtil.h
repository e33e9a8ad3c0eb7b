#pragma once

// Private helpers shared by the shape classes of this library.

#include "TarnwickCommon/CKVVec.h"
#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickGeometry/CKVRenderGeometryData.h"
#include "TarnwickGeometry/CKVBndBox.h"
#include "TarnwickGeometry/CKVMatrix3D.h"
#include "TarnwickGeometry/CKVPoint3D.h"
#include "TarnwickGeometry/CKVVector3D.h"

#include <vector>

namespace Kelvor {
namespace ShapeUtil {

// True when no element is infinite or NaN.
bool isFinite(CKVMatrix3D const& matrix);

// The cofactor matrix of the upper 3x3 (det times the inverse transpose):
// maps normals consistently with the winding of transformed triangles, and
// exists even for singular matrices.
CKVMatrix3D normalMatrix(CKVMatrix3D const& matrix);

void transformPoints(std::vector<CKVVec3<float>>& points, CKVMatrix3D const& matrix);
// By the normal matrix, renormalised; normals that collapse stay zero.
void transformNormals(std::vector<CKVVec3<float>>& normals, CKVMatrix3D const& normalMatrix);

CKVBndBox boxOf(std::vector<CKVVec3<float>> const& points);

CKVVec3<float> toFloat(CKVPoint3D const& p);
CKVVec3<float> toFloat(CKVVector3D const& v);

// Two unit vectors u, v with (u, v, axis) right-handed and orthonormal. u
// comes from the world axis least aligned with `axis`, so for an axis along
// a world axis, u and v are world axes too and circles reach their exact
// extremes at angles 0, 90, 180 and 270 degrees. `axis` must be a unit vector.
void circleBasis(CKVVector3D const& axis, CKVVector3D& u, CKVVector3D& v);

// Face data from a tessellation made in a shape's own frame, placed by
// `transform`: points by the matrix, normals by its normal matrix. `uv` is
// empty or one per point.
kv_shared_ptr<CKVRenderGeometryData> makePlacedFaceData(std::vector<CKVPoint3D> const& points,
                                                        std::vector<CKVVector3D> const& normals,
                                                        std::vector<CKVVec2<float>> uv, std::vector<int> faces,
                                                        CKVMatrix3D const& transform);

} // namespace ShapeUtil
} // namespace Kelvor
