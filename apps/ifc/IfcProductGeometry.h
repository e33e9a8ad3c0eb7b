#pragma once

#include "apps/ifc/IfcMesh.h"
#include "apps/ifc/IfcProductInfo.h"

#include <vector>

namespace Kelvor {

// One product as the geometry extraction hands it over: its identity and one
// mesh per colour, ordered by colour so that two uses of the same shape list
// their meshes alike.
struct IfcProductGeometry
{
    IfcProductInfo info;
    std::vector<IfcMesh> meshes;

    unsigned int getNumTriangle() const
    {
        unsigned int count = 0;
        for (IfcMesh const& mesh : meshes)
            count += mesh.getNumTriangle();
        return count;
    }
};

} // namespace Kelvor
