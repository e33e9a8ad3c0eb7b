#pragma once

#include "TarnwickCommon/CKVAString.h"
#include "TarnwickCommon/CKVObject.h"
#include "TarnwickCommon/CKVVec.h"
#include "TarnwickRender/CKVBackGroundConfig.h"

namespace Kelvor {

// The host's one value that steers the look of a frame. A default-constructed
// configuration shows a plainly shaded model on a solid background, lit from
// above, with every costly effect off.
class CKVRenderConfig : public CKVObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVRenderConfig)
public:
    enum RenderLevel : int { kLevelOff = 0, kLevelLow = 1, kLevelMedium = 2, kLevelHigh = 3 };
    enum RenderStyle : int {
        kShaded = 0,
        kShadedWithEdges = 1,
        kWhiteModelWithEdges = 2,
        kEdgesOnly = 3
    };

    CKVRenderConfig();
    CKVRenderConfig(CKVRenderConfig const&) = default;
    CKVRenderConfig& operator=(CKVRenderConfig const&) = default;
    ~CKVRenderConfig() override;

    bool getAtmosphericScattteringUse() const { return mAtmosphericScattteringUse; }
    void setAtmosphericScattteringUse(bool use) { mAtmosphericScattteringUse = use; }
    // The sky capture sees the ground as well as the sky.
    bool getSkyTerrainUse() const { return mSkyTerrainUse; }
    void setSkyTerrainUse(bool use) { mSkyTerrainUse = use; }

    bool getFogUse() const { return mFogUse; }
    void setFogUse(bool use) { mFogUse = use; }
    CKVVec3<float> const& getFogColor() const { return mFogColor; }
    void setFogColor(CKVVec3<float> const& rgb) { mFogColor = rgb; }
    // Exponential fog per metre.
    float getFogDensity() const { return mFogDensity; }
    void setFogDensity(float density) { mFogDensity = density; }

    bool getRainUse() const { return mRainUse; }
    void setRainUse(bool use) { mRainUse = use; }
    bool getSnowUse() const { return mSnowUse; }
    void setSnowUse(bool use) { mSnowUse = use; }
    // 0..1; the particles and wet or snowy surfaces start at 0.5.
    float getRainDensity() const { return mRainDensity; }
    void setRainDensity(float density) { mRainDensity = density; }
    float getSnowDensity() const { return mSnowDensity; }
    void setSnowDensity(float density) { mSnowDensity = density; }

    bool getWaterReflect() const { return mWaterReflect; }
    void setWaterReflect(bool use) { mWaterReflect = use; }
    bool getVolumetricLightUse() const { return mVolumetricLightUse; }
    void setVolumetricLightUse(bool use) { mVolumetricLightUse = use; }

    bool getColorGradingUse() const { return mColorGradingUse; }
    void setColorGradingUse(bool use) { mColorGradingUse = use; }
    // Path of the colour lookup image.
    char const* getColorGrading() const { return mColorGrading.c_str(); }
    void setColorGrading(char const* path) { mColorGrading = path; }

    bool getDOFUse() const { return mDOFUse; }
    void setDOFUse(bool use) { mDOFUse = use; }
    // Depth of field: sharp between near end and far begin, in metres.
    float getDOFNearEnd() const { return mDOFNearEnd; }
    void setDOFNearEnd(float distance) { mDOFNearEnd = distance; }
    float getDOFFarBegin() const { return mDOFFarBegin; }
    void setDOFFarBegin(float distance) { mDOFFarBegin = distance; }
    float getDOFBlurSize() const { return mDOFBlurSize; }
    void setDOFBlurSize(float size) { mDOFBlurSize = size; }

    bool getLPVUse() const { return mLPVUse; }
    void setLPVUse(bool use) { mLPVUse = use; }
    float getLPVIntensity() const { return mLPVIntensity; }
    void setLPVIntensity(float intensity) { mLPVIntensity = intensity; }

    RenderLevel getSSAOLevel() const { return mSSAOLevel; }
    void setSSAOLevel(RenderLevel level) { mSSAOLevel = level; }
    RenderLevel getShadowLevel() const { return mShadowLevel; }
    void setShadowLevel(RenderLevel level) { mShadowLevel = level; }
    float getShadowIntensity() const { return mShadowIntensity; }
    void setShadowIntensity(float intensity) { mShadowIntensity = intensity; }

    RenderStyle getRenderStyle() const { return mRenderStyle; }
    void setRenderStyle(RenderStyle style) { mRenderStyle = style; }
    CKVVec4<float> const& getRenderStyleEdgeColor() const { return mRenderStyleEdgeColor; }
    void setRenderStyleEdgeColor(CKVVec4<float> const& rgba) { mRenderStyleEdgeColor = rgba; }
    CKVVec3<float> const& getEdgeOnlyBackgroundColor() const { return mEdgeOnlyBackgroundColor; }
    void setEdgeOnlyBackgroundColor(CKVVec3<float> const& rgb) { mEdgeOnlyBackgroundColor = rgb; }

    bool getUseDepthPrePass() const { return mUseDepthPrePass; }
    void setUseDepthPrePass(bool use) { mUseDepthPrePass = use; }
    bool getUseOcclusionCull() const { return mUseOcclusionCull; }
    void setUseOcclusionCull(bool use) { mUseOcclusionCull = use; }

    // The direction towards the sun (z up); z below -0.1 is night.
    CKVVec3<float> const& getLightPosition() const { return mLightPosition; }
    void setLightPosition(CKVVec3<float> const& direction) { mLightPosition = direction; }
    float getLightIntensity() const { return mLightIntensity; }
    void setLightIntensity(float intensity) { mLightIntensity = intensity; }
    CKVVec3<float> const& getAtmosphericColor() const { return mAtmosphericColor; }
    void setAtmosphericColor(CKVVec3<float> const& rgb) { mAtmosphericColor = rgb; }
    CKVVec3<float> const& getAmbientColor() const { return mAmbientColor; }
    void setAmbientColor(CKVVec3<float> const& rgb) { mAmbientColor = rgb; }
    float getAmbientIntensity() const { return mAmbientIntensity; }
    void setAmbientIntensity(float intensity) { mAmbientIntensity = intensity; }

    // Limits of the camera's distance to its target when zooming, in metres.
    double getMinZoomDistance() const { return mMinZoomDistance; }
    void setMinZoomDistance(double distance) { mMinZoomDistance = distance; }
    double getMaxZoomDistance() const { return mMaxZoomDistance; }
    void setMaxZoomDistance(double distance) { mMaxZoomDistance = distance; }

    CKVBackGroundConfig const& getBackGroundConfig() const { return mBackGround; }
    void setBackGroundConfig(CKVBackGroundConfig const& config) { mBackGround = config; }

