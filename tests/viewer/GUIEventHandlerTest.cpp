#include "viewer/CKVGUIEventHandler.h"

#include "TarnwickRender/CKVEvent.h"
#include "TarnwickRender/CKVScene.h"

#include <gtest/gtest.h>

#include <osgGA/GUIActionAdapter>
#include <osgGA/GUIEventAdapter>

#include <cmath>
#include <string>
#include <vector>

namespace Kelvor {
namespace {

using Adapter = osgGA::GUIEventAdapter;

// A scene that remembers which entry point got which event.
class RecordingScene : public CKVScene
{
public:
    struct Call
    {
        std::string name;
        CKVEvent event;
    };
    std::vector<Call> calls;

    void onLButtonDown(CKVEvent const& e) override { calls.push_back({"LButtonDown", e}); }
    void onLButtonUp(CKVEvent const& e) override { calls.push_back({"LButtonUp", e}); }
    void onLButtonDblClk(CKVEvent const& e) override { calls.push_back({"LButtonDblClk", e}); }
    void onMButtonDown(CKVEvent const& e) override { calls.push_back({"MButtonDown", e}); }
    void onMButtonUp(CKVEvent const& e) override { calls.push_back({"MButtonUp", e}); }
    void onMButtonDblClk(CKVEvent const& e) override { calls.push_back({"MButtonDblClk", e}); }
    void onRButtonDown(CKVEvent const& e) override { calls.push_back({"RButtonDown", e}); }
    void onRButtonUp(CKVEvent const& e) override { calls.push_back({"RButtonUp", e}); }
    void onRButtonDblClk(CKVEvent const& e) override { calls.push_back({"RButtonDblClk", e}); }
    void onMouseMove(CKVEvent const& e) override { calls.push_back({"MouseMove", e}); }
    void onMouseWheel(CKVEvent const& e) override { calls.push_back({"MouseWheel", e}); }
    void onKeyDown(CKVEvent const& e) override { calls.push_back({"KeyDown", e}); }
    void onKeyUp(CKVEvent const& e) override { calls.push_back({"KeyUp", e}); }
};

struct NullActionAdapter : osgGA::GUIActionAdapter
{
    void requestRedraw() override {}
    void requestContinuousUpdate(bool) override {}
    void requestWarpPointer(float, float) override {}
};

// Window 200 x 150 with OpenSceneGraph's pixel input range: what an X11
// window reports. The host camera's default aspect is 4:3 as well.
constexpr int kWidth = 200;
constexpr int kHeight = 150;

class CKVGUIEventHandlerTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        mScene.setViewportSize(kWidth, kHeight);
        mHandler = new CKVGUIEventHandler(&mScene);
    }

    osg::ref_ptr<Adapter> makeEvent(Adapter::EventType type, float x = 100.0f, float y = 75.0f)
    {
        osg::ref_ptr<Adapter> event = new Adapter;
        event->setWindowRectangle(0, 0, kWidth, kHeight, false);
        event->setInputRange(0.0f, 0.0f, static_cast<float>(kWidth), static_cast<float>(kHeight));
        event->setEventType(type);
        event->setX(x);
        event->setY(y);
        return event;
    }

    bool handle(Adapter const& event) { return mHandler->handle(event, mAdapter, nullptr, nullptr); }

    // Handles `event` and expects exactly one call, named `name`.
    CKVEvent const& handleOne(Adapter const& event, char const* name)
    {
        mScene.calls.clear();
        EXPECT_TRUE(handle(event));
        static CKVEvent const kNone;
        if (mScene.calls.size() != 1) {
            ADD_FAILURE() << "expected one call to " << name << ", got " << mScene.calls.size();
            return kNone;
        }
        EXPECT_EQ(mScene.calls[0].name, name);
        return mScene.calls[0].event;
    }

    RecordingScene mScene;
    NullActionAdapter mAdapter;
    osg::ref_ptr<CKVGUIEventHandler> mHandler;
};

TEST_F(CKVGUIEventHandlerTest, ButtonsReachTheirEntryPointsWithTheMaskOnlyOnPress)
{
    struct Case
    {
        int button;
        char const* down;
        char const* up;
        char const* doubleClick;
        int mask;
    };
    for (Case const& c : {Case{Adapter::LEFT_MOUSE_BUTTON, "LButtonDown", "LButtonUp", "LButtonDblClk", 1},
                          Case{Adapter::RIGHT_MOUSE_BUTTON, "RButtonDown", "RButtonUp", "RButtonDblClk", 2},
                          Case{Adapter::MIDDLE_MOUSE_BUTTON, "MButtonDown", "MButtonUp", "MButtonDblClk", 4}}) {
        SCOPED_TRACE(c.down);
        osg::ref_ptr<Adapter> push = makeEvent(Adapter::PUSH);
        push->setButton(c.button);
        EXPECT_EQ(handleOne(*push, c.down).getMouseButtons(), c.mask);

        osg::ref_ptr<Adapter> release = makeEvent(Adapter::RELEASE);
        release->setButton(c.button);
        EXPECT_EQ(handleOne(*release, c.up).getMouseButtons(), 0);

        osg::ref_ptr<Adapter> doubleClick = makeEvent(Adapter::DOUBLECLICK);
        doubleClick->setButton(c.button);
        EXPECT_EQ(handleOne(*doubleClick, c.doubleClick).getMouseButtons(), 0);
    }
}

