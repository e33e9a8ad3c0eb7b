#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace Kelvor {

// One unique shape of the benchmark building: flat-shaded triangles with
// their own normals, in metres, origin at the element's insertion point.
struct CKVBenchMesh
{
    enum Kind { kColumn, kBeam, kSlab, kWindow, kKindCount };

    std::string name;
    Kind kind = kColumn;
    std::vector<float> positions; // x, y, z per vertex
    std::vector<float> normals;   // x, y, z per vertex
    std::vector<unsigned int> indices;

    unsigned int vertexCount() const { return static_cast<unsigned int>(positions.size() / 3); }
    unsigned int triangleCount() const { return static_cast<unsigned int>(indices.size() / 3); }
    std::size_t bufferBytes() const
    {
        return (positions.size() + normals.size()) * sizeof(float) + indices.size() * sizeof(unsigned int);
    }
};

// Where one object of the building stands: a mesh, a position and a turn
// about the vertical axis in quarter turns (building elements are placed on
// a grid, so that is all a placement needs).
struct CKVBenchPlacement
{
    unsigned int mesh = 0;
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
    int quarterTurns = 0;
};

} // namespace Kelvor
