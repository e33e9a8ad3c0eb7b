#pragma once

#include <osg/Image>
#include <osg/ref_ptr>

namespace osg {
class Texture;
class Texture2D;
class TextureCubeMap;
} // namespace osg

namespace Kelvor {

// Reads the images behind material textures and resource textures. A file
// that cannot be used is replaced by one of two shared error images, so
// that a bad texture shows in the model instead of as a silently missing
// colour: one for a file that exists but could not be read, one for a path
// that leads nowhere.
class CKVTextureLoader
{
public:
    // The resource directory followed by `relativePath` ("/water/normal.tga").
    static osg::ref_ptr<osg::Image> getResourceImage(char const* relativePath);

    // Read once, on first use, and then shared by every material.
    static osg::ref_ptr<osg::Image> getErrorFormatImage();
    static osg::ref_ptr<osg::Image> getErrorPathImage();

    // Null for an empty path or a file that cannot be read.
    static osg::ref_ptr<osg::Image> readImage(char const* path);
    // The image, or the error image that tells why there is none; null only
    // when the error images are missing as well.
    static osg::ref_ptr<osg::Image> readImageOrErrorImage(char const* path);

    // The surface programs read rgb: a one-channel luminance image becomes
    // RGB with the value repeated. Other formats are left as they are.
    static void expandLuminance(osg::Image& image);

    static void setTextureFilter(osg::Texture* texture);

    // A repeating 2D texture on `image` with the material filter.
    static osg::ref_ptr<osg::Texture2D> makeRepeatTexture(osg::Image* image);

    // The water's environment cube, faces +x, -x, +y, -y, +z, -z. Faces are
    // set only when all six could be read; the texture is made either way.
    static osg::ref_ptr<osg::TextureCubeMap> makeWaterCubeMap();
};

} // namespace Kelvor
