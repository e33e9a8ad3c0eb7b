#pragma once

#include "scene/CKVBufferGeometryImp.h"
#include "scene/CKVVertexBufferAttributeImp.h"
#include "scene/CKVVertexIndexImp.h"

#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickRender/CKVLogicBufferGeometry.h"
#include "TarnwickRender/CKVRenderCallback.h"

#include <vector>

namespace Kelvor {

// Puts the backend's buffer factories into the host's table, so that
// host-side packing makes our attribute and index buffers. Loading the
// library registers the same functions already; registering again keeps the
// tests independent of that. They are not unregistered afterwards: that
// would take them from every later test in the program.
class BufferFactoriesScope
{
public:
    BufferFactoriesScope()
    {
        CKVRenderCallback::regCreateVertexBufferAttribute(&createVertexBufferAttributeImp);
        CKVRenderCallback::regCreateVertexIndex(&createVertexIndexImp);
        CKVRenderCallback::regCreateBufferGeometry(&createBufferGeometryImp);
    }
};

// A host geometry made the way the host makes one: through the factory.
inline kv_shared_ptr<CKVBufferGeometryImp> makeHostGeometry()
{
    CKVBufferGeometry* made = CKVRenderCallback::createBufferGeometry();
    if (!made || !made->isKindOf(CKVBufferGeometryImp::desc()))
        return nullptr;
    return kv_shared_ptr<CKVBufferGeometryImp>(static_cast<CKVBufferGeometryImp*>(made));
}

// An axis-aligned square part in the z = 0 plane, two triangles.
inline kv_shared_ptr<CKVLogicBufferGeometry> makeSquarePart(float x0, float y0, float x1, float y1)
{
    float const vertices[] = {x0, y0, 0.0f, x1, y0, 0.0f, x1, y1, 0.0f, x0, y1, 0.0f};
    unsigned int const indices[] = {0, 1, 2, 0, 2, 3};
    kv_shared_ptr<CKVLogicBufferGeometry> part(new CKVLogicBufferGeometry);
    part->setVertexData(CKVVertexBufferAttribute::kVertex, vertices, 12);
    part->setIndexData(indices, 6);
    return part;
}

inline kv_shared_ptr<CKVLogicBufferGeometry> makeInstance(CKVMatrix3D const& placement)
{
    kv_shared_ptr<CKVLogicBufferGeometry> instance(new CKVLogicBufferGeometry);
    instance->setInstanceMatrix(placement);
    return instance;
}

inline std::vector<CKVLogicBufferGeometry*> rawPointers(std::vector<kv_shared_ptr<CKVLogicBufferGeometry>> const& list)
{
    std::vector<CKVLogicBufferGeometry*> raw;
    for (kv_shared_ptr<CKVLogicBufferGeometry> const& buffer : list)
        raw.push_back(buffer.get());
    return raw;
}

} // namespace Kelvor
