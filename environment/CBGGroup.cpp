#include "environment/CBGGroup.h"

namespace Kelvor {

CBGGroup::CBGGroup()
    : mBoundCallback(new CBGGeode::InvalidBoundCallback)
{
    setComputeBoundingSphereCallback(mBoundCallback.get());
    setCullingActive(false);
}

CBGGroup::CBGGroup(CBGGroup const& other, osg::CopyOp const& copyop)
    : osg::Group(other, copyop)
    , mBoundCallback(new CBGGeode::InvalidBoundCallback)
{
    setComputeBoundingSphereCallback(mBoundCallback.get());
    setCullingActive(false);
}

osg::BoundingSphere CBGGroup::computeBound() const
{
    return mBoundCallback->computeBound(*this);
}

} // namespace Kelvor
