#pragma once

#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickRender/CKVBufferGeometry.h"

#include <vector>

namespace Kelvor {

class CKVRenderContextX11Imp;

// The instances the last frame drew: the instance counts of the first
// indirect command of every geometry, read back from the GPU, where
// culling writes them. Without culling it is every placement.
class CKVCulledInstanceCounter
{
public:
    static double count(CKVRenderContextX11Imp& context, std::vector<kv_shared_ptr<CKVBufferGeometry>> const& geometries);
};

} // namespace Kelvor
