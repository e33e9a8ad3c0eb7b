#pragma once

#include "effects/CKVSceneGenerator.h"

#include <osg/BufferIndexBinding>
#include <osg/Camera>
#include <osg/Texture>
#include <osg/Texture2D>
#include <osg/Texture2DArray>
#include <osg/TextureCubeMap>
#include <osg/Uniform>
#include <osg/observer_ptr>
#include <osg/ref_ptr>

namespace Kelvor {

class CBGGeode;
class IBLGeometry;

// What the frame takes from the atmosphere tables: the sun's colour at the
// scene (one texel, redrawn for a few frames after a change of light), the
// sky cube that the sky-box background shows (redrawn each frame while that
// background is on), and the image-based light of physically based
// materials. Its passes are pre-render cameras culled from here; it has no
// children of its own.
class CKVAtmosphereSky : public CKVSceneGenerator
{
public:
    // The three lookup tables of the atmosphere model.
    struct Tables
    {
        osg::ref_ptr<osg::Texture> transmittance;
        osg::ref_ptr<osg::Texture> scattering;
        osg::ref_ptr<osg::Texture> irradiance;
    };

    // Where the driver has bindless textures the tables are handles in this
    // uniform block (transmittance, irradiance, scattering, 64 bits each)
    // and the star noise and ground layers are handle uniforms; otherwise
    // they sit on these units of the pass state sets ...
    static constexpr unsigned int kTransmittanceUnit = 0;
    static constexpr unsigned int kScatteringUnit = 1;
    static constexpr unsigned int kIrradianceUnit = 2;
    static constexpr unsigned int kStarNoiseUnit = 3;
    static constexpr unsigned int kTerrainUnit = 4;
    static constexpr unsigned int kAtmosphereBlockBinding = 3;
    // ... and on the scene camera's state set.
    static constexpr unsigned int kIrradianceMapUnit = 6;
    static constexpr unsigned int kPrefilterMapUnit = 7;
    static constexpr unsigned int kSunColourUnit = 13;
    // Frames the sun colour pass runs after each change.
    static constexpr int kScatteringFrames = 5;
    static constexpr int kEnvironmentSize = 1024;

    // `sceneCamera` receives the image-based light maps now and the sun
    // colour while the atmosphere is on; it usually owns this node, so only
    // an observer is kept.
    CKVAtmosphereSky(osg::UniformBufferBinding* lightBinding, osg::Camera* sceneCamera, Tables const& tables);

    char const* className() const override { return "CKVAtmosphereSky"; }

    // Cull only: the sun colour pass while it is due and the atmosphere is
    // on, then the sky pass while the sky is shown.
    void traverse(osg::NodeVisitor& visitor) override;

    // The surfaces' sun colour (define "_USE_ATMOSPHERE", unit 13). An
    // unchanged value does nothing.
    void setAtmosphereEnabled(bool enabled);
    bool getAtmosphereEnabled() const { return mAtmosphereEnabled; }
    void setSkyPassEnabled(bool enabled) { mSkyPassEnabled = enabled; }
    bool getSkyPassEnabled() const { return mSkyPassEnabled; }
    // Marks the sun colour for a redraw (light direction or intensity).
    void setUpdateScattering(bool update) { mUpdateScattering = update; }
    bool getUpdateScattering() const { return mUpdateScattering; }
    int getUpdateFrames() const { return mUpdateFrames; }

    void setTerrainHeight(float height) { mTerrainHeight->set(height); }
    osg::Uniform* getTerrainHeightUniform() const { return mTerrainHeight.get(); }
    // The sky terrain's ground layers, replacing those from the resources;
    // marks the sun colour for a redraw.
    void setTerrainTexture(osg::Texture2DArray* texture);
    osg::Texture2DArray* getTerrainTexture() const { return mTerrainTexture.get(); }

    osg::TextureCubeMap* getEnvironmentMap() const { return mEnvironmentMap.get(); }
    osg::TextureCubeMap* getIrradianceMap() const { return mIrradianceMap.get(); }
    osg::TextureCubeMap* getPrefilterMap() const { return mPrefilterMap.get(); }
    osg::Texture2D* getScatteringTexture() const { return mScatteringTexture.get(); }
    // No sky uniform is made; the sky box takes null as none.
    osg::Uniform* getSkyUniform() const { return nullptr; }

    PassData* getScatteringPass() const { return mScatteringPass.get(); }
    PassData* getSkyPass() const { return mSkyPass.get(); }
    IBLGeometry* getIBLGeometry() const { return mIBLGeometry.get(); }
    // Whether the passes read their textures through bindless handles, as
    // the render state manager said at construction.
    bool isBindless() const { return mBindless; }
    // The table handles' block; null on the texture-unit path.
    osg::UniformBufferBinding* getAtmosphereBinding() const { return mAtmosphereBinding.get(); }
    // Frames in which each pass was culled, and so drawn.
    unsigned int getScatteringPassCount() const { return mScatteringPassCount; }
    unsigned int getSkyPassCount() const { return mSkyPassCount; }

    void releaseGLObjects(osg::State* state = nullptr) const override;

protected:
    ~CKVAtmosphereSky() override;

private:
    static osg::ref_ptr<osg::TextureCubeMap> createCubeMap(int size);
    void bindTables(osg::StateSet& stateSet, Tables const& tables) const;
    // A texture behind a sampler uniform: a handle when bindless, else a unit.
    void bindSampler(osg::StateSet& stateSet, osg::Texture* texture, char const* name, unsigned int unit) const;
    void runPass(osgUtil::CullVisitor& visitor, PassData& pass);

    osg::observer_ptr<osg::Camera> mSceneCamera;
    bool const mBindless;
    bool mAtmosphereEnabled = false;
    bool mSkyPassEnabled = false;
    bool mUpdateScattering = true;
    int mUpdateFrames = 0;
    osg::ref_ptr<PassData> mSkyPass;
    osg::ref_ptr<osg::TextureCubeMap> mEnvironmentMap;
    osg::ref_ptr<osg::Texture2DArray> mTerrainTexture;
    osg::ref_ptr<osg::Uniform> mTerrainHeight;
    osg::ref_ptr<PassData> mScatteringPass;
    osg::ref_ptr<osg::Texture2D> mScatteringTexture;
    osg::ref_ptr<osg::UniformBufferBinding> mLightBinding;
    osg::ref_ptr<osg::UniformBufferBinding> mAtmosphereBinding;
    osg::ref_ptr<osg::TextureCubeMap> mIrradianceMap;
    osg::ref_ptr<osg::TextureCubeMap> mPrefilterMap;
    osg::ref_ptr<osg::Texture2D> mStarNoise;
    osg::ref_ptr<CBGGeode> mScatteringGeode;
    osg::ref_ptr<CBGGeode> mSkyGeode;
    osg::ref_ptr<IBLGeometry> mIBLGeometry;
    unsigned int mScatteringPassCount = 0;
    unsigned int mSkyPassCount = 0;
};

} // namespace Kelvor
