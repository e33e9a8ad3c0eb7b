#include "environment/CKVBackGroundWaterMask.h"

#include "environment/CFullScreenTriangleGeometry.h"
#include "programs/KVShaderSource.h"

#include <osg/Depth>
#include <osg/Program>
#include <osg/Texture2D>
#include <osgDB/ReadFile>
#include <osgDB/Registry>

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVBackGroundWaterMask, CKVBackGround)

CKVBackGroundWaterMask::CKVBackGroundWaterMask()
    : mViewPort(new osg::Uniform("viewPort", osg::Vec2f(1.0f, 1.0f)))
{
}

CKVBackGroundWaterMask::~CKVBackGroundWaterMask() = default;

void CKVBackGroundWaterMask::setImage(std::string const& path, int width, int height)
{
    mPath = path;
    mWidth = width;
    mHeight = height;
}

void CKVBackGroundWaterMask::setViewport(int width, int height)
{
    mViewPort->set(osg::Vec2f(static_cast<float>(width), static_cast<float>(height)));
}

void CKVBackGroundWaterMask::initialize()
{
    if (mInitialized)
        return;
    mInitialized = true;
    osg::ref_ptr<osg::Image> image =
        mPath.empty() ? nullptr : osgDB::readRefImageFile(mPath, osgDB::Registry::instance()->getOptions());
    char const* vertex = KVShaderSource::get("background_watermask.vert");
    char const* fragment = KVShaderSource::get("background_watermask.frag");
    if (!image.valid() || !vertex || !fragment)
        return;

    osg::ref_ptr<osg::Texture2D> texture = new osg::Texture2D(image.get());
    texture->setWrap(osg::Texture::WRAP_S, osg::Texture::REPEAT);
    texture->setWrap(osg::Texture::WRAP_T, osg::Texture::REPEAT);
    texture->setFilter(osg::Texture::MIN_FILTER, osg::Texture::LINEAR);
    texture->setFilter(osg::Texture::MAG_FILTER, osg::Texture::LINEAR);
    // Power-of-two sizes are not required of a mask picture.
    texture->setResizeNonPowerOfTwoHint(false);

    osg::ref_ptr<osg::Program> program = new osg::Program;
    program->setName("KVWaterMask");
    program->addShader(new osg::Shader(osg::Shader::VERTEX, vertex));
    program->addShader(new osg::Shader(osg::Shader::FRAGMENT, fragment));

    mNode->addDrawable(new CFullScreenTriangleGeometry);
    osg::StateSet* stateSet = mNode->getOrCreateStateSet();
    stateSet->setAttributeAndModes(program.get(), osg::StateAttribute::ON);
    stateSet->setTextureAttributeAndModes(0, texture.get(), osg::StateAttribute::ON);
    stateSet->setAttributeAndModes(new osg::Depth(osg::Depth::ALWAYS, 0.0, 1.0, false), osg::StateAttribute::ON);
    stateSet->addUniform(new osg::Uniform("waterMask", 0));
    stateSet->addUniform(
        new osg::Uniform("waterMaskSize", osg::Vec2f(static_cast<float>(mWidth), static_cast<float>(mHeight))));
    stateSet->addUniform(mViewPort.get());
}

} // namespace Kelvor
