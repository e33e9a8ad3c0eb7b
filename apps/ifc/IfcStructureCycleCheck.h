#pragma once

#include <memory>

class BuildingModel;

namespace Kelvor {

// Finds an object that contains itself through the file's decomposition
// (IfcRelAggregates) and spatial containment relations. IFC++'s geometry
// converter walks those relations recursively and never returns on such a
// loop (a damaged file overflows the stack), so the import refuses it first.
class IfcStructureCycleCheck
{
public:
    // The entity id of an object on a loop, or -1 when there is none.
    static int findLoop(BuildingModel const& model);
};

} // namespace Kelvor
