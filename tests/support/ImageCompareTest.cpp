#include "support/GoldenImage.h"
#include "support/ImageCompare.h"
#include "support/TestPaths.h"

#include <gtest/gtest.h>

#include <osgDB/ReadFile>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <random>

namespace Kelvor {
namespace {

osg::ref_ptr<osg::Image> makeImage(int width, int height, GLenum format, unsigned char r, unsigned char g,
                                   unsigned char b, unsigned char a = 255)
{
    osg::ref_ptr<osg::Image> image = new osg::Image;
    image->allocateImage(width, height, 1, format, GL_UNSIGNED_BYTE);
    unsigned int const channels = osg::Image::computeNumComponents(format);
    unsigned char const value[4] = {r, g, b, a};
    for (int t = 0; t < height; ++t)
        for (int s = 0; s < width; ++s)
            std::memcpy(image->data(s, t), value, channels);
    return image;
}

void fillBlock(osg::Image& image, int s0, int t0, int size, unsigned char r, unsigned char g, unsigned char b)
{
    for (int t = t0; t < t0 + size; ++t)
        for (int s = s0; s < s0 + size; ++s)
        {
            unsigned char* pixel = image.data(s, t);
            pixel[0] = r;
            pixel[1] = g;
            pixel[2] = b;
        }
}

osg::Vec4ub pixel(osg::Image const& image, int s, int t)
{
    unsigned char const* p = image.data(s, t);
    return osg::Vec4ub(p[0], p[1], p[2], p[3]);
}

class ImageCompareTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        std::string const test = ::testing::UnitTest::GetInstance()->current_test_info()->name();
        mOutput = TestPaths::outputDirectory() + "/ImageCompareTest/" + test;
        std::filesystem::remove_all(mOutput);
    }

    std::string mOutput;
};

TEST_F(ImageCompareTest, EqualImagesPassAndWriteNothing)
{
    osg::ref_ptr<osg::Image> a = makeImage(32, 16, GL_RGBA, 10, 200, 30);
    osg::ref_ptr<osg::Image> b = makeImage(32, 16, GL_RGBA, 10, 200, 30);

    ImageCompareResult const result = ImageCompare(mOutput).compare(*a, *b, ImageTolerance{0, 0.0}, "equal");

    EXPECT_TRUE(result.passed) << result.message;
    EXPECT_EQ(result.maxDifference, 0);
    EXPECT_EQ(result.failingFraction, 0.0);
    EXPECT_TRUE(result.message.empty());
    EXPECT_FALSE(std::filesystem::exists(mOutput));
}

TEST_F(ImageCompareTest, ChangedBlockFailsAndWritesActualAndDiff)
{
    osg::ref_ptr<osg::Image> expected = makeImage(64, 32, GL_RGBA, 50, 50, 50);
    osg::ref_ptr<osg::Image> actual = makeImage(64, 32, GL_RGBA, 50, 50, 50);
    fillBlock(*actual, 8, 4, 8, 250, 50, 50);

    ImageCompareResult const result =
        ImageCompare(mOutput).compare(*actual, *expected, ImageTolerance{4, 0.01}, "block/case");

    ASSERT_FALSE(result.passed);
    EXPECT_EQ(result.maxDifference, 200);
    EXPECT_DOUBLE_EQ(result.failingFraction, 64.0 / (64.0 * 32.0));
    // Slashes in names would make folders; evidence files stay flat.
    EXPECT_EQ(result.actualPath, mOutput + "/block_case-actual.png");
    EXPECT_EQ(result.diffPath, mOutput + "/block_case-diff.png");
    EXPECT_NE(result.message.find(result.actualPath), std::string::npos) << result.message;
    EXPECT_NE(result.message.find(result.diffPath), std::string::npos) << result.message;

    // The written actual reads back as the actual (rows not flipped twice).
    osg::ref_ptr<osg::Image> writtenActual = osgDB::readImageFile(result.actualPath);
    ASSERT_TRUE(writtenActual.valid());
    EXPECT_TRUE(ImageCompare(mOutput).compare(*writtenActual, *actual, ImageTolerance{0, 0.0}, "reread").passed);

    // The diff marks exactly the changed block.
    osg::ref_ptr<osg::Image> diff = osgDB::readImageFile(result.diffPath);
    ASSERT_TRUE(diff.valid());
    osg::ref_ptr<osg::Image> diff8 = ImageCompare::toRGBA8(*diff);
    EXPECT_EQ(pixel(*diff8, 8, 4), osg::Vec4ub(255, 0, 0, 255));
    EXPECT_EQ(pixel(*diff8, 15, 11), osg::Vec4ub(255, 0, 0, 255));
    EXPECT_EQ(pixel(*diff8, 16, 11), osg::Vec4ub(0, 0, 0, 255));
    EXPECT_EQ(pixel(*diff8, 0, 0), osg::Vec4ub(0, 0, 0, 255));
}

