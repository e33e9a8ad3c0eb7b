#pragma once

#include "TarnwickRender/CKVVertexBufferAttribute.h"

namespace Kelvor {

class CKVAnimationResource;
class CKVBufferGeometry;
class CKVGraphicsModel;
class CKVRenderCommandDispatch;
class CKVRenderContext;
class CKVSceneNode;
class CKVTextGeometry;
class CKVUniform;
class CKVVertexIndex;

// The table through which a rendering backend hands the host its factories,
// and the host's way to call them. A backend registers at load time and
// removes its entries when it unloads; the `create...` helpers answer null
// (or false) while nothing is registered and never throw. A registration with
// a null function is refused and leaves the table as it was. All operations
// are safe from any thread.
class CKVRenderCallback
{
public:
    using CreateRenderContextFn = CKVRenderContext* (*)(int id);
    using DestroyRenderContextFn = bool (*)(CKVRenderContext*& context);
    using CreateVertexBufferAttributeFn = CKVVertexBufferAttribute* (*)(CKVVertexBufferAttribute::Name name);
    using CreateVertexIndexFn = CKVVertexIndex* (*)(unsigned int mode);
    using CreateBufferGeometryFn = CKVBufferGeometry* (*)();
    using CreateTextGeometryFn = CKVTextGeometry* (*)();
    using CreateUniformFn = CKVUniform* (*)(char const* name, unsigned int dataType);
    using CreateSceneNodeFn = CKVSceneNode* (*)();
    using CreateAnimationResourceFn = CKVAnimationResource* (*)(unsigned int type);
    using CreateRenderCommandDispatchFn = CKVRenderCommandDispatch* (*)(unsigned int id);
    // Answers whether a graphics model may be attached to a render context.
    using VerifyGraphicsModelFn = bool (*)(CKVGraphicsModel* model);

    CKVRenderCallback() = delete;

    static bool regCreateRenderContext(CreateRenderContextFn fn);
    static void unregCreateRenderContext();
    static bool regDestroyRenderContext(DestroyRenderContextFn fn);
    static void unregDestroyRenderContext();
    static bool regCreateVertexBufferAttribute(CreateVertexBufferAttributeFn fn);
    static void unregCreateVertexBufferAttribute();
    static bool regCreateVertexIndex(CreateVertexIndexFn fn);
    static void unregCreateVertexIndex();
    static bool regCreateBufferGeometry(CreateBufferGeometryFn fn);
    static void unregCreateBufferGeometry();
    static bool regCreateTextGeometery(CreateTextGeometryFn fn);
    static void unregCreateTextGeometry();
    static bool regCreateUniform(CreateUniformFn fn);
    static void unregCreateUniform();
    static bool regCreateSceneNode(CreateSceneNodeFn fn);
    static void unregCreateSceneNode();
    static bool regCreateAnimationResource(CreateAnimationResourceFn fn);
    static void unregCreateAnimationResource();
    static bool regCreateRenderCommandDispatch(CreateRenderCommandDispatchFn fn);
    static void unregCreateRenderCommandDispatch();

    // Null removes the host's verifier again.
    static void setGraphicsModelVerifier(VerifyGraphicsModelFn fn);

    static CKVRenderContext* createRenderContext(int id);
    // False when nothing is registered or the backend refuses; on success the
    // pointer has been cleared.
    static bool destroyRenderContext(CKVRenderContext*& context);
    static CKVVertexBufferAttribute* createVertexBufferAttribute(CKVVertexBufferAttribute::Name name);
    static CKVVertexIndex* createVertexIndex(unsigned int mode);
    static CKVBufferGeometry* createBufferGeometry();
    static CKVTextGeometry* createTextGeometry();
    static CKVUniform* createUniform(char const* name, unsigned int dataType);
    static CKVSceneNode* createSceneNode();
    static CKVAnimationResource* createAnimationResource(unsigned int type);
    static CKVRenderCommandDispatch* createRenderCommandDispatch(unsigned int id);

    // False for null; otherwise the verifier's answer, or true without one.
    static bool verifyGraphicsModel(CKVGraphicsModel* model);
};

} // namespace Kelvor
