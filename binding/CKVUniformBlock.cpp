#include "binding/CKVUniformBlock.h"

#include <algorithm>

namespace Kelvor {

CKVUniformBlock::CKVUniformBlock(unsigned int bindingIndex, unsigned int floatCount)
    : mArray(new osg::FloatArray(floatCount))
{
    std::fill(mArray->begin(), mArray->end(), 0.0f);
    mArray->setBufferObject(new osg::UniformBufferObject);
    mBinding = new osg::UniformBufferBinding(bindingIndex, mArray.get(), 0,
                                             static_cast<GLsizeiptr>(floatCount * sizeof(float)));
}

bool CKVUniformBlock::set(unsigned int first, float const* values, unsigned int count)
{
    if (!mArray.valid() || !values || first + count > mArray->size() || first + count < first)
        return false;
    std::copy(values, values + count, mArray->begin() + first);
    mArray->dirty();
    return true;
}

float CKVUniformBlock::get(unsigned int index) const
{
    return mArray.valid() && index < mArray->size() ? (*mArray)[index] : 0.0f;
}

} // namespace Kelvor
