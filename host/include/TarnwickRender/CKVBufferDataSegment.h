#pragma once

namespace Kelvor {

// A run of indices in a vertex index buffer: one indirect draw command.
class CKVBufferDataSegment
{
public:
    CKVBufferDataSegment() = default;
    CKVBufferDataSegment(unsigned int offset, unsigned int count) : mOffset(offset), mCount(count) {}

    unsigned int getOffset() const { return mOffset; }
    unsigned int getCount() const { return mCount; }
    // One past the last index.
    unsigned int getEnd() const { return mOffset + mCount; }
    bool contains(unsigned int index) const { return index >= mOffset && index - mOffset < mCount; }

    bool operator==(CKVBufferDataSegment const& other) const
    {
        return mOffset == other.mOffset && mCount == other.mCount;
    }
    bool operator!=(CKVBufferDataSegment const& other) const { return !(*this == other); }

private:
    unsigned int mOffset = 0;
    unsigned int mCount = 0;
};

} // namespace Kelvor
