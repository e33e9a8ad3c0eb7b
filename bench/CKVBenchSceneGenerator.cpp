#include "bench/CKVBenchSceneGenerator.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace Kelvor {

namespace {

// Grid of the frame, in metres. Square bays let one beam shape serve both
// directions of the grid, turned a quarter.
constexpr double kBay = 6.0;
constexpr double kStorey = 3.5;
// Building plots on the campus, wide enough for the largest building.
constexpr double kPlot = 60.0;

// splitmix64: a tiny generator whose sequence is fixed by its arithmetic,
// unlike the standard distributions, whose output differs between library
// implementations.
class SplitMix
{
public:
    explicit SplitMix(std::uint64_t seed) : mState(seed) {}
    std::uint64_t next()
    {
        std::uint64_t z = (mState += 0x9e3779b97f4a7c15ull);
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ull;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebull;
        return z ^ (z >> 31);
    }
    unsigned int below(unsigned int n) { return n ? static_cast<unsigned int>(next() % n) : 0u; }

private:
    std::uint64_t mState;
};

void addQuad(CKVBenchMesh& mesh, float const (&corners)[4][3], float nx, float ny, float nz)
{
    unsigned int const base = mesh.vertexCount();
    for (auto const& corner : corners) {
        mesh.positions.insert(mesh.positions.end(), corner, corner + 3);
        mesh.normals.insert(mesh.normals.end(), {nx, ny, nz});
    }
    mesh.indices.insert(mesh.indices.end(), {base, base + 1, base + 2, base, base + 2, base + 3});
}

void addBox(CKVBenchMesh& mesh, float x0, float y0, float z0, float x1, float y1, float z1)
{
    addQuad(mesh, {{x0, y0, z0}, {x0, y1, z0}, {x1, y1, z0}, {x1, y0, z0}}, 0, 0, -1);
    addQuad(mesh, {{x0, y0, z1}, {x1, y0, z1}, {x1, y1, z1}, {x0, y1, z1}}, 0, 0, 1);
    addQuad(mesh, {{x0, y0, z0}, {x1, y0, z0}, {x1, y0, z1}, {x0, y0, z1}}, 0, -1, 0);
    addQuad(mesh, {{x1, y1, z0}, {x0, y1, z0}, {x0, y1, z1}, {x1, y1, z1}}, 0, 1, 0);
    addQuad(mesh, {{x0, y1, z0}, {x0, y0, z0}, {x0, y0, z1}, {x0, y1, z1}}, -1, 0, 0);
    addQuad(mesh, {{x1, y0, z0}, {x1, y1, z0}, {x1, y1, z1}, {x1, y0, z1}}, 1, 0, 0);
}

// An upright prism of `sides` faces about the z axis: a round column.
void addPrism(CKVBenchMesh& mesh, float radius, float height, int sides)
{
    float const step = 2.0f * 3.14159265f / sides;
    for (int i = 0; i < sides; ++i) {
        float const a0 = i * step, a1 = (i + 1) * step, mid = (i + 0.5f) * step;
        float const x0 = radius * std::cos(a0), y0 = radius * std::sin(a0);
        float const x1 = radius * std::cos(a1), y1 = radius * std::sin(a1);
        addQuad(mesh, {{x0, y0, 0}, {x1, y1, 0}, {x1, y1, height}, {x0, y0, height}}, std::cos(mid), std::sin(mid), 0);
    }
    for (int cap = 0; cap < 2; ++cap) {
        float const z = cap ? height : 0.0f;
        unsigned int const centre = mesh.vertexCount();
        mesh.positions.insert(mesh.positions.end(), {0, 0, z});
        mesh.normals.insert(mesh.normals.end(), {0, 0, cap ? 1.0f : -1.0f});
        for (int i = 0; i < sides; ++i) {
            mesh.positions.insert(mesh.positions.end(), {radius * std::cos(i * step), radius * std::sin(i * step), z});
            mesh.normals.insert(mesh.normals.end(), {0, 0, cap ? 1.0f : -1.0f});
        }
        for (int i = 0; i < sides; ++i) {
            unsigned int const a = centre + 1 + i, b = centre + 1 + (i + 1) % sides;
            if (cap)
                mesh.indices.insert(mesh.indices.end(), {centre, a, b});
            else
                mesh.indices.insert(mesh.indices.end(), {centre, b, a});
        }
    }
}

CKVBenchMesh makeMesh(CKVBenchMesh::Kind kind, unsigned int variant)
{
    CKVBenchMesh mesh;
    mesh.kind = kind;
    float const v = static_cast<float>(variant);
    switch (kind) {
    case CKVBenchMesh::kColumn:
        if (variant % 2 == 0) {
            float const half = 0.15f + 0.025f * v;
            addBox(mesh, -half, -half, 0, half, half, 3.0f);
            mesh.name = "column-square-" + std::to_string(variant);
        } else {
            addPrism(mesh, 0.18f + 0.02f * v, 3.0f, 8 + 2 * (variant % 3));
            mesh.name = "column-round-" + std::to_string(variant);
        }
        break;
    case CKVBenchMesh::kBeam: {
        float const halfWidth = 0.12f + 0.01f * v, depth = 0.4f + 0.05f * v;
        addBox(mesh, 0, -halfWidth, -depth, float(kBay), halfWidth, 0);
        mesh.name = "beam-" + std::to_string(variant);
        break;
    }
    case CKVBenchMesh::kSlab:
        addBox(mesh, 0, 0, -(0.18f + 0.02f * v), float(kBay), float(kBay), 0);
        mesh.name = "slab-" + std::to_string(variant);
        break;
    default: {
        // A frame of four bars around a thin pane, in the x-z plane.
        float const half = 0.6f + 0.08f * v, height = 1.4f + 0.05f * v, bar = 0.06f, depth = 0.08f;
        addBox(mesh, -half, -depth, 0, half, depth, bar);
        addBox(mesh, -half, -depth, height - bar, half, depth, height);
        addBox(mesh, -half, -depth, bar, -half + bar, depth, height - bar);
        addBox(mesh, half - bar, -depth, bar, half, depth, height - bar);
        addBox(mesh, -half + bar, -0.005f, bar, half - bar, 0.005f, height - bar);
        mesh.name = "window-" + std::to_string(variant);
        break;
    }
    }
    return mesh;
}

} // namespace

