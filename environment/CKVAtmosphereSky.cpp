#include "environment/CKVAtmosphereSky.h"

#include "environment/CBGGeode.h"
#include "environment/CKVSkyCubePass.h"
#include "environment/CKVSkyResources.h"
#include "environment/CKVSunColourPass.h"
#include "environment/IBLGeometry.h"
#include "programs/CKVProgramManager.h"
#include "programs/CKVRenderStateManager.h"
#include "scene/CKVOSGBindlessTexture.h"
#include "scene/KVBindlessHandleUniform.h"

#include <osg/BufferObject>
#include <osgUtil/CullVisitor>

#include <algorithm>

namespace Kelvor {

namespace {

char const* const kAtmosphereDefine = "_USE_ATMOSPHERE";
char const* const kSunColourUniform = "scatteringTexture";
char const* const kTextureUnitsDefine = "_USE_NOT_BINDLESS_TEXTURE";
char const* const kStarNoiseUniform = "starNoise";
char const* const kTerrainUniform = "terrainTextureArray";
// Transmittance, irradiance and scattering handles, in the block's order.
constexpr unsigned int kTableHandles = 3;

osg::ref_ptr<osg::UniformBufferBinding> createAtmosphereBinding()
{
    osg::ref_ptr<osg::UInt64Array> handles = new osg::UInt64Array(kTableHandles);
    std::fill(handles->begin(), handles->end(), 0u);
    handles->setBufferObject(new osg::UniformBufferObject);
    return new osg::UniformBufferBinding(CKVAtmosphereSky::kAtmosphereBlockBinding, handles.get(), 0,
                                         static_cast<GLsizeiptr>(kTableHandles * sizeof(GLuint64)));
}

} // namespace

CKVAtmosphereSky::CKVAtmosphereSky(osg::UniformBufferBinding* lightBinding, osg::Camera* sceneCamera,
                                   Tables const& tables)
    : mSceneCamera(sceneCamera)
    , mBindless(CKVRenderStateManager::instance().isBindlessTexture())
    , mEnvironmentMap(createCubeMap(kEnvironmentSize))
    , mTerrainHeight(new osg::Uniform("terrainHeight", 0.0f))
    , mScatteringTexture(CKVSunColourPass::createTarget())
    , mLightBinding(lightBinding)
    , mAtmosphereBinding(mBindless ? createAtmosphereBinding() : nullptr)
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
    if (mLightBinding.valid())
        scattering->setAttribute(mLightBinding.get());
    addPass(mScatteringPass.get());

    mIBLGeometry = new IBLGeometry(mEnvironmentMap.get(), mIrradianceMap.get(), mPrefilterMap.get());
    mSkyPass = CKVSkyCubePass::create(*this, mSkyGeode.get(), mIBLGeometry.get());
    osg::StateSet* sky = mSkyPass->getStateSet();
    bindTables(*sky, tables);
    bindSampler(*sky, mStarNoise.get(), kStarNoiseUniform, kStarNoiseUnit);
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
    if (mBindless) {
        // One block serves both passes; whichever is drawn first makes the
        // handles.
        stateSet.setAttribute(mAtmosphereBinding.get());
        CKVOSGBindlessTexture::TextureArrayEntry entry;
        entry.textures = {tables.transmittance, tables.irradiance, tables.scattering};
        entry.handles = dynamic_cast<osg::UInt64Array*>(mAtmosphereBinding->getBufferData());
        entry.blockIndex = static_cast<int>(kAtmosphereBlockBinding);
        getOrCreateBindlessTexture(&stateSet)->addTextureArray(entry);
        return;
    }
    stateSet.setDefine(kTextureUnitsDefine);
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

void CKVAtmosphereSky::bindSampler(osg::StateSet& stateSet, osg::Texture* texture, char const* name,
                                   unsigned int unit) const
{
    if (mBindless) {
        osg::ref_ptr<KVBindlessHandleUniform> handle = new KVBindlessHandleUniform(name, 0, true);
        stateSet.addUniform(handle.get());
        getOrCreateBindlessTexture(&stateSet)->addTexture({texture, handle});
        return;
    }
    stateSet.setTextureAttribute(unit, texture);
    stateSet.addUniform(new osg::Uniform(name, static_cast<int>(unit)));
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
        bindSampler(*sky, texture, kTerrainUniform, kTerrainUnit);
    else if (mBindless)
        sky->removeUniform(kTerrainUniform);
    else {
        // The sampler keeps its unit without a texture: left at unit 0 it
        // would share the transmittance table's unit with a sampler of
        // another type, and every draw of the sky would fail.
        sky->removeTextureAttribute(kTerrainUnit, osg::StateAttribute::TEXTURE);
        sky->addUniform(new osg::Uniform(kTerrainUniform, static_cast<int>(kTerrainUnit)));
    }
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
