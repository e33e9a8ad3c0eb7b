#pragma once

#include "TarnwickCommon/CKVSharedObject.h"
#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickGeometry/CKVPoint3D.h"
#include "TarnwickRender/CKVDrawable.h"

namespace Kelvor {

class CKVSceneNode;

// The answer to a pick or a selection: the drawable that was hit and where.
// The result keeps the drawable and the node alive for as long as the host
// holds it, since it usually reaches the host after the frame that made it.
class CKVSelectionResult : public CKVSharedObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVSelectionResult)
public:
    // Instance index of a hit on geometry that is not instanced.
    static constexpr unsigned int kNoInstance = ~0u;

    CKVSelectionResult();
    CKVSelectionResult(CKVSelectionResult const& other);
    CKVSelectionResult& operator=(CKVSelectionResult const& other);
    ~CKVSelectionResult() override;

    CKVDrawable const* getDrawable() const;
    void setDrawable(CKVDrawable const* drawable);

    // World position of the hit.
    CKVPoint3D const& getPosition() const { return mPosition; }
    void setPosition(CKVPoint3D const& position) { mPosition = position; }

    unsigned int getInstanceIndex() const { return mInstanceIndex; }
    void setInstanceIndex(unsigned int index) { mInstanceIndex = index; }

    // The scene node whose render object was hit, when the backend knows it.
    CKVSceneNode const* getSceneNode() const;
    void setSceneNode(CKVSceneNode const* node);

    // True once a drawable has been set.
    bool valid() const;

private:
    kv_shared_ptr<CKVDrawable const> mDrawable;
    CKVPoint3D mPosition;
    unsigned int mInstanceIndex;
    kv_shared_ptr<CKVSceneNode const> mSceneNode;
};

} // namespace Kelvor
