#include "apps/view/ViewPickReporter.h"

#include "apps/ifc/IfcProductTable.h"
#include "TarnwickRender/CKVSceneNode.h"
#include "TarnwickRender/CKVSelectionResult.h"

#include <cstdio>

namespace Kelvor {

std::string ViewPickReporter::describe(CKVSelectionResult const* result, IfcProductTable const& products)
{
    if (!result || !result->valid())
        return "nothing picked";
    CKVPoint3D const& at = result->getPosition();
    char where[96];
    std::snprintf(where, sizeof where, " at (%.2f, %.2f, %.2f)", at.x, at.y, at.z);
    if (IfcProductInfo const* product = products.find(result->getDrawable())) {
        std::string const name = product->name.empty() ? "(no name)" : "'" + product->name + "'";
        return "picked " + product->typeName + " " + name + " GUID " + product->globalId + where;
    }
    std::string text = "picked";
    if (CKVSceneNode const* node = result->getSceneNode()) {
        char const* name = node->getName();
        if (name && *name)
            text += std::string(" ") + name;
    }
    text += " (id " + std::to_string(result->getDrawable()->getId()) + ")";
    return text + where;
}

} // namespace Kelvor
