#pragma once

#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickGeometry/CKVMesh.h"

namespace osg {
class Geometry;
}

namespace Kelvor {

// Turns the triangles of one tile geometry into a host mesh: points, the
// first triangle list, and normals and texture coordinates where there is
// one per point. Other primitive sets (strips, lines, later triangle lists)
// are not part of the model.
class CKVTileMeshConverter
{
public:
    CKVTileMeshConverter() = delete;

    // Null when the geometry has no 3-float vertex array or no triangle list.
    static kv_shared_ptr<CKVMesh> convert(osg::Geometry const& geometry);
};

} // namespace Kelvor
