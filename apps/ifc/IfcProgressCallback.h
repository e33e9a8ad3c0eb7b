#pragma once

#include <functional>

namespace Kelvor {

// Progress of a long step: the fraction done in [0, 1] and a short text
// naming the current phase. Called on the thread that runs the step.
using IfcProgressCallback = std::function<void(double fraction, char const* phase)>;

} // namespace Kelvor
