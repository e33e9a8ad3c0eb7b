#include "apps/view/ViewRenderSettings.h"

#include "apps/view/ViewFeatures.h"
#include "apps/view/ViewSunPosition.h"

#include <cmath>

namespace Kelvor {

namespace {

// A bright, slightly blue grey: buildings in white and grey stay readable
// against it, and glass does not vanish into it.
CKVPoint3D const kDefaultGrey(0.78, 0.82, 0.87);
CKVPoint3D const kWhite(1.0, 1.0, 1.0);
CKVPoint3D const kGradientTop(0.42, 0.6, 0.85);
CKVPoint3D const kGradientBottom(0.9, 0.92, 0.95);

constexpr int kBackgroundCount = 4;
constexpr int kStyleCount = 4;
char const* const kBackgroundNames[kBackgroundCount] = {"grey", "white", "gradient", "sky"};

// Fog thick enough to show on a house seen from 30-60 m.
constexpr float kViewerFogDensity = 0.01f;
// Maps of 2048 texels: sharp enough for a house, quick in software GL.
constexpr CKVRenderConfig::RenderLevel kViewerShadowLevel = CKVRenderConfig::kLevelMedium;
// Ambient occlusion at the window's resolution.
constexpr CKVRenderConfig::RenderLevel kViewerSSAOLevel = CKVRenderConfig::kLevelMedium;
// An afternoon sun over the left shoulder of the default (iso) view, strong
// against the ambient light, so that the building's shadows fall visibly
// on its plot and its own faces.
CKVVec3<float> const kSunDirection(-0.35f, -0.75f, 0.56f);
constexpr float kSunIntensity = 3.0f;
constexpr float kAmbientIntensity = 0.3f;

constexpr int kSkyBackground = 3;
constexpr double kNoon = 12.0;

char const* onOff(bool on)
{
    return on ? "on" : "off";
}

// Every style but plain shading draws edges.
bool styleAvailable(int style)
{
    return style == CKVRenderConfig::kShaded || ViewFeatures::isAvailable(ViewFeature::kEdges);
}

bool backgroundAvailable(int index)
{
    return index != kSkyBackground || ViewFeatures::isAvailable(ViewFeature::kAtmosphere);
}

} // namespace

ViewRenderSettings::ViewRenderSettings()
{
    setBackground(kSkyBackground);
    setLight(kNoon);
}

ViewRenderSettings::ViewRenderSettings(ViewOptions const& options)
{
    setBackground(kSkyBackground);
    if (options.style >= 0)
        mConfig.setRenderStyle(static_cast<CKVRenderConfig::RenderStyle>(options.style));
    switch (options.background) {
    case ViewOptions::Background::kDefault:
        break;
    case ViewOptions::Background::kColour: {
        CKVBackGroundConfig background = mConfig.getBackGroundConfig();
        background.setBackGroundType(CKVBackGroundConfig::kSolidColor);
        background.setBackGroundColor(
            CKVPoint3D(options.backgroundColour[0], options.backgroundColour[1], options.backgroundColour[2]));
        mConfig.setBackGroundConfig(background);
        break;
    }
    case ViewOptions::Background::kGradient:
        setBackground(2);
        break;
    case ViewOptions::Background::kSky:
        setBackground(kSkyBackground);
        break;
    case ViewOptions::Background::kGrey:
        setBackground(0);
        break;
    }
    // Under the sky the sun follows the time of day (noon unless given);
    // before a plain background the afternoon sun stays, unless a time is.
    if (options.timeOfDay >= 0.0)
        setLight(options.timeOfDay);
    else if (mBackground == kSkyBackground)
        setLight(kNoon);
    else
        setLight();
    if (options.fog) {
        mConfig.setFogUse(true);
        mConfig.setFogDensity(kViewerFogDensity);
    }
    if (options.shadows)
        mConfig.setShadowLevel(kViewerShadowLevel);
    if (options.ambientOcclusion && ViewFeatures::isAvailable(ViewFeature::kAmbientOcclusion))
        mConfig.setSSAOLevel(kViewerSSAOLevel);
    setCulling(options.culling);
}

void ViewRenderSettings::setCulling(bool on)
{
    mConfig.setUseDepthPrePass(on);
    mConfig.setUseOcclusionCull(on);
}

std::string ViewRenderSettings::toggleCulling()
{
    bool const on = !mConfig.getUseOcclusionCull();
    setCulling(on);
    return std::string("instance culling: ") + onOff(on);
}

char const* ViewRenderSettings::styleName(CKVRenderConfig::RenderStyle style)
{
    switch (style) {
    case CKVRenderConfig::kShaded:
        return "shaded";
    case CKVRenderConfig::kShadedWithEdges:
        return "shaded with edges";
    case CKVRenderConfig::kWhiteModelWithEdges:
        return "white model with edges";
    case CKVRenderConfig::kEdgesOnly:
        return "edges only";
    }
    return "unknown";
}

void ViewRenderSettings::setLight(double hours)
{
    mHours = hours;
    setLight();
    mConfig.setLightPosition(ViewSunPosition::directionAt(hours));
}

void ViewRenderSettings::setLight()
{
    mConfig.setLightPosition(kSunDirection);
    mConfig.setLightIntensity(kSunIntensity);
    mConfig.setAmbientIntensity(kAmbientIntensity);
}

void ViewRenderSettings::setBackground(int index)
{
    mBackground = index;
    CKVBackGroundConfig background = mConfig.getBackGroundConfig();
    switch (index) {
    case 0:
    case 1:
        background.setBackGroundType(CKVBackGroundConfig::kSolidColor);
        background.setBackGroundColor(index == 0 ? kDefaultGrey : kWhite);
        mConfig.setAtmosphericScattteringUse(false);
        break;
    case 2:
        background.setBackGroundType(CKVBackGroundConfig::kGradient);
        background.setGradientBackGround(kGradientTop, kGradientBottom);
        mConfig.setAtmosphericScattteringUse(false);
        break;
    default:
        // The sky is drawn by the atmosphere, which has to be on for it.
        background.setBackGroundType(CKVBackGroundConfig::kAtmosphere);
        mConfig.setAtmosphericScattteringUse(true);
        break;
    }
    mConfig.setBackGroundConfig(background);
}

std::string ViewRenderSettings::nextStyle()
{
    int next = static_cast<int>(mConfig.getRenderStyle());
    do
        next = (next + 1) % kStyleCount;
    while (!styleAvailable(next));
    mConfig.setRenderStyle(static_cast<CKVRenderConfig::RenderStyle>(next));
    std::string message = std::string("style: ") + styleName(mConfig.getRenderStyle());
    if (!ViewFeatures::isAvailable(ViewFeature::kEdges))
        message += " (" + ViewFeatures::notAvailable(ViewFeature::kEdges) + ")";
    return message;
}

std::string ViewRenderSettings::nextBackground()
{
    int next = mBackground;
    do
        next = (next + 1) % kBackgroundCount;
    while (!backgroundAvailable(next));
    setBackground(next);
    return std::string("background: ") + kBackgroundNames[mBackground];
}

std::string ViewRenderSettings::toggleFog()
{
    mConfig.setFogUse(!mConfig.getFogUse());
    if (mConfig.getFogUse())
        mConfig.setFogDensity(kViewerFogDensity);
    return std::string("fog: ") + onOff(mConfig.getFogUse());
}

std::string ViewRenderSettings::toggleShadows()
{
    if (!ViewFeatures::isAvailable(ViewFeature::kShadows))
        return ViewFeatures::notAvailable(ViewFeature::kShadows);
    bool const on = mConfig.getShadowLevel() == CKVRenderConfig::kLevelOff;
    mConfig.setShadowLevel(on ? kViewerShadowLevel : CKVRenderConfig::kLevelOff);
    return std::string("shadows: ") + onOff(on);
}

std::string ViewRenderSettings::toggleAmbientOcclusion()
{
    if (!ViewFeatures::isAvailable(ViewFeature::kAmbientOcclusion))
        return ViewFeatures::notAvailable(ViewFeature::kAmbientOcclusion);
    bool const on = mConfig.getSSAOLevel() == CKVRenderConfig::kLevelOff;
    mConfig.setSSAOLevel(on ? kViewerSSAOLevel : CKVRenderConfig::kLevelOff);
    return std::string("ambient occlusion: ") + onOff(on);
}

std::string ViewRenderSettings::nextHour()
{
    constexpr double kHoursPerDay = 24.0;
    setLight(std::fmod(std::floor(mHours) + 1.0, kHoursPerDay));
    int const hour = static_cast<int>(mHours);
    return std::string("time: ") + (hour < 10 ? "0" : "") + std::to_string(hour) + ":00";
}

std::string ViewRenderSettings::toggleAtmosphere()
{
    if (!ViewFeatures::isAvailable(ViewFeature::kAtmosphere))
        return ViewFeatures::notAvailable(ViewFeature::kAtmosphere);
    mConfig.setAtmosphericScattteringUse(!mConfig.getAtmosphericScattteringUse());
    return std::string("atmosphere: ") + onOff(mConfig.getAtmosphericScattteringUse());
}

} // namespace Kelvor
