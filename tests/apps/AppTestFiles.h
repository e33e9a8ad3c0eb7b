#pragma once

#include <fstream>
#include <sstream>
#include <string>

#include <unistd.h>

namespace Kelvor {
namespace apptest {

// A file name in /tmp of this test process's own, so that tests running in
// parallel never share a file.
inline std::string tempPath(char const* name)
{
    return "/tmp/tarnwick-apps-" + std::to_string(::getpid()) + "-" + name;
}

inline void writeFile(std::string const& path, std::string const& content)
{
    std::ofstream(path, std::ios::binary) << content;
}

inline std::string readWhole(std::string const& path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

} // namespace apptest
} // namespace Kelvor
