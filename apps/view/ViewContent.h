#pragma once

#include "apps/ifc/IfcProductTable.h"
#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickGeometry/CKVBndBox.h"
#include "TarnwickRender/CKVSceneNode.h"

#include <string>
#include <vector>

namespace Kelvor {

// A loaded model as the viewer shows it: host content under one root node,
// not yet attached to any scene, with what is needed to frame it, report it
// and answer picks on it.
struct ViewContent
{
    kv_shared_ptr<CKVSceneNode> root;
    // Filled for IFC models; picks on other models report the node name.
    IfcProductTable products;
    CKVBndBox box;
    unsigned long long triangles = 0;
    // Counted for the summary line: model elements and the placements of shared shapes.
    unsigned int elements = 0;
    unsigned int instances = 0;
    double loadSeconds = 0.0;
    // "IFC2X3", "osgb", "built-in" ...
    std::string kind;
    // What the user should know about a model that loaded only in part.
    std::vector<std::string> notices;
};

} // namespace Kelvor
