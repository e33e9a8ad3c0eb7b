#include "viewer/CKVFrameCapture.h"
#include "viewer/CKVViewer.h"

#include <gtest/gtest.h>

#include <osgDB/ReadFile>

#include <filesystem>
#include <string>
#include <unistd.h>

namespace Kelvor {
namespace {

namespace fs = std::filesystem;

class ScratchDirectory
{
public:
    ScratchDirectory()
        : mPath(fs::temp_directory_path() / ("kv-capture-" + std::to_string(::getpid())))
    {
        fs::create_directories(mPath);
    }
    ~ScratchDirectory()
    {
        std::error_code ignored;
        fs::remove_all(mPath, ignored);
    }
    std::string file(char const* name) const { return (mPath / name).string(); }

private:
    fs::path mPath;
};

osg::ref_ptr<osg::Image> makeRgba(int width, int height)
{
    osg::ref_ptr<osg::Image> image = new osg::Image;
    image->allocateImage(width, height, 1, GL_RGBA, GL_UNSIGNED_BYTE, 1);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            unsigned char* p = image->data(x, y);
            p[0] = static_cast<unsigned char>(x * 255 / width);
            p[1] = static_cast<unsigned char>(y * 255 / height);
            p[2] = 128;
            p[3] = 255;
        }
    return image;
}

TEST(CKVFrameCapture, SizesRoundDownToEvenBelowTheTargetLimit)
{
    EXPECT_EQ(CKVFrameCapture::evenSize(0), 0u);
    EXPECT_EQ(CKVFrameCapture::evenSize(1), 0u);
    EXPECT_EQ(CKVFrameCapture::evenSize(641), 640u);
    EXPECT_EQ(CKVFrameCapture::evenSize(480), 480u);
    EXPECT_EQ(CKVFrameCapture::evenSize(0x10000002u), 2u);
}

TEST(CKVFrameCapture, WritesPngWithAlphaAndJpegWithout)
{
    ScratchDirectory dir;
    osg::ref_ptr<osg::Image> image = makeRgba(20, 10);

    for (char const* name : {"shot.png", "shot.jpg", "shot.JPEG"}) {
        SCOPED_TRACE(name);
        std::string const path = dir.file(name);
        ASSERT_TRUE(CKVFrameCapture::writeImage(*image, path));
        osg::ref_ptr<osg::Image> back = osgDB::readImageFile(path);
        ASSERT_TRUE(back.valid());
        EXPECT_EQ(back->s(), 20);
        EXPECT_EQ(back->t(), 10);
        // The right-hand, upper corner keeps its colour through either format.
        osg::Vec4 const corner = back->getColor(19, 9);
        EXPECT_NEAR(corner.r(), 242.0 / 255.0, 0.05);
        EXPECT_NEAR(corner.g(), 229.0 / 255.0, 0.05);
    }
    EXPECT_FALSE(CKVFrameCapture::writeImage(*image, ""));
    osg::ref_ptr<osg::Image> empty = new osg::Image;
    EXPECT_FALSE(CKVFrameCapture::writeImage(*empty, dir.file("empty.png")));
}

TEST(CKVFrameCapture, NothingToCaptureGivesFalseAndNoFile)
{
    ScratchDirectory dir;
    osg::ref_ptr<CKVViewer> viewer = new CKVViewer;
    CKVFrameCapture capture(viewer.get(), viewer->getCamera());
    std::string const path = dir.file("none.png");

    EXPECT_FALSE(capture.capture(path, 1, 200, osg::Matrixd(), osg::Matrixd(), false));
    EXPECT_FALSE(capture.capture(path, 200, 0, osg::Matrixd(), osg::Matrixd(), true));
    EXPECT_EQ(viewer->getNumSlaves(), 0u);

    // A capture that outlived its viewer refuses quietly.
    viewer = nullptr;
    EXPECT_FALSE(capture.capture(path, 64, 64, osg::Matrixd(), osg::Matrixd(), false));
    EXPECT_FALSE(fs::exists(path));
}

} // namespace
} // namespace Kelvor
