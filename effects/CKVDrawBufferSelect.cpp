#include "effects/CKVDrawBufferSelect.h"

#include <osg/GLExtensions>
#include <osg/State>

namespace Kelvor {

CKVDrawBufferSelect::CKVDrawBufferSelect()
{
    setUseDisplayList(false);
    setUseVertexBufferObjects(false);
}

CKVDrawBufferSelect::~CKVDrawBufferSelect() = default;

void CKVDrawBufferSelect::drawImplementation(osg::RenderInfo& renderInfo) const
{
    osg::GLExtensions* gl = renderInfo.getState()->get<osg::GLExtensions>();
    if (!gl || !gl->glDrawBuffers)
        return;
    GLint framebuffer = 0;
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &framebuffer);
    if (framebuffer == 0)
        return;
    GLenum const buffers[4] = {GL_COLOR_ATTACHMENT0, mVelocityAttached ? GLenum(GL_COLOR_ATTACHMENT1) : GLenum(GL_NONE),
                               GL_COLOR_ATTACHMENT2, GL_COLOR_ATTACHMENT3};
    gl->glDrawBuffers(4, buffers);
}

} // namespace Kelvor
