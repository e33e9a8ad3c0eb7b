#pragma once

#include "TarnwickRender/CKVVertexBufferAttribute.h"

#include <osg/Array>
#include <osg/ref_ptr>

namespace Kelvor {

// One named attribute buffer of a buffer geometry, kept as the very
// osg::Array that the geometry draws: Vec2, Vec3 or Vec4 by the name's
// element size. Writes mark the array dirty and OpenSceneGraph uploads it at
// the next bind; nothing else is kept on the side.
class CKVVertexBufferAttributeImp : public CKVVertexBufferAttribute
{
    KV_DECLARE_RUNTIME_CLASS(CKVVertexBufferAttributeImp)
public:
    // A name whose element size has no array type (out of range) leaves the
    // attribute without an array: every data operation then fails.
    explicit CKVVertexBufferAttributeImp(Name name = kVertex);
    ~CKVVertexBufferAttributeImp() override;

    bool setData(float const* data, unsigned int count) override;
    bool updateData(unsigned int offset, float const* data, unsigned int count) override;
    float* resizeData(unsigned int count) override;
    void* getData() override;
    unsigned int getDataSize() const override;

    osg::Array* getOSGArray() const { return mArray.get(); }

private:
    float* floats();

    osg::ref_ptr<osg::Array> mArray;
};

// Factory for the host's table.
CKVVertexBufferAttribute* createVertexBufferAttributeImp(CKVVertexBufferAttribute::Name name);

} // namespace Kelvor
