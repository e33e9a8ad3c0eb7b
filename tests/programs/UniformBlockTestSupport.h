#pragma once

#include <osg/Array>
#include <osg/BufferIndexBinding>
#include <osg/BufferObject>
#include <osg/Matrixf>
#include <osg/StateSet>

#include <vector>

namespace Kelvor {

// Uniform blocks for the shading tests, which draw with the program
// manager's shaders but without a render context to fill their blocks.

// Binds `values` as the uniform buffer at binding point `index`.
inline void bindBlock(osg::StateSet& stateSet, unsigned int index, std::vector<float> const& values)
{
    osg::ref_ptr<osg::FloatArray> data = new osg::FloatArray(values.begin(), values.end());
    data->setBufferObject(new osg::UniformBufferObject);
    stateSet.setAttributeAndModes(
        new osg::UniformBufferBinding(index, data.get(), 0, values.size() * sizeof(float)));
}

// `count` identity matrices, column by column.
inline std::vector<float> identities(int count)
{
    osg::Matrixf const identity;  // one object: begin and end of the range must be of the same matrix
    std::vector<float> data;
    for (int m = 0; m < count; ++m)
        data.insert(data.end(), identity.ptr(), identity.ptr() + 16);
    return data;
}

} // namespace Kelvor
