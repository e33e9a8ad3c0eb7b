#pragma once

#include <string>

namespace Kelvor {

// The image file of a capture run, checked before any work is done so that
// a typing mistake costs no model load: a known image extension and a place
// the program may write to.
class ViewCaptureTarget
{
public:
    // False with `error` set. Leaves no file behind.
    static bool check(std::string const& path, std::string& error);
};

} // namespace Kelvor
