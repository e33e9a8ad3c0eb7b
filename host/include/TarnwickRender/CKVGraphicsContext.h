#pragma once

namespace Kelvor {

class CKVScene;
class CKVWindowData;

// What the host hands a render context at `initialize`: the window to draw
// into and the scene to draw. Neither is owned; both outlive the context.
class CKVGraphicsContext
{
public:
    CKVGraphicsContext();
    CKVGraphicsContext(CKVWindowData const* windowData, CKVScene* scene);

    CKVWindowData const* getWindowData() const { return mWindowData; }
    CKVScene* getScene() const { return mScene; }
    void setWindowData(CKVWindowData const* windowData) { mWindowData = windowData; }
    void setScene(CKVScene* scene) { mScene = scene; }

private:
    CKVWindowData const* mWindowData = nullptr;
    CKVScene* mScene = nullptr;
};

} // namespace Kelvor
