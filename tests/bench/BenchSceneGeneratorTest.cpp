#include "bench/CKVBenchOcclusionShell.h"
#include "bench/CKVBenchSceneGenerator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <tuple>

using namespace Kelvor;

namespace {

auto key(CKVBenchPlacement const& p)
{
    return std::make_tuple(p.mesh, p.x, p.y, p.z, p.quarterTurns);
}

bool samePlacements(std::vector<CKVBenchPlacement> const& a, std::vector<CKVBenchPlacement> const& b,
                    std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        if (key(a[i]) != key(b[i]))
            return false;
    return true;
}

} // namespace

TEST(BenchSceneGeneratorTest, GivesExactlyTheRequestedObjectsTheSameEveryTime)
{
    CKVBenchSceneGenerator const generator(7, 32);
    for (std::size_t count : {std::size_t(0), std::size_t(1), std::size_t(999), std::size_t(12345)})
        EXPECT_EQ(generator.placements(count).size(), count);

    // Same seed, a second generator: the same model. The comparison to
    // both sizes also shows that a shorter campus is the start of a longer one.
    std::vector<CKVBenchPlacement> const longer = generator.placements(5000);
    std::vector<CKVBenchPlacement> const again = CKVBenchSceneGenerator(7, 32).placements(5000);
    std::vector<CKVBenchPlacement> const shorter = generator.placements(1234);
    EXPECT_TRUE(samePlacements(longer, again, longer.size()));
    EXPECT_TRUE(samePlacements(longer, shorter, shorter.size()));

    std::vector<CKVBenchPlacement> const otherSeed = CKVBenchSceneGenerator(8, 32).placements(5000);
    EXPECT_FALSE(samePlacements(longer, otherSeed, longer.size()));
}

TEST(BenchSceneGeneratorTest, UsesEveryUniqueMeshAndNoOther)
{
    for (unsigned int unique : {4u, 32u, 48u}) {
        CKVBenchSceneGenerator const generator(1, unique);
        ASSERT_EQ(generator.meshes().size(), unique);
        std::set<unsigned int> used;
        for (CKVBenchPlacement const& placement : generator.placements(10000)) {
            ASSERT_LT(placement.mesh, unique);
            used.insert(placement.mesh);
        }
        EXPECT_EQ(used.size(), unique) << unique << " meshes asked for";
    }
}

TEST(BenchSceneGeneratorTest, MeshesAreWellFormedAndOfAllFourKinds)
{
    CKVBenchSceneGenerator const generator(1, 32);
    std::set<int> kinds;
    std::set<std::string> names;
    for (CKVBenchMesh const& mesh : generator.meshes()) {
        kinds.insert(mesh.kind);
        names.insert(mesh.name);
        ASSERT_EQ(mesh.positions.size(), mesh.normals.size()) << mesh.name;
        ASSERT_GT(mesh.triangleCount(), 0u) << mesh.name;
        ASSERT_EQ(mesh.indices.size() % 3, 0u) << mesh.name;
        for (unsigned int index : mesh.indices)
            ASSERT_LT(index, mesh.vertexCount()) << mesh.name;
        for (std::size_t v = 0; v < mesh.normals.size(); v += 3) {
            double const length = std::sqrt(mesh.normals[v] * mesh.normals[v] +
                                            mesh.normals[v + 1] * mesh.normals[v + 1] +
                                            mesh.normals[v + 2] * mesh.normals[v + 2]);
            ASSERT_NEAR(length, 1.0, 1e-4) << mesh.name;
        }
    }
    EXPECT_EQ(kinds.size(), 4u);
    EXPECT_EQ(names.size(), generator.meshes().size()) << "each unique mesh has its own name";
}

TEST(BenchSceneGeneratorTest, NoTwoObjectsShareAPlacementAndTheCameraSeesThemAll)
{
    CKVBenchSceneGenerator const generator(3, 32);
    std::vector<CKVBenchPlacement> const placements = generator.placements(20000);
    std::set<decltype(key(placements[0]))> distinct;
    for (CKVBenchPlacement const& placement : placements)
        distinct.insert(key(placement));
    EXPECT_EQ(distinct.size(), placements.size());

    double centre[3], radius = 0.0;
    CKVBenchSceneGenerator::campusBounds(placements, centre, radius);
    for (CKVBenchPlacement const& p : placements) {
        double const d = std::sqrt((p.x - centre[0]) * (p.x - centre[0]) + (p.y - centre[1]) * (p.y - centre[1]) +
                                   (p.z - centre[2]) * (p.z - centre[2]));
        ASSERT_LE(d, radius);
    }
}

// The occlusion scene hides the campus only if its panels close every wall
// and the roof with no gap and every element stays inside.
TEST(BenchSceneGeneratorTest, OcclusionShellPanelsCloseTheWallsAroundTheWholeCampus)
{
    std::vector<CKVBenchMesh> meshes = CKVBenchSceneGenerator(3, 32).meshes();
    std::vector<CKVBenchPlacement> placements = CKVBenchSceneGenerator(3, 32).placements(4000);
    std::size_t const campusMeshes = meshes.size(), campus = placements.size();
    double low[3], high[3];
    CKVBenchOcclusionShell::enclose(meshes, placements, low, high);
    double const t = CKVBenchOcclusionShell::kThickness;
    for (std::size_t i = 0; i < campus; ++i) {
        CKVBenchPlacement const& p = placements[i];
        CKVBenchMesh const& mesh = meshes[p.mesh];
        for (unsigned int v = 0; v < mesh.vertexCount(); ++v) {
            // A quarter turn about z keeps the reach within the larger of x and y.
            double const reach = std::max(std::abs(mesh.positions[3 * v]), std::abs(mesh.positions[3 * v + 1]));
            ASSERT_TRUE(p.x - reach > low[0] + t && p.x + reach < high[0] - t && p.y - reach > low[1] + t &&
                        p.y + reach < high[1] - t && p.z + mesh.positions[3 * v + 2] < high[2] - t);
        }
    }

    // The panels of each face (long walls, short walls, roof) add up to it.
    double area[3] = {0, 0, 0};
    int const spans[3][2] = {{0, 2}, {1, 2}, {0, 1}};
    for (std::size_t i = campus; i < placements.size(); ++i) {
        unsigned int const face = placements[i].mesh - unsigned(campusMeshes);
        CKVBenchMesh const& mesh = meshes[placements[i].mesh];
        double size[3] = {0, 0, 0};
        for (unsigned int v = 0; v < mesh.vertexCount(); ++v)
            for (int a = 0; a < 3; ++a)
                size[a] = std::max(size[a], double(mesh.positions[3 * v + a]));
        area[face] += size[spans[face][0]] * size[spans[face][1]];
    }
    double const inner[3] = {high[0] - low[0] - 2 * t, high[1] - low[1] - 2 * t, high[2] - low[2] - t};
    EXPECT_NEAR(area[0], 2 * inner[0] * inner[2], 1e-3 * area[0]);
    EXPECT_NEAR(area[1], 2 * inner[1] * inner[2], 1e-3 * area[1]);
    EXPECT_NEAR(area[2], inner[0] * inner[1], 1e-3 * area[2]);
}
