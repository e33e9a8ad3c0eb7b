// Background objects without a window: what they read, when, and what they
// put on their node's state.
#include "DDSTestFiles.h"

#include "environment/CKVBackGroundColor.h"
#include "environment/CKVBackGroundSkyBox.h"
#include "environment/CKVBackGroundWaterMask.h"

#include "TarnwickCommon/Common.h"
#include "TarnwickCommon/kv_shared_ptr.h"

#include <osg/Depth>
#include <osg/Texture2D>
#include <osgDB/ReadFile>
#include <osgDB/Registry>
#include <osgDB/WriteFile>

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <algorithm>
#include <vector>

using namespace Kelvor;

namespace {

// Counts every image read that goes through the registry.
class CountingReads : public osgDB::ReadFileCallback
{
public:
    osgDB::ReaderWriter::ReadResult readImage(std::string const& file, osgDB::Options const* options) override
    {
        ++count;
        return osgDB::ReadFileCallback::readImage(file, options);
    }
    int count = 0;
};

class BackGroundObjectsTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        mFolder = "/tmp/kv_bg_" + std::to_string(::getpid());
        ::mkdir(mFolder.c_str(), 0755);
        mReads = new CountingReads;
        osgDB::Registry::instance()->setReadFileCallback(mReads.get());
    }
    void TearDown() override
    {
        osgDB::Registry::instance()->setReadFileCallback(nullptr);
        for (std::string const& file : mFiles)
            std::remove(file.c_str());
        ::rmdir(mFolder.c_str());
    }

    std::string file(std::string const& name)
    {
        mFiles.push_back(mFolder + "/" + name);
        return mFiles.back();
    }

    std::string pngFace(std::string const& name, unsigned char value)
    {
        osg::ref_ptr<osg::Image> image = new osg::Image;
        image->allocateImage(2, 2, 1, GL_RGB, GL_UNSIGNED_BYTE);
        std::fill(image->data(), image->data() + image->getTotalSizeInBytes(), value);
        std::string const path = file(name);
        osgDB::writeImageFile(*image, path);
        return path;
    }

    void setSixFaces(CKVBackGroundSkyBox& sky)
    {
        sky.setFacePaths(pngFace("px.png", 10), pngFace("nx.png", 20), pngFace("py.png", 30),
                         pngFace("ny.png", 40), pngFace("pz.png", 50), pngFace("nz.png", 60));
    }

    static bool resourcesPresent()
    {
        CKVAString directory;
        Common::getResourceDirectory(directory);
        return Common::checkFile((std::string(directory.c_str()) + "/skybox/nz.png").c_str());
    }

    std::string mFolder;
    std::vector<std::string> mFiles;
    osg::ref_ptr<CountingReads> mReads;
};

} // namespace

TEST_F(BackGroundObjectsTest, OnlyAChangeOfSkyModeReadsImages)
{
    if (!resourcesPresent())
        GTEST_SKIP() << "the generated sky resources are not in the build";
    kv_shared_ptr<CKVBackGroundSkyBox> sky = new CKVBackGroundSkyBox;
    setSixFaces(*sky);
    int const before = mReads->count;
    sky->initialize();
    // Built in atmosphere mode: the six cloud faces of the resources.
    EXPECT_EQ(mReads->count - before, 6);
    ASSERT_NE(sky->getCloudMap(), nullptr);
    EXPECT_NE(sky->getCloudMap()->getImage(5), nullptr);
    EXPECT_EQ(sky->getNode()->getName(), "skybox");

    int reads = mReads->count;
    sky->setAtmosphereMode(true);
    EXPECT_EQ(mReads->count, reads) << "initialize already built for the atmosphere";

    sky->setAtmosphereMode(false);
    // Six user faces and the one cloud face that the user sky uses all round.
    EXPECT_EQ(mReads->count - reads, 7);
    ASSERT_NE(sky->getUserMap(), nullptr);
    for (unsigned int i = 0; i < 6; ++i) {
        ASSERT_NE(sky->getUserMap()->getImage(i), nullptr);
        EXPECT_EQ(*sky->getUserMap()->getImage(i)->data(), 10 * (i + 1)) << "face " << i;
        EXPECT_EQ(sky->getCloudMap()->getImage(i), sky->getCloudMap()->getImage(0));
    }
    osg::StateSet* state = sky->getNode()->getStateSet();
    EXPECT_EQ(state->getTextureAttribute(CKVBackGroundSkyBox::kSkyUnit, osg::StateAttribute::TEXTURE),
              sky->getUserMap());

    reads = mReads->count;
    sky->setAtmosphereMode(false);
    sky->initialize();
    EXPECT_EQ(mReads->count, reads);
}

TEST_F(BackGroundObjectsTest, CubeFileWinsAndAnyOtherFaceCountFallsBackToFaceFiles)
{
    kv_shared_ptr<CKVBackGroundSkyBox> cube = new CKVBackGroundSkyBox;
    setSixFaces(*cube);
    std::string const cubePath = file("sky.dds");
    ASSERT_TRUE(DDSTestFile::write(cubePath, 4, DDSTestFile::sixColours()));
    cube->setCubeMapPath(cubePath);
    EXPECT_FALSE(cube->getFacePath(0).empty()) << "the cube path keeps the faces as fallback";
    cube->initialize();
    cube->setAtmosphereMode(false);
    for (unsigned int i = 0; i < 6; ++i) {
        ASSERT_NE(cube->getUserMap()->getImage(i), nullptr);
        EXPECT_EQ(cube->getUserMap()->getImage(i)->s(), 4) << "face " << i << " from the cube file";
    }

    kv_shared_ptr<CKVBackGroundSkyBox> plain = new CKVBackGroundSkyBox;
    setSixFaces(*plain);
    std::string const plainPath = file("plain.dds");
    ASSERT_TRUE(DDSTestFile::write(plainPath, 4, {{1, 2, 3, 255}}));
    plain->setCubeMapPath(plainPath);
    plain->initialize();
    plain->setAtmosphereMode(false);
    for (unsigned int i = 0; i < 6; ++i) {
        ASSERT_NE(plain->getUserMap()->getImage(i), nullptr);
        EXPECT_EQ(plain->getUserMap()->getImage(i)->s(), 2) << "face " << i << " from its face file";
    }

    // Face paths given later replace the cube file.
    plain->setFacePaths("a", "b", "c", "d", "e", "f");
    EXPECT_TRUE(plain->getCubeMapPath().empty());
}

