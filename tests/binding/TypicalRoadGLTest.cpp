// The road every host object takes to the screen, end to end: a host scene
// node and an instanced buffer geometry made through the registered
// factories, handed over only as render commands, drawn by the context's own
// tick.
#include "RenderContextFixture.h"

#include "TarnwickRender/CKVBufferGeometry.h"
#include "TarnwickRender/CKVLogicBufferGeometry.h"
#include "TarnwickRender/CKVProgramParam.h"
#include "TarnwickRender/CKVRCUpdateBufferGeometry.h"
#include "TarnwickRender/CKVSceneNode.h"

#include "TarnwickGeometry/CKVMatrix3D.h"

#include <cmath>
#include <cstdlib>
#include <vector>

using namespace Kelvor;

namespace {

using TypicalRoadGLTest = RenderContextFixture;

kv_shared_ptr<CKVLogicBufferGeometry> square(float half)
{
    float const vertices[] = {-half, -half, 0.0f, half, -half, 0.0f, half, half, 0.0f, -half, half, 0.0f};
    unsigned int const indices[] = {0, 1, 2, 0, 2, 3};
    kv_shared_ptr<CKVLogicBufferGeometry> part(new CKVLogicBufferGeometry);
    part->setVertexData(CKVVertexBufferAttribute::kVertex, vertices, 12);
    part->setIndexData(indices, 6);
    return part;
}

kv_shared_ptr<CKVLogicBufferGeometry> instanceAt(double x)
{
    kv_shared_ptr<CKVLogicBufferGeometry> instance(new CKVLogicBufferGeometry);
    instance->setInstanceMatrix(CKVMatrix3D::translation(CKVVector3D(x, 0.0, 0.0)));
    return instance;
}

bool isBackground(unsigned char const rgb[3])
{
    return std::abs(rgb[0] - 51) <= 3 && std::abs(rgb[1] - 102) <= 3 && std::abs(rgb[2] - 153) <= 3;
}

} // namespace

TEST_F(TypicalRoadGLTest, InstancedGeometrySentAsCommandsIsDrawnByTheTick)
{
    CKVRenderConfig config;
    CKVBackGroundConfig background;
    background.setBackGroundColor(CKVPoint3D(0.2, 0.4, 0.6));
    config.setBackGroundConfig(background);
    mScene.setRenderConfig(config);
    ASSERT_NE(start(), nullptr);

    kv_shared_ptr<CKVSceneNode> node(CKVRenderCallback::createSceneNode());
    ASSERT_TRUE(node.valid());
    CKVProgramParam param(CKVProgramParam::kFlatColor);
    param.addParam(CKVProgramParam::kUseInstanceMatrix);
    node->setProgramParam(param);

    kv_shared_ptr<CKVBufferGeometry> geometry(CKVRenderCallback::createBufferGeometry());
    ASSERT_TRUE(geometry.valid());
    std::vector<kv_shared_ptr<CKVLogicBufferGeometry>> buffers = {square(0.5f), instanceAt(-3.0), instanceAt(0.0)};
    for (auto& buffer : buffers)
        ASSERT_TRUE(geometry->addLogicBuffer(buffer.get()));

    // Looking down the z axis at the row of instances, 4 units wide per side.
    ASSERT_TRUE(show(node.get(), geometry.get(), cameraOnZAxis(6.0), 3));
    CKVRenderCommandCache* cache = mContext->getRenderCommandCache();

    // World x of each instance centre in pixels: the half-width at distance 6
    // is 6 tan(30 deg) times the aspect.
    double const halfWidth = 6.0 * std::tan(30.0 * 3.14159265358979 / 180.0) * double(kWidth) / kHeight;
    auto column = [&](double x) { return int(kWidth / 2 + x / halfWidth * (kWidth / 2)); };
    unsigned char rgb[3];
    ASSERT_TRUE(mHost->readPixel(column(0.0), kHeight / 2, rgb));
    EXPECT_FALSE(isBackground(rgb)) << int(rgb[0]) << "," << int(rgb[1]) << "," << int(rgb[2]);
    ASSERT_TRUE(mHost->readPixel(column(-3.0), kHeight / 2, rgb));
    EXPECT_FALSE(isBackground(rgb));
    ASSERT_TRUE(mHost->readPixel(column(3.0), kHeight / 2, rgb));
    EXPECT_TRUE(isBackground(rgb)) << "nothing was placed at x = 3 yet";

    // A third instance arrives as a geometry update: one more square on screen.
    kv_shared_ptr<CKVLogicBufferGeometry> third = instanceAt(3.0);
    kv_shared_ptr<CKVRCUpdateBufferGeometry> update = new CKVRCUpdateBufferGeometry(geometry.get());
    update->addLogicBuffer(third.get(), true);
    ASSERT_TRUE(cache->submitAndWait(update.get(), 10000));
    ASSERT_TRUE(waitForFrames(mCounter->frames() + 3));
    ASSERT_TRUE(mHost->readPixel(column(3.0), kHeight / 2, rgb));
    EXPECT_FALSE(isBackground(rgb));
    ASSERT_TRUE(mHost->readPixel(column(1.5), kHeight / 2, rgb));
    EXPECT_TRUE(isBackground(rgb)) << "the gap between instances stays empty";
}
