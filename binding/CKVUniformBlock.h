#pragma once

#include <osg/Array>
#include <osg/BufferIndexBinding>
#include <osg/BufferObject>
#include <osg/ref_ptr>

namespace Kelvor {

// A uniform block that every shader shares: a float array in a uniform
// buffer, bound at a fixed index. Writers change floats in place and mark
// the array dirty, so the buffer is refreshed once before the next draw.
class CKVUniformBlock
{
public:
    CKVUniformBlock() = default;
    CKVUniformBlock(unsigned int bindingIndex, unsigned int floatCount);

    bool valid() const { return mArray.valid(); }
    osg::FloatArray* getArray() const { return mArray.get(); }
    osg::UniformBufferBinding* getBinding() const { return mBinding.get(); }
    unsigned int getFloatCount() const { return mArray.valid() ? mArray->getNumElements() : 0u; }

    // False, with nothing written, when the floats would not fit.
    bool set(unsigned int first, float const* values, unsigned int count);
    bool set(unsigned int first, float value) { return set(first, &value, 1); }
    float get(unsigned int index) const;

private:
    osg::ref_ptr<osg::FloatArray> mArray;
    osg::ref_ptr<osg::UniformBufferBinding> mBinding;
};

} // namespace Kelvor
