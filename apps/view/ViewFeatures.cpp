#include "apps/view/ViewFeatures.h"

namespace Kelvor {

namespace {

struct FeatureRow
{
    ViewFeature feature;
    char const* name;
    bool available;
};

// One row per switchable effect. When the backend learns to draw one, its
// row turns true and the viewer's option and key come alive.
constexpr FeatureRow kFeatures[] = {
    {ViewFeature::kEdges, "edges", true},
    {ViewFeature::kAtmosphere, "the atmosphere and sky", true},
    {ViewFeature::kShadows, "shadows", true},
    {ViewFeature::kAmbientOcclusion, "ambient occlusion", true},
};

FeatureRow const& row(ViewFeature feature)
{
    for (FeatureRow const& entry : kFeatures) {
        if (entry.feature == feature)
            return entry;
    }
    // Every enumerator has a row; an unknown one is treated as missing.
    static FeatureRow const unknown{feature, "this effect", false};
    return unknown;
}

} // namespace

bool ViewFeatures::isAvailable(ViewFeature feature)
{
    return row(feature).available;
}

char const* ViewFeatures::name(ViewFeature feature)
{
    return row(feature).name;
}

std::string ViewFeatures::notAvailable(ViewFeature feature)
{
    return std::string(name(feature)) + ": not available yet";
}

} // namespace Kelvor
