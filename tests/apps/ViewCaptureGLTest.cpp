// The viewer program's capture run, end to end: load, window, render
// context, CKVRCGetCapture, image file, clean exit.
#include "ViewProgramRunner.h"

#include "support/DisplayTest.h"
#include "support/GoldenImage.h"

#include <gtest/gtest.h>

#include <osg/Geode>
#include <osg/Material>
#include <osg/PagedLOD>
#include <osg/ShapeDrawable>
#include <osgDB/ReadFile>
#include <osgDB/WriteFile>

#include <cstdio>
#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>
#include <string>

using namespace Kelvor;

namespace {

char const* const kHausPath = "/usr/share/assimp/models/IFC/AC14-FZK-Haus.ifc";

// llvmpipe is deterministic on one machine; across Mesa builds edges and
// blending differ by a few steps on a few pixels.
ImageTolerance captureTolerance()
{
    ImageTolerance tolerance;
    tolerance.maxChannelDifference = 24;
    tolerance.maxFailingFraction = 0.02;
    return tolerance;
}

// Pixels that differ from the top-left corner (the background).
double modelCoverage(osg::Image const& image)
{
    unsigned char const* corner = image.data(0, image.t() - 1);
    int differing = 0;
    for (int y = 0; y < image.t(); ++y) {
        for (int x = 0; x < image.s(); ++x) {
            unsigned char const* p = image.data(x, y);
            if (std::abs(p[0] - corner[0]) + std::abs(p[1] - corner[1]) + std::abs(p[2] - corner[2]) > 24)
                ++differing;
        }
    }
    return double(differing) / (image.s() * image.t());
}

class ViewCaptureGLTest : public DisplayTest
{
protected:
    // Runs a capture and reads the picture back; null on failure.
    osg::ref_ptr<osg::Image> capture(std::vector<std::string> arguments, char const* name, bool unsetDisplay = false)
    {
        std::string const path = apptest::tempPath(name);
        std::remove(path.c_str());
        arguments.insert(arguments.end(), {"--capture", path, "--size", "320x240"});
        ViewRun const run = runViewProgram(arguments, unsetDisplay);
        EXPECT_TRUE(run.started);
        EXPECT_EQ(run.signal, 0) << "crashed; stderr: " << run.err;
        EXPECT_EQ(run.exitCode, 0) << "stderr: " << run.err;
        mLastOutput = run.out;
        osg::ref_ptr<osg::Image> image = osgDB::readRefImageFile(path);
        std::remove(path.c_str());
        return image;
    }

    std::string mLastOutput;
};

} // namespace

TEST_F(ViewCaptureGLTest, FzkHausCaptureMatchesItsGolden)
{
    if (::access(kHausPath, R_OK) != 0)
        GTEST_SKIP() << "the FZK-Haus sample (assimp-testmodels) is not installed";
    osg::ref_ptr<osg::Image> image = capture({}, "fzk.png");
    ASSERT_TRUE(image.valid());
    EXPECT_EQ(image->s(), 320);
    EXPECT_EQ(image->t(), 240);
    // The summary line counts what the import made.
    EXPECT_NE(mLastOutput.find("IFC2X3: 117 products"), std::string::npos) << mLastOutput;
    EXPECT_NE(mLastOutput.find("wrote "), std::string::npos);
    EXPECT_GT(modelCoverage(*image), 0.15) << "the house fills a good part of the picture";
    expectMatchesGolden(*image, "view_fzk_haus", captureTolerance());
}

// The house in the three styles with edges, as numbered on the command
// line; the edge-only picture is mostly its white background.
TEST_F(ViewCaptureGLTest, FzkHausInTheEdgeStyles)
{
    if (::access(kHausPath, R_OK) != 0)
        GTEST_SKIP() << "the FZK-Haus sample (assimp-testmodels) is not installed";
    char const* const names[] = {"view_fzk_haus_style1", "view_fzk_haus_style2", "view_fzk_haus_style3"};
    for (int style = 1; style <= 3; ++style) {
        osg::ref_ptr<osg::Image> image = capture({"--style", std::to_string(style)}, "fzk_style.png");
        ASSERT_TRUE(image.valid()) << style;
        expectMatchesGolden(*image, names[style - 1], captureTolerance());
        if (style == 3) {
            unsigned char const* corner = image->data(0, image->t() - 1);
            EXPECT_EQ(osg::Vec3i(corner[0], corner[1], corner[2]), osg::Vec3i(255, 255, 255));
        }
    }
}

