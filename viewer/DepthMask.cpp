#include "viewer/DepthMask.h"

#include "viewer/DepthAttributeCompare.h"

namespace Kelvor {

DepthMask::DepthMask(bool mask)
    : mMask(mask)
{
}

DepthMask::DepthMask(DepthMask const& other, osg::CopyOp const& copyop)
    : osg::StateAttribute(other, copyop)
    , mMask(other.mMask)
{
}

DepthMask::~DepthMask() = default;

bool DepthMask::isSameKindAs(osg::Object const* object) const
{
    return object != nullptr && sameClass(*this, *object);
}

int DepthMask::compare(osg::StateAttribute const& other) const
{
    int const byClass = compareClass(*this, other);
    if (byClass != 0 || &other == this)
        return byClass;
    return compareValue(mMask, static_cast<DepthMask const&>(other).mMask);
}

void DepthMask::apply(osg::State&) const
{
    glDepthMask(mMask ? GL_TRUE : GL_FALSE);
}

} // namespace Kelvor
