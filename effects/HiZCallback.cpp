#include "effects/HiZCallback.h"

#include "effects/HiZGeometry.h"

#include <osg/RenderInfo>

namespace Kelvor {

HiZCallback::HiZCallback(HiZGeometry* geometry)
    : mGeometry(geometry)
{
}

HiZCallback::~HiZCallback() = default;

void HiZCallback::operator()(osg::RenderInfo& renderInfo) const
{
    if (mGeometry.valid())
        mGeometry->drawImplementation(renderInfo);
}

} // namespace Kelvor
