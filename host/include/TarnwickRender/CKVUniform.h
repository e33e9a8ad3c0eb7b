#pragma once

#include "TarnwickCommon/CKVAString.h"
#include "TarnwickCommon/CKVSharedObject.h"

#include <vector>

namespace Kelvor {

// A typed shader value that the host sets on a scene node. Each setter
// accepts exactly one data type and returns false, changing nothing, for any
// other. The base keeps the values; the backend overrides the setters to
// feed its own uniform and calls the base to keep both in step.
class CKVUniform : public CKVSharedObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVUniform)
public:
    enum DataType : unsigned int {
        kInvalid = 0,
        kBool = 1,
        kInt = 2,
        kIntVec2 = 3,
        kIntVec3 = 4,
        kIntVec4 = 5,
        kUInt = 6,
        kUIntVec2 = 7,
        kUIntVec3 = 8,
        kUIntVec4 = 9,
        kFloat = 10,
        kFloatVec2 = 11,
        kFloatVec3 = 12,
        kFloatVec4 = 13
    };

    ~CKVUniform() override;

    char const* getName() const { return mName.c_str(); }
    DataType getDataType() const { return mType; }
    // Components of one element: 1 to 4; 0 for an invalid type.
    unsigned int getNumComponent() const { return componentCount(mType); }
    static unsigned int componentCount(DataType type);
    static bool isValidType(unsigned int type) { return type >= kBool && type <= kFloatVec4; }

    // Makes an array of `count` elements, all zero. False for 0 or an invalid type.
    virtual bool setNumElements(unsigned int count);
    unsigned int getNumElements() const { return mNumElements; }

    // Element `index` of a kFloatVec4 array, the form used for plane arrays.
    virtual bool setElement(float const (&value)[4], unsigned int index);
    // Element 0. The arrays are taken by reference so that their length
    // picks the overload.
    virtual bool setValue(float const (&value)[4]);
    virtual bool setValue(float const (&value)[3]);
    virtual bool setValue(float const (&value)[2]);
    virtual bool setValue(float value);
    virtual bool setValue(unsigned int const (&value)[4]);
    virtual bool setValue(unsigned int const (&value)[3]);
    virtual bool setValue(unsigned int const (&value)[2]);
    virtual bool setValue(unsigned int value);
    virtual bool setValue(int const (&value)[4]);
    virtual bool setValue(int const (&value)[3]);
    virtual bool setValue(int const (&value)[2]);
    virtual bool setValue(int value);
    virtual bool setValue(bool value);

    // Component storage, getNumElements() * getNumComponent() long for the
    // kind of the type (bools are ints 0 or 1), empty for the other kinds.
    std::vector<float> const& getFloatData() const { return mFloats; }
    std::vector<int> const& getIntData() const { return mInts; }
    std::vector<unsigned int> const& getUIntData() const { return mUInts; }

protected:
    // An invalid type makes a uniform that refuses every value.
    CKVUniform(char const* name, unsigned int type);

private:
    bool storeFloats(DataType type, float const* value, unsigned int index);
    bool storeInts(DataType type, int const* value);
    bool storeUInts(DataType type, unsigned int const* value);

    CKVAString mName;
    DataType mType;
    unsigned int mNumElements;
    std::vector<float> mFloats;
    std::vector<int> mInts;
    std::vector<unsigned int> mUInts;
};

} // namespace Kelvor
