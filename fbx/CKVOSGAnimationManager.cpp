#include "fbx/CKVOSGAnimationManager.h"

#include <cstring>

namespace Kelvor {

char const* const CKVOSGAnimationManager::s_className = "CKVOSGAnimationManager";

CKVOSGAnimationManager::CKVOSGAnimationManager() = default;

// A copy plays the same registered animations but has delivered nothing.
CKVOSGAnimationManager::CKVOSGAnimationManager(CKVOSGAnimationManager const& other, osg::CopyOp const& copyop)
    : osg::Object(other, copyop)
    , osg::Callback(other, copyop)
    , osgAnimation::BasicAnimationManager(other, copyop)
{
}

CKVOSGAnimationManager::~CKVOSGAnimationManager() = default;

osg::Object* CKVOSGAnimationManager::cloneType() const
{
    return new CKVOSGAnimationManager();
}

osg::Object* CKVOSGAnimationManager::clone(osg::CopyOp const& copyop) const
{
    return new CKVOSGAnimationManager(*this, copyop);
}

bool CKVOSGAnimationManager::isSameKindAs(osg::Object const* object) const
{
    return object && std::strcmp(object->className(), s_className) == 0;
}

char const* CKVOSGAnimationManager::libraryName() const
{
    return "Kelvor";
}

char const* CKVOSGAnimationManager::className() const
{
    return s_className;
}

} // namespace Kelvor
