#include "viewer/CKVGUIEventHandler.h"

#include "TarnwickGeometry/CKVPlane.h"
#include "TarnwickGeometry/CKVRay3D.h"
#include "TarnwickRender/CKVCamera.h"
#include "TarnwickRender/CKVEvent.h"
#include "TarnwickRender/CKVScene.h"

namespace Kelvor {

namespace {

using Adapter = osgGA::GUIEventAdapter;

// Tolerance of the focus-plane hit: only a ray almost inside the plane misses.
constexpr double kPlaneHitTolerance = 1.0e-6;

struct SysKeyEntry
{
    int key;
    CKVEvent::SysKey sysKey;
};

constexpr SysKeyEntry kSysKeys[] = {
    {Adapter::KEY_Escape, CKVEvent::kEscape},     {Adapter::KEY_Return, CKVEvent::kReturn},
    {Adapter::KEY_Delete, CKVEvent::kDelete},     {Adapter::KEY_Control_L, CKVEvent::kControl},
    {Adapter::KEY_Control_R, CKVEvent::kControl}, {Adapter::KEY_Shift_L, CKVEvent::kShift},
    {Adapter::KEY_Shift_R, CKVEvent::kShift},     {Adapter::KEY_Left, CKVEvent::kLeft},
    {Adapter::KEY_Right, CKVEvent::kRight},       {Adapter::KEY_Up, CKVEvent::kUp},
    {Adapter::KEY_Down, CKVEvent::kDown},         {Adapter::KEY_Page_Up, CKVEvent::kPageUp},
    {Adapter::KEY_Page_Down, CKVEvent::kPageDown},
};

} // namespace

CKVGUIEventHandler::CKVGUIEventHandler() = default;

CKVGUIEventHandler::CKVGUIEventHandler(CKVScene* scene)
    : mScene(scene)
{
}

CKVGUIEventHandler::CKVGUIEventHandler(CKVGUIEventHandler const& other, osg::CopyOp const& copyop)
    : osg::Object(other, copyop)
    , osg::Callback(other, copyop)
    , osgGA::GUIEventHandler(other, copyop)
    , mScene(other.mScene)
{
}

CKVGUIEventHandler::~CKVGUIEventHandler() = default;

void CKVGUIEventHandler::fillPosition(Adapter const& event, CKVEvent& out) const
{
    int const width = event.getWindowWidth();
    int const height = event.getWindowHeight();
    double const x = event.getX();
    double const y = event.getY();
    double const xMin = event.getXmin();
    double const yMin = event.getYmin();
    double const xRange = event.getXmax() - xMin;
    double const yRange = event.getYmax() - yMin;

    out.setNDCSize(width, height);
    // Pixels with y from the top, as the host measures them; OpenSceneGraph
    // counts y from the bottom.
    CKVPoint3D const pixel((x + xMin) * width / xRange, height - (y + yMin) * height / yRange, 0.0);
    out.setNDCPos(pixel);
    out.setWindowPos(CKVPoint3D(2.0 * (x - xMin) / xRange - 1.0, 2.0 * (y - yMin) / yRange - 1.0, 0.0));

    CKVRay3D ray;
    if (!mScene->getSelectRay(pixel, ray))
        return;
    // The focus plane goes through the camera's target, facing the camera.
    CKVCamera const& camera = mScene->getCamera();
    CKVPlane const plane(camera.getTarget(), camera.getPosition() - camera.getTarget());
    CKVPoint3D hit;
    if (ray.hitPlane(plane, hit, kPlaneHitTolerance))
        out.setWorldPos(hit);
    out.setSelectRay(ray);
}

void CKVGUIEventHandler::translateKey(int key, CKVEvent& out)
{
    if ((key >= '0' && key <= '9') || (key >= 'a' && key <= 'z')) {
        out.setAnsiKey(static_cast<CKVEvent::AnsiKey>(key));
        return;
    }
    for (SysKeyEntry const& entry : kSysKeys) {
        if (entry.key == key) {
            out.addSysKey(entry.sysKey);
            return;
        }
    }
}

bool CKVGUIEventHandler::handle(Adapter const& event, osgGA::GUIActionAdapter&, osg::Object*, osg::NodeVisitor*)
{
    if (!mScene)
        return false;

    Adapter::EventType const type = event.getEventType();
    // Touches are claimed but not passed on: the host has no touch model.
    if (event.isMultiTouchEvent())
        return type == Adapter::PUSH || type == Adapter::RELEASE || type == Adapter::DRAG;

    CKVEvent out(mScene);
    fillPosition(event, out);

    int const button = event.getButton();
    switch (type) {
    case Adapter::PUSH:
        if (button == Adapter::LEFT_MOUSE_BUTTON) {
            out.addMouseButton(CKVEvent::kLeftButton);
            mScene->onLButtonDown(out);
        } else if (button == Adapter::RIGHT_MOUSE_BUTTON) {
            out.addMouseButton(CKVEvent::kRightButton);
            mScene->onRButtonDown(out);
        } else if (button == Adapter::MIDDLE_MOUSE_BUTTON) {
            out.addMouseButton(CKVEvent::kMiddleButton);
            mScene->onMButtonDown(out);
        }
        return true;
    case Adapter::RELEASE:
        if (button == Adapter::LEFT_MOUSE_BUTTON)
            mScene->onLButtonUp(out);
        else if (button == Adapter::RIGHT_MOUSE_BUTTON)
            mScene->onRButtonUp(out);
        else if (button == Adapter::MIDDLE_MOUSE_BUTTON)
            mScene->onMButtonUp(out);
        return true;
    case Adapter::DOUBLECLICK:
        if (button == Adapter::LEFT_MOUSE_BUTTON)
            mScene->onLButtonDblClk(out);
        else if (button == Adapter::RIGHT_MOUSE_BUTTON)
            mScene->onRButtonDblClk(out);
        else if (button == Adapter::MIDDLE_MOUSE_BUTTON)
            mScene->onMButtonDblClk(out);
        return true;
    case Adapter::DRAG:
    case Adapter::MOVE: {
        unsigned int const mask = event.getButtonMask();
        if (mask & Adapter::LEFT_MOUSE_BUTTON)
            out.addMouseButton(CKVEvent::kLeftButton);
        if (mask & Adapter::RIGHT_MOUSE_BUTTON)
            out.addMouseButton(CKVEvent::kRightButton);
        if (mask & Adapter::MIDDLE_MOUSE_BUTTON)
            out.addMouseButton(CKVEvent::kMiddleButton);
        mScene->onMouseMove(out);
        return true;
    }
    case Adapter::KEYDOWN:
        translateKey(event.getKey(), out);
        mScene->onKeyDown(out);
        return true;
    case Adapter::KEYUP:
        translateKey(event.getKey(), out);
        mScene->onKeyUp(out);
        return true;
    case Adapter::SCROLL:
        if (event.getScrollingMotion() == Adapter::SCROLL_DOWN)
            out.setMouseWheel(CKVEvent::kWheelTowardsUser);
        else if (event.getScrollingMotion() == Adapter::SCROLL_UP)
            out.setMouseWheel(CKVEvent::kWheelAwayFromUser);
        mScene->onMouseWheel(out);
        return true;
    default:
        return false;
    }
}

} // namespace Kelvor
