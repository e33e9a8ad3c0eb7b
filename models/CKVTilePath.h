#pragma once

#include <string>
#include <vector>

namespace Kelvor {

// Paths inside tile sets. Tile sets are made on machines that write '\' as
// the separator, in descriptors as well as in the file names a tile keeps for
// its children, so every path is normalised to '/' before it reaches the file
// system.
class CKVTilePath
{
public:
    CKVTilePath() = delete;

    // `path` with '\' turned into '/', repeated separators collapsed and "."
    // and ".." segments resolved.
    static std::string normalize(std::string const& path);
    // The folder that holds `path`, normalised; "" when it names no folder.
    static std::string folderOf(std::string const& path);
    // `folder` and `name` joined by one separator, normalised. An empty
    // folder leaves `name` as it is (normalised).
    static std::string join(std::string const& folder, std::string const& name);

    // The names in `folder`, without "." and "..", in an order that does not
    // depend on the file system: letter case ignored, letters compared as
    // upper case, then byte order to separate names that differ only in case.
    // Empty when the folder does not exist.
    static std::vector<std::string> sortedEntries(std::string const& folder);
    // The ordering of sortedEntries.
    static bool entryLess(std::string const& a, std::string const& b);
};

} // namespace Kelvor
