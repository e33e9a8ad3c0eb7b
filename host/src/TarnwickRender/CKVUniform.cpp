#include "TarnwickRender/CKVUniform.h"

#include <algorithm>

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVUniform, CKVSharedObject)

namespace {

enum class Kind { kNone, kFloat, kInt, kUInt };

Kind kindOf(CKVUniform::DataType type)
{
    if (type >= CKVUniform::kBool && type <= CKVUniform::kIntVec4)
        return Kind::kInt;
    if (type >= CKVUniform::kUInt && type <= CKVUniform::kUIntVec4)
        return Kind::kUInt;
    if (type >= CKVUniform::kFloat && type <= CKVUniform::kFloatVec4)
        return Kind::kFloat;
    return Kind::kNone;
}

} // namespace

CKVUniform::CKVUniform(char const* name, unsigned int type)
    : mName(name), mType(isValidType(type) ? static_cast<DataType>(type) : kInvalid), mNumElements(0)
{
    setNumElements(1);
}

CKVUniform::~CKVUniform() = default;

unsigned int CKVUniform::componentCount(DataType type)
{
    switch (type) {
    case kBool:
    case kInt:
    case kUInt:
    case kFloat:
        return 1;
    case kIntVec2:
    case kUIntVec2:
    case kFloatVec2:
        return 2;
    case kIntVec3:
    case kUIntVec3:
    case kFloatVec3:
        return 3;
    case kIntVec4:
    case kUIntVec4:
    case kFloatVec4:
        return 4;
    default:
        return 0;
    }
}

bool CKVUniform::setNumElements(unsigned int count)
{
    if (count == 0 || mType == kInvalid)
        return false;
    std::size_t const size = static_cast<std::size_t>(count) * getNumComponent();
    mFloats.clear();
    mInts.clear();
    mUInts.clear();
    switch (kindOf(mType)) {
    case Kind::kFloat:
        mFloats.assign(size, 0.0f);
        break;
    case Kind::kInt:
        mInts.assign(size, 0);
        break;
    case Kind::kUInt:
        mUInts.assign(size, 0u);
        break;
    case Kind::kNone:
        return false;
    }
    mNumElements = count;
    return true;
}

bool CKVUniform::storeFloats(DataType type, float const* value, unsigned int index)
{
    if (mType != type || index >= mNumElements)
        return false;
    unsigned int const n = getNumComponent();
    std::copy(value, value + n, mFloats.begin() + static_cast<std::ptrdiff_t>(index) * n);
    return true;
}

bool CKVUniform::storeInts(DataType type, int const* value)
{
    if (mType != type || mNumElements == 0)
        return false;
    std::copy(value, value + getNumComponent(), mInts.begin());
    return true;
}

bool CKVUniform::storeUInts(DataType type, unsigned int const* value)
{
    if (mType != type || mNumElements == 0)
        return false;
    std::copy(value, value + getNumComponent(), mUInts.begin());
    return true;
}

bool CKVUniform::setElement(float const (&value)[4], unsigned int index)
{
    return storeFloats(kFloatVec4, value, index);
}

bool CKVUniform::setValue(float const (&value)[4])
{
    return storeFloats(kFloatVec4, value, 0);
}

bool CKVUniform::setValue(float const (&value)[3])
{
    return storeFloats(kFloatVec3, value, 0);
}

bool CKVUniform::setValue(float const (&value)[2])
{
    return storeFloats(kFloatVec2, value, 0);
}

bool CKVUniform::setValue(float value)
{
    return storeFloats(kFloat, &value, 0);
}

bool CKVUniform::setValue(unsigned int const (&value)[4])
{
    return storeUInts(kUIntVec4, value);
}

bool CKVUniform::setValue(unsigned int const (&value)[3])
{
    return storeUInts(kUIntVec3, value);
}

bool CKVUniform::setValue(unsigned int const (&value)[2])
{
    return storeUInts(kUIntVec2, value);
}

bool CKVUniform::setValue(unsigned int value)
{
    return storeUInts(kUInt, &value);
}

bool CKVUniform::setValue(int const (&value)[4])
{
    return storeInts(kIntVec4, value);
}

bool CKVUniform::setValue(int const (&value)[3])
{
    return storeInts(kIntVec3, value);
}

bool CKVUniform::setValue(int const (&value)[2])
{
    return storeInts(kIntVec2, value);
}

bool CKVUniform::setValue(int value)
{
    return storeInts(kInt, &value);
}

bool CKVUniform::setValue(bool value)
{
    int const asInt = value ? 1 : 0;
    return storeInts(kBool, &asInt);
}

} // namespace Kelvor
