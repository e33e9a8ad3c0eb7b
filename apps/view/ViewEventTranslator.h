#pragma once

#include <osg/ref_ptr>
#include <osgGA/GUIEventAdapter>

#include <X11/Xlib.h>

namespace Kelvor {

// Turns the viewer window's X events into OpenSceneGraph window events of
// the kind an OpenSceneGraph window would deliver after its event
// traversal: y counted upwards, the input range the window's size, keys as
// key symbols (osgGA's key codes are the X key symbols). Events the viewer
// does not use give null.
class ViewEventTranslator
{
public:
    osg::ref_ptr<osgGA::GUIEventAdapter> translate(XEvent const& event, int width, int height) const;

private:
    osg::ref_ptr<osgGA::GUIEventAdapter> makeEvent(osgGA::GUIEventAdapter::EventType type, int x, int y,
                                                   unsigned int state, int width, int height) const;
};

} // namespace Kelvor
