#include "bench/CKVBenchOptions.h"
#include "bench/CKVBenchReport.h"
#include "bench/CKVCameraPath.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <vector>

using namespace Kelvor;

namespace {

bool parse(std::vector<char const*> arguments, CKVBenchOptions& options, std::string& error)
{
    arguments.insert(arguments.begin(), "tarnwick_bench");
    return options.parse(static_cast<int>(arguments.size()), const_cast<char**>(arguments.data()), error);
}

} // namespace

TEST(BenchOptionsTest, ReadsEveryOptionAndRefusesWhatItDoesNotKnow)
{
    CKVBenchOptions options;
    std::string error;
    ASSERT_TRUE(parse({"--path=stock", "--objects=100000", "--frames=7", "--width=64", "--height=36", "--shadows=2",
                       "--ssao=3", "--callgrind", "--culling=1", "--scene=occlusion", "--visible=1", "--turn=400"},
                      options, error))
        << error;
    EXPECT_EQ(options.path, "stock");
    EXPECT_EQ(options.objects, 100000u);
    EXPECT_EQ(options.frames, 7u);
    EXPECT_EQ(options.width, 64);
    EXPECT_EQ(options.shadows, 2);
    EXPECT_EQ(options.ssao, 3);
    EXPECT_TRUE(options.callgrind);
    EXPECT_EQ(options.culling, 1);
    EXPECT_EQ(options.scene, "occlusion");
    EXPECT_TRUE(options.countVisible);
    EXPECT_EQ(options.turnFrames, 400u);

    for (std::vector<char const*> bad : {std::vector<char const*>{"--path=gpu"}, {"--objects=12k"}, {"--objects="},
                                         {"--frame=3"}, {"objects=3"}, {"--width=0"}, {"--shadows=4"}, {"--ssao=4"},
                                         {"--culling=3"}, {"--scene=city"}, {"--visible=2"}}) {
        CKVBenchOptions refused;
        EXPECT_FALSE(parse(bad, refused, error)) << bad[0];
        EXPECT_FALSE(error.empty());
    }
}

TEST(BenchOptionsTest, ReportKeepsOrderAndReplacesRepeatedKeys)
{
    CKVBenchReport report;
    report.set("path", "host");
    report.set("frame_ms", 12.5);
    report.set("path", "stock");
    report.set("draw_calls", 1000000.0);
    std::ostringstream out;
    report.write(out);
    EXPECT_EQ(out.str(), "path=stock\nframe_ms=12.5\ndraw_calls=1e+06\n");
}

TEST(BenchOptionsTest, CameraPathCirclesTheCentreAtOneDistance)
{
    double const centre[3] = {100.0, 50.0, 10.0};
    CKVCameraPath const path(centre, 40.0, 100);
    double first[3], half[3], again[3];
    path.eyeAt(0, first);
    path.eyeAt(50, half);
    path.eyeAt(100, again);
    for (int a = 0; a < 3; ++a)
        EXPECT_NEAR(first[a], again[a], 1e-9) << "a full turn comes back";
    EXPECT_NEAR(first[0] - centre[0], -(half[0] - centre[0]), 1e-9) << "half a turn is the opposite side";
    auto distance = [&](double const* eye) {
        return std::sqrt((eye[0] - centre[0]) * (eye[0] - centre[0]) + (eye[1] - centre[1]) * (eye[1] - centre[1]) +
                         (eye[2] - centre[2]) * (eye[2] - centre[2]));
    };
    EXPECT_NEAR(distance(first), distance(half), 1e-6);
    EXPECT_GT(first[2], centre[2]);
    // The whole campus lies between the clipping planes.
    EXPECT_LT(path.nearPlane(), distance(first) - 40.0);
    EXPECT_GT(path.farPlane(), distance(first) + 40.0);
}
