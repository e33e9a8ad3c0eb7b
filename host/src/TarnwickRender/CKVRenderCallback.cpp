#include "TarnwickRender/CKVRenderCallback.h"

#include <mutex>

namespace Kelvor {

namespace {

struct CallbackTable
{
    std::mutex mutex;
    CKVRenderCallback::CreateRenderContextFn createRenderContext = nullptr;
    CKVRenderCallback::DestroyRenderContextFn destroyRenderContext = nullptr;
    CKVRenderCallback::CreateVertexBufferAttributeFn createVertexBufferAttribute = nullptr;
    CKVRenderCallback::CreateVertexIndexFn createVertexIndex = nullptr;
    CKVRenderCallback::CreateBufferGeometryFn createBufferGeometry = nullptr;
    CKVRenderCallback::CreateTextGeometryFn createTextGeometry = nullptr;
    CKVRenderCallback::CreateUniformFn createUniform = nullptr;
    CKVRenderCallback::CreateSceneNodeFn createSceneNode = nullptr;
    CKVRenderCallback::CreateAnimationResourceFn createAnimationResource = nullptr;
    CKVRenderCallback::CreateRenderCommandDispatchFn createRenderCommandDispatch = nullptr;
    CKVRenderCallback::VerifyGraphicsModelFn verifyGraphicsModel = nullptr;
};

// Leaked on purpose: backends remove their entries from exit handlers and
// static destructors, which may run after ours would have.
CallbackTable& table()
{
    static CallbackTable* t = new CallbackTable;
    return *t;
}

template <class Fn>
bool store(Fn CallbackTable::*slot, Fn fn)
{
    if (!fn)
        return false;
    CallbackTable& t = table();
    std::lock_guard<std::mutex> lock(t.mutex);
    t.*slot = fn;
    return true;
}

template <class Fn>
void clear(Fn CallbackTable::*slot)
{
    CallbackTable& t = table();
    std::lock_guard<std::mutex> lock(t.mutex);
    t.*slot = nullptr;
}

// The function is copied out so that it runs without the lock: a factory may
// itself use the table (a context creating scene nodes, say).
template <class Fn>
Fn load(Fn CallbackTable::*slot)
{
    CallbackTable& t = table();
    std::lock_guard<std::mutex> lock(t.mutex);
    return t.*slot;
}

// Factories belong to the backend; nothing they throw may cross into the host.
template <class Fn, class... Args>
auto call(Fn CallbackTable::*slot, Args&&... args) -> decltype(load(slot)(args...))
{
    Fn fn = load(slot);
    if (!fn)
        return {};
    try {
        return fn(args...);
    } catch (...) {
        return {};
    }
}

} // namespace

bool CKVRenderCallback::regCreateRenderContext(CreateRenderContextFn fn)
{
    return store(&CallbackTable::createRenderContext, fn);
}

void CKVRenderCallback::unregCreateRenderContext()
{
    clear(&CallbackTable::createRenderContext);
}

bool CKVRenderCallback::regDestroyRenderContext(DestroyRenderContextFn fn)
{
    return store(&CallbackTable::destroyRenderContext, fn);
}

void CKVRenderCallback::unregDestroyRenderContext()
{
    clear(&CallbackTable::destroyRenderContext);
}

bool CKVRenderCallback::regCreateVertexBufferAttribute(CreateVertexBufferAttributeFn fn)
{
    return store(&CallbackTable::createVertexBufferAttribute, fn);
}

void CKVRenderCallback::unregCreateVertexBufferAttribute()
{
    clear(&CallbackTable::createVertexBufferAttribute);
}

bool CKVRenderCallback::regCreateVertexIndex(CreateVertexIndexFn fn)
{
    return store(&CallbackTable::createVertexIndex, fn);
}

void CKVRenderCallback::unregCreateVertexIndex()
{
    clear(&CallbackTable::createVertexIndex);
}

bool CKVRenderCallback::regCreateBufferGeometry(CreateBufferGeometryFn fn)
{
    return store(&CallbackTable::createBufferGeometry, fn);
}

void CKVRenderCallback::unregCreateBufferGeometry()
{
    clear(&CallbackTable::createBufferGeometry);
}

bool CKVRenderCallback::regCreateTextGeometery(CreateTextGeometryFn fn)
{
    return store(&CallbackTable::createTextGeometry, fn);
}

void CKVRenderCallback::unregCreateTextGeometry()
{
    clear(&CallbackTable::createTextGeometry);
}

bool CKVRenderCallback::regCreateUniform(CreateUniformFn fn)
{
    return store(&CallbackTable::createUniform, fn);
}

void CKVRenderCallback::unregCreateUniform()
{
    clear(&CallbackTable::createUniform);
}

bool CKVRenderCallback::regCreateSceneNode(CreateSceneNodeFn fn)
{
    return store(&CallbackTable::createSceneNode, fn);
}

void CKVRenderCallback::unregCreateSceneNode()
{
    clear(&CallbackTable::createSceneNode);
}

bool CKVRenderCallback::regCreateAnimationResource(CreateAnimationResourceFn fn)
{
    return store(&CallbackTable::createAnimationResource, fn);
}

void CKVRenderCallback::unregCreateAnimationResource()
{
    clear(&CallbackTable::createAnimationResource);
}

bool CKVRenderCallback::regCreateRenderCommandDispatch(CreateRenderCommandDispatchFn fn)
{
    return store(&CallbackTable::createRenderCommandDispatch, fn);
}

void CKVRenderCallback::unregCreateRenderCommandDispatch()
{
    clear(&CallbackTable::createRenderCommandDispatch);
}

void CKVRenderCallback::setGraphicsModelVerifier(VerifyGraphicsModelFn fn)
{
    CallbackTable& t = table();
    std::lock_guard<std::mutex> lock(t.mutex);
    t.verifyGraphicsModel = fn;
}

CKVRenderContext* CKVRenderCallback::createRenderContext(int id)
{
    return call(&CallbackTable::createRenderContext, id);
}

bool CKVRenderCallback::destroyRenderContext(CKVRenderContext*& context)
{
    return context && call(&CallbackTable::destroyRenderContext, context);
}

CKVVertexBufferAttribute* CKVRenderCallback::createVertexBufferAttribute(CKVVertexBufferAttribute::Name name)
{
    return call(&CallbackTable::createVertexBufferAttribute, name);
}

CKVVertexIndex* CKVRenderCallback::createVertexIndex(unsigned int mode)
{
    return call(&CallbackTable::createVertexIndex, mode);
}

CKVBufferGeometry* CKVRenderCallback::createBufferGeometry()
{
    return call(&CallbackTable::createBufferGeometry);
}

CKVTextGeometry* CKVRenderCallback::createTextGeometry()
{
    return call(&CallbackTable::createTextGeometry);
}

CKVUniform* CKVRenderCallback::createUniform(char const* name, unsigned int dataType)
{
    return call(&CallbackTable::createUniform, name, dataType);
}

CKVSceneNode* CKVRenderCallback::createSceneNode()
{
    return call(&CallbackTable::createSceneNode);
}

CKVAnimationResource* CKVRenderCallback::createAnimationResource(unsigned int type)
{
    return call(&CallbackTable::createAnimationResource, type);
}

CKVRenderCommandDispatch* CKVRenderCallback::createRenderCommandDispatch(unsigned int id)
{
    return call(&CallbackTable::createRenderCommandDispatch, id);
}

bool CKVRenderCallback::verifyGraphicsModel(CKVGraphicsModel* model)
{
    if (!model)
        return false;
    VerifyGraphicsModelFn verify = load(&CallbackTable::verifyGraphicsModel);
    return verify ? verify(model) : true;
}

} // namespace Kelvor
