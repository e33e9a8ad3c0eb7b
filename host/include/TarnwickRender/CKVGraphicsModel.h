#pragma once

#include "TarnwickCommon/CKVSharedObject.h"
#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickGeometry/CKVBndBox.h"
#include "TarnwickRender/CKVGraphicsModelField.h"
#include "TarnwickRender/CKVRenderCommandCache.h"

#include <mutex>

namespace Kelvor {

// The content of a scene: up to ten fields, each a tree of scene nodes, and
// the command cache through which changes to them reach the render thread.
// Usable as it is; a host with its own bookkeeping overrides the virtuals.
// Fields may be set from any thread.
class CKVGraphicsModel : public CKVSharedObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVGraphicsModel)
public:
    static constexpr unsigned int kFieldCount = 10;

    CKVGraphicsModel();
    ~CKVGraphicsModel() override;

    CKVGraphicsModel(CKVGraphicsModel const&) = delete;
    CKVGraphicsModel& operator=(CKVGraphicsModel const&) = delete;

    // The model's own cache, made with the model.
    virtual CKVRenderCommandCache* getRenderCommandCache();
    // Field 0 to 9, or null for an empty slot or an index out of range.
    virtual CKVGraphicsModelField* getField(unsigned int index);
    // The union of the fields' node boxes; invalid when no field has extent.
    // Node trees change on the render thread, so call it there.
    virtual CKVBndBox getBoundingBox();

    // False for an index out of range. Null empties the slot.
    bool setField(unsigned int index, CKVGraphicsModelField* field);

private:
    kv_shared_ptr<CKVRenderCommandCache> mCache;
    mutable std::mutex mFieldMutex;
    kv_shared_ptr<CKVGraphicsModelField> mFields[kFieldCount];
};

} // namespace Kelvor
