#include "models/CKVTilePath.h"

#include "TarnwickCommon/Common.h"

#include <osgDB/FileUtils>

#include <algorithm>
#include <cctype>

namespace Kelvor {

std::string CKVTilePath::normalize(std::string const& path)
{
    if (path.empty())
        return std::string();
    CKVAString normal = Common::normalizePath(path.c_str());
    return std::string(normal.c_str());
}

std::string CKVTilePath::folderOf(std::string const& path)
{
    std::string const normal = normalize(path);
    std::string::size_type const slash = normal.rfind('/');
    if (slash == std::string::npos)
        return std::string();
    if (slash == 0)
        return "/";
    return normal.substr(0, slash);
}

std::string CKVTilePath::join(std::string const& folder, std::string const& name)
{
    if (folder.empty())
        return normalize(name);
    return normalize(folder + "/" + name);
}

bool CKVTilePath::entryLess(std::string const& a, std::string const& b)
{
    std::size_t const common = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < common; ++i) {
        int const ua = std::toupper(static_cast<unsigned char>(a[i]));
        int const ub = std::toupper(static_cast<unsigned char>(b[i]));
        if (ua != ub)
            return ua < ub;
    }
    if (a.size() != b.size())
        return a.size() < b.size();
    return a < b;
}

std::vector<std::string> CKVTilePath::sortedEntries(std::string const& folder)
{
    std::vector<std::string> entries;
    std::string const normal = normalize(folder);
    if (normal.empty() || !Common::checkDirectory(normal.c_str()))
        return entries;
    for (std::string const& name : osgDB::getDirectoryContents(normal)) {
        if (name != "." && name != "..")
            entries.push_back(name);
    }
    std::sort(entries.begin(), entries.end(), &CKVTilePath::entryLess);
    return entries;
}

} // namespace Kelvor
