#include "effects/CKVFullScreenGenerator.h"

#include "environment/CBGGeode.h"
#include "viewer/DepthMask.h"

#include <algorithm>

namespace Kelvor {

namespace {

// Only draw and read buffer come from the main camera.
constexpr unsigned int kInheritanceMask = osg::CullSettings::DRAW_BUFFER | osg::CullSettings::READ_BUFFER;

} // namespace

CKVFullScreenGenerator::CKVFullScreenGenerator(CKVFullScreenGeometry* geometry, int width, int height, int orderNum,
                                               GLbitfield clearMask)
    : mGeometry(geometry)
    , mGeode(new CBGGeode)
{
    width = std::max(width, 1);
    height = std::max(height, 1);
    setViewport(0, 0, width, height);
    setAllowEventFocus(false);
    setRenderOrder(osg::Camera::PRE_RENDER, orderNum);
    setComputeNearFarMode(osg::CullSettings::DO_NOT_COMPUTE_NEAR_FAR);
    setCullingMode(osg::CullSettings::NO_CULLING);
    setClearColor(osg::Vec4(0.0f, 0.0f, 0.0f, 1.0f));
    setClearMask(clearMask);
    setInheritanceMask(kInheritanceMask);
    setColorMask(nullptr);

    osg::StateSet* stateSet = getOrCreateStateSet();
    // A full-screen step neither tests nor writes depth.
    stateSet->setAttribute(new DepthMask(false), osg::StateAttribute::ON | osg::StateAttribute::OVERRIDE);
    stateSet->setMode(GL_DEPTH_TEST, osg::StateAttribute::OFF);

    if (mGeometry.valid())
    {
        mGeometry->resize(width, height);
        mGeode->addDrawable(mGeometry.get());
    }
    addChild(mGeode.get());
}

CKVFullScreenGenerator::~CKVFullScreenGenerator() = default;

void CKVFullScreenGenerator::resize(int width, int height)
{
    if (width <= 0 || height <= 0)
        return;
    if (mGeometry.valid())
        mGeometry->resize(width, height);
    osg::Camera::resize(width, height, osg::Camera::RESIZE_VIEWPORT | osg::Camera::RESIZE_ATTACHMENTS);
}

void CKVFullScreenGenerator::setInput(osg::Texture2D* texture)
{
    if (mGeometry.valid())
        mGeometry->setInput(texture);
}

osg::Texture2D* CKVFullScreenGenerator::getInput() const
{
    return mGeometry.valid() ? mGeometry->getInput() : nullptr;
}

osg::Texture2D* CKVFullScreenGenerator::getOutput() const
{
    return mGeometry.valid() ? mGeometry->getOutput() : nullptr;
}

} // namespace Kelvor
