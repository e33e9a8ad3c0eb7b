#include "apps/view/ViewSunPosition.h"

#include <cmath>
#include <cstdlib>

namespace Kelvor {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kHoursPerDay = 24.0;
constexpr double kNoon = 12.0;
// How far south of the zenith the noon sun stands: enough for the house to
// cast a short shadow, little enough for a daylight sky.
constexpr double kNoonZenithOffsetDegrees = 0.5;

} // namespace

CKVVec3<float> ViewSunPosition::directionAt(double hours)
{
    double wrapped = std::fmod(hours, kHoursPerDay);
    if (wrapped < 0.0)
        wrapped += kHoursPerDay;
    // The hour angle: 0 at noon, a quarter turn at 6:00 and 18:00.
    double const hourAngle = (wrapped - kNoon) / kHoursPerDay * 2.0 * kPi;
    double const tilt = kNoonZenithOffsetDegrees * kPi / 180.0;
    return CKVVec3<float>(static_cast<float>(-std::sin(hourAngle)),
                          static_cast<float>(-std::sin(tilt) * std::cos(hourAngle)),
                          static_cast<float>(std::cos(tilt) * std::cos(hourAngle)));
}

bool ViewSunPosition::parseTime(std::string const& text, double& hours)
{
    auto digits = [](std::string const& part, int limit, int& out) {
        if (part.empty() || part.size() > 2)
            return false;
        for (char c : part) {
            if (c < '0' || c > '9')
                return false;
        }
        out = std::atoi(part.c_str());
        return out <= limit;
    };
    std::size_t const colon = text.find(':');
    int h = 0;
    int m = 0;
    if (!digits(text.substr(0, colon), 24, h))
        return false;
    if (colon != std::string::npos && (!digits(text.substr(colon + 1), 59, m) || text.size() - colon != 3))
        return false;
    if (h == 24 && m != 0)
        return false;
    hours = h + m / 60.0;
    return true;
}

} // namespace Kelvor