private:
    bool mAtmosphericScattteringUse;
    bool mSkyTerrainUse;
    bool mFogUse;
    CKVVec3<float> mFogColor;
    float mFogDensity;
    bool mRainUse;
    bool mSnowUse;
    float mRainDensity;
    float mSnowDensity;
    bool mWaterReflect;
    bool mVolumetricLightUse;
    bool mColorGradingUse;
    CKVAString mColorGrading;
    bool mDOFUse;
    float mDOFNearEnd;
    float mDOFFarBegin;
    float mDOFBlurSize;
    bool mLPVUse;
    float mLPVIntensity;
    RenderLevel mSSAOLevel;
    RenderLevel mShadowLevel;
    float mShadowIntensity;
    RenderStyle mRenderStyle;
    CKVVec4<float> mRenderStyleEdgeColor;
    CKVVec3<float> mEdgeOnlyBackgroundColor;
    bool mUseDepthPrePass;
    bool mUseOcclusionCull;
    CKVVec3<float> mLightPosition;
    float mLightIntensity;
    CKVVec3<float> mAtmosphericColor;
    CKVVec3<float> mAmbientColor;
    float mAmbientIntensity;
    double mMinZoomDistance;
    double mMaxZoomDistance;
    CKVBackGroundConfig mBackGround;
};

} // namespace Kelvor
