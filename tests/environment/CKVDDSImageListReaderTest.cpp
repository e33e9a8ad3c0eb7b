// The cube-file read behind sky boxes and image-based lighting: the faces of
// a DDS cube come back as six images, and anything else leaves the list so
// that the caller falls back to its face files.
#include "DDSTestFiles.h"

#include "environment/CKVDDSImageListReader.h"

#include <osgDB/ReadFile>
#include <osgDB/WriteFile>

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <unistd.h>
#include <string>
#include <utility>
#include <vector>

using namespace Kelvor;

namespace {

std::string tempPath(std::string const& name)
{
    return "/tmp/kv_dds_" + std::to_string(::getpid()) + "_" + name;
}

} // namespace

TEST(DDSImageListReaderTest, CubeFileFillsTheListWithSixFacesInOrder)
{
    std::string const path = tempPath("cube.dds");
    auto const colours = DDSTestFile::sixColours();
    ASSERT_TRUE(DDSTestFile::write(path, 4, colours, 3));

    CKVDDSImageListReader::ImageList faces;
    osg::ref_ptr<osgDB::Options> options = CKVDDSImageListReader::createOptions(&faces);
    osg::ref_ptr<osg::Image> first = osgDB::readRefImageFile(path, options.get());
    ASSERT_EQ(faces.size(), 6u);
    EXPECT_EQ(first.get(), faces[0].get());
    for (unsigned int i = 0; i < 6; ++i) {
        ASSERT_TRUE(faces[i].valid());
        EXPECT_EQ(faces[i]->s(), 4);
        EXPECT_EQ(faces[i]->t(), 4);
        // BGRA bytes as stored; the face's own colour, not a neighbour's.
        unsigned char const* texel = faces[i]->data(3, 3);
        EXPECT_EQ(texel[2], colours[i].r) << "face " << i;
        EXPECT_EQ(texel[1], colours[i].g) << "face " << i;
        EXPECT_EQ(texel[0], colours[i].b) << "face " << i;
        // 4x4, 2x2, 1x1.
        EXPECT_EQ(faces[i]->getNumMipmapLevels(), 3u);
    }
    std::remove(path.c_str());
}

TEST(DDSImageListReaderTest, PlainTruncatedOrForeignFilesGiveNoCube)
{
    CKVDDSImageListReader::ImageList faces;
    std::string const plain = tempPath("plain.dds");
    ASSERT_TRUE(DDSTestFile::write(plain, 4, {{1, 2, 3, 255}}));
    EXPECT_TRUE(CKVDDSImageListReader::readFaces(plain, faces));
    EXPECT_EQ(faces.size(), 1u) << "a plain texture is one image, which callers refuse as a cube";

    std::string const truncated = tempPath("truncated.dds");
    ASSERT_TRUE(DDSTestFile::write(truncated, 4, DDSTestFile::sixColours(), 1, true));
    EXPECT_FALSE(CKVDDSImageListReader::readFaces(truncated, faces));
    EXPECT_TRUE(faces.empty());

    // A file of another kind under the option is read as usual, and the
    // list stays empty.
    std::string const png = tempPath("face.png");
    osg::ref_ptr<osg::Image> image = new osg::Image;
    image->allocateImage(2, 2, 1, GL_RGB, GL_UNSIGNED_BYTE);
    std::memset(image->data(), 200, image->getTotalSizeInBytes());
    ASSERT_TRUE(osgDB::writeImageFile(*image, png));
    osg::ref_ptr<osgDB::Options> options = CKVDDSImageListReader::createOptions(&faces);
    EXPECT_TRUE(osgDB::readRefImageFile(png, options.get()).valid());
    EXPECT_TRUE(faces.empty());

    EXPECT_FALSE(CKVDDSImageListReader::readFaces(tempPath("absent.dds"), faces));
    std::remove(plain.c_str());
    std::remove(truncated.c_str());
    std::remove(png.c_str());
}

// Headers that ask for more than the file holds: each is refused before
// anything is allocated, with a message naming the file. Words are indices
// into the file as 32-bit little-endian words (magic at 0).
TEST(DDSImageListReaderTest, DamagedHeadersAreRefusedWithTheFileName)
{
    constexpr unsigned int kFlags = 2, kHeight = 3, kWidth = 4, kMipCount = 7;
    constexpr unsigned int kPixelFlags = 20, kFourCC = 21;
    constexpr std::uint32_t kMipMapFlag = 0x20000, kFourCCFlag = 0x4, kFloatRGBA = 116;
    constexpr std::uint32_t kDXT1 = 0x31545844;
    struct Case
    {
        char const* name;
        std::vector<std::pair<unsigned int, std::uint32_t>> words;
        bool headerOnly;  // cut the file after its 128-byte header
    };
    Case const cases[] = {
        {"mip count 0xFFFFFFFF", {{kFlags, 0x1007 | kMipMapFlag}, {kMipCount, 0xFFFFFFFFu}}, true},
        {"2^30 x 2^30 RGBA32F",
         {{kHeight, 1u << 30}, {kWidth, 1u << 30}, {kPixelFlags, kFourCCFlag}, {kFourCC, kFloatRGBA}},
         false},
        {"DXT1 width 0xFFFFFFFF", {{kWidth, 0xFFFFFFFFu}, {kPixelFlags, kFourCCFlag}, {kFourCC, kDXT1}}, false},
        {"width 2^31 RGBA8", {{kWidth, 0x80000000u}}, false},
    };
    std::string const path = tempPath("damaged.dds");
    ASSERT_TRUE(DDSTestFile::write(path, 4, DDSTestFile::sixColours()));
    std::ifstream in(path, std::ios::binary);
    std::vector<unsigned char> const valid((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::remove(path.c_str());

    for (Case const& c : cases) {
        std::vector<unsigned char> bytes = valid;
        if (c.headerOnly)
            bytes.resize(128);
        for (auto const& [index, value] : c.words)
            std::memcpy(bytes.data() + 4 * index, &value, 4);
        CKVDDSImageListReader::ImageList faces;
        std::string error;
        EXPECT_FALSE(CKVDDSImageListReader::readFaces(bytes.data(), bytes.size(), "sky/damaged.dds", faces, &error))
            << c.name;
        EXPECT_TRUE(faces.empty()) << c.name;
        EXPECT_NE(error.find("sky/damaged.dds"), std::string::npos) << c.name << ": " << error;
    }
}

TEST(DDSImageListReaderTest, MipCountBeyondTheChainIsClampedToIt)
{
    std::string const path = tempPath("clamped.dds");
    ASSERT_TRUE(DDSTestFile::write(path, 4, DDSTestFile::sixColours(), 3));
    std::ifstream in(path, std::ios::binary);
    std::vector<unsigned char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::remove(path.c_str());
    std::uint32_t const count = 0xFFFFFFFFu;
    std::memcpy(bytes.data() + 4 * 7, &count, 4);

    CKVDDSImageListReader::ImageList faces;
    ASSERT_TRUE(CKVDDSImageListReader::readFaces(bytes.data(), bytes.size(), "clamped.dds", faces));
    ASSERT_EQ(faces.size(), 6u);
    EXPECT_EQ(faces[5]->getNumMipmapLevels(), 3u) << "4x4 has a chain of three levels";
}
