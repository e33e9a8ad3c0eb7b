#include "apps/view/ViewEventTranslator.h"

#include <X11/Xutil.h>

namespace Kelvor {

namespace {

using Adapter = osgGA::GUIEventAdapter;

unsigned int buttonMask(unsigned int state)
{
    unsigned int mask = 0;
    if (state & Button1Mask)
        mask |= Adapter::LEFT_MOUSE_BUTTON;
    if (state & Button2Mask)
        mask |= Adapter::MIDDLE_MOUSE_BUTTON;
    if (state & Button3Mask)
        mask |= Adapter::RIGHT_MOUSE_BUTTON;
    return mask;
}

int buttonOf(unsigned int xButton)
{
    switch (xButton) {
    case Button1:
        return Adapter::LEFT_MOUSE_BUTTON;
    case Button2:
        return Adapter::MIDDLE_MOUSE_BUTTON;
    case Button3:
        return Adapter::RIGHT_MOUSE_BUTTON;
    default:
        return 0;
    }
}

} // namespace

osg::ref_ptr<Adapter> ViewEventTranslator::makeEvent(Adapter::EventType type, int x, int y, unsigned int state,
                                                     int width, int height) const
{
    osg::ref_ptr<Adapter> out = new Adapter;
    out->setEventType(type);
    out->setWindowRectangle(0, 0, width, height);
    out->setInputRange(0.0f, 0.0f, static_cast<float>(width), static_cast<float>(height));
    out->setMouseYOrientation(Adapter::Y_INCREASING_UPWARDS);
    out->setX(static_cast<float>(x));
    out->setY(static_cast<float>(height - y));
    out->setButtonMask(buttonMask(state));
    return out;
}

osg::ref_ptr<Adapter> ViewEventTranslator::translate(XEvent const& event, int width, int height) const
{
    if (width <= 0 || height <= 0)
        return nullptr;
    switch (event.type) {
    case ButtonPress:
    case ButtonRelease: {
        XButtonEvent const& b = event.xbutton;
        // Buttons 4 and 5 are the wheel: one press per notch, no release of interest.
        if (b.button == Button4 || b.button == Button5) {
            if (event.type == ButtonRelease)
                return nullptr;
            osg::ref_ptr<Adapter> out = makeEvent(Adapter::SCROLL, b.x, b.y, b.state, width, height);
            out->setScrollingMotion(b.button == Button4 ? Adapter::SCROLL_UP : Adapter::SCROLL_DOWN);
            return out;
        }
        int const button = buttonOf(b.button);
        if (!button)
            return nullptr;
        // X reports the state before the event: the pressed button joins the
        // mask on a press and leaves it on a release.
        unsigned int state = b.state;
        unsigned int const own = b.button == Button1 ? Button1Mask : (b.button == Button2 ? Button2Mask : Button3Mask);
        state = event.type == ButtonPress ? (state | own) : (state & ~own);
        osg::ref_ptr<Adapter> out =
            makeEvent(event.type == ButtonPress ? Adapter::PUSH : Adapter::RELEASE, b.x, b.y, state, width, height);
        out->setButton(button);
        return out;
    }
    case MotionNotify: {
        XMotionEvent const& m = event.xmotion;
        bool const dragging = buttonMask(m.state) != 0;
        return makeEvent(dragging ? Adapter::DRAG : Adapter::MOVE, m.x, m.y, m.state, width, height);
    }
    case KeyPress:
    case KeyRelease: {
        XKeyEvent key = event.xkey;
        KeySym symbol = NoSymbol;
        char text[8];
        XLookupString(&key, text, sizeof text, &symbol, nullptr);
        if (symbol == NoSymbol)
            return nullptr;
        osg::ref_ptr<Adapter> out = makeEvent(event.type == KeyPress ? Adapter::KEYDOWN : Adapter::KEYUP, key.x,
                                              key.y, key.state, width, height);
        out->setKey(static_cast<int>(symbol));
        out->setUnmodifiedKey(static_cast<int>(symbol));
        return out;
    }
    default:
        return nullptr;
    }
}

} // namespace Kelvor
