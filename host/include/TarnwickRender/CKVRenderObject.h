#pragma once

#include "TarnwickCommon/CKVSharedObject.h"
#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickGeometry/CKVBndBox.h"
#include "TarnwickRender/CKVLogicRenderObject.h"
#include "TarnwickRender/CKVProgramParam.h"

namespace Kelvor {

// Anything a scene node can hold and draw: buffer geometry, text, a group.
class CKVRenderObject : public CKVSharedObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVRenderObject)
public:
    ~CKVRenderObject() override;

    // The object's extent in the frame of the node that holds it; an invalid
    // box when it has none.
    virtual CKVBndBox computeBoundingBox() const;
    // Adds the switches this object needs (instance matrices, for one) to
    // `param`; the kind and the other bits are left alone.
    virtual void getProgramParam(CKVProgramParam& param) const;

    // The logic object of an object that shows one drawable as a whole, such
    // as a text label; null for objects that pack several (buffer geometry
    // answers per hit through its own query).
    CKVLogicRenderObject const* getLogicObject() const { return mLogicObject.get(); }
    void setLogicObject(CKVLogicRenderObject* logic) { mLogicObject = logic; }

protected:
    CKVRenderObject() = default;
    // A copy shares the logic object: it shows the same drawable.
    CKVRenderObject(CKVRenderObject const&) = default;
    CKVRenderObject& operator=(CKVRenderObject const&) = default;

private:
    kv_shared_ptr<CKVLogicRenderObject> mLogicObject;
};

} // namespace Kelvor
