#pragma once

#include "bench/CKVBenchMesh.h"

#include <cstdint>
#include <vector>

namespace Kelvor {

// Builds the benchmark model: a campus of framed buildings (columns on a bay
// grid, beams between them, a slab per bay, windows along the facades),
// storey after storey and building after building until the requested
// number of objects stands. Everything comes from one seed through integer
// arithmetic of our own, so that every machine and both scene graphs get the
// same model.
class CKVBenchSceneGenerator
{
public:
    explicit CKVBenchSceneGenerator(std::uint64_t seed = 1, unsigned int uniqueMeshes = 32);

    // The unique shapes, `uniqueMeshes` of them, spread over the four kinds.
    std::vector<CKVBenchMesh> const& meshes() const { return mMeshes; }

    // Exactly `count` placements; the first n of a longer run are the same as
    // those of a run of n.
    std::vector<CKVBenchPlacement> placements(std::size_t count) const;

    // Half the diagonal of the campus that `count` placements cover, and its
    // centre: what the camera path circles.
    static void campusBounds(std::vector<CKVBenchPlacement> const& placements, double centre[3], double& radius);

private:
    void buildMeshes(unsigned int uniqueMeshes);
    std::vector<unsigned int> mByKind[CKVBenchMesh::kKindCount];
    std::vector<CKVBenchMesh> mMeshes;
    std::uint64_t mSeed;
};

} // namespace Kelvor
