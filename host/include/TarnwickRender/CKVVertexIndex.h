#pragma once

#include "TarnwickCommon/CKVSharedObject.h"
#include "TarnwickRender/CKVBufferDataSegment.h"

#include <vector>

namespace Kelvor {

// The index buffer of a buffer geometry, with its primitive mode, its
// instance count and the segments that are drawn (one indirect command
// each). The backend overrides the data operations and updateDrawRange.
class CKVVertexIndex : public CKVSharedObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVVertexIndex)
public:
    enum Mode : unsigned int { kPoints = 0, kLines = 1, kTriangles = 2, kQuads = 3, kPatches = 4, kModeCount = 5 };

    ~CKVVertexIndex() override;

    unsigned int getDrawMode() const { return mMode; }
    // Indices per primitive of the mode; patches count as triangles. 0 for
    // a mode out of range.
    unsigned int getNumIndexPerPrimitive() const;

    // Replaces the indices. False, with nothing changed, on null or empty input.
    virtual bool setData(unsigned int const* data, unsigned int count);
    // Overwrites `count` indices from `offset`. False, with nothing changed,
    // on null input or a range past the end.
    virtual bool updateData(unsigned int offset, unsigned int const* data, unsigned int count);
    // The indices, or null when empty.
    virtual void* getData();
    virtual unsigned int getDataSize() const;

    // 0 means the geometry is not instanced.
    virtual void setNumInstance(unsigned int count);
    virtual unsigned int getNumInstance() const;

    // Brings the segments into drawing order after they or the indices
    // changed: clamped to the index count, empty ones dropped, sorted by
    // offset, and touching or overlapping ones merged so that each index is
    // drawn once with as few commands as possible. The backend extends it to
    // rebuild its draw commands, so the host calls it after every change.
    virtual void updateDrawRange();

    void addSegment(CKVBufferDataSegment const& segment) { mSegments.push_back(segment); }
    void setSegments(std::vector<CKVBufferDataSegment> const& segments) { mSegments = segments; }
    void clearSegments() { mSegments.clear(); }
    std::vector<CKVBufferDataSegment> const& getSegments() const { return mSegments; }
    unsigned int getNumSegment() const { return static_cast<unsigned int>(mSegments.size()); }
    // A segment of count 0 for an index out of range.
    CKVBufferDataSegment getSegment(unsigned int index) const;

protected:
    explicit CKVVertexIndex(unsigned int mode);

private:
    unsigned int mMode;
    unsigned int mNumInstance = 0;
    std::vector<unsigned int> mIndices;
    std::vector<CKVBufferDataSegment> mSegments;
};

} // namespace Kelvor