TEST_F(ImageCompareTest, NoiseWithinChannelToleranceOnlyPassesUpToItsLimit)
{
    osg::ref_ptr<osg::Image> expected = makeImage(48, 48, GL_RGBA, 128, 128, 128);
    osg::ref_ptr<osg::Image> actual = makeImage(48, 48, GL_RGBA, 128, 128, 128);
    std::mt19937 random(7);
    std::uniform_int_distribution<int> noise(-2, 2);
    for (int t = 0; t < 48; ++t)
        for (int s = 0; s < 48; ++s)
            for (int c = 0; c < 3; ++c)
                actual->data(s, t)[c] = static_cast<unsigned char>(128 + noise(random));
    actual->data(5, 5)[1] = 130; // at least one pixel at the full amplitude

    ImageCompareResult const loose = ImageCompare(mOutput).compare(*actual, *expected, ImageTolerance{2, 0.0}, "noise");
    EXPECT_TRUE(loose.passed) << loose.message;
    EXPECT_EQ(loose.maxDifference, 2);

    ImageCompareResult const strict = ImageCompare(mOutput).compare(*actual, *expected, ImageTolerance{1, 0.0}, "noise");
    EXPECT_FALSE(strict.passed);
    EXPECT_GT(strict.failingFraction, 0.0);
}

TEST_F(ImageCompareTest, FailingFractionIsAnUpperBound)
{
    osg::ref_ptr<osg::Image> expected = makeImage(10, 10, GL_RGBA, 0, 0, 0);
    osg::ref_ptr<osg::Image> actual = makeImage(10, 10, GL_RGBA, 0, 0, 0);
    actual->data(3, 7)[2] = 255; // one pixel of a hundred

    ImageCompare const compare(mOutput);
    EXPECT_TRUE(compare.compare(*actual, *expected, ImageTolerance{0, 0.01}, "fraction").passed);
    EXPECT_FALSE(compare.compare(*actual, *expected, ImageTolerance{0, 0.009}, "fraction").passed);
    EXPECT_FALSE(compare.compare(*actual, *expected, ImageTolerance{0, 0.0}, "fraction").passed);
}

TEST_F(ImageCompareTest, SizeMismatchOrMissingPixelsFailWithMessage)
{
    osg::ref_ptr<osg::Image> wide = makeImage(64, 32, GL_RGBA, 1, 2, 3);
    osg::ref_ptr<osg::Image> tall = makeImage(32, 64, GL_RGBA, 1, 2, 3);

    ImageCompareResult const sizes = ImageCompare(mOutput).compare(*wide, *tall, ImageTolerance{255, 1.0}, "sizes");
    EXPECT_FALSE(sizes.passed);
    EXPECT_NE(sizes.message.find("64x32"), std::string::npos) << sizes.message;
    EXPECT_NE(sizes.message.find("32x64"), std::string::npos) << sizes.message;

    osg::ref_ptr<osg::Image> empty = new osg::Image;
    ImageCompareResult const none = ImageCompare(mOutput).compare(*empty, *wide, ImageTolerance{255, 1.0}, "empty");
    EXPECT_FALSE(none.passed);
    EXPECT_FALSE(none.message.empty());
}

// Goldens are PNG files that may come back as RGB: formats compare by colour,
// and a missing alpha channel counts as opaque.
TEST_F(ImageCompareTest, FormatsCompareByColour)
{
    osg::ref_ptr<osg::Image> rgb = makeImage(8, 8, GL_RGB, 90, 60, 30);
    osg::ref_ptr<osg::Image> opaque = makeImage(8, 8, GL_RGBA, 90, 60, 30, 255);
    osg::ref_ptr<osg::Image> clear = makeImage(8, 8, GL_RGBA, 90, 60, 30, 0);

    ImageCompare const compare(mOutput);
    EXPECT_TRUE(compare.compare(*rgb, *opaque, ImageTolerance{0, 0.0}, "rgb").passed);
    EXPECT_FALSE(compare.compare(*rgb, *clear, ImageTolerance{0, 0.0}, "alpha").passed);
}

TEST_F(ImageCompareTest, MissingGoldenFailsAndSaysHowToCreateIt)
{
    char const* update = std::getenv("TARNWICK_UPDATE_GOLDEN");
    if (update != nullptr && std::strcmp(update, "1") == 0)
        GTEST_SKIP() << "would create the golden";
    osg::ref_ptr<osg::Image> image = makeImage(4, 4, GL_RGBA, 1, 1, 1);

    ::testing::AssertionResult const result = matchesGolden(*image, "no-such-golden");

    EXPECT_FALSE(result);
    EXPECT_NE(std::string(result.message()).find("TARNWICK_UPDATE_GOLDEN=1"), std::string::npos) << result.message();
}

} // namespace
} // namespace Kelvor
