#pragma once

#include "TarnwickRender/CKVVertexIndex.h"

#include <osg/ref_ptr>

namespace Kelvor {

class CKVOSGMultiDrawElementsIndirectUInt;

// The host's index buffer kept in the indices of one multi-draw primitive
// set. Index changes stay on the CPU until updateDrawRange, which the host
// calls after every change: it rebuilds the indirect commands, one per
// segment, and marks the indices for upload.
class CKVVertexIndexImp : public CKVVertexIndex
{
    KV_DECLARE_RUNTIME_CLASS(CKVVertexIndexImp)
public:
    // A mode outside the known primitives leaves the index without a
    // primitive set: it holds no data and draws nothing.
    explicit CKVVertexIndexImp(unsigned int mode = kTriangles);
    ~CKVVertexIndexImp() override;

    bool setData(unsigned int const* data, unsigned int count) override;
    bool updateData(unsigned int offset, unsigned int const* data, unsigned int count) override;
    void* getData() override;
    unsigned int getDataSize() const override;

    void updateDrawRange() override;

    CKVOSGMultiDrawElementsIndirectUInt* getPrimitiveSet() const { return mPrimitiveSet.get(); }

private:
    osg::ref_ptr<CKVOSGMultiDrawElementsIndirectUInt> mPrimitiveSet;
};

// Factory for the host's table.
CKVVertexIndex* createVertexIndexImp(unsigned int mode);

} // namespace Kelvor
