#include "environment/CBGGeometry.h"

#include <cfloat>

namespace Kelvor {

osg::BoundingBox CBGGeometry::invalidBox()
{
    // An inverted box is what osg::BoundingBox::valid() rejects and what
    // expandBy ignores, so the geometry disappears from every bound.
    return osg::BoundingBox(FLT_MAX, FLT_MAX, FLT_MAX, -FLT_MAX, -FLT_MAX, -FLT_MAX);
}

osg::BoundingBox CBGGeometry::InvalidBoxCallback::computeBound(osg::Drawable const&) const
{
    return invalidBox();
}

CBGGeometry::CBGGeometry()
    : mBoxCallback(new InvalidBoxCallback)
{
    setComputeBoundingBoxCallback(mBoxCallback.get());
    setCullingActive(false);
}

CBGGeometry::CBGGeometry(CBGGeometry const& other, osg::CopyOp const& copyop)
    : osg::Geometry(other, copyop)
    , mBoxCallback(new InvalidBoxCallback)
{
    setComputeBoundingBoxCallback(mBoxCallback.get());
    setCullingActive(false);
}

} // namespace Kelvor
