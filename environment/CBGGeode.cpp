#include "environment/CBGGeode.h"

namespace Kelvor {

osg::BoundingSphere CBGGeode::InvalidBoundCallback::computeBound(osg::Node const&) const
{
    return osg::BoundingSphere(osg::Vec3f(0.0f, 0.0f, 0.0f), -1.0f);
}

CBGGeode::CBGGeode()
    : mBoundCallback(new InvalidBoundCallback)
{
    setComputeBoundingSphereCallback(mBoundCallback.get());
    setCullingActive(false);
}

CBGGeode::CBGGeode(CBGGeode const& other, osg::CopyOp const& copyop)
    : osg::Geode(other, copyop)
    , mBoundCallback(new InvalidBoundCallback)
{
    setComputeBoundingSphereCallback(mBoundCallback.get());
    setCullingActive(false);
}

osg::BoundingSphere CBGGeode::computeBound() const
{
    return mBoundCallback->computeBound(*this);
}

} // namespace Kelvor
