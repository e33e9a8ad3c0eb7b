#pragma once

#include <functional>

namespace Kelvor {

// Everything the render tick runs goes through here. The tick runs on the
// window's timer thread, where an exception that escapes ends the host's
// process: a step that throws is reported through OpenSceneGraph's
// notification, naming `what`, and counts as a step that failed.
class KVNoThrow
{
public:
    static bool call(char const* what, std::function<bool()> const& step);
};

} // namespace Kelvor