CKVBenchSceneGenerator::CKVBenchSceneGenerator(std::uint64_t seed, unsigned int uniqueMeshes) : mSeed(seed)
{
    buildMeshes(std::max(uniqueMeshes, unsigned(CKVBenchMesh::kKindCount)));
}

void CKVBenchSceneGenerator::buildMeshes(unsigned int uniqueMeshes)
{
    for (unsigned int i = 0; i < uniqueMeshes; ++i) {
        auto const kind = static_cast<CKVBenchMesh::Kind>(i % CKVBenchMesh::kKindCount);
        mByKind[kind].push_back(i);
        mMeshes.push_back(makeMesh(kind, i / CKVBenchMesh::kKindCount));
    }
}

std::vector<CKVBenchPlacement> CKVBenchSceneGenerator::placements(std::size_t count) const
{
    std::vector<CKVBenchPlacement> out;
    out.reserve(count);
    auto place = [&](SplitMix& random, CKVBenchMesh::Kind kind, double x, double y, double z, int turns) {
        if (out.size() >= count)
            return;
        std::vector<unsigned int> const& meshes = mByKind[kind];
        out.push_back({meshes[random.below(static_cast<unsigned int>(meshes.size()))], x, y, z, turns});
    };

    for (std::uint64_t building = 0; out.size() < count; ++building) {
        // Each building draws from its own stream, so a longer campus starts
        // with exactly the buildings of a shorter one.
        SplitMix random(mSeed * 0x100000001b3ull + building);
        unsigned int const nx = 4 + random.below(4), ny = 3 + random.below(3), storeys = 3 + random.below(6);
        // Plots fill a growing square shell by shell, so the campus stays
        // compact for the camera at every size.
        std::uint64_t const shell = static_cast<std::uint64_t>(std::sqrt(double(building)));
        std::uint64_t const inShell = building - shell * shell;
        double const ox = kPlot * double(inShell <= shell ? inShell : shell);
        double const oy = kPlot * double(inShell <= shell ? shell : 2 * shell - inShell);

        for (unsigned int s = 0; s < storeys && out.size() < count; ++s) {
            double const floor = s * kStorey;
            for (unsigned int j = 0; j <= ny; ++j)
                for (unsigned int i = 0; i <= nx; ++i)
                    place(random, CKVBenchMesh::kColumn, ox + i * kBay, oy + j * kBay, floor, 0);
            for (unsigned int j = 0; j <= ny; ++j)
                for (unsigned int i = 0; i < nx; ++i)
                    place(random, CKVBenchMesh::kBeam, ox + i * kBay, oy + j * kBay, floor + kStorey, 0);
            for (unsigned int i = 0; i <= nx; ++i)
                for (unsigned int j = 0; j < ny; ++j)
                    place(random, CKVBenchMesh::kBeam, ox + i * kBay, oy + j * kBay, floor + kStorey, 1);
            for (unsigned int j = 0; j < ny; ++j)
                for (unsigned int i = 0; i < nx; ++i)
                    place(random, CKVBenchMesh::kSlab, ox + i * kBay, oy + j * kBay, floor + kStorey, 0);
            double const sill = floor + 0.9;
            for (unsigned int i = 0; i < nx; ++i) {
                for (double at : {1.5, 4.5}) {
                    place(random, CKVBenchMesh::kWindow, ox + i * kBay + at, oy, sill, 0);
                    place(random, CKVBenchMesh::kWindow, ox + i * kBay + at, oy + ny * kBay, sill, 2);
                }
            }
            for (unsigned int j = 0; j < ny; ++j) {
                for (double at : {1.5, 4.5}) {
                    place(random, CKVBenchMesh::kWindow, ox, oy + j * kBay + at, sill, 3);
                    place(random, CKVBenchMesh::kWindow, ox + nx * kBay, oy + j * kBay + at, sill, 1);
                }
            }
        }
    }
    return out;
}

void CKVBenchSceneGenerator::campusBounds(std::vector<CKVBenchPlacement> const& placements, double centre[3],
                                          double& radius)
{
    double lo[3] = {0, 0, 0}, hi[3] = {0, 0, 0};
    for (std::size_t i = 0; i < placements.size(); ++i) {
        double const p[3] = {placements[i].x, placements[i].y, placements[i].z};
        for (int a = 0; a < 3; ++a) {
            lo[a] = i ? std::min(lo[a], p[a]) : p[a];
            hi[a] = i ? std::max(hi[a], p[a]) : p[a];
        }
    }
    // The last row of elements reaches one bay and one storey further.
    hi[0] += kBay;
    hi[1] += kBay;
    hi[2] += kStorey;
    double squared = 0.0;
    for (int a = 0; a < 3; ++a) {
        centre[a] = 0.5 * (lo[a] + hi[a]);
        squared += 0.25 * (hi[a] - lo[a]) * (hi[a] - lo[a]);
    }
    radius = std::sqrt(squared);
}

} // namespace Kelvor
