#include "environment/CKVDDSImageListReader.h"

#include <osg/GL>
#include <osg/Texture>
#include <osgDB/FileNameUtils>
#include <osgDB/FileUtils>
#include <osgDB/Registry>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>

#ifndef GL_COMPRESSED_RGB_S3TC_DXT1_EXT
#define GL_COMPRESSED_RGB_S3TC_DXT1_EXT 0x83F0
#define GL_COMPRESSED_RGBA_S3TC_DXT1_EXT 0x83F1
#define GL_COMPRESSED_RGBA_S3TC_DXT3_EXT 0x83F2
#define GL_COMPRESSED_RGBA_S3TC_DXT5_EXT 0x83F3
#endif

namespace Kelvor {

char const* const CKVDDSImageListReader::kPluginDataName = "dds_image_list";

namespace {

// Byte offsets in the file: the four-byte magic, then the 124-byte header
// with its 32-byte pixel format at header offset 72.
constexpr std::size_t kHeaderStart = 4;
constexpr std::size_t kDataStart = 128;
constexpr std::uint32_t kMagic = 0x20534444;  // "DDS "

constexpr std::uint32_t kFlagMipMapCount = 0x20000;
constexpr std::uint32_t kPixelAlpha = 0x1;
constexpr std::uint32_t kPixelFourCC = 0x4;
constexpr std::uint32_t kPixelRGB = 0x40;
constexpr std::uint32_t kPixelLuminance = 0x20000;
constexpr std::uint32_t kCaps2CubeMap = 0x200;
constexpr std::uint32_t kCaps2AllFaces = 0xFC00;

constexpr std::uint32_t fourCC(char a, char b, char c, char d)
{
    return std::uint32_t(std::uint8_t(a)) | (std::uint32_t(std::uint8_t(b)) << 8) |
           (std::uint32_t(std::uint8_t(c)) << 16) | (std::uint32_t(std::uint8_t(d)) << 24);
}

// Float formats by their D3D numbers, as cube-map tools write them.
constexpr std::uint32_t kFourCCHalfRGBA = 113;
constexpr std::uint32_t kFourCCFloatRGBA = 116;

struct Format
{
    GLint internalFormat = 0;
    GLenum pixelFormat = 0;
    GLenum type = GL_UNSIGNED_BYTE;
    unsigned int blockBytes = 0;  // compressed: bytes of a 4x4 block
    unsigned int pixelBytes = 0;  // uncompressed: bytes of a pixel
};

std::uint32_t word(std::vector<unsigned char> const& data, std::size_t offset)
{
    std::uint32_t value = 0;
    std::memcpy(&value, data.data() + offset, 4);
    return value;  // DDS is little-endian, as are the machines we run on
}

bool formatOf(std::vector<unsigned char> const& file, Format& format)
{
    std::size_t const pf = kHeaderStart + 72;
    std::uint32_t const flags = word(file, pf + 4);
    std::uint32_t const code = word(file, pf + 8);
    std::uint32_t const bits = word(file, pf + 12);
    std::uint32_t const redMask = word(file, pf + 16);
    if (flags & kPixelFourCC) {
        switch (code) {
        case fourCC('D', 'X', 'T', '1'):
            format.internalFormat = (flags & kPixelAlpha) ? GL_COMPRESSED_RGBA_S3TC_DXT1_EXT
                                                          : GL_COMPRESSED_RGB_S3TC_DXT1_EXT;
            format.pixelFormat = format.internalFormat;
            format.blockBytes = 8;
            return true;
        case fourCC('D', 'X', 'T', '3'):
            format.internalFormat = format.pixelFormat = GL_COMPRESSED_RGBA_S3TC_DXT3_EXT;
            format.blockBytes = 16;
            return true;
        case fourCC('D', 'X', 'T', '5'):
            format.internalFormat = format.pixelFormat = GL_COMPRESSED_RGBA_S3TC_DXT5_EXT;
            format.blockBytes = 16;
            return true;
        case kFourCCHalfRGBA:
            format.internalFormat = GL_RGBA16F_ARB;
            format.pixelFormat = GL_RGBA;
            format.type = GL_HALF_FLOAT;
            format.pixelBytes = 8;
            return true;
        case kFourCCFloatRGBA:
            format.internalFormat = GL_RGBA32F_ARB;
            format.pixelFormat = GL_RGBA;
            format.type = GL_FLOAT;
            format.pixelBytes = 16;
            return true;
        default:
            return false;
        }
    }
    bool const rgb = (flags & kPixelRGB) != 0;
    // The red mask tells the byte order: low byte red is RGB(A) order, the
    // third byte red is the usual BGR(A) order.
    if (rgb && bits == 32) {
        format.internalFormat = GL_RGBA;
        format.pixelFormat = redMask == 0x000000ff ? GL_RGBA : GL_BGRA;
        format.pixelBytes = 4;
        return redMask == 0x000000ff || redMask == 0x00ff0000;
    }
    if (rgb && bits == 24) {
        format.internalFormat = GL_RGB;
        format.pixelFormat = redMask == 0x000000ff ? GL_RGB : GL_BGR;
        format.pixelBytes = 3;
        return redMask == 0x000000ff || redMask == 0x00ff0000;
    }
    if ((flags & kPixelLuminance) && bits == 8) {
        format.internalFormat = GL_LUMINANCE;
        format.pixelFormat = GL_LUMINANCE;
        format.pixelBytes = 1;
        return true;
    }
    return false;
}

std::size_t levelBytes(Format const& format, unsigned int width, unsigned int height)
{
    if (format.blockBytes)
        return std::size_t((width + 3) / 4) * ((height + 3) / 4) * format.blockBytes;
    return std::size_t(width) * height * format.pixelBytes;
}

} // namespace

bool CKVDDSImageListReader::readFaces(std::string const& path, ImageList& faces)
{
    faces.clear();
    std::ifstream stream(path, std::ios::binary);
    if (!stream)
        return false;
    std::vector<unsigned char> const file((std::istreambuf_iterator<char>(stream)),
                                          std::istreambuf_iterator<char>());
    if (file.size() < kDataStart || word(file, 0) != kMagic || word(file, kHeaderStart) != 124)
        return false;

    Format format;
    if (!formatOf(file, format))
        return false;
    unsigned int const height = word(file, kHeaderStart + 8);
    unsigned int const width = word(file, kHeaderStart + 12);
    if (width == 0 || height == 0)
        return false;
    unsigned int levels = 1;
    if (word(file, kHeaderStart + 4) & kFlagMipMapCount)
        levels = std::max(1u, word(file, kHeaderStart + 24));
    std::uint32_t const caps2 = word(file, kHeaderStart + 108);
    bool const cube = (caps2 & kCaps2CubeMap) != 0;
    // A cube file holds only the faces its flags list; a partial cube is
    // read as what it has, and callers that need six see fewer.
    unsigned int faceCount = 1;
    if (cube) {
        faceCount = 0;
        for (std::uint32_t bit = 0x400; bit & kCaps2AllFaces; bit <<= 1)
            faceCount += (caps2 & bit) ? 1 : 0;
    }

    std::size_t offset = kDataStart;
    for (unsigned int face = 0; face < faceCount; ++face) {
        osg::Image::MipmapDataType mipmaps;
        std::size_t faceBytes = 0;
        unsigned int w = width;
        unsigned int h = height;
        for (unsigned int level = 0; level < levels; ++level) {
            if (level > 0)
                mipmaps.push_back(static_cast<unsigned int>(faceBytes));
            faceBytes += levelBytes(format, w, h);
            w = std::max(1u, w / 2);
            h = std::max(1u, h / 2);
        }
        if (offset + faceBytes > file.size()) {
            faces.clear();
            return false;
        }
        auto* data = new unsigned char[faceBytes];
        std::memcpy(data, file.data() + offset, faceBytes);
        offset += faceBytes;

        osg::ref_ptr<osg::Image> image = new osg::Image;
        image->setFileName(path);
        image->setImage(static_cast<int>(width), static_cast<int>(height), 1, format.internalFormat,
                        format.pixelFormat, format.type, data, osg::Image::USE_NEW_DELETE);
        if (!mipmaps.empty())
            image->setMipmapLevels(mipmaps);
        faces.push_back(image);
    }
    return true;
}

osg::ref_ptr<osgDB::Options> CKVDDSImageListReader::createOptions(ImageList* list)
{
    osgDB::Options const* registryOptions = osgDB::Registry::instance()->getOptions();
    osg::ref_ptr<osgDB::Options> options =
        registryOptions ? static_cast<osgDB::Options*>(registryOptions->clone(osg::CopyOp::SHALLOW_COPY))
                        : new osgDB::Options;
    options->setPluginData(kPluginDataName, list);
    options->setReadFileCallback(new CKVDDSImageListReader);
    return options;
}

osgDB::ReaderWriter::ReadResult CKVDDSImageListReader::readImage(std::string const& filename,
                                                                 osgDB::Options const* options)
{
    auto* list = options ? static_cast<ImageList*>(const_cast<void*>(options->getPluginData(kPluginDataName)))
                         : nullptr;
    if (list && osgDB::getLowerCaseFileExtension(filename) == "dds") {
        std::string const path = osgDB::findDataFile(filename, options);
        if (!path.empty() && readFaces(path, *list) && !list->empty())
            return osgDB::ReaderWriter::ReadResult(list->front().get());
        list->clear();
    }
    return osgDB::Registry::instance()->readImageImplementation(filename, options);
}

} // namespace Kelvor
