#pragma once

#include "TarnwickRender/CKVBufferGeometry.h"
#include "TarnwickRender/CKVRenderCallback.h"
#include "TarnwickRender/CKVSceneNode.h"
#include "TarnwickRender/CKVVertexBufferAttribute.h"
#include "TarnwickRender/CKVVertexIndex.h"

#include <gtest/gtest.h>

namespace Kelvor {
namespace apptest {

// Host-side stand-ins for the backend: the base classes keep all data in
// memory, so the viewer's content can be built and checked with no backend
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

// Registers the stand-ins as the host's factories for each test and takes
// them away afterwards, so that no test sees another's.
class MemoryBackendTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        CKVRenderCallback::regCreateSceneNode([]() -> CKVSceneNode* { return new MemoryNode(); });
        CKVRenderCallback::regCreateBufferGeometry([]() -> CKVBufferGeometry* { return new MemoryGeometry(); });
        CKVRenderCallback::regCreateVertexBufferAttribute(
            [](CKVVertexBufferAttribute::Name name) -> CKVVertexBufferAttribute* { return new MemoryAttribute(name); });
        CKVRenderCallback::regCreateVertexIndex([](unsigned int mode) -> CKVVertexIndex* { return new MemoryIndex(mode); });
    }
    void TearDown() override
    {
        CKVRenderCallback::unregCreateSceneNode();
        CKVRenderCallback::unregCreateBufferGeometry();
        CKVRenderCallback::unregCreateVertexBufferAttribute();
        CKVRenderCallback::unregCreateVertexIndex();
    }
};

} // namespace apptest
} // namespace Kelvor
