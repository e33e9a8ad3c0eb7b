#include "viewer/DepthFunc.h"

#include "viewer/DepthAttributeCompare.h"

namespace Kelvor {

DepthFunc::DepthFunc(GLenum function)
    : mFunction(function)
{
}

DepthFunc::DepthFunc(DepthFunc const& other, osg::CopyOp const& copyop)
    : osg::StateAttribute(other, copyop)
    , mFunction(other.mFunction)
{
}

DepthFunc::~DepthFunc() = default;

bool DepthFunc::isSameKindAs(osg::Object const* object) const
{
    return object != nullptr && sameClass(*this, *object);
}

int DepthFunc::compare(osg::StateAttribute const& other) const
{
    int const byClass = compareClass(*this, other);
    if (byClass != 0 || &other == this)
        return byClass;
    return compareValue(mFunction, static_cast<DepthFunc const&>(other).mFunction);
}

void DepthFunc::apply(osg::State&) const
{
    glDepthFunc(mFunction);
}

} // namespace Kelvor
