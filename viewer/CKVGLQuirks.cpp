#include "viewer/CKVGLQuirks.h"

#include <osg/GLExtensions>
#include <osg/State>

namespace Kelvor {

void CKVGLQuirks::apply(osg::State& state)
{
    osg::GLExtensions* extensions = state.get<osg::GLExtensions>();
    if (!extensions)
        return;
    // With the coverage entry point set, multisampled render buffers are
    // allocated through it; a stub leaves them without storage and the
    // framebuffer incomplete.
    if (extensions->glRenderbufferStorageMultisampleCoverageNV &&
        !osg::isGLExtensionSupported(state.getContextID(), "GL_NV_framebuffer_multisample_coverage"))
        extensions->glRenderbufferStorageMultisampleCoverageNV = nullptr;
}

} // namespace Kelvor
