#include "viewer/DepthRange.h"

#include "viewer/DepthAttributeCompare.h"

namespace Kelvor {

DepthRange::DepthRange(double zNear, double zFar)
    : mZNear(zNear)
    , mZFar(zFar)
{
}

DepthRange::DepthRange(DepthRange const& other, osg::CopyOp const& copyop)
    : osg::StateAttribute(other, copyop)
    , mZNear(other.mZNear)
    , mZFar(other.mZFar)
{
}

DepthRange::~DepthRange() = default;

bool DepthRange::isSameKindAs(osg::Object const* object) const
{
    return object != nullptr && sameClass(*this, *object);
}

int DepthRange::compare(osg::StateAttribute const& other) const
{
    int const byClass = compareClass(*this, other);
    if (byClass != 0 || &other == this)
        return byClass;
    DepthRange const& rhs = static_cast<DepthRange const&>(other);
    int const byNear = compareValue(mZNear, rhs.mZNear);
    return byNear != 0 ? byNear : compareValue(mZFar, rhs.mZFar);
}

void DepthRange::apply(osg::State&) const
{
    glDepthRange(mZNear, mZFar);
}

} // namespace Kelvor
