#pragma once

#include "viewer/CKVFrameTicker.h"

#include <osgViewer/GraphicsWindow>

namespace Kelvor {

// A window without a screen: an EGL pbuffer of the traits' size with its own
// desktop GL compatibility context, on Mesa's surfaceless platform when
// there is one, so that a server renders and captures without any X server.
// It owns the 20 ms timer just as the on-screen window does.
class CKVGraphicsWindowEGL : public osgViewer::GraphicsWindowEmbedded
{
public:
    // Uses width, height, alpha, depth, stencil and samples of the traits.
    explicit CKVGraphicsWindowEGL(osg::GraphicsContext::Traits* traits);

    static osg::ref_ptr<osg::GraphicsContext::Traits> createTraits(int width, int height, int samples, int stencil);

    char const* libraryName() const override { return "kvosg"; }
    char const* className() const override { return "CKVGraphicsWindowEGL"; }
    bool isSameKindAs(osg::Object const* object) const override;

    bool valid() const override { return mContext != nullptr; }
    bool realizeImplementation() override;
    bool isRealizedImplementation() const override { return mRealized; }
    void closeImplementation() override;
    bool makeCurrentImplementation() override;
    bool releaseContextImplementation() override;
    void swapBuffersImplementation() override;

    void runOperations() override;

    void setTickTarget(CKVTickTarget* target) { mTicker.setTarget(target); }
    CKVTickTarget* getTickTarget() const { return mTicker.getTarget(); }
    void startTimer() { mTicker.start(); }
    void stopTimer() { mTicker.stop(); }
    bool isTimerRunning() const { return mTicker.isRunning(); }

protected:
    ~CKVGraphicsWindowEGL() override;

private:
    bool createContext();
    void destroyContext();

    // EGL handles, kept opaque so that EGL's headers stay out of ours.
    void* mDisplay = nullptr;
    void* mSurface = nullptr;
    void* mContext = nullptr;
    bool mRealized = false;
    bool mQuirksApplied = false;
    CKVFrameTicker mTicker;
};

} // namespace Kelvor
