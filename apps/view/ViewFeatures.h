#pragma once

#include <string>

namespace Kelvor {

// The backend effects the viewer offers a switch for. Until an effect is
// drawn, its option is refused and its key says so, rather than the viewer
// reporting a change that does not show.
enum class ViewFeature { kEdges, kAtmosphere, kShadows, kAmbientOcclusion };

class ViewFeatures
{
public:
    static bool isAvailable(ViewFeature feature);
    // "edges", "the atmosphere and sky", ...
    static char const* name(ViewFeature feature);
    // One line for the user: "<name>: not available yet".
    static std::string notAvailable(ViewFeature feature);
};

} // namespace Kelvor
