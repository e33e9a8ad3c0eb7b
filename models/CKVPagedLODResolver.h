#pragma once

#include <set>
#include <string>

namespace osg {
class Node;
}

namespace Kelvor {

// Reads a whole tile pyramid at import time: every file that a PagedLOD
// names and does not hold yet is read and added as its next child, and the
// pass goes on into what it read. The host's own level-of-detail logic takes
// over from the imported levels, so nothing is left to page in later.
class CKVPagedLODResolver
{
public:
    CKVPagedLODResolver() = default;

    // `path` is the file `root` came from, so that a tile naming itself, or
    // an ancestor, is not read again and again without end.
    void resolve(osg::Node& root, std::string const& path);

private:
    void resolveNode(osg::Node& node);

    // Normalised paths of the files being resolved, from the root down.
    std::set<std::string> mOpenFiles;
};

} // namespace Kelvor
