#include "binding/CKVBackGroundSwitcher.h"

#include "effects/CKVPostProcessNode.h"
#include "environment/CKVAtmosphereSky.h"
#include "viewer/CKVOSGCamera.h"

#include "TarnwickCommon/Common.h"

#include <osgViewer/View>

namespace Kelvor {

namespace {

osg::Vec3f toVec3(CKVPoint3D const& rgb)
{
    return osg::Vec3f(static_cast<float>(rgb.x), static_cast<float>(rgb.y), static_cast<float>(rgb.z));
}

} // namespace

CKVBackGroundSwitcher::CKVBackGroundSwitcher() = default;
CKVBackGroundSwitcher::~CKVBackGroundSwitcher() = default;

void CKVBackGroundSwitcher::setTargets(CKVPostProcessNode* root, CKVOSGCamera* mainCamera,
                                       osg::UniformBufferBinding* lightBinding)
{
    mRoot = root;
    mMainCamera = mainCamera;
    mLightBinding = lightBinding;
}

void CKVBackGroundSwitcher::setAtmosphere(CKVAtmosphereSky* atmosphere)
{
    mAtmosphere = atmosphere;
}

bool CKVBackGroundSwitcher::apply(CKVBackGroundConfig const& config)
{
    if (!mRoot.valid() || !mMainCamera.valid())
        return false;
    mConfig = config;
    switch (config.getBackGroundType()) {
    case CKVBackGroundConfig::kSolidColor: {
        osg::Vec3f const rgb = toVec3(config.getBackGroundColor());
        osg::Vec4 const colour(rgb, 1.0f);
        mMainCamera->setClearColor(colour);
        mRoot->setClearColor(colour);
        showGradient(rgb, rgb);
        return true;
    }
    case CKVBackGroundConfig::kGradient: {
        CKVPoint3D top;
        CKVPoint3D bottom;
        config.getGradientBackGround(top, bottom);
        showGradient(toVec3(top), toVec3(bottom));
        return true;
    }
    case CKVBackGroundConfig::kSkyBox:
        showSkyBox(config, false);
        return true;
    case CKVBackGroundConfig::kAtmosphere:
        // The atmosphere's sky cube is redrawn from now on; it keeps being
        // redrawn when another background is chosen later.
        if (CKVAtmosphereSky* atmosphere = mAtmosphere.get()) {
            atmosphere->setSkyPassEnabled(true);
            atmosphere->setUpdateScattering(true);
        }
        showSkyBox(config, true);
        return true;
    }
    return false;
}

float CKVBackGroundSwitcher::viewportHeight() const
{
    osg::Viewport const* viewport = mMainCamera.valid() ? mMainCamera->getViewport() : nullptr;
    return viewport ? static_cast<float>(viewport->height()) : 1.0f;
}

void CKVBackGroundSwitcher::showGradient(osg::Vec3f const& top, osg::Vec3f const& bottom)
{
    if (!mColor.valid()) {
        mColor = new CKVBackGroundColor;
        mColor->initialize();
        mColor->setHeight(viewportHeight());
    }
    mColor->setColors(top, bottom);
    makeCurrent(mColor.get());
}

void CKVBackGroundSwitcher::showSkyBox(CKVBackGroundConfig const& config, bool atmosphere)
{
    if (!mSkyBox.valid()) {
        mSkyBox = new CKVBackGroundSkyBox;
        CKVAString const cube = config.getCubeMapSkyBoxPath();
        if (cube.length() != 0) {
            mSkyBox->setCubeMapPath(cube.c_str());
        } else {
            using Face = CKVBackGroundConfig::SkyBoxFace;
            auto face = [&](Face f) { return std::string(config.getSingleSkyBoxPath(f).c_str()); };
            mSkyBox->setFacePaths(face(CKVBackGroundConfig::kPositiveX), face(CKVBackGroundConfig::kNegativeX),
                                  face(CKVBackGroundConfig::kPositiveY), face(CKVBackGroundConfig::kNegativeY),
                                  face(CKVBackGroundConfig::kPositiveZ), face(CKVBackGroundConfig::kNegativeZ));
        }
        if (CKVAtmosphereSky* atmosphere = mAtmosphere.get()) {
            mSkyBox->setEnvironmentMap(atmosphere->getEnvironmentMap());
            mSkyBox->setSkyUniform(atmosphere->getSkyUniform());
        }
        mSkyBox->setLightBinding(mLightBinding.get());
        mSkyBox->initialize();
    }
    makeCurrent(mSkyBox.get());
    mSkyBox->setAtmosphereMode(atmosphere);
}

void CKVBackGroundSwitcher::makeCurrent(CKVBackGround* background)
{
    if (mCurrent.get() == background)
        return;
    if (mCurrent.valid() && mRoot->containsNode(mCurrent->getNode()))
        mRoot->removeChild(mCurrent->getNode());
    mCurrent = background;
    osg::Node* before = mInsertBefore.get();
    unsigned int const index = before ? mRoot->getChildIndex(before) : mRoot->getNumChildren();
    mRoot->insertChild(index, background->getNode());
}

void CKVBackGroundSwitcher::resize(int width, int height)
{
    if (mColor.valid())
        mColor->setHeight(static_cast<float>(height));
    if (mWaterMask.valid())
        mWaterMask->setViewport(width, height);
    if (mWaterMaskCamera.valid())
        mWaterMaskCamera->resize(width, height);
}

bool CKVBackGroundSwitcher::waterMask(char const* path, unsigned int width, unsigned int height,
                                      osgViewer::View* view)
{
    if (!mRoot.valid())
        return false;
    if (mWaterMask.valid() || !path || !Common::checkFile(path))
        return true;
    mWaterMask = new CKVBackGroundWaterMask;
    mWaterMask->setImage(path, static_cast<int>(width), static_cast<int>(height));
    mWaterMask->initialize();
    osg::Viewport const* viewport = mMainCamera.valid() ? mMainCamera->getViewport() : nullptr;
    int const viewportWidth = viewport ? static_cast<int>(viewport->width()) : 0;
    int const viewportHeight = viewport ? static_cast<int>(viewport->height()) : 0;
    mWaterMask->setViewport(viewportWidth, viewportHeight);

    mWaterMaskCamera = new osg::Camera;
    mWaterMaskCamera->setName("waterMask");
    mWaterMaskCamera->setGraphicsContext(mMainCamera.valid() ? mMainCamera->getGraphicsContext() : nullptr);
    mWaterMaskCamera->setViewport(0, 0, viewportWidth, viewportHeight);
    mWaterMaskCamera->setAllowEventFocus(false);
    mWaterMaskCamera->setClearMask(0);
    mWaterMaskCamera->setReferenceFrame(osg::Transform::ABSOLUTE_RF);
    mWaterMaskCamera->addChild(mWaterMask->getNode());
    if (view)
        view->addSlave(mWaterMaskCamera.get(), false);
    return true;
}

void CKVBackGroundSwitcher::releaseGLObjects(osg::State* state) const
{
    CKVBackGround const* const held[] = {mColor.get(), mSkyBox.get(), mCurrent.get(), mWaterMask.get()};
    for (CKVBackGround const* background : held) {
        if (background && background->getNode())
            background->getNode()->releaseGLObjects(state);
    }
    if (mWaterMaskCamera.valid())
        mWaterMaskCamera->releaseGLObjects(state);
}

} // namespace Kelvor
