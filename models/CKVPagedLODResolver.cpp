#include "models/CKVPagedLODResolver.h"

#include "models/CKVTilePath.h"

#include <osg/PagedLOD>
#include <osgDB/ReadFile>
#include <osgDB/Registry>

#include <cstring>
#include <vector>

namespace Kelvor {

void CKVPagedLODResolver::resolve(osg::Node& root, std::string const& path)
{
    mOpenFiles.clear();
    mOpenFiles.insert(CKVTilePath::normalize(path));
    resolveNode(root);
    mOpenFiles.clear();
}

void CKVPagedLODResolver::resolveNode(osg::Node& node)
{
    // The file each child was read from here; empty for children the node
    // already had.
    std::vector<std::string> readFrom;
    if (std::strcmp(node.className(), "PagedLOD") == 0) {
        osg::PagedLOD& paged = static_cast<osg::PagedLOD&>(node);
        readFrom.resize(paged.getNumChildren());
        for (unsigned int i = paged.getNumChildren(); i < paged.getNumFileNames(); ++i) {
            std::string const path = CKVTilePath::normalize(paged.getDatabasePath() + paged.getFileName(i));
            osg::ref_ptr<osg::Node> child;
            if (!path.empty() && mOpenFiles.count(path) == 0)
                child = osgDB::readRefNodeFile(path, osgDB::Registry::instance()->getOptions());
            readFrom.push_back(child ? path : std::string());
            // An empty stand-in keeps the child indices in step with the ranges.
            if (!child)
                child = new osg::PagedLOD;
            paged.addChild(child.get());
        }
    }

    osg::Group* group = node.asGroup();
    if (!group)
        return;
    for (unsigned int i = 0; i < group->getNumChildren(); ++i) {
        osg::Node* child = group->getChild(i);
        if (!child)
            continue;
        bool const opened = i < readFrom.size() && !readFrom[i].empty() && mOpenFiles.insert(readFrom[i]).second;
        resolveNode(*child);
        if (opened)
            mOpenFiles.erase(readFrom[i]);
    }
}

} // namespace Kelvor
