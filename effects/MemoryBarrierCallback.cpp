#include "effects/MemoryBarrierCallback.h"

#include <osg/GLExtensions>
#include <osg/RenderInfo>
#include <osg/State>

namespace Kelvor {

namespace {

// Rows are read as vertex attributes, counts as indirect commands; the
// counts are also overwritten by buffer updates at the next culling.
constexpr GLbitfield kBarrierBits =
    GL_VERTEX_ATTRIB_ARRAY_BARRIER_BIT | GL_COMMAND_BARRIER_BIT | GL_BUFFER_UPDATE_BARRIER_BIT;

} // namespace

void MemoryBarrierCallback::operator()(osg::RenderInfo& renderInfo) const
{
    if (osg::GLExtensions* gl = renderInfo.getState()->get<osg::GLExtensions>())
        gl->glMemoryBarrier(kBarrierBits);
}

} // namespace Kelvor
