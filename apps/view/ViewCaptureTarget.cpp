#include "apps/view/ViewCaptureTarget.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace Kelvor {

namespace {

// The writers present in every OpenSceneGraph build we run on.
char const* const kImageExtensions[] = {"png", "jpg", "jpeg", "bmp", "tga", "tif", "tiff"};

} // namespace

bool ViewCaptureTarget::check(std::string const& path, std::string& error)
{
    std::size_t const dot = path.find_last_of('.');
    std::size_t const slash = path.find_last_of('/');
    std::string extension = dot == std::string::npos || (slash != std::string::npos && dot < slash)
                                ? std::string()
                                : path.substr(dot + 1);
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (std::find(std::begin(kImageExtensions), std::end(kImageExtensions), extension) ==
        std::end(kImageExtensions)) {
        error = path + ": the capture must be a .png, .jpg, .bmp, .tga or .tif file";
        return false;
    }
    bool const existed = ::access(path.c_str(), F_OK) == 0;
    int const fd = ::open(path.c_str(), O_WRONLY | O_CREAT, 0644);
    if (fd < 0) {
        error = path + ": " + std::strerror(errno);
        return false;
    }
    ::close(fd);
    if (!existed)
        ::unlink(path.c_str());
    return true;
}

} // namespace Kelvor
