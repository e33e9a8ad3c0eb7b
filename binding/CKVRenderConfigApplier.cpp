#include "binding/CKVRenderConfigApplier.h"

#include "effects/CKVPostProcessNode.h"
#include "effects/CKVSSAOGenerator.h"
#include "effects/CKVShadowGenerator.h"
#include "environment/CKVAtmosphereSky.h"
#include "programs/CKVProgramManager.h"
#include "programs/CKVRenderStateManager.h"
#include "viewer/CKVOSGCamera.h"

namespace Kelvor {

namespace {

// Floats of the LightInfo block.
constexpr unsigned int kLightIntensity = 0;
constexpr unsigned int kAmbientIntensity = 1;
constexpr unsigned int kLightDirection = 4;
constexpr unsigned int kLightColor = 8;
constexpr unsigned int kAmbientColor = 12;

char const* const kFogDefine = "_USE_FOG";
char const* const kSkyTerrainDefine = "_USE_SKY_TERRAIN";
char const* const kRainDefine = "_USE_WEATHER_RAIN";
char const* const kSnowDefine = "_USE_WEATHER_SNOW";
char const* const kFogColor = "FogColor";
char const* const kFogDensity = "FogDensity";

osg::Vec3f toVec3(CKVVec3<float> const& v)
{
    return osg::Vec3f(v.x, v.y, v.z);
}

} // namespace

CKVRenderConfigApplier::CKVRenderConfigApplier() = default;
CKVRenderConfigApplier::~CKVRenderConfigApplier() = default;

void CKVRenderConfigApplier::setTargets(CKVPostProcessNode* root, CKVOSGCamera* mainCamera,
                                        CKVUniformBlock const& lightInfo, osg::Uniform* rainIntensity)
{
    mRoot = root;
    mMainCamera = mainCamera;
    mLightInfo = lightInfo;
    mRainIntensity = rainIntensity;
    mBackGrounds.setTargets(root, mainCamera, lightInfo.getBinding());
}

void CKVRenderConfigApplier::setAtmosphere(CKVAtmosphereSky* atmosphere)
{
    mAtmosphere = atmosphere;
    mBackGrounds.setAtmosphere(atmosphere);
}

bool CKVRenderConfigApplier::applyRenderConfig(CKVRenderConfig const& config, bool configured)
{
    applySwitches(config, !configured);
    mConfig = config;
    applyBackGround(config.getBackGroundConfig());
    applyBackGroundDependents(config);
    applyValues(config);
    return true;
}

void CKVRenderConfigApplier::applySwitches(CKVRenderConfig const& config, bool all)
{
    CKVRenderConfig const& stored = mConfig;
    auto changed = [&](auto getter) { return all || (stored.*getter)() != (config.*getter)(); };

    CKVAtmosphereSky* atmosphere = mAtmosphere.get();
    if (changed(&CKVRenderConfig::getAtmosphericScattteringUse) && atmosphere &&
        atmosphere->getAtmosphereEnabled() != config.getAtmosphericScattteringUse()) {
        atmosphere->setAtmosphereEnabled(config.getAtmosphericScattteringUse());
        ++mDefineChanges;
    }
    // Light propagation switches its effect here once it exists; the stored
    // copy keeps the wish.
    if (changed(&CKVRenderConfig::getShadowLevel))
        applyShadowLevel(static_cast<int>(config.getShadowLevel()));
    if (changed(&CKVRenderConfig::getSSAOLevel))
        applySSAOLevel(static_cast<int>(config.getSSAOLevel()));
    if (changed(&CKVRenderConfig::getFogUse))
        applyFogSwitch(config.getFogUse());
    // Water reflection: the water node's switch, once it exists.
    if (changed(&CKVRenderConfig::getColorGradingUse) && mRoot.valid())
        mRoot->setColorGradingEnabled(config.getColorGradingUse());
    if (changed(&CKVRenderConfig::getSkyTerrainUse))
        applyDefine(kSkyTerrainDefine, config.getSkyTerrainUse());
    if (changed(&CKVRenderConfig::getDOFUse) && mRoot.valid())
        mRoot->setDOFEnabled(config.getDOFUse());
    if (changed(&CKVRenderConfig::getRainUse))
        applyDefine(kRainDefine, config.getRainUse());
    // Snow on surfaces follows the density below; turning it off is final.
    if (changed(&CKVRenderConfig::getSnowUse) && !config.getSnowUse() && hasDefine(kSnowDefine))
        applyDefine(kSnowDefine, false);
    if (changed(&CKVRenderConfig::getRenderStyle) && mRoot.valid()) {
        mRoot->applyRenderStyle(static_cast<int>(config.getRenderStyle()));
        ++mDefineChanges;
    }
}

void CKVRenderConfigApplier::applyShadowLevel(int level)
{
    CKVShadowGenerator* shadow = mRoot.valid() ? mRoot->getShadowGenerator() : nullptr;
    if (!shadow)
        return;
    if (shadow->setShadowLevel(level))
        ++mDefineChanges;
    // The volumetric light's final pass reads the shadow maps under the
    // shadow define, which its source lists.
    if (mRoot->getVolumetricLightEnabled())
        mRoot->rebuildProgram();
}

void CKVRenderConfigApplier::applySSAOLevel(int level)
{
    CKVSSAOGenerator* ssao = mRoot.valid() ? mRoot->getSSAOGenerator() : nullptr;
    if (ssao && ssao->setSSAOLevel(level))
        ++mDefineChanges;
}

void CKVRenderConfigApplier::applyFogSwitch(bool on)
{
    applyDefine(kFogDefine, on);
    if (!on || !mRoot.valid())
        return;
    osg::StateSet* stateSet = mRoot->getOrCreateStateSet();
    if (!rootUniform(kFogColor))
        stateSet->addUniform(new osg::Uniform(kFogColor, osg::Vec3f(0.9f, 0.9f, 0.9f)));
    if (!rootUniform(kFogDensity))
        stateSet->addUniform(new osg::Uniform(kFogDensity, 1.0e-6f));
}

void CKVRenderConfigApplier::applyBackGroundDependents(CKVRenderConfig const& config)
{
    bool const atmosphere =
        config.getBackGroundConfig().getBackGroundType() == CKVBackGroundConfig::kAtmosphere;
    if (!atmosphere) {
        // Both need the atmosphere's sky. Cleared in the stored copy too, so
        // that asking for them again later counts as a change.
        mConfig.setVolumetricLightUse(false);
        mConfig.setWaterReflect(false);
    }
    if (mRoot.valid())
        mRoot->setVolumetricLightEnabled(atmosphere && config.getVolumetricLightUse());
    // Water reflection goes off here once the water node exists.
}

void CKVRenderConfigApplier::applyValues(CKVRenderConfig const& config)
{
    osg::Vec3f direction = toVec3(config.getLightPosition());
    if (direction.length() > 0.0f)
        direction.normalize();
    mLightInfo.set(kLightDirection, direction.ptr(), 3);
    CKVShadowGenerator* shadow = mRoot.valid() ? mRoot->getShadowGenerator() : nullptr;
    if (mRoot.valid())
        mRoot->setLightPosition(direction);
    if (shadow)
        shadow->setLightDirection(osg::Vec3d(direction));
    mLightInfo.set(kLightIntensity, config.getLightIntensity());
    // The sun's colour follows the light's direction and intensity.
    if (CKVAtmosphereSky* atmosphere = mAtmosphere.get())
        atmosphere->setUpdateScattering(true);
    mLightInfo.set(kLightColor, toVec3(config.getAtmosphericColor()).ptr(), 3);
    mLightInfo.set(kAmbientColor, toVec3(config.getAmbientColor()).ptr(), 3);
    mLightInfo.set(kAmbientIntensity, config.getAmbientIntensity());
    if (shadow)
        shadow->setShadowIntensity(config.getShadowIntensity());
    // Light propagation intensity: its effect, once it exists.

    if (mRoot.valid()) {
        getOrCreateRootUniform(kFogColor, osg::Uniform::FLOAT_VEC3)->set(toVec3(config.getFogColor()));
        getOrCreateRootUniform(kFogDensity, osg::Uniform::FLOAT)->set(config.getFogDensity());
        mRoot->setColorGrading(config.getColorGrading());
    }
    if (mRoot.valid()) {
        mRoot->setDOFNearEnd(config.getDOFNearEnd());
        mRoot->setDOFFarBegin(config.getDOFFarBegin());
        mRoot->setDOFBlurSize(config.getDOFBlurSize());
        CKVVec4<float> const& edge = config.getRenderStyleEdgeColor();
        mRoot->setEdgeColor(osg::Vec4f(edge.x, edge.y, edge.z, edge.w));
        mRoot->setEdgeOnlyBackgroundColor(toVec3(config.getEdgeOnlyBackgroundColor()));
    }

    if (mRainIntensity.valid())
        mRainIntensity->set(config.getRainDensity());
    // Snowy surfaces need no particles: the define follows the density alone.
    if (config.getSnowUse()) {
        bool const snowing = config.getSnowDensity() >= kWeatherThreshold;
        if (snowing != hasDefine(kSnowDefine))
            applyDefine(kSnowDefine, snowing);
    }

    applyMainClearMask(config.getUseDepthPrePass());
    CKVRenderStateManager::instance().setHiZ(config.getUseDepthPrePass());
    CKVRenderStateManager::instance().setOcclusionCulling(config.getUseOcclusionCull());
}

void CKVRenderConfigApplier::applyMainClearMask(bool depthPrePass)
{
    if (!mMainCamera.valid())
        return;
    // The background covers every pixel at the far plane, so colour needs
    // no clear; with the depth pre-pass on, that pass clears depth itself.
    mMainCamera->setClearMask(depthPrePass ? 0 : GL_DEPTH_BUFFER_BIT);
}

void CKVRenderConfigApplier::applyDefine(char const* name, bool on)
{
    if (!mRoot.valid())
        return;
    osg::StateSet* stateSet = mRoot->getOrCreateStateSet();
    if (on)
        stateSet->setDefine(name);
    else
        stateSet->removeDefine(name);
    // Shaders compiled with the old define set must be rebuilt.
    CKVProgramManager::instance().dirtyDefine(name);
    ++mDefineChanges;
}

bool CKVRenderConfigApplier::hasDefine(char const* name) const
{
    osg::StateSet const* stateSet = mRoot.valid() ? mRoot->getStateSet() : nullptr;
    if (!stateSet)
        return false;
    osg::StateSet::DefineList const& defines = stateSet->getDefineList();
    return defines.find(name) != defines.end();
}

osg::Uniform* CKVRenderConfigApplier::rootUniform(char const* name) const
{
    osg::StateSet* stateSet = mRoot.valid() ? mRoot->getStateSet() : nullptr;
    return stateSet ? stateSet->getUniform(name) : nullptr;
}

osg::Uniform* CKVRenderConfigApplier::getOrCreateRootUniform(char const* name, osg::Uniform::Type type)
{
    if (osg::Uniform* uniform = rootUniform(name))
        return uniform;
    osg::ref_ptr<osg::Uniform> uniform = new osg::Uniform(type, name);
    mRoot->getOrCreateStateSet()->addUniform(uniform.get());
    return uniform.get();
}

} // namespace Kelvor
