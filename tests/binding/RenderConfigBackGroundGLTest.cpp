// Backgrounds on a host window, driven only by render commands: a solid
// colour, a gradient, a sky box from six face files and the water mask,
// compared with golden images.
#include "RenderContextFixture.h"

#include "binding/CKVRenderConfigApplier.h"
#include "effects/CKVPostProcessNode.h"
#include "support/GoldenImage.h"

#include "TarnwickCommon/Common.h"
#include "TarnwickRender/CKVCamera.h"
#include "TarnwickRender/CKVRCApplyCamera.h"
#include "TarnwickRender/CKVRCApplyRenderConfig.h"
#include "TarnwickRender/CKVRCWaterMask.h"

#include <osgDB/WriteFile>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>
#include <vector>

using namespace Kelvor;

namespace {

class RenderConfigBackGroundGLTest : public RenderContextFixture
{
protected:
    void TearDown() override
    {
        RenderContextFixture::TearDown();
        for (std::string const& path : mFiles)
            std::remove(path.c_str());
    }

    bool submit(CKVRenderCommand* command)
    {
        bool const done = mContext->getRenderCommandCache()->submitAndWait(command, 10000);
        return done && waitForFrames(mCounter->frames() + 3);
    }

    bool applyBackGround(CKVBackGroundConfig const& background)
    {
        CKVRenderConfig config;
        config.setBackGroundConfig(background);
        kv_shared_ptr<CKVRCApplyRenderConfig> command = new CKVRCApplyRenderConfig(config);
        return submit(command.get());
    }

    std::string solidFace(char const* name, unsigned char r, unsigned char g, unsigned char b)
    {
        osg::ref_ptr<osg::Image> image = new osg::Image;
        image->allocateImage(8, 8, 1, GL_RGB, GL_UNSIGNED_BYTE);
        for (unsigned char* p = image->data(); p < image->data() + image->getTotalSizeInBytes(); p += 3) {
            p[0] = r;
            p[1] = g;
            p[2] = b;
        }
        std::string const path = "/tmp/kv_sky_" + std::to_string(::getpid()) + "_" + name;
        osgDB::writeImageFile(*image, path);
        mFiles.push_back(path);
        return path;
    }

    static bool near(unsigned char const* rgb, int r, int g, int b, int tolerance = 4)
    {
        return std::abs(rgb[0] - r) <= tolerance && std::abs(rgb[1] - g) <= tolerance &&
               std::abs(rgb[2] - b) <= tolerance;
    }

    std::vector<std::string> mFiles;
};

} // namespace

TEST_F(RenderConfigBackGroundGLTest, SolidGradientAndSkyBoxFollowTheConfiguration)
{
    CKVRenderConfig initial;
    CKVBackGroundConfig background;
    background.setBackGroundColor(CKVPoint3D(0.2, 0.4, 0.6));
    initial.setBackGroundConfig(background);
    mScene.setRenderConfig(initial);
    ASSERT_NE(start(), nullptr);
    ASSERT_TRUE(waitForFrames(mCounter->frames() + 3));

    osg::ref_ptr<osg::Image> solid = mHost->shown();
    ASSERT_TRUE(solid.valid());
    EXPECT_TRUE(near(solid->data(0, 0), 51, 102, 153));
    EXPECT_TRUE(near(solid->data(kWidth - 1, kHeight - 1), 51, 102, 153));
    expectMatchesGolden(*solid, "background_solid");

    background.setBackGroundType(CKVBackGroundConfig::kGradient);
    background.setGradientBackGround(CKVPoint3D(1.0, 0.5, 0.0), CKVPoint3D(0.0, 0.0, 1.0));
    ASSERT_TRUE(applyBackGround(background));
    osg::ref_ptr<osg::Image> gradient = mHost->shown();
    // Bottom row the bottom colour, top row the top colour, halfway between.
    EXPECT_TRUE(near(gradient->data(kWidth / 2, 0), 0, 0, 255, 8));
    EXPECT_TRUE(near(gradient->data(kWidth / 2, kHeight - 1), 255, 127, 0, 8));
    EXPECT_TRUE(near(gradient->data(kWidth / 2, kHeight / 2), 128, 64, 128, 8));
    expectMatchesGolden(*gradient, "background_gradient");
    CKVBackGround* colour = mContext->getConfigApplier().getBackGrounds().getColorBackGround();

    // A sky box from six distinct faces, seen towards the corner of +X, +Y
    // and +Z so that three faces show.
    background.setBackGroundType(CKVBackGroundConfig::kSkyBox);
    background.setSingleSkyBoxPath(CKVBackGroundConfig::kPositiveX, solidFace("px.png", 220, 40, 40).c_str());
    background.setSingleSkyBoxPath(CKVBackGroundConfig::kNegativeX, solidFace("nx.png", 40, 220, 220).c_str());
    background.setSingleSkyBoxPath(CKVBackGroundConfig::kPositiveY, solidFace("py.png", 40, 220, 40).c_str());
    background.setSingleSkyBoxPath(CKVBackGroundConfig::kNegativeY, solidFace("ny.png", 220, 40, 220).c_str());
    background.setSingleSkyBoxPath(CKVBackGroundConfig::kPositiveZ, solidFace("pz.png", 40, 40, 220).c_str());
    background.setSingleSkyBoxPath(CKVBackGroundConfig::kNegativeZ, solidFace("nz.png", 220, 220, 40).c_str());
    CKVCamera camera;
    camera.setProjectMode(CKVCamera::kPerspective);
    camera.setFieldOfView(90.0);
    camera.setAspect(double(kWidth) / kHeight);
    camera.setNearFar(0.1, 100.0);
    camera.setPosition(CKVPoint3D(0, 0, 0));
    camera.setTarget(CKVPoint3D(1, 1, 0.8));
    camera.setUp(CKVVector3D(0, 0, 1));
    kv_shared_ptr<CKVRCApplyCamera> look = new CKVRCApplyCamera(camera);
    ASSERT_TRUE(submit(look.get()));
    ASSERT_TRUE(applyBackGround(background));
    osg::ref_ptr<osg::Image> sky = mHost->shown();
    expectMatchesGolden(*sky, "background_skybox");
    osg::Node* skyNode = mContext->getConfigApplier().getBackGrounds().getSkyBoxBackGround()->getNode();
    EXPECT_TRUE(mContext->getRoot()->containsNode(skyNode));
    EXPECT_FALSE(mContext->getRoot()->containsNode(colour->getNode()));

    // Back to the gradient: the same object returns in place of the sky.
    ASSERT_TRUE(applyBackGround(CKVBackGroundConfig()));
    EXPECT_EQ(mContext->getConfigApplier().getBackGrounds().getColorBackGround(), colour);
    EXPECT_TRUE(mContext->getRoot()->containsNode(colour->getNode()));
    EXPECT_FALSE(mContext->getRoot()->containsNode(skyNode));
}

