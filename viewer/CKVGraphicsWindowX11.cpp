#include "viewer/CKVGraphicsWindowX11.h"

#include "viewer/CKVGLQuirks.h"
#include "viewer/CKVOSGState.h"

#include <string>

namespace Kelvor {

CKVGraphicsWindowX11::CKVGraphicsWindowX11(osg::GraphicsContext::Traits* traits)
    : osgViewer::GraphicsWindowX11(traits)
{
    setCursor(InheritCursor);
    // The shaders read their matrices from blocks only the backend's state
    // keeps current; an invalid window keeps the stock state.
    if (valid())
        CKVOSGState::install(*this);
}

// The ticker member stops the timer before the base class goes.
CKVGraphicsWindowX11::~CKVGraphicsWindowX11() = default;

osg::ref_ptr<osg::GraphicsContext::Traits> CKVGraphicsWindowX11::createTraits(
    Display* display, Window window, bool doubleBuffer, int samples, int stencil)
{
    osg::ref_ptr<osg::GraphicsContext::Traits> traits = new osg::GraphicsContext::Traits;
    if (display)
        traits->setScreenIdentifier(DisplayString(display));
    else
        traits->readDISPLAY();
    traits->setUndefinedScreenDetailsToDefaultScreen();
    traits->x = 0;
    traits->y = 0;
    traits->doubleBuffer = doubleBuffer;
    traits->samples = samples > 0 ? static_cast<unsigned int>(samples) : 0;
    traits->sampleBuffers = samples > 0 ? 1 : 0;
    traits->stencil = stencil > 0 ? static_cast<unsigned int>(stencil) : 0;
    traits->windowDecoration = false;
    traits->setInheritedWindowPixelFormat = true;
    // Compatibility profile: the packaged OpenSceneGraph still applies
    // fixed-function state, which a core context would reject.
    traits->glContextProfileMask = 1;
    traits->inheritedWindowData = new osgViewer::GraphicsWindowX11::WindowData(window);
    return traits;
}

bool CKVGraphicsWindowX11::isSameKindAs(osg::Object const* object) const
{
    return object && std::string(object->className()) == className();
}

bool CKVGraphicsWindowX11::computeIntersections(osgGA::GUIEventAdapter const&,
                                                osgUtil::LineSegmentIntersector::Intersections&, osg::Node::NodeMask)
{
    return false;
}

bool CKVGraphicsWindowX11::computeIntersections(osgGA::GUIEventAdapter const&, osg::NodePath const&,
                                                osgUtil::LineSegmentIntersector::Intersections&, osg::Node::NodeMask)
{
    return false;
}

void CKVGraphicsWindowX11::runOperations()
{
    if (!mQuirksApplied && getState()) {
        CKVGLQuirks::apply(*getState());
        mQuirksApplied = true;
    }
    osgViewer::GraphicsWindowX11::runOperations();
}

} // namespace Kelvor
