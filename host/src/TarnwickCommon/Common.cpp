#include "TarnwickCommon/Common.h"

#include <dlfcn.h>
#include <sys/stat.h>

#include <climits>
#include <cstdlib>
#include <mutex>
#include <string>
#include <vector>

// Where an installed tree keeps the resources, seen from the library
// folder; the build sets it when the install folders are not the usual ones.
#ifndef TARNWICK_INSTALLED_RESOURCES
#define TARNWICK_INSTALLED_RESOURCES "../share/tarnwick/resources"
#endif

namespace Kelvor {
namespace Common {

namespace {

struct ResourceOverride
{
    std::mutex mutex;
    std::string directory;
};

// Leaked on purpose: other libraries' static destructors may still ask.
ResourceOverride& resourceOverride()
{
    static ResourceOverride* r = new ResourceOverride;
    return *r;
}

bool statPath(char const* path, struct stat& info)
{
    if (!path || !*path)
        return false;
    CKVAString native = normalizePath(path);
    return ::stat(native.c_str(), &info) == 0;
}

} // namespace

CKVAString normalizePath(char const* path)
{
    std::string text = path ? path : "";
    for (char& c : text) {
        if (c == '\\')
            c = '/';
    }
    if (text.empty())
        return CKVAString();

    bool const absolute = text[0] == '/';
    std::vector<std::string> segments;
    size_t pos = 0;
    while (pos <= text.size()) {
        size_t next = text.find('/', pos);
        if (next == std::string::npos)
            next = text.size();
        std::string segment = text.substr(pos, next - pos);
        pos = next + 1;
        if (segment.empty() || segment == ".")
            continue;
        if (segment == "..") {
            if (!segments.empty() && segments.back() != "..")
                segments.pop_back();
            else if (!absolute)
                segments.push_back(segment); // a relative path may climb above its start
            continue;                        // "/.." is "/"
        }
        segments.push_back(segment);
    }

    std::string result = absolute ? "/" : "";
    for (size_t i = 0; i < segments.size(); ++i) {
        if (i > 0)
            result += '/';
        result += segments[i];
    }
    if (result.empty())
        result = ".";
    return CKVAString(result.c_str());
}

bool getModuleDirectory(CKVAString& directory)
{
    Dl_info info{};
    // Any function of this library tells dladdr which object to report.
    if (!::dladdr(reinterpret_cast<void const*>(&getModuleDirectory), &info) || !info.dli_fname)
        return false;
    char resolved[PATH_MAX];
    char const* file = ::realpath(info.dli_fname, resolved) ? resolved : info.dli_fname;
    CKVAString path = normalizePath(file);
    int slash = path.reverseFind('/');
    if (slash < 0)
        return false;
    directory = slash == 0 ? CKVAString("/") : path.left(static_cast<unsigned int>(slash));
    return true;
}

bool getResourceDirectory(CKVAString& directory)
{
    {
        ResourceOverride& r = resourceOverride();
        std::lock_guard<std::mutex> lock(r.mutex);
        if (!r.directory.empty()) {
            directory = r.directory.c_str();
            return true;
        }
    }

    CKVAString module;
    if (!getModuleDirectory(module))
        return false;
    CKVAString const candidates[] = {
        normalizePath((module + "/../resources").c_str()),
        normalizePath((module + "/" TARNWICK_INSTALLED_RESOURCES).c_str()),
    };
    for (CKVAString const& candidate : candidates) {
        if (checkDirectory(candidate.c_str())) {
            directory = candidate;
            return true;
        }
    }
    directory = candidates[0];
    return true;
}

void setResourceDirectory(char const* directory)
{
    CKVAString normalized = normalizePath(directory);
    ResourceOverride& r = resourceOverride();
    std::lock_guard<std::mutex> lock(r.mutex);
    r.directory = directory && *directory ? normalized.c_str() : "";
}

bool checkFile(char const* path)
{
    struct stat info;
    return statPath(path, info) && !S_ISDIR(info.st_mode);
}

bool checkDirectory(char const* path)
{
    struct stat info;
    return statPath(path, info) && S_ISDIR(info.st_mode);
}

} // namespace Common
} // namespace Kelvor
