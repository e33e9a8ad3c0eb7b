#include "binding/CKVRegCallbackFunction.h"

#include "binding/KVRenderCommandDispatchFactory.h"
#include "fbx/CKVFBXAnimationImp.h"
#include "models/CKVLfpImport.h"
#include "models/CKVOSGBImport.h"
#include "models/CKVS3CImport.h"
#include "scene/CKVBufferGeometryImp.h"
#include "scene/CKVSceneNodeImp.h"
#include "scene/CKVTextGeometryImp.h"
#include "scene/CKVUniformImp.h"
#include "scene/CKVVertexBufferAttributeImp.h"
#include "scene/CKVVertexIndexImp.h"

#include "TarnwickRender/CKVRenderCallback.h"
#include "TarnwickStream/CKVModelIOManager.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVRegCallbackFunction, CKVSharedObject)

// The host expects its factory table filled in this order, and emptied in
// the same order. Each entry is one line, added when its class lands.
CKVRegCallbackFunction::CKVRegCallbackFunction()
{
    CKVRenderCallback::regCreateVertexBufferAttribute(&createVertexBufferAttributeImp);
    CKVRenderCallback::regCreateVertexIndex(&createVertexIndexImp);
    CKVRenderCallback::regCreateBufferGeometry(&createBufferGeometryImp);
    CKVRenderCallback::regCreateTextGeometery(&createTextGeometryImp);
    CKVRenderCallback::regCreateUniform(&createUniformImp);
    CKVRenderCallback::regCreateSceneNode(&createSceneNodeImp);
    CKVRenderCallback::regCreateAnimationResource(&createAnimationResourceImp);
    CKVRenderCallback::regCreateRenderCommandDispatch(&createRenderCommandDispatch);
    // Each importer is held here only while it is registered under both of
    // its keys; from then on the host's registry keeps it alive.
    {
        kv_shared_ptr<CKVModelImportExport> importer(new CKVOSGBImport);
        CKVModelIOManager::instance()->addImportExport("osgb", importer.get());
        CKVModelIOManager::instance()->addImportExport(".osgb", importer.get());
    }
    {
        kv_shared_ptr<CKVModelImportExport> importer(new CKVS3CImport);
        CKVModelIOManager::instance()->addImportExport("s3c", importer.get());
        CKVModelIOManager::instance()->addImportExport(".s3c", importer.get());
    }
    {
        kv_shared_ptr<CKVModelImportExport> importer(new CKVLfpImport);
        CKVModelIOManager::instance()->addImportExport("lfp", importer.get());
        CKVModelIOManager::instance()->addImportExport(".lfp", importer.get());
    }
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
    CKVModelIOManager::instance()->removeImportExport("osgb");
    CKVModelIOManager::instance()->removeImportExport(".osgb");
    CKVModelIOManager::instance()->removeImportExport("s3c");
    CKVModelIOManager::instance()->removeImportExport(".s3c");
    // "lfp" and ".lfp" stay registered, which hosts rely on.
}

} // namespace Kelvor
