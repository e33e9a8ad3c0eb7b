#pragma once

#include "bench/CKVBenchMesh.h"

#include <vector>

namespace Kelvor {

// The occlusion scene: the campus closed in a shell of four walls and a
// roof, a little larger than everything the placements can reach, each wall
// and the roof a grid of panels (a building's facade elements). Seen from
// outside, the shell hides every element of the campus, so that the
// instances truly visible are panels and all others are hidden: the case
// depth-chain culling is for.
class CKVBenchOcclusionShell
{
public:
    // Clear space between the outermost insertion points and the shell: an
    // element reaches at most one bay (6 m) and one storey beyond its point.
    static constexpr double kMargin = 8.0;
    static constexpr float kThickness = 0.3f;
    // Panels along a wall and up it; the roof has kPanelsAlong squared.
    static constexpr int kPanelsAlong = 16;
    static constexpr int kPanelsUp = 4;

    // Appends the shell's three panel meshes (long wall, short wall, roof)
    // and the panels' placements; `low` and `high` receive the shell's
    // outer corners.
    static void enclose(std::vector<CKVBenchMesh>& meshes, std::vector<CKVBenchPlacement>& placements,
                        double low[3] = nullptr, double high[3] = nullptr);

    // A closed box from (0, 0, 0) to (sx, sy, sz), flat-shaded.
    static CKVBenchMesh box(char const* name, float sx, float sy, float sz);
};

} // namespace Kelvor
