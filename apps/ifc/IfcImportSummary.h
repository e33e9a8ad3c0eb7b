#pragma once

#include <string>
#include <vector>

namespace Kelvor {

// What an import produced and how long it took, for the viewer's status line.
struct IfcImportSummary
{
    std::string schema;
    unsigned int entities = 0;
    // Products with triangles.
    unsigned int products = 0;
    // Triangles of all products as placed in the model, and those actually
    // stored once instancing shares the repeated shapes.
    unsigned int triangles = 0;
    unsigned int storedTriangles = 0;
    // Shapes in all; those shown by more than one product; and the products
    // that show a shared shape (the instances).
    unsigned int distinctShapes = 0;
    unsigned int sharedShapes = 0;
    unsigned int instances = 0;
    unsigned int materials = 0;
    unsigned int geometries = 0;
    // Messages IFC++ gave about parts of the file it could not use.
    unsigned int warnings = 0;
    // Entities reported damaged (skipped or read in part); entity
    // instances left out in all (damaged, or of types not read), out of all
    // the file declares; and the first problem IFC++ reported.
    unsigned int damagedEntities = 0;
    unsigned int skippedEntities = 0;
    unsigned int declaredEntities = 0;
    std::string firstProblem;
    // Seconds: reading and parsing, geometry, scene building, all together.
    double parseSeconds = 0.0;
    double geometrySeconds = 0.0;
    double buildSeconds = 0.0;
    double totalSeconds = 0.0;

    // One line, e.g. "IFC2X3: 117 products, 36222 triangles (...), ...".
    std::string toString() const;
    // What the user should know about a model that loaded only in part, one
    // line each; empty for a clean import.
    std::vector<std::string> notices() const;
};

} // namespace Kelvor
