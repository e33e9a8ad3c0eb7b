#pragma once

#include "bench/CKVBenchMesh.h"

#include <cstddef>
#include <vector>

namespace Kelvor {

// Which placements have at least one pixel on screen: every placement is
// drawn once with its index as a flat colour (index + 1 packed into RGBA8, 0
// for the background), depth test on, no effects and no multisampling, at
// the benchmark's resolution with the benchmark's camera, and the distinct
// colours of the read-back picture are counted. The reference against which
// the instances that culling leaves are judged.
class CKVBenchIdRender
{
public:
    struct Camera
    {
        double eye[3];
        double target[3];
        double fovDegrees;
        double zNear;
        double zFar;
    };

    // One flag per placement; empty if no context could be made.
    static std::vector<bool> visiblePlacements(std::vector<CKVBenchMesh> const& meshes,
                                               std::vector<CKVBenchPlacement> const& placements, Camera const& camera,
                                               int width, int height);

    // The placements whose box spans more than `pixels` on either screen
    // axis (or reaches behind the eye): those that culling's small-feature
    // test keeps.
    static std::vector<bool> largerThan(std::vector<CKVBenchMesh> const& meshes,
                                        std::vector<CKVBenchPlacement> const& placements, Camera const& camera,
                                        int width, int height, double pixels);

    // The placements whose id a picture of packed ids holds (RGBA8, row
    // after row).
    static std::vector<bool> idsInPicture(unsigned char const* rgba, std::size_t pixels, std::size_t placementCount);
};

} // namespace Kelvor
