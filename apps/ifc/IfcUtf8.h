#pragma once

#include <string>

namespace Kelvor {

// IFC++ hands out text as wide strings (UTF-32 on Linux); the host and the
// viewer use UTF-8. Code points that are not valid become U+FFFD.
std::string ifcToUtf8(std::wstring const& text);

} // namespace Kelvor