TEST_F(ViewCaptureGLTest, BuiltInBuildingRendersHeadlessOnAPrivateServer)
{
    // No DISPLAY at all: the program starts and stops its own Xvfb.
    osg::ref_ptr<osg::Image> image = capture({"--builtin", "--view", "front"}, "builtin.png", true);
    ASSERT_TRUE(image.valid());
    EXPECT_NE(mLastOutput.find("built-in building: 23 products"), std::string::npos) << mLastOutput;
    double const coverage = modelCoverage(*image);
    EXPECT_GT(coverage, 0.2);
    EXPECT_LT(coverage, 0.95) << "framed with a margin";
    expectMatchesGolden(*image, "view_builtin_front", captureTolerance());
}

TEST_F(ViewCaptureGLTest, ExplicitCameraAndBackgroundReachThePicture)
{
    // Looking away from the building into an orange background.
    osg::ref_ptr<osg::Image> image =
        capture({"--builtin", "--camera", "6,-40,3,6,-80,3", "--background", "#FF8000"}, "away.png");
    ASSERT_TRUE(image.valid());
    unsigned char const* centre = image->data(160, 120);
    EXPECT_NEAR(centre[0], 255, 4);
    EXPECT_NEAR(centre[1], 128, 4);
    EXPECT_NEAR(centre[2], 0, 4);
    EXPECT_LT(modelCoverage(*image), 0.001) << "nothing of the house is in view";
}

// The backend reads FBX files; the viewer offers them like any model.
TEST_F(ViewCaptureGLTest, FbxFilesOpen)
{
    char const* const box = "/usr/share/assimp/models/FBX/box.fbx";
    if (::access(box, R_OK) != 0)
        GTEST_SKIP() << box << " (assimp-testmodels) is not installed";
    osg::ref_ptr<osg::Image> image = capture({box}, "fbx.png");
    ASSERT_TRUE(image.valid());
    EXPECT_NE(mLastOutput.find("fbx: 1 products, 12 triangles"), std::string::npos) << mLastOutput;
    EXPECT_GT(modelCoverage(*image), 0.05);
}

namespace {

osg::ref_ptr<osg::Geode> colouredBox(osg::Vec4 const& colour)
{
    osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    geode->addDrawable(new osg::ShapeDrawable(new osg::Box(osg::Vec3(), 10.0f)));
    osg::ref_ptr<osg::Material> material = new osg::Material;
    material->setDiffuse(osg::Material::FRONT_AND_BACK, colour);
    geode->getOrCreateStateSet()->setAttribute(material);
    return geode;
}

// Pixels where one channel leads the other two clearly.
int pixelsLedBy(osg::Image const& image, int channel)
{
    int count = 0;
    for (int y = 0; y < image.t(); ++y) {
        for (int x = 0; x < image.s(); ++x) {
            unsigned char const* p = image.data(x, y);
            if (p[channel] > p[(channel + 1) % 3] + 60 && p[channel] > p[(channel + 2) % 3] + 60)
                ++count;
        }
    }
    return count;
}

} // namespace

// A tile with a coarse red box beyond 60 m and a fine green one, from its
// own file, within: one of them shows at a time, never both on top of
// each other.
TEST_F(ViewCaptureGLTest, TileSetsShowOneLevelPerRange)
{
    std::string const folder = apptest::tempPath("tiles");
    ASSERT_EQ(::mkdir(folder.c_str(), 0755), 0);
    ASSERT_TRUE(osgDB::writeNodeFile(*colouredBox(osg::Vec4(0, 1, 0, 1)), folder + "/fine.osgb"));
    osg::ref_ptr<osg::PagedLOD> tile = new osg::PagedLOD;
    tile->addChild(colouredBox(osg::Vec4(1, 0, 0, 1)), 60.0f, 1.0e30f);
    tile->setFileName(1, "fine.osgb");
    tile->setRange(1, 0.0f, 60.0f);
    tile->setDatabasePath(folder + "/");
    std::string const path = folder + "/tile.osgb";
    ASSERT_TRUE(osgDB::writeNodeFile(*tile, path));

    osg::ref_ptr<osg::Image> const near = capture({path, "--camera", "20,20,20,0,0,0"}, "near.png");
    osg::ref_ptr<osg::Image> const far = capture({path, "--camera", "80,80,80,0,0,0"}, "far.png");
    for (char const* name : {"/fine.osgb", "/tile.osgb"})
        std::remove((folder + name).c_str());
    ::rmdir(folder.c_str());
    ASSERT_TRUE(near.valid() && far.valid());
    EXPECT_GT(pixelsLedBy(*near, 1), 1000);
    EXPECT_EQ(pixelsLedBy(*near, 0), 0) << "the coarse level shows through the fine one";
    EXPECT_GT(pixelsLedBy(*far, 0), 100);
    EXPECT_EQ(pixelsLedBy(*far, 1), 0) << "the fine level shows from afar";
}
