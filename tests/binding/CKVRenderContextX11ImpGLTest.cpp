#include "RenderContextFixture.h"

#include "binding/CKVCameraUniforms.h"
#include "effects/CKVPostProcessNode.h"
#include "programs/CKVRenderStateManager.h"

#include "TarnwickCommon/Common.h"
#include "TarnwickRender/CKVCamera.h"
#include "TarnwickRender/CKVGraphicsModel.h"
#include "TarnwickRender/CKVGraphicsModelField.h"
#include "TarnwickRender/CKVSceneNode.h"

#include <osg/BufferIndexBinding>
#include <osg/Texture2D>
#include <osgDB/WriteFile>
#include <osgUtil/SceneView>
#include <osgViewer/Renderer>

#include <cstdio>
#include <fstream>
#include <unistd.h>

namespace Kelvor {
namespace {

osg::StateSet* rootState(CKVRenderContextImp& context)
{
    return context.getRoot()->getStateSet();
}

bool hasDefine(CKVRenderContextImp& context, char const* name)
{
    osg::StateSet::DefineList const& defines = rootState(context)->getDefineList();
    return defines.find(name) != defines.end();
}

int intUniform(CKVRenderContextImp& context, char const* name)
{
    int value = -1;
    osg::Uniform* uniform = rootState(context)->getUniform(name);
    return uniform && uniform->get(value) ? value : -1;
}

osg::StateAttribute::GLModeValue clipMode(CKVRenderContextImp& context, unsigned int index)
{
    return rootState(context)->getMode(GL_CLIP_DISTANCE0 + index);
}

using RenderContextX11ImpGLTest = RenderContextFixture;

// A context started on the host window, its ticks driven by the test.
class StartedRenderContextGLTest : public RenderContextFixture
{
protected:
    void SetUp() override
    {
        RenderContextFixture::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        ASSERT_NE(start(), nullptr);
        takeOverTicks();
    }
};

TEST_F(StartedRenderContextGLTest, InitializeBuildsTheViewerRootAndUniformBlocksOnce)
{
    EXPECT_TRUE(mContext->isConfigured());
    EXPECT_EQ(mContext->getScene(), &mScene);
    // Read once with the context current, before the first frame.
    EXPECT_STRNE(mContext->getGLVendor(), "");
    EXPECT_STRNE(mContext->getGLSLVersion(), "");

    CKVOSGCamera* camera = mContext->getMainCamera();
    ASSERT_NE(camera, nullptr);
    EXPECT_EQ(mContext->getViewer()->getCamera(), camera);
    EXPECT_EQ(mContext->getViewer()->getSceneData(), mContext->getRoot());
    int width = 0, height = 0;
    ASSERT_TRUE(mContext->getViewPort(width, height));
    EXPECT_EQ(width, kWidth);
    EXPECT_EQ(height, kHeight);
    // Attribute locations reach the shaders only through the aliases.
    EXPECT_TRUE(mContext->getWindow()->getState()->getUseVertexAttributeAliasing());

    // A second initialisation is refused and keeps the viewer.
    CKVViewer* viewer = mContext->getViewer();
    EXPECT_FALSE(mContext->initialize(&mGraphicsContext));
    EXPECT_EQ(mContext->getViewer(), viewer);

    // The three shared uniform blocks at their bindings, with their sizes.
    osg::StateSet* stateSet = rootState(*mContext);
    unsigned int const expectedFloats[3] = {112, 32, 16};
    for (unsigned int index = 0; index < 3; ++index) {
        auto const* binding = dynamic_cast<osg::UniformBufferBinding const*>(
            stateSet->getAttribute(osg::StateAttribute::UNIFORMBUFFERBINDING, index));
        ASSERT_NE(binding, nullptr) << index;
        EXPECT_EQ(binding->getSize(), static_cast<GLsizeiptr>(expectedFloats[index] * sizeof(float)));
    }
    // LightInfo: the scene's configuration has replaced the start-up defaults.
    CKVRenderConfig const& config = mScene.getRenderConfig();
    EXPECT_FLOAT_EQ(mContext->getLightInfo().get(0), config.getLightIntensity());
    EXPECT_FLOAT_EQ(mContext->getLightInfo().get(1), config.getAmbientIntensity());
    osg::Vec3f light(config.getLightPosition().x, config.getLightPosition().y, config.getLightPosition().z);
    light.normalize();
    EXPECT_NEAR(mContext->getLightInfo().get(4), light.x(), 1e-6);
    EXPECT_NEAR(mContext->getLightInfo().get(6), light.z(), 1e-6);

    EXPECT_TRUE(hasDefine(*mContext, "_USE_NOT_BINDLESS_TEXTURE"));
    EXPECT_EQ(intUniform(*mContext, "s_repNoise"), 16);
    EXPECT_NE(stateSet->getTextureAttribute(16, osg::StateAttribute::TEXTURE), nullptr);
    EXPECT_EQ(intUniform(*mContext, "ClipPlaneCount_I"), 0);
    EXPECT_NE(stateSet->getUniform("ScreenSize"), nullptr);
    EXPECT_NE(stateSet->getUniform("RainIntensity"), nullptr);
}

TEST_F(RenderContextX11ImpGLTest, ResourceTexturesAreReadWhenPresent)
{
    char directory[] = "/tmp/tarnwick-resources-XXXXXX";
    ASSERT_NE(mkdtemp(directory), nullptr);
    std::string const particle = std::string(directory) + "/particle";
    ASSERT_EQ(mkdir(particle.c_str(), 0755), 0);
    osg::ref_ptr<osg::Image> image = new osg::Image;
    image->allocateImage(8, 8, 1, GL_RGB, GL_UNSIGNED_BYTE);
    ASSERT_TRUE(osgDB::writeImageFile(*image, std::string(directory) + "/repnoise.jpg"));
    ASSERT_TRUE(osgDB::writeImageFile(*image, particle + "/snow_normal.tif"));
    Common::setResourceDirectory(directory);

    bool const started = start() != nullptr;
    Common::setResourceDirectory(nullptr);
    ASSERT_TRUE(started);
    osg::StateSet* stateSet = rootState(*mContext);
    auto* noise = dynamic_cast<osg::Texture2D*>(stateSet->getTextureAttribute(16, osg::StateAttribute::TEXTURE));
    ASSERT_NE(noise, nullptr);
    EXPECT_NE(noise->getImage(), nullptr);
    EXPECT_EQ(noise->getWrap(osg::Texture::WRAP_S), osg::Texture::REPEAT);
    auto* snow = dynamic_cast<osg::Texture2D*>(stateSet->getTextureAttribute(19, osg::StateAttribute::TEXTURE));
    ASSERT_NE(snow, nullptr);
    EXPECT_NE(snow->getImage(), nullptr);
    EXPECT_EQ(intUniform(*mContext, "Snow_Normal_Tx"), 19);

    std::remove((std::string(directory) + "/repnoise.jpg").c_str());
    std::remove((particle + "/snow_normal.tif").c_str());
    rmdir(particle.c_str());
    rmdir(directory);
}

TEST_F(RenderContextX11ImpGLTest, WithoutResourceFilesTheSnowNormalStaysOut)
{
    Common::setResourceDirectory("/tmp/tarnwick-no-such-resource-dir");
    bool const started = start() != nullptr;
    Common::setResourceDirectory(nullptr);
    ASSERT_TRUE(started);
    EXPECT_EQ(rootState(*mContext)->getUniform("Snow_Normal_Tx"), nullptr);
    EXPECT_EQ(rootState(*mContext)->getTextureAttribute(19, osg::StateAttribute::TEXTURE), nullptr);
    // The noise texture is there, empty, so that its unit stays reserved.
    EXPECT_EQ(intUniform(*mContext, "s_repNoise"), 16);
}

TEST_F(StartedRenderContextGLTest, ClipTestUsesAtMostSixPlanes)
{
    CKVVec4<float> planes[9];
    for (int i = 0; i < 9; ++i)
        planes[i] = CKVVec4<float>(0.0f, 0.0f, 1.0f, static_cast<float>(i));

    ASSERT_TRUE(mContext->updateClipTest(planes, 9));
    EXPECT_EQ(intUniform(*mContext, "ClipPlaneCount_I"), 6);
    EXPECT_TRUE(hasDefine(*mContext, "_USE_CLIP_TEST"));
    for (unsigned int i = 0; i < 6; ++i)
        EXPECT_EQ(clipMode(*mContext, i), osg::StateAttribute::ON) << i;
    osg::Vec4f sixth;
    rootState(*mContext)->getUniform("ClipPlaneArr")->getElement(5, sixth);
    EXPECT_EQ(sixth, osg::Vec4f(0.0f, 0.0f, 1.0f, 5.0f));

    ASSERT_TRUE(mContext->updateClipTest(nullptr, 0));
    EXPECT_EQ(intUniform(*mContext, "ClipPlaneCount_I"), 0);
    EXPECT_FALSE(hasDefine(*mContext, "_USE_CLIP_TEST"));
    for (unsigned int i = 0; i < 6; ++i)
        EXPECT_EQ(clipMode(*mContext, i), osg::StateAttribute::OFF) << i;

    // A negative count from the host arrives as a huge unsigned one.
    ASSERT_TRUE(mContext->updateClipTest(planes, static_cast<unsigned int>(-3)));
    EXPECT_EQ(intUniform(*mContext, "ClipPlaneCount_I"), 6);
    for (unsigned int i = 0; i < 6; ++i)
        EXPECT_EQ(clipMode(*mContext, i), osg::StateAttribute::ON) << i;

    // Fewer planes turn the rest off again.
    ASSERT_TRUE(mContext->updateClipTest(planes, 2));
    EXPECT_EQ(intUniform(*mContext, "ClipPlaneCount_I"), 2);
    EXPECT_TRUE(hasDefine(*mContext, "_USE_CLIP_TEST"));
    EXPECT_EQ(clipMode(*mContext, 1), osg::StateAttribute::ON);
    EXPECT_EQ(clipMode(*mContext, 2), osg::StateAttribute::OFF);
    EXPECT_FALSE(mContext->updateClipTest(nullptr, 2));

    // The shaders see the planes: a frame with them on still draws.
    bool dispatched = false;
    EXPECT_TRUE(tickWith([](CKVRenderContext*) { return true; }, &dispatched));
}

TEST_F(StartedRenderContextGLTest, WaterMaskOfAMissingFileChangesNothing)
{
    unsigned int const children = mContext->getRoot()->getNumChildren();
    unsigned int const slaves = mContext->getViewer()->getNumSlaves();

    EXPECT_TRUE(mContext->waterMask("/tmp/tarnwick-no-such-mask.png", 64, 64));
    EXPECT_EQ(mContext->getViewer()->getNumSlaves(), slaves);
    char path[] = "/tmp/tarnwick-mask-XXXXXX";
    int const file = mkstemp(path);
    ASSERT_GE(file, 0);
    close(file);
    EXPECT_TRUE(mContext->waterMask(path, 64, 64));
    std::remove(path);

    // An existing file makes the mask and its camera, even when its picture
    // cannot be read: the background then stays empty.
    EXPECT_EQ(mContext->getRoot()->getNumChildren(), children);
    EXPECT_EQ(mContext->getViewer()->getNumSlaves(), slaves + 1);
}

TEST_F(StartedRenderContextGLTest, ViewPortOfZeroPassesThroughAndBack)
{
    ASSERT_TRUE(mContext->setViewPort(0, 0));
    int width = -1, height = -1;
    ASSERT_TRUE(mContext->getViewPort(width, height));
    EXPECT_EQ(width, 0);
    EXPECT_EQ(height, 0);
    osg::Vec2f screen;
    rootState(*mContext)->getUniform("ScreenSize")->get(screen);
    EXPECT_EQ(screen, osg::Vec2f(0.0f, 0.0f));
    // The root ignores a zero size and keeps its last one.
    EXPECT_EQ(mContext->getRoot()->getViewport()->width(), kWidth);
    EXPECT_TRUE(tickWith([](CKVRenderContext*) { return true; }));

    ASSERT_TRUE(mContext->setViewPort(80, 40));
    ASSERT_TRUE(mContext->getViewPort(width, height));
    EXPECT_EQ(width, 80);
    EXPECT_EQ(height, 40);
    EXPECT_EQ(mContext->getRoot()->getViewport()->width(), 80);
    EXPECT_EQ(mContext->getRoot()->getViewport()->height(), 40);
}

TEST_F(StartedRenderContextGLTest, ApplyCameraSetsMatricesAndCameraUniforms)
{
    CKVCamera camera;
    camera.setLookAt(CKVPoint3D(10.0, -20.0, 30.0), CKVPoint3D(0.0, 0.0, 0.0), CKVVector3D(0.0, 0.0, 1.0));
    camera.setFieldOfView(50.0);
    camera.setAspect(1.5);
    ASSERT_TRUE(mContext->applyCamera(camera));

    osg::Vec3d eye, centre, up;
    mContext->getMainCamera()->getViewMatrixAsLookAt(eye, centre, up);
    EXPECT_NEAR((eye - osg::Vec3d(10.0, -20.0, 30.0)).length(), 0.0, 1e-3);
    osg::Vec3f position;
    rootState(*mContext)->getUniform(CKVCameraUniforms::kCameraPosition)->get(position);
    EXPECT_EQ(position, osg::Vec3f(10.0f, -20.0f, 30.0f));
    EXPECT_EQ(mContext->getCameraPosition(), position);

    osg::Matrixf fixed;
    rootState(*mContext)->getUniform(CKVCameraUniforms::kFixedProjection)->get(fixed);
    double fovy = 0, aspect = 0, zNear = 0, zFar = 0;
    ASSERT_TRUE(osg::Matrixd(fixed).getPerspective(fovy, aspect, zNear, zFar));
    EXPECT_NEAR(fovy, 50.0, 1e-3);
    EXPECT_NEAR(aspect, 1.5, 1e-4);
    EXPECT_NEAR(zNear, 0.01, 1e-5);

    osg::Matrixf scaleOnly;
    rootState(*mContext)->getUniform(CKVCameraUniforms::kScaleOnlyView)->get(scaleOnly);
    EXPECT_NEAR(scaleOnly.getTrans().length(), 0.0, 1e-6);

    // The frame copies the position for the next frame's motion.
    EXPECT_TRUE(tickWith([](CKVRenderContext*) { return true; }));
    EXPECT_EQ(mContext->getPreviousCameraPosition(), position);
}

TEST_F(StartedRenderContextGLTest, RenderConfigSetsDefinesLightAndBackground)
{
    CKVRenderConfig config;
    config.setFogUse(true);
    config.setFogDensity(0.25f);
    config.setSkyTerrainUse(true);
    config.setRainUse(true);
    config.setRainDensity(0.75f);
    config.setSnowUse(true);
    config.setSnowDensity(0.6f);
    config.setRenderStyle(CKVRenderConfig::kWhiteModelWithEdges);
    config.setWaterReflect(true);
    config.setLightPosition(CKVVec3<float>(0.0f, 0.0f, 2.0f));
    config.setLightIntensity(3.0f);
    config.setAmbientColor(CKVVec3<float>(0.1f, 0.2f, 0.3f));
    CKVBackGroundConfig background;
    background.setBackGroundColor(CKVPoint3D(0.2, 0.4, 0.6));
    config.setBackGroundConfig(background);

    ASSERT_TRUE(mContext->applyRenderConfig(config));
    for (char const* define : {"_USE_FOG", "_USE_SKY_TERRAIN", "_USE_WEATHER_RAIN", "_USE_WEATHER_SNOW",
                               "_USE_WHITE_COLOR"})
        EXPECT_TRUE(hasDefine(*mContext, define)) << define;
    float density = 0.0f;
    rootState(*mContext)->getUniform("FogDensity")->get(density);
    EXPECT_FLOAT_EQ(density, 0.25f);
    float rain = 0.0f;
    rootState(*mContext)->getUniform("RainIntensity")->get(rain);
    EXPECT_FLOAT_EQ(rain, 0.75f);
    CKVUniformBlock const& light = mContext->getLightInfo();
    EXPECT_FLOAT_EQ(light.get(6), 1.0f);  // normalised
    EXPECT_FLOAT_EQ(light.get(0), 3.0f);
    EXPECT_FLOAT_EQ(light.get(13), 0.2f);
    EXPECT_EQ(mContext->getRoot()->getLightPosition(), osg::Vec3f(0.0f, 0.0f, 1.0f));
    EXPECT_EQ(mContext->getMainCamera()->getClearColor(), osg::Vec4(0.2f, 0.4f, 0.6f, 1.0f));
    // Water reflection needs the atmosphere's sky: the stored copy has it off,
    // so that asking again counts as a change.
    EXPECT_FALSE(mContext->getRenderConfig().getWaterReflect());
    EXPECT_TRUE(mContext->getMainCamera()->getClearMask() & GL_DEPTH_BUFFER_BIT);
    EXPECT_FALSE(CKVRenderStateManager::instance().isHiZ());

    config.setFogUse(false);
    config.setSnowDensity(0.2f);
    config.setRenderStyle(CKVRenderConfig::kShadedWithEdges);
    config.setUseDepthPrePass(true);
    ASSERT_TRUE(mContext->applyRenderConfig(config));
    EXPECT_FALSE(hasDefine(*mContext, "_USE_FOG"));
    EXPECT_FALSE(hasDefine(*mContext, "_USE_WEATHER_SNOW"));
    EXPECT_FALSE(hasDefine(*mContext, "_USE_WHITE_COLOR"));
    EXPECT_TRUE(hasDefine(*mContext, "_USE_WEATHER_RAIN"));
    // The depth pre-pass clears depth itself.
    EXPECT_FALSE(mContext->getMainCamera()->getClearMask() & GL_DEPTH_BUFFER_BIT);
    EXPECT_TRUE(CKVRenderStateManager::instance().isHiZ());

    // Once configured, a switch that did not change is left alone, so that
    // shader programs are not rebuilt for nothing.
    rootState(*mContext)->setDefine("_USE_FOG");
    rootState(*mContext)->removeDefine("_USE_WEATHER_RAIN");
    ASSERT_TRUE(mContext->applyRenderConfig(config));
    EXPECT_TRUE(hasDefine(*mContext, "_USE_FOG"));
    EXPECT_FALSE(hasDefine(*mContext, "_USE_WEATHER_RAIN"));
}

TEST_F(StartedRenderContextGLTest, SameGraphicsModelWritesNothingAndSwitchingDrainsTheOldCache)
{
    kv_shared_ptr<CKVGraphicsModel> model = new CKVGraphicsModel;
    kv_shared_ptr<CKVSceneNode> first = CKVRenderCallback::createSceneNode();
    kv_shared_ptr<CKVSceneNode> second = CKVRenderCallback::createSceneNode();
    ASSERT_TRUE(first.valid() && second.valid());
    model->setField(0, new CKVGraphicsModelField(first.get()));
    model->setField(7, new CKVGraphicsModelField(second.get()));
    unsigned int const children = mContext->getRoot()->getNumChildren();
    CKVRenderCommandCache* modelCache = model->getRenderCommandCache();
    CKVRenderCommandCache* ownCache = mContext->getRenderCommandCache();

    ASSERT_TRUE(mContext->setGraphicsModel(model.get()));
    EXPECT_EQ(mContext->getRenderCommandCache(), modelCache);
    EXPECT_EQ(modelCache->readableCount(), 2u);
    EXPECT_TRUE(mContext->setGraphicsModel(model.get()));
    EXPECT_EQ(modelCache->readableCount(), 2u);
    EXPECT_EQ(modelCache->pendingCount(), 0u);

    EXPECT_TRUE(tickWith([](CKVRenderContext*) { return true; }));
    EXPECT_EQ(modelCache->readableCount(), 0u);
    EXPECT_EQ(mContext->getRoot()->getNumSceneNodes(), 2u);
    EXPECT_EQ(mContext->getRoot()->getNumChildren(), children + 2);

    // Detaching writes into the model's cache, which stops being the active
    // one: the next tick must still run those commands.
    ASSERT_TRUE(mContext->setGraphicsModel(nullptr));
    EXPECT_EQ(mContext->getRenderCommandCache(), ownCache);
    EXPECT_EQ(modelCache->readableCount(), 2u);
    EXPECT_TRUE(tickWith([](CKVRenderContext*) { return true; }));
    EXPECT_EQ(modelCache->readableCount(), 0u);
    EXPECT_EQ(mContext->getRoot()->getNumSceneNodes(), 0u);
    EXPECT_EQ(mContext->getRoot()->getNumChildren(), children);

    CKVRenderCallback::setGraphicsModelVerifier([](CKVGraphicsModel*) { return false; });
    EXPECT_FALSE(mContext->setGraphicsModel(model.get()));
    CKVRenderCallback::setGraphicsModelVerifier(nullptr);
    EXPECT_EQ(mContext->getGraphicsModel(), nullptr);
}

TEST_F(StartedRenderContextGLTest, ActiveUniformsReachTheMainSceneView)
{
    ASSERT_TRUE(mContext->setActiveUniforms(0x60));
    auto* renderer = dynamic_cast<osgViewer::Renderer*>(mContext->getMainCamera()->getRenderer());
    EXPECT_EQ(renderer->getSceneView(0)->getActiveUniforms(), 0x60);
}

TEST_F(StartedRenderContextGLTest, ATickAfterTheWindowClosedEndsTheViewerAndDrawsNothing)
{
    EXPECT_TRUE(tickWith([](CKVRenderContext*) { return true; }));
    unsigned int const frames = mCounter->frames();
    unsigned int const frameNumber = mContext->getViewer()->getFrameStamp()->getFrameNumber();

    mContext->getWindow()->close();
    bool dispatched = true;
    // The drain is skipped too: the command is not run.
    EXPECT_FALSE(tickWith([](CKVRenderContext*) { return true; }, &dispatched));
    EXPECT_TRUE(mContext->getViewer()->done());
    EXPECT_EQ(mCounter->frames(), frames);
    EXPECT_EQ(mContext->getViewer()->getFrameStamp()->getFrameNumber(), frameNumber);
    EXPECT_FALSE(mContext->renderFrame());
    EXPECT_TRUE(mContext->destroy());
}

// A host may take the ticks over at once, before the timer has run a frame.
TEST_F(RenderContextX11ImpGLTest, TimerStoppedStraightAfterInitialize)
{
    CKVRenderContext* created = CKVRenderCallback::createRenderContext(-1);
    ASSERT_NE(created, nullptr);
    mContext = static_cast<CKVRenderContextX11Imp*>(created);
    ASSERT_TRUE(mContext->initialize(&mGraphicsContext));
    CKVGraphicsWindowX11* window = mContext->getWindow();
    ASSERT_NE(window, nullptr);
    window->stopTimer();
    mContext->onTick(1);
    EXPECT_EQ(mContext->getWindow(), window);
}

} // namespace
} // namespace Kelvor
