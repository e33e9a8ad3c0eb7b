#include "environment/CKVDDSImageListReader.h"

#include <osg/GL>
#include <osg/Notify>
#include <osg/Texture>
#include <osgDB/FileNameUtils>
#include <osgDB/FileUtils>
#include <osgDB/Registry>

#include <algorithm>
#include <climits>
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

std::uint32_t word(unsigned char const* data, std::size_t offset)
{
    std::uint32_t value = 0;
    std::memcpy(&value, data + offset, 4);
    return value;  // DDS is little-endian, as are the machines we run on
}

bool formatOf(unsigned char const* file, Format& format)
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

// The bytes of one level, or false when the count does not fit in 64 bits.
// Headers come from files: every product is checked, since a width of
// 0xFFFFFFFF or a 2^30 x 2^30 float image wraps plain arithmetic.
bool levelBytes(Format const& format, std::uint32_t width, std::uint32_t height, std::uint64_t& bytes)
{
    constexpr std::uint64_t kBlockSide = 4;
    if (format.blockBytes) {
        std::uint64_t const across = (std::uint64_t(width) + kBlockSide - 1) / kBlockSide;
        std::uint64_t const down = (std::uint64_t(height) + kBlockSide - 1) / kBlockSide;
        return !__builtin_mul_overflow(across, down, &bytes) &&
               !__builtin_mul_overflow(bytes, std::uint64_t(format.blockBytes), &bytes);
    }
    return !__builtin_mul_overflow(std::uint64_t(width), std::uint64_t(height), &bytes) &&
           !__builtin_mul_overflow(bytes, std::uint64_t(format.pixelBytes), &bytes);
}

// A chain ends at 1x1: more levels than that are a damaged header.
unsigned int fullChainLength(std::uint32_t width, std::uint32_t height)
{
    unsigned int levels = 1;
    for (std::uint32_t side = std::max(width, height); side > 1; side /= 2)
        ++levels;
    return levels;
}

bool refuse(std::string const& name, std::string const& reason, std::string* error,
            CKVDDSImageListReader::ImageList& faces)
{
    faces.clear();
    if (error)
        *error = name + ": " + reason;
    return false;
}

} // namespace

bool CKVDDSImageListReader::readFaces(std::string const& path, ImageList& faces, std::string* error)
{
    faces.clear();
    std::ifstream stream(path, std::ios::binary);
    if (!stream)
        return refuse(path, "cannot be opened", error, faces);
    std::vector<unsigned char> const file((std::istreambuf_iterator<char>(stream)),
                                          std::istreambuf_iterator<char>());
    return readFaces(file.data(), file.size(), path, faces, error);
}

bool CKVDDSImageListReader::readFaces(unsigned char const* bytes, std::size_t size, std::string const& name,
                                      ImageList& faces, std::string* error)
{
    faces.clear();
    if (size < kDataStart || word(bytes, 0) != kMagic || word(bytes, kHeaderStart) != 124)
        return refuse(name, "not a DDS file", error, faces);

    Format format;
    if (!formatOf(bytes, format))
        return refuse(name, "pixel format not supported", error, faces);
    std::uint32_t const height = word(bytes, kHeaderStart + 8);
    std::uint32_t const width = word(bytes, kHeaderStart + 12);
    if (width == 0 || height == 0)
        return refuse(name, "empty image size", error, faces);
    unsigned int levels = 1;
    if (word(bytes, kHeaderStart + 4) & kFlagMipMapCount)
        levels = std::clamp(word(bytes, kHeaderStart + 24), 1u, fullChainLength(width, height));
    std::uint32_t const caps2 = word(bytes, kHeaderStart + 108);
    bool const cube = (caps2 & kCaps2CubeMap) != 0;
    // A cube file holds only the faces its flags list; a partial cube is
    // read as what it has, and callers that need six see fewer.
    unsigned int faceCount = 1;
    if (cube) {
        faceCount = 0;
        for (std::uint32_t bit = 0x400; bit & kCaps2AllFaces; bit <<= 1)
            faceCount += (caps2 & bit) ? 1 : 0;
    }

    // Every level is checked against what the file holds before anything is
    // allocated, so a header cannot ask for more memory than the file's size.
    std::uint64_t const available = size - kDataStart;
    std::uint64_t faceBytes = 0;
    std::vector<unsigned int> mipmapOffsets;
    for (unsigned int level = 0, w = width, h = height; level < levels; ++level) {
        std::uint64_t bytesOfLevel = 0;
        if (!levelBytes(format, w, h, bytesOfLevel) || bytesOfLevel > available - faceBytes)
            return refuse(name,
                          "image size " + std::to_string(width) + "x" + std::to_string(height) +
                              " needs more bytes than the file holds",
                          error, faces);
        if (level > 0)
            mipmapOffsets.push_back(static_cast<unsigned int>(faceBytes));
        faceBytes += bytesOfLevel;
        w = std::max(1u, w / 2);
        h = std::max(1u, h / 2);
    }
    if (faceBytes * faceCount > available || width > unsigned(INT_MAX) || height > unsigned(INT_MAX) ||
        faceBytes > UINT_MAX)
        return refuse(name, std::to_string(faceCount) + " faces need more bytes than the file holds", error,
                      faces);

    std::size_t offset = kDataStart;
    for (unsigned int face = 0; face < faceCount; ++face) {
        auto* data = new unsigned char[faceBytes];
        std::memcpy(data, bytes + offset, faceBytes);
        offset += faceBytes;

        osg::ref_ptr<osg::Image> image = new osg::Image;
        image->setFileName(name);
        image->setImage(static_cast<int>(width), static_cast<int>(height), 1, format.internalFormat,
                        format.pixelFormat, format.type, data, osg::Image::USE_NEW_DELETE);
        if (!mipmapOffsets.empty())
            image->setMipmapLevels(mipmapOffsets);
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
        std::string error;
        if (!path.empty() && readFaces(path, *list, &error) && !list->empty())
            return osgDB::ReaderWriter::ReadResult(list->front().get());
        if (!error.empty())
            OSG_WARN << "DDS image list: " << error << std::endl;
        list->clear();
    }
    return osgDB::Registry::instance()->readImageImplementation(filename, options);
}

} // namespace Kelvor