TEST_F(RenderConfigBackGroundGLTest, WaterMaskTilesTheSamplePictureOnce)
{
    CKVRenderConfig initial;
    mScene.setRenderConfig(initial);
    ASSERT_NE(start(), nullptr);
    CKVBackGroundSwitcher const& backgrounds = mContext->getConfigApplier().getBackGrounds();

    kv_shared_ptr<CKVRCWaterMask> absent = new CKVRCWaterMask("/tmp/no/such/mask.png", 64, 32);
    ASSERT_TRUE(submit(absent.get()));
    EXPECT_EQ(backgrounds.getWaterMaskBackGround(), nullptr);

    CKVAString directory;
    Common::getResourceDirectory(directory);
    std::string const sample = std::string(directory.c_str()) + "/water/watermask_sample.png";
    if (!Common::checkFile(sample.c_str()))
        GTEST_SKIP() << "the generated water-mask sample is not in the build";
    kv_shared_ptr<CKVRCWaterMask> mask = new CKVRCWaterMask(sample.c_str(), 64, 32);
    ASSERT_TRUE(submit(mask.get()));
    ASSERT_NE(backgrounds.getWaterMaskBackGround(), nullptr);
    ASSERT_NE(backgrounds.getWaterMaskCamera(), nullptr);
    EXPECT_EQ(backgrounds.getWaterMaskCamera()->getName(), "waterMask");
    EXPECT_LT(mContext->getViewer()->findSlaveIndexForCamera(backgrounds.getWaterMaskCamera()),
              mContext->getViewer()->getNumSlaves());

    // The sample is water below a wave about ten rows high, transparent
    // above: at its own size it repeats every 32 rows and 64 columns.
    osg::ref_ptr<osg::Image> image = mHost->shown();
    unsigned char const water[3] = {30, 90, 200};
    EXPECT_TRUE(near(image->data(0, 2), water[0], water[1], water[2], 8));
    EXPECT_TRUE(near(image->data(64, 34), water[0], water[1], water[2], 8)) << "second tile";
    EXPECT_FALSE(near(image->data(0, 24), water[0], water[1], water[2], 8)) << "transparent part";
    expectMatchesGolden(*image, "background_watermask");

    // The one mask stays, whatever a later call names.
    CKVBackGroundWaterMask* first = backgrounds.getWaterMaskBackGround();
    kv_shared_ptr<CKVRCWaterMask> again = new CKVRCWaterMask(sample.c_str(), 128, 128);
    ASSERT_TRUE(submit(again.get()));
    EXPECT_EQ(backgrounds.getWaterMaskBackGround(), first);
    EXPECT_EQ(first->getWidth(), 64);
}
