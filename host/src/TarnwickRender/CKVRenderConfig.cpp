#include "TarnwickRender/CKVRenderConfig.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVRenderConfig, CKVObject)

// Defaults: everything that costs a pass is off, so that a scene looks the
// same on every machine until the application asks for more. The sun stands
// high in the south-east (z up, well above the night threshold), and the
// ambient term is strong enough that faces turned away from it stay legible.
// The zoom limits keep the camera off its target and within a distance at
// which single-precision model matrices still place things to the centimetre.
CKVRenderConfig::CKVRenderConfig()
    : mAtmosphericScattteringUse(false),
      mSkyTerrainUse(false),
      mFogUse(false),
      mFogColor(0.8f, 0.85f, 0.9f),
      mFogDensity(0.0005f),
      mRainUse(false),
      mSnowUse(false),
      mRainDensity(0.0f),
      mSnowDensity(0.0f),
      mWaterReflect(false),
      mVolumetricLightUse(false),
      mColorGradingUse(false),
      mDOFUse(false),
      mDOFNearEnd(1.0f),
      mDOFFarBegin(100.0f),
      mDOFBlurSize(4.0f),
      mLPVUse(false),
      mLPVIntensity(1.0f),
      mSSAOLevel(kLevelOff),
      mShadowLevel(kLevelOff),
      mShadowIntensity(0.5f),
      mRenderStyle(kShaded),
      mRenderStyleEdgeColor(0.0f, 0.0f, 0.0f, 1.0f),
      mEdgeOnlyBackgroundColor(1.0f, 1.0f, 1.0f),
      mUseDepthPrePass(false),
      mUseOcclusionCull(false),
      mLightPosition(0.5f, -0.5f, 0.7071068f),
      mLightIntensity(1.0f),
      mAtmosphericColor(1.0f, 1.0f, 1.0f),
      mAmbientColor(1.0f, 1.0f, 1.0f),
      mAmbientIntensity(0.4f),
      mMinZoomDistance(0.1),
      mMaxZoomDistance(1.0e7)
{
}

CKVRenderConfig::~CKVRenderConfig() = default;

} // namespace Kelvor
