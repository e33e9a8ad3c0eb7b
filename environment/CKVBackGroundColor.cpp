#include "environment/CKVBackGroundColor.h"

#include "environment/CFullScreenTriangleGeometry.h"
#include "programs/KVShaderSource.h"

#include <osg/Depth>
#include <osg/Program>
#include <osg/Shader>

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVBackGroundColor, CKVBackGround)

CKVBackGroundColor::CKVBackGroundColor()
    : mTopColor(new osg::Uniform("topColor", osg::Vec4f(0.58f, 0.95f, 0.85f, 1.0f)))
    , mBottomColor(new osg::Uniform("bottomColor", osg::Vec4f(1.0f, 1.0f, 1.0f, 1.0f)))
    , mHeight(new osg::Uniform("height", 1.0f))
{
}

CKVBackGroundColor::~CKVBackGroundColor() = default;

void CKVBackGroundColor::initialize()
{
    if (mInitialized)
        return;
    mInitialized = true;
    char const* vertex = KVShaderSource::get("background_gradient.vert");
    char const* fragment = KVShaderSource::get("background_gradient.frag");
    if (!vertex || !fragment)
        return;
    mNode->addDrawable(new CFullScreenTriangleGeometry);

    osg::ref_ptr<osg::Program> program = new osg::Program;
    program->setName("KVBackGroundGradient");
    program->addShader(new osg::Shader(osg::Shader::VERTEX, vertex));
    program->addShader(new osg::Shader(osg::Shader::FRAGMENT, fragment));

    osg::StateSet* stateSet = mNode->getOrCreateStateSet();
    stateSet->setAttributeAndModes(program.get(), osg::StateAttribute::ON);
    // Drawn at the far plane; it must never hide what is drawn after it.
    stateSet->setAttributeAndModes(new osg::Depth(osg::Depth::LEQUAL, 0.0, 1.0, false), osg::StateAttribute::ON);
    stateSet->addUniform(mTopColor.get());
    stateSet->addUniform(mBottomColor.get());
    stateSet->addUniform(mHeight.get());
}

void CKVBackGroundColor::setColors(osg::Vec3f const& top, osg::Vec3f const& bottom)
{
    mTopColor->set(osg::Vec4f(top, 1.0f));
    mBottomColor->set(osg::Vec4f(bottom, 1.0f));
}

void CKVBackGroundColor::getColors(osg::Vec3f& top, osg::Vec3f& bottom) const
{
    osg::Vec4f value;
    mTopColor->get(value);
    top.set(value.x(), value.y(), value.z());
    mBottomColor->get(value);
    bottom.set(value.x(), value.y(), value.z());
}

void CKVBackGroundColor::setHeight(float height)
{
    mHeight->set(height);
}

float CKVBackGroundColor::getHeight() const
{
    float height = 0.0f;
    mHeight->get(height);
    return height;
}

} // namespace Kelvor
