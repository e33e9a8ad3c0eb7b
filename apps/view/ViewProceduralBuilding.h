#pragma once

#include "TarnwickStream/CKVModelBase.h"

namespace Kelvor {

class CKVMesh;

// The model shown when no file is given and the sample house is not
// installed: a two-storey house of host shapes (slabs, four walls, a roof
// slab, glazed windows and a door), about 12 by 9 by 7 metres, standing on
// the origin with its front facing -y.
class ViewProceduralBuilding
{
public:
    static kv_shared_ptr<CKVModelBase> build();

    // An axis-aligned box as a mesh with flat normals (24 points, 12 triangles).
    static kv_shared_ptr<CKVMesh> box(double x0, double y0, double z0, double x1, double y1, double z1);
};

} // namespace Kelvor
