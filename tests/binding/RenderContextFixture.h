#pragma once

#include "TestHostWindow.h"

#include "binding/CKVRenderContextX11Imp.h"
#include "support/DisplayTest.h"
#include "support/GLTestContext.h"
#include "viewer/CKVGraphicsWindowX11.h"
#include "viewer/CKVOSGCamera.h"
#include "viewer/CKVViewer.h"

#include "TarnwickRender/CKVCamera.h"
#include "TarnwickRender/CKVGraphicsContext.h"
#include "TarnwickRender/CKVRCApplyCamera.h"
#include "TarnwickRender/CKVRCAttachSceneData.h"
#include "TarnwickRender/CKVRCInsertRenderObject.h"
#include "TarnwickRender/CKVRenderCallback.h"
#include "TarnwickRender/CKVRenderCommand.h"
#include "TarnwickRender/CKVRenderCommandDispatch.h"
#include "TarnwickRender/CKVScene.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <thread>

namespace Kelvor {

// Runs a piece of test code on the render thread, inside the command drain,
// as a command that carries its own dispatch object.
class ProbeDispatch : public CKVRenderCommandDispatch
{
public:
    using Work = std::function<bool(CKVRenderContext*)>;
    explicit ProbeDispatch(Work work) : mWork(std::move(work)) {}
    bool dispatch(CKVRenderContext* context, CKVRenderCommand&) override { return mWork(context); }

private:
    Work mWork;
};

class ProbeCommand : public CKVRenderCommand
{
public:
    explicit ProbeCommand(ProbeDispatch::Work work) : mDispatch(new ProbeDispatch(std::move(work))) {}
    ID getID() const override { return kSetViewPort; }
    CKVRenderCommandDispatch* getDispatch() const override { return mDispatch.get(); }

private:
    kv_shared_ptr<ProbeDispatch> mDispatch;
};

// Counts the frames that reach the window.
class FrameCounter : public osg::Camera::DrawCallback
{
public:
    void operator()(osg::RenderInfo&) const override { mFrames.fetch_add(1); }
    unsigned int frames() const { return mFrames.load(); }

private:
    mutable std::atomic<unsigned int> mFrames{0};
};

// A host window, a scene and a render context made through the host's
// factory. Without an X display the test is skipped, unless
// TARNWICK_REQUIRE_DISPLAY=1 asks for a failure instead.
class RenderContextFixture : public DisplayTest
{
protected:
    static constexpr int kWidth = 96;
    static constexpr int kHeight = 64;
    // A test that needs a larger window sets these before SetUp.
    int mWindowWidth = kWidth;
    int mWindowHeight = kHeight;

    void SetUp() override
    {
        DisplayTest::SetUp();
        if (!displayReady())
            return;
        mHost = std::make_unique<TestHostWindow>(mWindowWidth, mWindowHeight);
        ASSERT_TRUE(mHost->valid());
        mGraphicsContext = CKVGraphicsContext(&mHost->windowData(), &mScene);
    }

    void TearDown() override
    {
        if (mContext) {
            mContext->destroy();
            CKVRenderContext* context = mContext;
            EXPECT_TRUE(CKVRenderCallback::destroyRenderContext(context));
            mContext = nullptr;
        }
        mHost.reset();
    }

    // Creates and initialises the context; the frame counter is installed
    // inside a drain so that it never races a frame.
    CKVRenderContextX11Imp* start()
    {
        CKVRenderContext* created = CKVRenderCallback::createRenderContext(-1);
        if (!created || !created->isKindOf(CKVRenderContextX11Imp::desc()))
            return nullptr;
        mContext = static_cast<CKVRenderContextX11Imp*>(created);
        if (!mContext->initialize(&mGraphicsContext))
            return nullptr;
        osg::ref_ptr<FrameCounter> counter = mCounter;
        runOnRenderThread([counter](CKVRenderContext* context) {
            static_cast<CKVRenderContextX11Imp*>(context)->getMainCamera()->setFinalDrawCallback(counter.get());
            return true;
        });
        return mContext;
    }

    // A perspective camera with a 60 degree field of view on the z axis,
    // `distance` from the origin and looking at it, y up.
    static CKVCamera cameraOnZAxis(double distance)
    {
        CKVCamera camera;
        camera.setProjectMode(CKVCamera::kPerspective);
        camera.setFieldOfView(60.0);
        camera.setAspect(double(kWidth) / kHeight);
        camera.setNearFar(0.1, 100.0);
        camera.setPosition(CKVPoint3D(0, 0, distance));
        camera.setTarget(CKVPoint3D(0, 0, 0));
        camera.setUp(CKVVector3D(0, 1, 0));
        return camera;
    }

    // Puts `object` into `node`, attaches the node and applies `camera`, all
    // as host commands, then waits for `frames` frames drawn with them.
    bool show(CKVSceneNode* node, CKVRenderObject* object, CKVCamera const& camera, unsigned int frames = 2)
    {
        kv_shared_ptr<CKVRenderCommand> commands[] = {
            new CKVRCInsertRenderObject(node, object),
            new CKVRCAttachSceneData(node),
            new CKVRCApplyCamera(camera),
        };
        CKVRenderCommandCache* cache = mContext->getRenderCommandCache();
        for (auto& command : commands)
            cache->write(command.get());
        return cache->submitAndWait(commands[2].get(), 10000) && waitForFrames(mCounter->frames() + frames);
    }

    // Stops the timer so that the test drives every tick itself.
    void takeOverTicks() { mContext->getWindow()->stopTimer(); }

    // Writes a probe command and waits until the drain has run it.
    bool runOnRenderThread(ProbeDispatch::Work work, unsigned int timeoutMs = 10000)
    {
        kv_shared_ptr<ProbeCommand> command = new ProbeCommand(std::move(work));
        return mContext->getRenderCommandCache()->submitAndWait(command.get(), timeoutMs);
    }

    // With the timer taken over: writes a probe command, runs one tick and
    // answers whether the drain ran it. Its result lands in `dispatched`.
    bool tickWith(ProbeDispatch::Work work, bool* dispatched = nullptr)
    {
        kv_shared_ptr<ProbeCommand> command = new ProbeCommand([work, dispatched](CKVRenderContext* context) {
            bool const result = work(context);
            if (dispatched)
                *dispatched = result;
            return result;
        });
        CKVRenderCommandCache* cache = mContext->getRenderCommandCache();
        cache->write(command.get());
        cache->finish();
        mContext->onTick(++mTickMs);
        return command->isSignalled();
    }

    bool waitForFrames(unsigned int count, unsigned int timeoutMs = 10000)
    {
        auto const deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
        while (mCounter->frames() < count) {
            if (std::chrono::steady_clock::now() > deadline)
                return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return true;
    }

    std::unique_ptr<TestHostWindow> mHost;
    CKVScene mScene;
    CKVGraphicsContext mGraphicsContext;
    CKVRenderContextX11Imp* mContext = nullptr;
    osg::ref_ptr<FrameCounter> mCounter = new FrameCounter;
    unsigned int mTickMs = 0;
};

} // namespace Kelvor
