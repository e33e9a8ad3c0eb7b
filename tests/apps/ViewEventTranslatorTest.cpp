// Before the X headers: their macros (None, Bool) break gtest's own names.
#include <gtest/gtest.h>

#include "apps/view/ViewEventTranslator.h"

using namespace Kelvor;
using Adapter = osgGA::GUIEventAdapter;

namespace {

XEvent button(int type, unsigned int which, int x, int y, unsigned int state)
{
    XEvent event{};
    event.type = type;
    event.xbutton.button = which;
    event.xbutton.x = x;
    event.xbutton.y = y;
    event.xbutton.state = state;
    return event;
}

} // namespace

TEST(ViewEventTranslatorTest, ButtonsCarryTheirOwnBitOnPressButNotOnReleaseAndYCountsUp)
{
    ViewEventTranslator translator;
    // X reports the state before the event.
    osg::ref_ptr<Adapter> press = translator.translate(button(ButtonPress, Button1, 30, 10, Button3Mask), 200, 100);
    ASSERT_TRUE(press.valid());
    EXPECT_EQ(press->getEventType(), Adapter::PUSH);
    EXPECT_EQ(press->getButton(), int(Adapter::LEFT_MOUSE_BUTTON));
    EXPECT_EQ(press->getButtonMask(), unsigned(Adapter::LEFT_MOUSE_BUTTON | Adapter::RIGHT_MOUSE_BUTTON));
    EXPECT_FLOAT_EQ(press->getX(), 30.0f);
    EXPECT_FLOAT_EQ(press->getY(), 90.0f);
    EXPECT_FLOAT_EQ(press->getXmax(), 200.0f);
    EXPECT_EQ(press->getWindowHeight(), 100);

    osg::ref_ptr<Adapter> release =
        translator.translate(button(ButtonRelease, Button1, 30, 10, Button1Mask | Button3Mask), 200, 100);
    ASSERT_TRUE(release.valid());
    EXPECT_EQ(release->getEventType(), Adapter::RELEASE);
    EXPECT_EQ(release->getButtonMask(), unsigned(Adapter::RIGHT_MOUSE_BUTTON));

    osg::ref_ptr<Adapter> middle = translator.translate(button(ButtonPress, Button2, 0, 0, 0), 200, 100);
    ASSERT_TRUE(middle.valid());
    EXPECT_EQ(middle->getButton(), int(Adapter::MIDDLE_MOUSE_BUTTON));
}

TEST(ViewEventTranslatorTest, WheelNotchesScrollAndMotionDragsOnlyWithAButton)
{
    ViewEventTranslator translator;
    osg::ref_ptr<Adapter> up = translator.translate(button(ButtonPress, Button4, 5, 5, 0), 64, 64);
    ASSERT_TRUE(up.valid());
    EXPECT_EQ(up->getEventType(), Adapter::SCROLL);
    EXPECT_EQ(up->getScrollingMotion(), Adapter::SCROLL_UP);
    osg::ref_ptr<Adapter> down = translator.translate(button(ButtonPress, Button5, 5, 5, 0), 64, 64);
    ASSERT_TRUE(down.valid());
    EXPECT_EQ(down->getScrollingMotion(), Adapter::SCROLL_DOWN);
    EXPECT_FALSE(translator.translate(button(ButtonRelease, Button5, 5, 5, 0), 64, 64).valid())
        << "one notch is one event";

    XEvent motion{};
    motion.type = MotionNotify;
    motion.xmotion.x = 12;
    motion.xmotion.y = 60;
    osg::ref_ptr<Adapter> move = translator.translate(motion, 64, 64);
    ASSERT_TRUE(move.valid());
    EXPECT_EQ(move->getEventType(), Adapter::MOVE);
    EXPECT_FLOAT_EQ(move->getY(), 4.0f);
    motion.xmotion.state = Button1Mask | Button2Mask;
    osg::ref_ptr<Adapter> drag = translator.translate(motion, 64, 64);
    ASSERT_TRUE(drag.valid());
    EXPECT_EQ(drag->getEventType(), Adapter::DRAG);
    EXPECT_EQ(drag->getButtonMask(), unsigned(Adapter::LEFT_MOUSE_BUTTON | Adapter::MIDDLE_MOUSE_BUTTON));

    // Nothing sensible comes from a window without size or from events the viewer ignores.
    EXPECT_FALSE(translator.translate(motion, 0, 64).valid());
    XEvent expose{};
    expose.type = Expose;
    EXPECT_FALSE(translator.translate(expose, 64, 64).valid());
}
