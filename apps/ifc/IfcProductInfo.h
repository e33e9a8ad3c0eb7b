#pragma once

#include <string>

namespace Kelvor {

// What the viewer shows about one IFC product when it is picked.
struct IfcProductInfo
{
    // The entity's class as IFC names it, e.g. "IfcWindow".
    std::string typeName;
    // Name attribute in UTF-8; empty when the file leaves it unset.
    std::string name;
    // The 22-character GlobalId.
    std::string globalId;
    // The entity's instance number in the file (#123); also the id of the
    // CKVDrawable that picks report for the product.
    unsigned long long entityId = 0;
};

} // namespace Kelvor
