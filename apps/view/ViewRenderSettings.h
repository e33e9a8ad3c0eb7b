#pragma once

#include "apps/view/ViewOptions.h"
#include "TarnwickRender/CKVRenderConfig.h"

#include <string>

namespace Kelvor {

// The viewer's render configuration: built from the command line, then
// changed one switch at a time by keys. Each change returns a short text
// for the status line; the caller sends the new configuration to the
// render context. Effects the backend does not draw yet (ViewFeatures) are
// skipped or answered with "not available yet", and the configuration stays
// as it was.
class ViewRenderSettings
{
public:
    ViewRenderSettings();
    explicit ViewRenderSettings(ViewOptions const& options);

    CKVRenderConfig const& getConfig() const { return mConfig; }

    // Shaded -> shaded with edges -> white with edges -> edges only -> ...
    std::string nextStyle();
    // Sky (the default) -> grey -> white -> gradient -> sky -> ...
    std::string nextBackground();
    std::string toggleFog();
    std::string toggleShadows();
    std::string toggleAmbientOcclusion();
    std::string toggleAtmosphere();
    // Depth pre-pass and instance culling together.
    std::string toggleCulling();
    // The sun an hour later in the day, round the clock.
    std::string nextHour();

    static char const* styleName(CKVRenderConfig::RenderStyle style);

private:
    void setBackground(int index);
    void setLight();
    void setCulling(bool on);
    // The sun at `hours` of the day.
    void setLight(double hours);

    CKVRenderConfig mConfig;
    int mBackground = 3;
    double mHours = 12.0;
};

} // namespace Kelvor
