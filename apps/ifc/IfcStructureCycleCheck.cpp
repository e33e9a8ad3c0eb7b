#include "apps/ifc/IfcStructureCycleCheck.h"

#include <ifcpp/IFC4/include/IfcObjectDefinition.h>
#include <ifcpp/IFC4/include/IfcProduct.h>
#include <ifcpp/IFC4/include/IfcRelAggregates.h>
#include <ifcpp/IFC4/include/IfcRelContainedInSpatialStructure.h>
#include <ifcpp/IFC4/include/IfcSpatialStructureElement.h>
#include <ifcpp/model/BuildingModel.h>

#include <unordered_map>
#include <utility>
#include <vector>

namespace Kelvor {

namespace {

enum class Mark { kOnPath, kDone };

// The objects directly below `object` in the walk the converter makes.
std::vector<IfcObjectDefinition*> childrenOf(IfcObjectDefinition& object)
{
    std::vector<IfcObjectDefinition*> children;
    for (auto const& weak : object.m_IsDecomposedBy_inverse) {
        if (auto const relation = weak.lock()) {
            for (auto const& child : relation->m_RelatedObjects)
                if (child)
                    children.push_back(child.get());
        }
    }
    if (auto* spatial = dynamic_cast<IfcSpatialStructureElement*>(&object)) {
        for (auto const& weak : spatial->m_ContainsElements_inverse) {
            if (auto const relation = weak.lock()) {
                for (auto const& child : relation->m_RelatedElements)
                    if (child)
                        children.push_back(child.get());
            }
        }
    }
    return children;
}

} // namespace

int IfcStructureCycleCheck::findLoop(BuildingModel const& model)
{
    // Depth-first with an explicit stack: a damaged file may chain
    // thousands of relations, deeper than a recursive walk should go.
    std::unordered_map<IfcObjectDefinition const*, Mark> marks;
    for (auto const& entry : model.getMapIfcEntities()) {
        auto* root = dynamic_cast<IfcObjectDefinition*>(entry.second.get());
        if (!root || marks.count(root))
            continue;
        std::vector<std::pair<IfcObjectDefinition*, std::vector<IfcObjectDefinition*>>> stack;
        marks[root] = Mark::kOnPath;
        stack.emplace_back(root, childrenOf(*root));
        while (!stack.empty()) {
            auto& [object, pending] = stack.back();
            if (pending.empty()) {
                marks[object] = Mark::kDone;
                stack.pop_back();
                continue;
            }
            IfcObjectDefinition* const child = pending.back();
            pending.pop_back();
            auto const found = marks.find(child);
            if (found != marks.end()) {
                if (found->second == Mark::kOnPath)
                    return child->m_entity_id;
                continue;
            }
            marks[child] = Mark::kOnPath;
            stack.emplace_back(child, childrenOf(*child));
        }
    }
    return -1;
}

} // namespace Kelvor
