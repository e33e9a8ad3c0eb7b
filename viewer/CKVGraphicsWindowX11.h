#pragma once

#include "viewer/CKVFrameTicker.h"

// Brings in Xlib, whose macros (None, Status, Bool) collide with ordinary
// names: include this header after the others.
#include <osgViewer/api/X11/GraphicsWindowX11>

namespace Kelvor {

// OpenSceneGraph's window on an X11 window that the host owns, and the owner
// of the 20 ms timer that drives every frame of the render context.
class CKVGraphicsWindowX11 : public osgViewer::GraphicsWindowX11
{
public:
    // `traits->inheritedWindowData` must be a GraphicsWindowX11::WindowData
    // with the host's window; the display is the traits' display name.
    explicit CKVGraphicsWindowX11(osg::GraphicsContext::Traits* traits);

    // Traits for the host's `window` on the host's `display` (null: $DISPLAY).
    // The window opens its own connections to the same display, named by
    // the traits. Size and position are read back from the window.
    static osg::ref_ptr<osg::GraphicsContext::Traits> createTraits(
        Display* display, Window window, bool doubleBuffer, int samples, int stencil);

    char const* libraryName() const override { return "kvosg"; }
    char const* className() const override { return "CKVGraphicsWindowX11"; }
    bool isSameKindAs(osg::Object const* object) const override;

    // Scene picking belongs to the host, not to the window.
    bool computeIntersections(osgGA::GUIEventAdapter const&, osgUtil::LineSegmentIntersector::Intersections&,
                              osg::Node::NodeMask) override;
    bool computeIntersections(osgGA::GUIEventAdapter const&, osg::NodePath const&,
                              osgUtil::LineSegmentIntersector::Intersections&, osg::Node::NodeMask) override;

    // Runs the frame's operations; the first time, with the context current
    // and its extensions known, corrects OpenSceneGraph's driver picture.
    void runOperations() override;

    // The render context the 20 ms timer drives (not owned; null stops
    // delivering ticks). Stop the timer before the target goes.
    void setTickTarget(CKVTickTarget* target) { mTicker.setTarget(target); }
    CKVTickTarget* getTickTarget() const { return mTicker.getTarget(); }
    // Does nothing while the timer runs.
    void startTimer() { mTicker.start(); }
    // No tick arrives after it returns.
    void stopTimer() { mTicker.stop(); }
    bool isTimerRunning() const { return mTicker.isRunning(); }

protected:
    ~CKVGraphicsWindowX11() override;

private:
    CKVFrameTicker mTicker;
    bool mQuirksApplied = false;
};

} // namespace Kelvor
