#include "apps/ifc/IfcImportSummary.h"

#include <cstdio>

namespace Kelvor {

std::string IfcImportSummary::toString() const
{
    char text[512];
    std::snprintf(text, sizeof text,
                  "%s: %u products, %u triangles (%u stored), %u distinct shapes, %u shared by %u instances, "
                  "%u materials, %u geometries, %u warnings; loaded in %.2f s (parse %.2f s, geometry %.2f s, "
                  "scene %.2f s)",
                  schema.empty() ? "IFC" : schema.c_str(), products, triangles, storedTriangles, distinctShapes,
                  sharedShapes, instances, materials, geometries, warnings, totalSeconds, parseSeconds,
                  geometrySeconds, buildSeconds);
    return text;
}

} // namespace Kelvor
