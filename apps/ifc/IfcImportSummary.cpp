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

std::vector<std::string> IfcImportSummary::notices() const
{
    std::vector<std::string> lines;
    // Types that are never read (2D annotation) leave entities out of clean
    // files too; only damage is worth a word.
    if (damagedEntities == 0)
        return lines;
    char text[256];
    std::snprintf(text, sizeof text,
                  "%u damaged entities were skipped or read in part (%u of %u entities left out in all)",
                  damagedEntities, skippedEntities, declaredEntities);
    std::string line = text;
    if (!firstProblem.empty())
        line += "; the first: " + firstProblem;
    lines.push_back(line);
    return lines;
}

} // namespace Kelvor
