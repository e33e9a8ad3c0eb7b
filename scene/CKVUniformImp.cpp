#include "scene/CKVUniformImp.h"

#include <osg/Vec2>
#include <osg/Vec3>
#include <osg/Vec4>

#include <new>

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVUniformImp, CKVUniform)

CKVUniform* createUniformImp(char const* name, unsigned int type)
{
    if (!CKVUniform::isValidType(type))
        return nullptr;
    return new (std::nothrow) CKVUniformImp(name ? name : "", type);
}

bool CKVUniformImp::osgTypeOf(unsigned int type, osg::Uniform::Type& osgType)
{
    switch (type) {
    case kBool: osgType = osg::Uniform::BOOL; return true;
    case kInt: osgType = osg::Uniform::INT; return true;
    case kIntVec2: osgType = osg::Uniform::INT_VEC2; return true;
    case kIntVec3: osgType = osg::Uniform::INT_VEC3; return true;
    case kIntVec4: osgType = osg::Uniform::INT_VEC4; return true;
    case kUInt: osgType = osg::Uniform::UNSIGNED_INT; return true;
    case kUIntVec2: osgType = osg::Uniform::UNSIGNED_INT_VEC2; return true;
    case kUIntVec3: osgType = osg::Uniform::UNSIGNED_INT_VEC3; return true;
    case kUIntVec4: osgType = osg::Uniform::UNSIGNED_INT_VEC4; return true;
    case kFloat: osgType = osg::Uniform::FLOAT; return true;
    case kFloatVec2: osgType = osg::Uniform::FLOAT_VEC2; return true;
    case kFloatVec3: osgType = osg::Uniform::FLOAT_VEC3; return true;
    case kFloatVec4: osgType = osg::Uniform::FLOAT_VEC4; return true;
    default: return false;
    }
}

CKVUniformImp::CKVUniformImp()
    : CKVUniform("", kInvalid)
{
}

CKVUniformImp::CKVUniformImp(char const* name, unsigned int type)
    : CKVUniform(name ? name : "", type)
{
    osg::Uniform::Type osgType = osg::Uniform::UNDEFINED;
    if (osgTypeOf(getDataType(), osgType))
        mUniform = new osg::Uniform(osgType, getName(), 1);
}

CKVUniformImp::~CKVUniformImp() = default;

bool CKVUniformImp::setNumElements(unsigned int count)
{
    osg::Uniform::Type osgType = osg::Uniform::UNDEFINED;
    if (!mUniform.valid() || !osgTypeOf(getDataType(), osgType))
        return false;
    if (!CKVUniform::setNumElements(count))
        return false;
    mUniform = new osg::Uniform(osgType, getName(), static_cast<int>(count));
    return true;
}

bool CKVUniformImp::setElement(float const (&value)[4], unsigned int index)
{
    if (!accepts(kFloatVec4) || !CKVUniform::setElement(value, index))
        return false;
    return mUniform->setElement(index, osg::Vec4(value[0], value[1], value[2], value[3]));
}

bool CKVUniformImp::setValue(float const (&value)[4])
{
    if (!accepts(kFloatVec4) || !CKVUniform::setValue(value))
        return false;
    return mUniform->setElement(0, osg::Vec4(value[0], value[1], value[2], value[3]));
}

bool CKVUniformImp::setValue(float const (&value)[3])
{
    if (!accepts(kFloatVec3) || !CKVUniform::setValue(value))
        return false;
    return mUniform->setElement(0, osg::Vec3(value[0], value[1], value[2]));
}

bool CKVUniformImp::setValue(float const (&value)[2])
{
    if (!accepts(kFloatVec2) || !CKVUniform::setValue(value))
        return false;
    return mUniform->setElement(0, osg::Vec2(value[0], value[1]));
}

bool CKVUniformImp::setValue(float value)
{
    if (!accepts(kFloat) || !CKVUniform::setValue(value))
        return false;
    return mUniform->setElement(0, value);
}

bool CKVUniformImp::setValue(unsigned int const (&value)[4])
{
    if (!accepts(kUIntVec4) || !CKVUniform::setValue(value))
        return false;
    return mUniform->setElement(0, value[0], value[1], value[2], value[3]);
}

bool CKVUniformImp::setValue(unsigned int const (&value)[3])
{
    if (!accepts(kUIntVec3) || !CKVUniform::setValue(value))
        return false;
    return mUniform->setElement(0, value[0], value[1], value[2]);
}

bool CKVUniformImp::setValue(unsigned int const (&value)[2])
{
    if (!accepts(kUIntVec2) || !CKVUniform::setValue(value))
        return false;
    return mUniform->setElement(0, value[0], value[1]);
}

bool CKVUniformImp::setValue(unsigned int value)
{
    if (!accepts(kUInt) || !CKVUniform::setValue(value))
        return false;
    return mUniform->setElement(0, value);
}

bool CKVUniformImp::setValue(int const (&value)[4])
{
    if (!accepts(kIntVec4) || !CKVUniform::setValue(value))
        return false;
    return mUniform->setElement(0, value[0], value[1], value[2], value[3]);
}

bool CKVUniformImp::setValue(int const (&value)[3])
{
    if (!accepts(kIntVec3) || !CKVUniform::setValue(value))
        return false;
    return mUniform->setElement(0, value[0], value[1], value[2]);
}

bool CKVUniformImp::setValue(int const (&value)[2])
{
    if (!accepts(kIntVec2) || !CKVUniform::setValue(value))
        return false;
    return mUniform->setElement(0, value[0], value[1]);
}

bool CKVUniformImp::setValue(int value)
{
    if (!accepts(kInt) || !CKVUniform::setValue(value))
        return false;
    return mUniform->setElement(0, value);
}

bool CKVUniformImp::setValue(bool value)
{
    if (!accepts(kBool) || !CKVUniform::setValue(value))
        return false;
    return mUniform->setElement(0, value);
}

} // namespace Kelvor
