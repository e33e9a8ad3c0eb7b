#pragma once

#include "TarnwickCommon/CKVSharedObject.h"
#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickStream/CKVRenderLOD.h"

#include <vector>

namespace Kelvor {

// An imported model: one tree of levels per tile.
class CKVModelBase : public CKVSharedObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVModelBase)
public:
    CKVModelBase();
    ~CKVModelBase() override;

    // Keeps a reference. False for null.
    bool addLOD(CKVRenderLOD const* lod);
    unsigned int getNumLOD() const { return static_cast<unsigned int>(mLODs.size()); }
    CKVRenderLOD const* getLOD(unsigned int index) const;

private:
    std::vector<kv_shared_ptr<CKVRenderLOD const>> mLODs;
};

} // namespace Kelvor