TEST_F(CKVGUIEventHandlerTest, DragAndMoveCarryEveryHeldButton)
{
    osg::ref_ptr<Adapter> drag = makeEvent(Adapter::DRAG);
    drag->setButtonMask(Adapter::LEFT_MOUSE_BUTTON | Adapter::RIGHT_MOUSE_BUTTON);
    EXPECT_EQ(handleOne(*drag, "MouseMove").getMouseButtons(), 1 | 2);

    osg::ref_ptr<Adapter> middleDrag = makeEvent(Adapter::DRAG);
    middleDrag->setButtonMask(Adapter::MIDDLE_MOUSE_BUTTON);
    EXPECT_EQ(handleOne(*middleDrag, "MouseMove").getMouseButtons(), 4);

    osg::ref_ptr<Adapter> move = makeEvent(Adapter::MOVE);
    EXPECT_EQ(handleOne(*move, "MouseMove").getMouseButtons(), 0);
}

TEST_F(CKVGUIEventHandlerTest, WheelDirectionsAndSidewaysScroll)
{
    osg::ref_ptr<Adapter> scroll = makeEvent(Adapter::SCROLL);
    scroll->setScrollingMotion(Adapter::SCROLL_DOWN);
    EXPECT_EQ(handleOne(*scroll, "MouseWheel").getMouseWheel(), CKVEvent::kWheelTowardsUser);
    scroll->setScrollingMotion(Adapter::SCROLL_UP);
    EXPECT_EQ(handleOne(*scroll, "MouseWheel").getMouseWheel(), CKVEvent::kWheelAwayFromUser);
    scroll->setScrollingMotion(Adapter::SCROLL_LEFT);
    EXPECT_EQ(handleOne(*scroll, "MouseWheel").getMouseWheel(), CKVEvent::kNoWheel);
}

TEST_F(CKVGUIEventHandlerTest, KeysTranslateDigitsLowerCaseAndSystemKeys)
{
    osg::ref_ptr<Adapter> key = makeEvent(Adapter::KEYDOWN);
    key->setKey('a');
    EXPECT_EQ(handleOne(*key, "KeyDown").getAnsiKey(), 'a');
    key->setKey('z');
    EXPECT_EQ(handleOne(*key, "KeyDown").getAnsiKey(), 'z');
    key->setKey('7');
    EXPECT_EQ(handleOne(*key, "KeyDown").getAnsiKey(), '7');

    // Upper case is not translated, but the scene still hears of the key.
    key->setKey('A');
    CKVEvent const upper = handleOne(*key, "KeyDown");
    EXPECT_EQ(upper.getAnsiKey(), CKVEvent::kNoAnsiKey);
    EXPECT_EQ(upper.getSysKeys(), 0u);

    struct Case
    {
        int key;
        unsigned int sysKey;
    };
    for (Case const& c : {Case{Adapter::KEY_Escape, 1}, Case{Adapter::KEY_Return, 2}, Case{Adapter::KEY_Delete, 4},
                          Case{Adapter::KEY_Control_L, 8}, Case{Adapter::KEY_Control_R, 8},
                          Case{Adapter::KEY_Shift_L, 16}, Case{Adapter::KEY_Shift_R, 16}, Case{Adapter::KEY_Left, 32},
                          Case{Adapter::KEY_Right, 64}, Case{Adapter::KEY_Up, 128}, Case{Adapter::KEY_Down, 256},
                          Case{Adapter::KEY_Page_Up, 512}, Case{Adapter::KEY_Page_Down, 1024}}) {
        osg::ref_ptr<Adapter> up = makeEvent(Adapter::KEYUP);
        up->setKey(c.key);
        CKVEvent const event = handleOne(*up, "KeyUp");
        EXPECT_EQ(event.getSysKeys(), c.sysKey) << "key " << c.key;
        EXPECT_EQ(event.getAnsiKey(), CKVEvent::kNoAnsiKey);
    }
}

