#include "scene/CKVTextureLoader.h"

#include "TarnwickCommon/CKVAString.h"
#include "TarnwickCommon/Common.h"

#include <osg/Texture2D>
#include <osg/TextureCubeMap>
#include <osgDB/ReadFile>
#include <osgDB/Registry>

#include <cstring>
#include <string>

namespace Kelvor {

namespace {

// Anisotropic filtering only: the minification and magnification filters
// stay at OpenSceneGraph's defaults (mipmapped trilinear, linear).
float const kMaxAnisotropy = 4.0f;

char const* const kCubeFaces[6] = {"/p_x_grijs.tga", "/n_x_grijs.tga", "/p_y_grijs.tga",
                                   "/n_y_grijs.tga", "/p_z_grijs.tga", "/n_z_grijs.tga"};

} // namespace

osg::ref_ptr<osg::Image> CKVTextureLoader::getResourceImage(char const* relativePath)
{
    CKVAString directory;
    Common::getResourceDirectory(directory);
    std::string const path = std::string(directory.c_str()) + (relativePath ? relativePath : "");
    return osgDB::readRefImageFile(path, osgDB::Registry::instance()->getOptions());
}

osg::ref_ptr<osg::Image> CKVTextureLoader::getErrorFormatImage()
{
    static osg::ref_ptr<osg::Image> const image = getResourceImage("/error_format.png");
    return image;
}

osg::ref_ptr<osg::Image> CKVTextureLoader::getErrorPathImage()
{
    static osg::ref_ptr<osg::Image> const image = getResourceImage("/error_path.png");
    return image;
}

osg::ref_ptr<osg::Image> CKVTextureLoader::readImage(char const* path)
{
    if (!path || !*path)
        return nullptr;
    return osgDB::readRefImageFile(path, osgDB::Registry::instance()->getOptions());
}

osg::ref_ptr<osg::Image> CKVTextureLoader::readImageOrErrorImage(char const* path)
{
    osg::ref_ptr<osg::Image> image = readImage(path);
    if (image.valid())
        return image;
    return Common::checkFile(path) ? getErrorFormatImage() : getErrorPathImage();
}

void CKVTextureLoader::expandLuminance(osg::Image& image)
{
    if (image.getPixelFormat() != GL_LUMINANCE || !image.data())
        return;
    unsigned int const size = image.getTotalSizeInBytes();
    unsigned char const* source = image.data();
    unsigned char* expanded = new unsigned char[size * 3];
    for (unsigned int i = 0; i < size; ++i)
        std::memset(expanded + i * 3, source[i], 3);
    image.setImage(image.s(), image.t(), image.r(), GL_RGB8, GL_RGB, image.getDataType(), expanded,
                   osg::Image::USE_NEW_DELETE, 1);
}

void CKVTextureLoader::setTextureFilter(osg::Texture* texture)
{
    if (texture)
        texture->setMaxAnisotropy(kMaxAnisotropy);
}

osg::ref_ptr<osg::Texture2D> CKVTextureLoader::makeRepeatTexture(osg::Image* image)
{
    osg::ref_ptr<osg::Texture2D> texture = new osg::Texture2D;
    texture->setImage(image);
    texture->setWrap(osg::Texture::WRAP_S, osg::Texture::REPEAT);
    texture->setWrap(osg::Texture::WRAP_T, osg::Texture::REPEAT);
    setTextureFilter(texture.get());
    return texture;
}

osg::ref_ptr<osg::TextureCubeMap> CKVTextureLoader::makeWaterCubeMap()
{
    osg::ref_ptr<osg::TextureCubeMap> cube = new osg::TextureCubeMap;
    osg::ref_ptr<osg::Image> faces[6];
    bool complete = true;
    for (int i = 0; i < 6; ++i) {
        faces[i] = getResourceImage((std::string("/water") + kCubeFaces[i]).c_str());
        complete = complete && faces[i].valid();
    }
    // A cube with some faces missing is incomplete on the GPU and samples
    // black everywhere; better no faces at all than a half-set cube.
    if (complete) {
        for (unsigned int i = 0; i < 6; ++i)
            cube->setImage(i, faces[i].get());
    }
    cube->setWrap(osg::Texture::WRAP_S, osg::Texture::CLAMP_TO_EDGE);
    cube->setWrap(osg::Texture::WRAP_T, osg::Texture::CLAMP_TO_EDGE);
    cube->setWrap(osg::Texture::WRAP_R, osg::Texture::CLAMP_TO_EDGE);
    cube->setFilter(osg::Texture::MIN_FILTER, osg::Texture::LINEAR);
    cube->setFilter(osg::Texture::MAG_FILTER, osg::Texture::LINEAR);
    return cube;
}

} // namespace Kelvor
