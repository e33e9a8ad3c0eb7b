#include "binding/CKVRenderContextX11Imp.h"

#include "TarnwickRender/CKVCamera.h"
#include "TarnwickRender/CKVGraphicsContext.h"
#include "TarnwickRender/CKVGraphicsModel.h"
#include "TarnwickRender/CKVScene.h"
#include "TarnwickRender/CKVWindowData.h"
#include "TarnwickRender/CKVWindowDataX11.h"

#include <gtest/gtest.h>

namespace Kelvor {
namespace {

// Before `initialize` there is no viewer, camera or root: every operation
// that needs one must answer false and change nothing.
TEST(CKVRenderContextImpTest, OperationsWithoutAViewerFailCleanly)
{
    CKVRenderContextX11Imp context;
    CKVCamera camera;
    int width = -1;
    int height = -1;
    CKVVec4<float> const plane(0.0f, 0.0f, 1.0f, 0.0f);

    EXPECT_FALSE(context.destroy());
    EXPECT_FALSE(context.renderFrame());
    EXPECT_FALSE(context.applyCamera(camera));
    EXPECT_FALSE(context.setViewPort(640, 480));
    EXPECT_FALSE(context.getViewPort(width, height));
    EXPECT_EQ(width, -1);
    EXPECT_FALSE(context.updateClipTest(&plane, 1));
    EXPECT_FALSE(context.waterMask("/no/such/mask.png", 4, 4));
    EXPECT_FALSE(context.attachSceneData(nullptr));
    EXPECT_FALSE(context.setActiveUniforms(0));
    EXPECT_FALSE(context.getCapture("/tmp/never.png", CKVVec2<unsigned int>(64, 64), camera, false));
    EXPECT_EQ(context.getRenderCommandCache(), nullptr);
    // No viewer: the tick has nothing to do and must not crash.
    context.onTick(20);
    EXPECT_FALSE(context.isConfigured());
}

TEST(CKVRenderContextImpTest, GraphicsModelNeedsARoot)
{
    CKVRenderContextX11Imp context;
    kv_shared_ptr<CKVGraphicsModel> model = new CKVGraphicsModel;
    // The model attached already (none) is accepted without work.
    EXPECT_TRUE(context.setGraphicsModel(nullptr));
    EXPECT_FALSE(context.setGraphicsModel(model.get()));
    EXPECT_EQ(context.getGraphicsModel(), nullptr);
    EXPECT_EQ(model->getRenderCommandCache()->pendingCount(), 0u);
}

TEST(CKVRenderContextImpTest, InitializeRefusesMissingOrForeignWindowData)
{
    CKVRenderContextX11Imp context;
    CKVScene scene;
    EXPECT_FALSE(context.initialize(nullptr));

    CKVGraphicsContext noWindow(nullptr, &scene);
    EXPECT_FALSE(context.initialize(&noWindow));

    CKVWindowData plain(64, 64);
    CKVGraphicsContext plainWindow(&plain, &scene);
    EXPECT_FALSE(context.initialize(&plainWindow));

    // X11 data without a window would let OpenSceneGraph open its own.
    CKVWindowDataX11 noHandle(nullptr, 0, 64, 64);
    CKVGraphicsContext noHandleWindow(&noHandle, &scene);
    EXPECT_FALSE(context.initialize(&noHandleWindow));

    EXPECT_EQ(context.getViewer(), nullptr);
    EXPECT_EQ(context.getScene(), nullptr);
    EXPECT_FALSE(context.isConfigured());
}

TEST(CKVRenderContextImpTest, TheBaseInitializeHasNothingToDo)
{
    CKVRenderContextImp context;
    EXPECT_TRUE(context.initialize(nullptr));
    EXPECT_EQ(context.getViewer(), nullptr);
}

} // namespace
} // namespace Kelvor
