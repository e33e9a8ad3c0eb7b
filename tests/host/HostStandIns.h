#pragma once

#include "TarnwickRender/CKVBufferGeometry.h"
#include "TarnwickRender/CKVRenderCallback.h"
#include "TarnwickRender/CKVSceneNode.h"
#include "TarnwickRender/CKVVertexBufferAttribute.h"
#include "TarnwickRender/CKVVertexIndex.h"

namespace Kelvor {
namespace hosttest {

// Host-side stand-ins for the backend's objects: the base classes keep all
// data in memory, so host code can be built and checked with no backend
// loaded.
class MemoryNode : public CKVSceneNode
{
};
class MemoryGeometry : public CKVBufferGeometry
{
};
class MemoryAttribute : public CKVVertexBufferAttribute
{
public:
    explicit MemoryAttribute(Name name) : CKVVertexBufferAttribute(name) {}
};
class MemoryIndex : public CKVVertexIndex
{
public:
    explicit MemoryIndex(unsigned int mode) : CKVVertexIndex(mode) {}
};

// The stand-ins as the host's factories while the scope lasts, so that no
// test sees another's.
class MemoryFactoriesScope
{
public:
    MemoryFactoriesScope()
    {
        CKVRenderCallback::regCreateSceneNode([]() -> CKVSceneNode* { return new MemoryNode(); });
        CKVRenderCallback::regCreateBufferGeometry([]() -> CKVBufferGeometry* { return new MemoryGeometry(); });
        CKVRenderCallback::regCreateVertexBufferAttribute(
            [](CKVVertexBufferAttribute::Name name) -> CKVVertexBufferAttribute* { return new MemoryAttribute(name); });
        CKVRenderCallback::regCreateVertexIndex([](unsigned int mode) -> CKVVertexIndex* { return new MemoryIndex(mode); });
    }
    ~MemoryFactoriesScope()
    {
        CKVRenderCallback::unregCreateSceneNode();
        CKVRenderCallback::unregCreateBufferGeometry();
        CKVRenderCallback::unregCreateVertexBufferAttribute();
        CKVRenderCallback::unregCreateVertexIndex();
    }
    MemoryFactoriesScope(MemoryFactoriesScope const&) = delete;
    MemoryFactoriesScope& operator=(MemoryFactoriesScope const&) = delete;
};

} // namespace hosttest
} // namespace Kelvor
