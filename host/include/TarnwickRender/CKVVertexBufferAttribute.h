#pragma once

#include "TarnwickCommon/CKVSharedObject.h"

#include <vector>

namespace Kelvor {

// One named vertex attribute buffer of a buffer geometry. All sizes and
// offsets of this interface count floats, not elements. The backend
// overrides the data operations to keep the floats in its own arrays; the
// base keeps them in memory so that the host can work without a backend.
class CKVVertexBufferAttribute : public CKVSharedObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVVertexBufferAttribute)
public:
    // The name is also the shader's attribute location. Rows 1 to 4 of the
    // instance matrix are the rows of the row-vector matrix that places one
    // instance, that is the columns of the host's CKVMatrix3D; row 4 holds
    // the translation.
    enum Name : unsigned int {
        kVertex = 0,
        kNormal = 1,
        kTexCoord = 2,
        kInstanceMatrixR1 = 3,
        kInstanceMatrixR2 = 4,
        kInstanceMatrixR3 = 5,
        kInstanceMatrixR4 = 6,
        kColor = 7,
        kNameCount = 8
    };

    ~CKVVertexBufferAttribute() override;

    Name getName() const { return mName; }
    // Floats per element: 3 for vertex and normal, 2 for texture coordinates,
    // 4 for instance rows and colour; 0 for a name out of range.
    unsigned int getNumElementPerAttribute() const { return elementSize(mName); }
    static unsigned int elementSize(Name name);

    // Replaces the content with `count` floats, rounded down to whole
    // elements. False, with nothing changed, on null data or no whole element.
    virtual bool setData(float const* data, unsigned int count);
    // Overwrites `count` floats from float `offset`. False, with nothing
    // changed, on null input or a range past the end.
    virtual bool updateData(unsigned int offset, float const* data, unsigned int count);
    // Sizes the content to `count` floats, rounded down to whole elements,
    // and hands back where to write them, so that a caller filling a large
    // buffer writes it in place instead of through a copy of its own. Kept
    // floats keep their values, new ones are zero; the content counts as
    // changed. Null, with nothing changed, for no whole element.
    virtual float* resizeData(unsigned int count);
    // The floats, or null when empty.
    virtual void* getData();
    virtual unsigned int getDataSize() const;

    // Whole elements held.
    unsigned int getNumElement() const;

protected:
    explicit CKVVertexBufferAttribute(Name name);

private:
    Name mName;
    std::vector<float> mData;
};

} // namespace Kelvor
