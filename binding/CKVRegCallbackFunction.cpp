#include "binding/CKVRegCallbackFunction.h"

#include "binding/KVRenderCommandDispatchFactory.h"
#include "scene/CKVBufferGeometryImp.h"
#include "scene/CKVSceneNodeImp.h"
#include "scene/CKVUniformImp.h"
#include "scene/CKVVertexBufferAttributeImp.h"
#include "scene/CKVVertexIndexImp.h"

#include "TarnwickRender/CKVRenderCallback.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVRegCallbackFunction, CKVSharedObject)

// The host expects its factory table filled in this order, and emptied in
// the same order. Each entry is one line, added when its class lands.
CKVRegCallbackFunction::CKVRegCallbackFunction()
{
    CKVRenderCallback::regCreateVertexBufferAttribute(&createVertexBufferAttributeImp);
    CKVRenderCallback::regCreateVertexIndex(&createVertexIndexImp);
    CKVRenderCallback::regCreateBufferGeometry(&createBufferGeometryImp);
    // regCreateTextGeometery: with CKVTextGeometryImp.
    CKVRenderCallback::regCreateUniform(&createUniformImp);
    CKVRenderCallback::regCreateSceneNode(&createSceneNodeImp);
    // regCreateAnimationResource: with CKVFBXAnimationImp.
    CKVRenderCallback::regCreateRenderCommandDispatch(&createRenderCommandDispatch);
    // Then the importers under "osgb"/".osgb", "s3c"/".s3c" and "lfp"/".lfp",
    // each held by a local reference only while it is registered twice.
}

CKVRegCallbackFunction::~CKVRegCallbackFunction()
{
    CKVRenderCallback::unregCreateVertexBufferAttribute();
    CKVRenderCallback::unregCreateVertexIndex();
    CKVRenderCallback::unregCreateBufferGeometry();
    CKVRenderCallback::unregCreateTextGeometry();
    CKVRenderCallback::unregCreateUniform();
    CKVRenderCallback::unregCreateSceneNode();
    CKVRenderCallback::unregCreateAnimationResource();
    CKVRenderCallback::unregCreateRenderCommandDispatch();
    // Then removeImportExport for "osgb", ".osgb", "s3c" and ".s3c"; "lfp"
    // and ".lfp" stay registered, which hosts rely on.
}

} // namespace Kelvor
