#pragma once

#include "TarnwickGeometry/CKVPoint3D.h"
#include "TarnwickGeometry/CKVRay3D.h"

namespace Kelvor {

class CKVScene;

// One input event as the scene and its operator see it: where the cursor is
// (in pixels, normalised, and on the focus plane), the pick ray, and which
// buttons, keys and wheel motion came with it.
class CKVEvent
{
public:
    enum SysKey : unsigned int {
        kEscape = 1,
        kReturn = 2,
        kDelete = 4,
        kControl = 8,
        kShift = 16,
        kLeft = 32,
        kRight = 64,
        kUp = 128,
        kDown = 256,
        kPageUp = 512,
        kPageDown = 1024
    };
    enum MouseButton : int { kLeftButton = 1, kRightButton = 2, kMiddleButton = 4 };
    // The character code of a digit or lower-case letter; kNoAnsiKey otherwise.
    enum AnsiKey : int { kNoAnsiKey = 0 };
    enum Wheel : int { kNoWheel = 0, kWheelTowardsUser = 1, kWheelAwayFromUser = 2 };

    explicit CKVEvent(CKVScene* scene = nullptr);
    CKVEvent(CKVEvent const& other);
    CKVEvent& operator=(CKVEvent const& other);
    virtual ~CKVEvent();

    CKVScene* getScene() const { return mScene; }

    // The window size in pixels.
    void setNDCSize(int width, int height);
    int getNDCWidth() const { return mNDCWidth; }
    int getNDCHeight() const { return mNDCHeight; }

    // The cursor in pixels, y counted from the top of the window.
    void setNDCPos(CKVPoint3D const& pixel) { mNDCPos = pixel; }
    CKVPoint3D const& getNDCPos() const { return mNDCPos; }

    // The cursor in normalised coordinates, -1 to 1 on each axis.
    void setWindowPos(CKVPoint3D const& position) { mWindowPos = position; }
    CKVPoint3D const& getWindowPos() const { return mWindowPos; }

    // The hit of the select ray with the focus plane, when there was one.
    void setWorldPos(CKVPoint3D const& position);
    CKVPoint3D const& getWorldPos() const { return mWorldPos; }
    bool hasWorldPos() const { return mHasWorldPos; }

    void setSelectRay(CKVRay3D const& ray);
    CKVRay3D const& getSelectRay() const { return mSelectRay; }
    bool hasSelectRay() const { return mHasSelectRay; }

    // Bit masks: buttons are MouseButton values, keys SysKey values.
    void addMouseButton(int button) { mMouseButtons |= button; }
    int getMouseButtons() const { return mMouseButtons; }
    bool hasMouseButton(int button) const { return (mMouseButtons & button) != 0; }
    void addSysKey(SysKey key) { mSysKeys |= key; }
    unsigned int getSysKeys() const { return mSysKeys; }
    bool hasSysKey(SysKey key) const { return (mSysKeys & key) != 0; }

    void setAnsiKey(AnsiKey key) { mAnsiKey = key; }
    AnsiKey getAnsiKey() const { return mAnsiKey; }

    void setMouseWheel(Wheel wheel) { mWheel = wheel; }
    Wheel getMouseWheel() const { return mWheel; }

private:
    CKVScene* mScene;
    int mNDCWidth = 0;
    int mNDCHeight = 0;
    CKVPoint3D mNDCPos;
    CKVPoint3D mWindowPos;
    CKVPoint3D mWorldPos;
    bool mHasWorldPos = false;
    CKVRay3D mSelectRay;
    bool mHasSelectRay = false;
    int mMouseButtons = 0;
    unsigned int mSysKeys = 0;
    AnsiKey mAnsiKey = kNoAnsiKey;
    Wheel mWheel = kNoWheel;
};

} // namespace Kelvor
