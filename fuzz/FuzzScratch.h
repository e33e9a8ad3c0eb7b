#pragma once

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string>
#include <unistd.h>

namespace Kelvor {

// A folder of this process's own under /tmp for the readers that take a
// path: each input is written there under a fixed name and read back by the
// reader under test. Removed by nobody: a fuzzing run leaves one folder.
class FuzzScratch
{
public:
    static std::string const& folder()
    {
        static std::string const path = [] {
            std::string const dir = "/tmp/tarnwick-fuzz-" + std::to_string(::getpid());
            std::string const command = "mkdir -p " + dir;
            return std::system(command.c_str()) == 0 ? dir : std::string("/tmp");
        }();
        return path;
    }

    // Writes the input to `name` in the scratch folder; its path, or ""
    // when it cannot be written.
    static std::string write(std::string const& name, std::uint8_t const* data, std::size_t size)
    {
        std::string const path = folder() + "/" + name;
        std::ofstream out(path, std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<char const*>(data), static_cast<std::streamsize>(size));
        return out ? path : std::string();
    }
};

} // namespace Kelvor