TEST_F(CKVGUIEventHandlerTest, PositionsInPixelsFromTheTopAndNormalised)
{
    osg::ref_ptr<Adapter> move = makeEvent(Adapter::MOVE, 50.0f, 30.0f);
    CKVEvent const event = handleOne(*move, "MouseMove");
    EXPECT_EQ(event.getNDCWidth(), kWidth);
    EXPECT_EQ(event.getNDCHeight(), kHeight);
    EXPECT_DOUBLE_EQ(event.getNDCPos().x, 50.0);
    EXPECT_DOUBLE_EQ(event.getNDCPos().y, 120.0);
    EXPECT_DOUBLE_EQ(event.getWindowPos().x, -0.5);
    EXPECT_DOUBLE_EQ(event.getWindowPos().y, 2.0 * 30.0 / kHeight - 1.0);
}

TEST_F(CKVGUIEventHandlerTest, WorldPositionIsTheRayHitOnTheFocusPlaneWhenThereIsOne)
{
    // Default host camera: eye (0, 0, 1) on the origin, 60 degrees, 4:3.
    // Three quarters across at mid height hits the plane z = 0 at half the
    // half-width of the view at distance 1.
    osg::ref_ptr<Adapter> move = makeEvent(Adapter::MOVE, 150.0f, 75.0f);
    CKVEvent const event = handleOne(*move, "MouseMove");
    ASSERT_TRUE(event.hasSelectRay());
    ASSERT_TRUE(event.hasWorldPos());
    double const halfWidth = std::tan(30.0 * M_PI / 180.0) * 4.0 / 3.0;
    EXPECT_NEAR(event.getWorldPos().x, 0.5 * halfWidth, 1e-6);
    EXPECT_NEAR(event.getWorldPos().y, 0.0, 1e-6);
    EXPECT_NEAR(event.getWorldPos().z, 0.0, 1e-6);

    // A target closer than the near plane, where the ray starts, puts the
    // focus plane behind the ray: a ray, but no world position.
    CKVCamera close;
    close.setLookAt(CKVPoint3D(0, 0, 0.005), CKVPoint3D(0, 0, 0), CKVVector3D(0, 1, 0));
    mScene.setCamera(close);
    CKVEvent const behind = handleOne(*move, "MouseMove");
    EXPECT_TRUE(behind.hasSelectRay());
    EXPECT_FALSE(behind.hasWorldPos());

    // Without a viewport there is no ray at all.
    mScene.setViewportSize(0, 0);
    CKVEvent const noViewport = handleOne(*move, "MouseMove");
    EXPECT_FALSE(noViewport.hasSelectRay());
    EXPECT_FALSE(noViewport.hasWorldPos());
}

TEST_F(CKVGUIEventHandlerTest, TouchesUnknownButtonsAndOtherEventsAreNotPassedOn)
{
    for (Adapter::EventType type : {Adapter::PUSH, Adapter::RELEASE, Adapter::DRAG, Adapter::MOVE}) {
        osg::ref_ptr<Adapter> touch = makeEvent(type);
        touch->addTouchPoint(0, Adapter::TOUCH_BEGAN, 10.0f, 10.0f);
        touch->setButton(Adapter::LEFT_MOUSE_BUTTON);
        EXPECT_EQ(handle(*touch), type != Adapter::MOVE) << "type " << type;
    }
    osg::ref_ptr<Adapter> frame = makeEvent(Adapter::FRAME);
    EXPECT_FALSE(handle(*frame));
    // A button the scene has no entry point for is claimed all the same.
    osg::ref_ptr<Adapter> unknown = makeEvent(Adapter::PUSH);
    unknown->setButton(8);
    EXPECT_TRUE(handle(*unknown));
    EXPECT_TRUE(mScene.calls.empty());
}

TEST_F(CKVGUIEventHandlerTest, WithoutSceneNothingIsHandled)
{
    osg::ref_ptr<CKVGUIEventHandler> detached = new CKVGUIEventHandler;
    osg::ref_ptr<Adapter> push = makeEvent(Adapter::PUSH);
    push->setButton(Adapter::LEFT_MOUSE_BUTTON);
    EXPECT_FALSE(detached->handle(*push, mAdapter, nullptr, nullptr));

    // A clone keeps the scene it was made for.
    osg::ref_ptr<CKVGUIEventHandler> copy = dynamic_cast<CKVGUIEventHandler*>(mHandler->clone(osg::CopyOp()));
    ASSERT_TRUE(copy.valid());
    EXPECT_EQ(copy->getScene(), &mScene);
    EXPECT_TRUE(copy->handle(*push, mAdapter, nullptr, nullptr));
    EXPECT_EQ(mScene.calls.size(), 1u);
}

} // namespace
} // namespace Kelvor
