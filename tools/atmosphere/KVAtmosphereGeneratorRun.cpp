#include "tools/atmosphere/KVAtmosphereGeneratorRun.h"

#include "viewer/CKVGraphicsWindowEGL.h"

#include <osg/Geode>
#include <osg/RenderInfo>

namespace Kelvor {

namespace {

// The passes draw into their own targets; the window only carries the context.
constexpr int kWindowSize = 16;

} // namespace

bool KVAtmosphereGeneratorRun::draw(osg::Node* node, int draws, std::string* error)
{
    osg::Geode* geode = node ? node->asGeode() : nullptr;
    if (!geode)
    {
        if (error)
            *error = "no generator geode";
        return false;
    }
    osg::ref_ptr<CKVGraphicsWindowEGL> window =
        new CKVGraphicsWindowEGL(CKVGraphicsWindowEGL::createTraits(kWindowSize, kWindowSize, 0, 0).get());
    if (!window->valid() || !window->realize() || !window->makeCurrent())
    {
        if (error)
            *error = "no headless GL context (EGL)";
        window->close();
        return false;
    }
    osg::State* state = window->getState();
    osg::RenderInfo renderInfo(state, nullptr);
    for (int i = 0; i < draws; ++i)
    {
        for (unsigned int d = 0; d < geode->getNumDrawables(); ++d)
            geode->getDrawable(d)->draw(renderInfo);
    }
    // OpenSceneGraph crashes at exit on GL objects left to static
    // destruction: give them back while the context is current.
    geode->releaseGLObjects(state);
    window->releaseContext();
    window->close();
    return true;
}

} // namespace Kelvor
