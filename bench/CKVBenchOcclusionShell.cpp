#include "bench/CKVBenchOcclusionShell.h"

#include <algorithm>
#include <limits>

namespace Kelvor {

CKVBenchMesh CKVBenchOcclusionShell::box(char const* name, float sx, float sy, float sz)
{
    CKVBenchMesh mesh;
    mesh.name = name;
    mesh.kind = CKVBenchMesh::kSlab;
    // Per face: the normal axis and sign, then the corners in winding order.
    struct Face
    {
        float normal[3];
        float corners[4][3];
    };
    Face const faces[6] = {
        {{1, 0, 0}, {{sx, 0, 0}, {sx, sy, 0}, {sx, sy, sz}, {sx, 0, sz}}},
        {{-1, 0, 0}, {{0, sy, 0}, {0, 0, 0}, {0, 0, sz}, {0, sy, sz}}},
        {{0, 1, 0}, {{sx, sy, 0}, {0, sy, 0}, {0, sy, sz}, {sx, sy, sz}}},
        {{0, -1, 0}, {{0, 0, 0}, {sx, 0, 0}, {sx, 0, sz}, {0, 0, sz}}},
        {{0, 0, 1}, {{0, 0, sz}, {sx, 0, sz}, {sx, sy, sz}, {0, sy, sz}}},
        {{0, 0, -1}, {{0, sy, 0}, {sx, sy, 0}, {sx, 0, 0}, {0, 0, 0}}},
    };
    for (Face const& face : faces) {
        unsigned int const base = mesh.vertexCount();
        for (auto const& corner : face.corners) {
            mesh.positions.insert(mesh.positions.end(), corner, corner + 3);
            mesh.normals.insert(mesh.normals.end(), face.normal, face.normal + 3);
        }
        for (unsigned int corner : {0u, 1u, 2u, 0u, 2u, 3u})
            mesh.indices.push_back(base + corner);
    }
    return mesh;
}

void CKVBenchOcclusionShell::enclose(std::vector<CKVBenchMesh>& meshes, std::vector<CKVBenchPlacement>& placements,
                                     double shellLow[3], double shellHigh[3])
{
    double low[3], high[3];
    std::fill(low, low + 3, std::numeric_limits<double>::max());
    std::fill(high, high + 3, std::numeric_limits<double>::lowest());
    for (CKVBenchPlacement const& placement : placements) {
        double const point[3] = {placement.x, placement.y, placement.z};
        for (int a = 0; a < 3; ++a) {
            low[a] = std::min(low[a], point[a]);
            high[a] = std::max(high[a], point[a]);
        }
    }
    if (placements.empty())
        return;
    double const x0 = low[0] - kMargin, y0 = low[1] - kMargin, z0 = std::min(low[2], 0.0);
    double const sx = high[0] - low[0] + 2 * kMargin, sy = high[1] - low[1] + 2 * kMargin;
    double const sz = high[2] - z0 + kMargin;
    if (shellLow && shellHigh) {
        double const outerLow[3] = {x0 - kThickness, y0 - kThickness, z0};
        double const outerHigh[3] = {x0 + sx + kThickness, y0 + sy + kThickness, z0 + sz + kThickness};
        std::copy(outerLow, outerLow + 3, shellLow);
        std::copy(outerHigh, outerHigh + 3, shellHigh);
    }

    // Panels abut exactly, so that the shell stays closed.
    double const px = sx / kPanelsAlong, py = sy / kPanelsAlong, pz = sz / kPanelsUp;
    unsigned int const longWall = static_cast<unsigned int>(meshes.size());
    meshes.push_back(box("shell_wall_x", float(px), kThickness, float(pz)));
    meshes.push_back(box("shell_wall_y", kThickness, float(py), float(pz)));
    meshes.push_back(box("shell_roof", float(px), float(py), kThickness));
    unsigned int const shortWall = longWall + 1, roof = longWall + 2;

    auto place = [&](unsigned int mesh, double x, double y, double z) {
        CKVBenchPlacement placement;
        placement.mesh = mesh;
        placement.x = x;
        placement.y = y;
        placement.z = z;
        placements.push_back(placement);
    };
    for (int i = 0; i < kPanelsAlong; ++i) {
        for (int k = 0; k < kPanelsUp; ++k) {
            place(longWall, x0 + i * px, y0 - kThickness, z0 + k * pz);
            place(longWall, x0 + i * px, y0 + sy, z0 + k * pz);
            place(shortWall, x0 - kThickness, y0 + i * py, z0 + k * pz);
            place(shortWall, x0 + sx, y0 + i * py, z0 + k * pz);
        }
        for (int j = 0; j < kPanelsAlong; ++j)
            place(roof, x0 + i * px, y0 + j * py, z0 + sz);
    }
}

} // namespace Kelvor
