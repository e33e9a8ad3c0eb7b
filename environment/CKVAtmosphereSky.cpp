#include "environment/CKVAtmosphereSky.h"

#include "environment/CBGGeode.h"
#include "environment/CKVSkyCubePass.h"
#include "environment/CKVSkyResources.h"
#include "environment/CKVSunColourPass.h"
#include "environment/IBLGeometry.h"
#include "programs/CKVProgramManager.h"

#include <osgUtil/CullVisitor>

namespace Kelvor {

namespace {

char const* const kAtmosphereDefine = "_USE_ATMOSPHERE";
char const* const kSunColourUniform = "scatteringTexture";
// The passes read the tables, the star noise and the ground layers through
// texture units on every driver; the handle block is not filled here.
char const* const kTextureUnitsDefine = "_USE_NOT_BINDLESS_TEXTURE";

} // namespace

CKVAtmosphereSky::CKVAtmosphereSky(osg::UniformBufferBinding* lightBinding, osg::Camera* sceneCamera,
                                   Tables const& tables)
    : mSceneCamera(sceneCamera)
    , mEnvironmentMap(createCubeMap(kEnvironmentSize))
    , mTerrainHeight(new osg::Uniform("terrainHeight", 0.0f))
    , mScatteringTexture(CKVSunColourPass::createTarget())
    , mLightBinding(lightBinding)
    // The light maps get their size, and so their storage, only when a
    // physically based material first needs them.
    , mIrradianceMap(createCubeMap(0))
    , mPrefilterMap(createCubeMap(0))
    , mStarNoise(CKVSkyResources::loadStarNoise())
    , mScatteringGeode(CKVSunColourPass::createGeode())
    , mSkyGeode(new CBGGeode)
{
    mScatteringPass = CKVSunColourPass::create(*this, mScatteringGeode.get(), mScatteringTexture.get());
    osg::StateSet* scattering = mScatteringPass->getStateSet();
    bindTables(*scattering, tables);
    scattering->setDefine(kTextureUnitsDefine);
    if (mLightBinding.valid())
        scattering->setAttribute(mLightBinding.get());
    addPass(mScatteringPass.get());

    mIBLGeometry = new IBLGeometry(mEnvironmentMap.get(), mIrradianceMap.get(), mPrefilterMap.get());
    mSkyPass = CKVSkyCubePass::create(*this, mSkyGeode.get(), mIBLGeometry.get());
    osg::StateSet* sky = mSkyPass->getStateSet();
    bindTables(*sky, tables);
    sky->setDefine(kTextureUnitsDefine);
    sky->setTextureAttribute(kStarNoiseUnit, mStarNoise.get());
    sky->addUniform(new osg::Uniform("starNoise", static_cast<int>(kStarNoiseUnit)));
    sky->addUniform(new osg::Uniform("terrainTextureArray", static_cast<int>(kTerrainUnit)));
    setTerrainTexture(CKVSkyResources::loadTerrainLayers().get());
    sky->addUniform(mTerrainHeight.get());
    if (mLightBinding.valid())
        sky->setAttribute(mLightBinding.get());
    addPass(mSkyPass.get());

    if (osg::Camera* camera = mSceneCamera.get()) {
        osg::StateSet* stateSet = camera->getOrCreateStateSet();
        stateSet->setTextureAttribute(kIrradianceMapUnit, mIrradianceMap.get());
        stateSet->setTextureAttribute(kPrefilterMapUnit, mPrefilterMap.get());
        stateSet->addUniform(new osg::Uniform("IrradianceMap", static_cast<int>(kIrradianceMapUnit)));
        stateSet->addUniform(new osg::Uniform("PrefilterMap", static_cast<int>(kPrefilterMapUnit)));
    }
}

CKVAtmosphereSky::~CKVAtmosphereSky() = default;

osg::ref_ptr<osg::TextureCubeMap> CKVAtmosphereSky::createCubeMap(int size)
{
    osg::ref_ptr<osg::TextureCubeMap> map = new osg::TextureCubeMap;
    map->setTextureSize(size, size);
    map->setInternalFormat(GL_RGB);
    map->setSourceFormat(GL_RGB);
    map->setFilter(osg::Texture::MIN_FILTER, osg::Texture::LINEAR);
    map->setFilter(osg::Texture::MAG_FILTER, osg::Texture::LINEAR);
    map->setWrap(osg::Texture::WRAP_S, osg::Texture::CLAMP_TO_EDGE);
    map->setWrap(osg::Texture::WRAP_T, osg::Texture::CLAMP_TO_EDGE);
    map->setWrap(osg::Texture::WRAP_R, osg::Texture::CLAMP_TO_EDGE);
    return map;
}

void CKVAtmosphereSky::bindTables(osg::StateSet& stateSet, Tables const& tables) const
{
    struct Binding
    {
        osg::Texture* texture;
        unsigned int unit;
        char const* name;
    };
    Binding const bindings[] = {{tables.transmittance.get(), kTransmittanceUnit, "transmittance_texture"},
                                {tables.scattering.get(), kScatteringUnit, "scattering_texture"},
                                {tables.irradiance.get(), kIrradianceUnit, "irradiance_texture"}};
    for (Binding const& binding : bindings) {
        if (binding.texture)
            stateSet.setTextureAttribute(binding.unit, binding.texture);
        stateSet.addUniform(new osg::Uniform(binding.name, static_cast<int>(binding.unit)));
    }
}

void CKVAtmosphereSky::setAtmosphereEnabled(bool enabled)
{
    if (enabled == mAtmosphereEnabled)
        return;
    if (osg::Camera* camera = mSceneCamera.get()) {
        osg::StateSet* stateSet = camera->getOrCreateStateSet();
        if (enabled) {
            stateSet->setDefine(kAtmosphereDefine);
            stateSet->setTextureAttribute(kSunColourUnit, mScatteringTexture.get());
            stateSet->addUniform(new osg::Uniform(kSunColourUniform, static_cast<int>(kSunColourUnit)));
        } else {
            stateSet->removeDefine(kAtmosphereDefine);
            stateSet->removeTextureAttribute(kSunColourUnit, osg::StateAttribute::TEXTURE);
            stateSet->removeUniform(kSunColourUniform);
        }
    }
    CKVProgramManager::instance().dirtyDefine(kAtmosphereDefine);
    mAtmosphereEnabled = enabled;
    mUpdateScattering = true;
}

void CKVAtmosphereSky::setTerrainTexture(osg::Texture2DArray* texture)
{
    mTerrainTexture = texture;
    osg::StateSet* sky = mSkyPass->getStateSet();
    if (texture)
        sky->setTextureAttribute(kTerrainUnit, texture);
    else
        sky->removeTextureAttribute(kTerrainUnit, osg::StateAttribute::TEXTURE);
    mUpdateScattering = true;
}

void CKVAtmosphereSky::runPass(osgUtil::CullVisitor& visitor, PassData& pass)
{
    visitor.pushStateSet(pass.getStateSet());
    pass.getCamera()->accept(visitor);
    visitor.popStateSet();
}

void CKVAtmosphereSky::traverse(osg::NodeVisitor& visitor)
{
    osgUtil::CullVisitor* cullVisitor = visitor.asCullVisitor();
    if (!cullVisitor)
        return;
    if (mUpdateScattering && mAtmosphereEnabled) {
        runPass(*cullVisitor, *mScatteringPass);
        ++mScatteringPassCount;
        if (++mUpdateFrames == kScatteringFrames) {
            mUpdateScattering = false;
            mUpdateFrames = 0;
        }
    }
    if (mSkyPassEnabled) {
        runPass(*cullVisitor, *mSkyPass);
        ++mSkyPassCount;
    }
}

void CKVAtmosphereSky::releaseGLObjects(osg::State* state) const
{
    CKVSceneGenerator::releaseGLObjects(state);
    mScatteringGeode->releaseGLObjects(state);
    mSkyGeode->releaseGLObjects(state);
    osg::Texture* const textures[] = {mEnvironmentMap.get(), mIrradianceMap.get(), mPrefilterMap.get(),
                                      mScatteringTexture.get(), mStarNoise.get(), mTerrainTexture.get()};
    for (osg::Texture* texture : textures) {
        if (texture)
            texture->releaseGLObjects(state);
    }
}

} // namespace Kelvor
