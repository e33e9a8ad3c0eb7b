#include "TarnwickRender/CKVGraphicsModel.h"

#include "TarnwickRender/CKVSceneNode.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVGraphicsModel, CKVSharedObject)

CKVGraphicsModel::CKVGraphicsModel() : mCache(new CKVRenderCommandCache)
{
}

CKVGraphicsModel::~CKVGraphicsModel() = default;

CKVRenderCommandCache* CKVGraphicsModel::getRenderCommandCache()
{
    return mCache.get();
}

CKVGraphicsModelField* CKVGraphicsModel::getField(unsigned int index)
{
    if (index >= kFieldCount)
        return nullptr;
    std::lock_guard<std::mutex> lock(mFieldMutex);
    return mFields[index].get();
}

CKVBndBox CKVGraphicsModel::getBoundingBox()
{
    CKVBndBox box;
    for (unsigned int i = 0; i < kFieldCount; ++i) {
        // Held, so that a field replaced meanwhile stays alive for the call.
        kv_shared_ptr<CKVGraphicsModelField> field(getField(i));
        CKVSceneNode* node = field ? field->getNodeObject() : nullptr;
        if (node)
            box.addBndBox(node->computeBoundingBox());
    }
    return box;
}

bool CKVGraphicsModel::setField(unsigned int index, CKVGraphicsModelField* field)
{
    if (index >= kFieldCount)
        return false;
    kv_shared_ptr<CKVGraphicsModelField> old;
    std::lock_guard<std::mutex> lock(mFieldMutex);
    old = mFields[index];
    mFields[index] = field;
    return true;
}

} // namespace Kelvor
