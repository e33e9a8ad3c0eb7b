#include "viewer/UpdateAxisHandle.h"

namespace Kelvor {

void UpdateAxisHandle::updateSlave(osg::View&, osg::View::Slave&)
{
}

UpdateAxisHandle::~UpdateAxisHandle() = default;

} // namespace Kelvor
