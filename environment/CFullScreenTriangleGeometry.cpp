#include "environment/CFullScreenTriangleGeometry.h"

#include <osg/GL>
#include <osg/State>

namespace Kelvor {

CFullScreenTriangleGeometry::CFullScreenTriangleGeometry()
{
    // Nothing to upload: there are no arrays, and a display list would only
    // capture the one call below.
    setUseDisplayList(false);
    setUseVertexBufferObjects(false);
}

CFullScreenTriangleGeometry::CFullScreenTriangleGeometry(CFullScreenTriangleGeometry const& other,
                                                         osg::CopyOp const& copyop)
    : CBGGeometry(other, copyop)
{
    setUseDisplayList(false);
    setUseVertexBufferObjects(false);
}

void CFullScreenTriangleGeometry::drawImplementation(osg::RenderInfo& renderInfo) const
{
    // Arrays left enabled by the previous drawable would still be fetched by
    // the driver for our three vertices; switch them off first.
    osg::State& state = *renderInfo.getState();
    state.lazyDisablingOfVertexAttributes();
    state.applyDisablingOfVertexAttributes();
    glDrawArrays(GL_TRIANGLES, 0, 3);
}

} // namespace Kelvor
