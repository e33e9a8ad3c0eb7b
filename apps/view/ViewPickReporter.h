#pragma once

#include <string>

namespace Kelvor {

class CKVSelectionResult;
class IfcProductTable;

// Words a pick result for the user: the IFC product's type, name and GUID
// when the product table knows the drawable, otherwise the node's name and
// the drawable's id, or "nothing picked".
class ViewPickReporter
{
public:
    static std::string describe(CKVSelectionResult const* result, IfcProductTable const& products);
};

} // namespace Kelvor