TEST_F(BackGroundObjectsTest, EnvironmentLightingNeedsAFolderInThePath)
{
    kv_shared_ptr<CKVBackGroundSkyBox> bare = new CKVBackGroundSkyBox;
    bare->setCubeMapPath("sky.dds");
    osg::ref_ptr<osg::StateSet> untouched = new osg::StateSet;
    bare->applyEnvironmentLighting(untouched.get());
    EXPECT_TRUE(untouched->getTextureAttributeList().empty());
    EXPECT_TRUE(untouched->getUniformList().empty());

    std::string const irradiance = file("irradiance.dds");
    ASSERT_TRUE(DDSTestFile::write(irradiance, 4, DDSTestFile::sixColours()));
    kv_shared_ptr<CKVBackGroundSkyBox> sky = new CKVBackGroundSkyBox;
    // The folder of the first face; a backslash separates too.
    sky->setFacePaths("C:\\sky\\px.png", "", "", "", "", "");
    osg::ref_ptr<osg::StateSet> windowsPath = new osg::StateSet;
    sky->applyEnvironmentLighting(windowsPath.get());
    EXPECT_NE(windowsPath->getUniform("IrradianceMap"), nullptr);

    sky->setFacePaths(mFolder + "/px.png", "", "", "", "", "");
    osg::ref_ptr<osg::StateSet> lit = new osg::StateSet;
    sky->applyEnvironmentLighting(lit.get());
    auto* irradianceMap =
        dynamic_cast<osg::TextureCubeMap*>(lit->getTextureAttribute(6, osg::StateAttribute::TEXTURE));
    ASSERT_NE(irradianceMap, nullptr);
    EXPECT_NE(irradianceMap->getImage(5), nullptr);
    EXPECT_NE(lit->getTextureAttribute(7, osg::StateAttribute::TEXTURE), nullptr);
    EXPECT_NE(lit->getTextureAttribute(8, osg::StateAttribute::TEXTURE), nullptr);
    int unit = 0;
    ASSERT_NE(lit->getUniform("PrefilterMap"), nullptr);
    lit->getUniform("PrefilterMap")->get(unit);
    EXPECT_EQ(unit, 7);
}

TEST_F(BackGroundObjectsTest, WaterMaskWithoutItsPictureDrawsNothing)
{
    kv_shared_ptr<CKVBackGroundWaterMask> missing = new CKVBackGroundWaterMask;
    missing->setImage(mFolder + "/absent.png", 256, 256);
    missing->initialize();
    EXPECT_EQ(missing->getNode()->getNumDrawables(), 0u);

    kv_shared_ptr<CKVBackGroundWaterMask> mask = new CKVBackGroundWaterMask;
    mask->setImage(pngFace("mask.png", 128), 2, 2);
    mask->setViewport(1000, 500);
    mask->initialize();
    mask->initialize();
    EXPECT_EQ(mask->getNode()->getNumDrawables(), 1u);
    osg::StateSet* state = mask->getNode()->getStateSet();
    ASSERT_NE(state, nullptr);
    auto* depth = dynamic_cast<osg::Depth*>(state->getAttribute(osg::StateAttribute::DEPTH));
    ASSERT_NE(depth, nullptr);
    EXPECT_EQ(depth->getFunction(), osg::Depth::ALWAYS);
    EXPECT_FALSE(depth->getWriteMask());
    // The picture repeats instead of stretching.
    auto* texture = dynamic_cast<osg::Texture2D*>(state->getTextureAttribute(0, osg::StateAttribute::TEXTURE));
    ASSERT_NE(texture, nullptr);
    EXPECT_EQ(texture->getWrap(osg::Texture::WRAP_S), osg::Texture::REPEAT);
    osg::Vec2f size;
    state->getUniform("waterMaskSize")->get(size);
    EXPECT_EQ(size, osg::Vec2f(2.0f, 2.0f));
    state->getUniform("viewPort")->get(size);
    EXPECT_EQ(size, osg::Vec2f(1000.0f, 500.0f));
}

TEST_F(BackGroundObjectsTest, GradientBuildsOnceAndNeverWritesDepth)
{
    kv_shared_ptr<CKVBackGroundColor> gradient = new CKVBackGroundColor;
    gradient->initialize();
    gradient->initialize();
    EXPECT_EQ(gradient->getNode()->getNumDrawables(), 1u);
    auto* depth = dynamic_cast<osg::Depth*>(gradient->getNode()->getStateSet()->getAttribute(osg::StateAttribute::DEPTH));
    ASSERT_NE(depth, nullptr);
    EXPECT_FALSE(depth->getWriteMask());

    gradient->setColors(osg::Vec3f(1.0f, 0.5f, 0.0f), osg::Vec3f(0.0f, 0.0f, 1.0f));
    osg::Vec4f top;
    gradient->getNode()->getStateSet()->getUniform("topColor")->get(top);
    EXPECT_EQ(top, osg::Vec4f(1.0f, 0.5f, 0.0f, 1.0f));
}
