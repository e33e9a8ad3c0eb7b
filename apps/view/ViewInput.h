#pragma once

#include "apps/view/ViewEventTranslator.h"

#include <osg/ref_ptr>

#include <X11/Xlib.h>

namespace Kelvor {

class CKVGUIEventHandler;
class CKVScene;

// Feeds the viewer window's input into the host scene: X events become
// OpenSceneGraph window events, and the backend's exported event handler
// turns those into the host's events and scene calls, exactly as an
// OpenSceneGraph window would deliver them to it.
class ViewInput
{
public:
    explicit ViewInput(CKVScene& scene);
    ~ViewInput();

    // True when the event reached the scene.
    bool feed(XEvent const& event, int width, int height);

private:
    ViewEventTranslator mTranslator;
    osg::ref_ptr<CKVGUIEventHandler> mHandler;
};

} // namespace Kelvor
