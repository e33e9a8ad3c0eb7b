#pragma once

#include "TarnwickRender/CKVRenderConfig.h"

#include <string>

namespace Kelvor {

// The direction towards the sun at a time of day, for the viewer's --time
// option: the sun rises in the east (+x) at 6:00, passes high in the south
// at noon and sets in the west at 18:00; it is below the horizon at night.
// World z is up and y north. The site lies close to the equator at the
// equinox, so that the noon sun stands nearly overhead: only there does the
// atmosphere's sky show full daylight.
class ViewSunPosition
{
public:
    // `hours` from 0 to 24; others wrap around the day.
    static CKVVec3<float> directionAt(double hours);

    // "HH" or "HH:MM" (24-hour clock) into hours; false for anything else.
    static bool parseTime(std::string const& text, double& hours);
};

} // namespace Kelvor
