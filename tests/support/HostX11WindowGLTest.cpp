// Before the X headers: their macros (None, Bool) break gtest's own names.
#include "support/DisplayTest.h"
#include "support/HostX11Window.h"

#include <X11/Xutil.h>

namespace Kelvor {
namespace {

class HostX11WindowGLTest : public DisplayTest
{
};

// Paints the window's top-left pixel with X's own drawing, so that the
// read-backs are checked without any GL in between.
TEST_F(HostX11WindowGLTest, ReadBacksAgreeOnTheTopLeftPixelAndTheChannelOrder)
{
    constexpr int kWidth = 8;
    constexpr int kHeight = 4;
    HostX11Window host(kWidth, kHeight);
    ASSERT_TRUE(host.valid());
    EXPECT_TRUE(host.exists());

    Display* display = host.display();
    XWindowAttributes attributes;
    ASSERT_NE(XGetWindowAttributes(display, host.window(), &attributes), 0);
    XVisualInfo wanted{};
    wanted.visualid = XVisualIDFromVisual(attributes.visual);
    int count = 0;
    XVisualInfo* info = XGetVisualInfo(display, VisualIDMask, &wanted, &count);
    ASSERT_NE(info, nullptr);
    unsigned long const red = info->red_mask;
    unsigned long const blue = info->blue_mask;
    XFree(info);

    GC gc = XCreateGC(display, host.window(), 0, nullptr);
    XSetForeground(display, gc, blue);
    XFillRectangle(display, host.window(), gc, 0, 0, kWidth, kHeight);
    XSetForeground(display, gc, red);
    XDrawPoint(display, host.window(), gc, 0, 0);
    XFreeGC(display, gc);
    XSync(display, False);

    unsigned char rgb[3] = {};
    ASSERT_TRUE(host.readPixel(0, 0, rgb));
    EXPECT_EQ(rgb[0], 255);
    EXPECT_EQ(rgb[2], 0);
    ASSERT_TRUE(host.readPixel(1, 0, rgb));
    EXPECT_EQ(rgb[0], 0);
    EXPECT_EQ(rgb[2], 255);

    // Rows from the top.
    std::vector<unsigned char> const rows = host.readWindow(kWidth, kHeight);
    ASSERT_EQ(rows.size(), static_cast<std::size_t>(kWidth * kHeight * 3));
    EXPECT_EQ(rows[0], 255);
    EXPECT_EQ(rows[2], 0);
    EXPECT_EQ(rows[(kHeight - 1) * kWidth * 3], 0) << "the bottom-left pixel is blue";

    // Rows from the bottom, as GL images keep them, opaque.
    osg::ref_ptr<osg::Image> shown = host.shown();
    ASSERT_TRUE(shown.valid());
    ASSERT_EQ(shown->s(), kWidth);
    ASSERT_EQ(shown->t(), kHeight);
    unsigned char const* topLeft = shown->data(0, kHeight - 1);
    EXPECT_EQ(topLeft[0], 255);
    EXPECT_EQ(topLeft[2], 0);
    EXPECT_EQ(topLeft[3], 255);
    EXPECT_EQ(shown->data(0, 0)[2], 255);
}

} // namespace
} // namespace Kelvor
