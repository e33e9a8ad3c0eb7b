#include "bench/CKVBenchRunner.h"

#include "bench/CKVBenchIdRender.h"
#include "bench/CKVBenchOcclusionShell.h"
#include "bench/CKVBenchOptions.h"
#include "bench/CKVCulledInstanceCounter.h"
#include "bench/CKVBenchReport.h"
#include "bench/CKVBenchSceneGenerator.h"
#include "bench/CKVCameraPath.h"
#include "bench/CKVDrawCallCounter.h"
#include "bench/CKVFrameStatistics.h"
#include "bench/CKVHostSceneBench.h"
#include "bench/CKVProcessMemory.h"
#include "bench/CKVSceneBench.h"

#include "binding/CKVRenderContextX11Imp.h"

#include "TarnwickRender/CKVCamera.h"
#include "TarnwickRender/CKVRCApplyCamera.h"
#include "TarnwickRender/CKVRenderCommandCache.h"

#include <osg/Matrixd>
#include <valgrind/callgrind.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

namespace Kelvor {

namespace {

using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

struct Scene
{
    std::vector<CKVBenchMesh> meshes;
    std::vector<CKVBenchPlacement> placements;
    double centre[3] = {0, 0, 0};
    double radius = 1.0;
    // Where an eye-level walk goes round (occlusion scene); 0 for the orbit
    // from above.
    double eyeLevelDistance = 0.0;
    double eyeZ = 0.0;
};

// Between the occlusion scene's walk and the shell's corners, so that the
// facade in front fills much of the view.
constexpr double kStandOff = 60.0;
constexpr double kEyeHeight = 1.7;
// The culling pass's small-feature threshold.
constexpr double kSmallFeaturePixels = 2.0;

Scene makeScene(CKVBenchOptions const& options)
{
    CKVBenchSceneGenerator generator(options.seed, options.meshes);
    Scene scene;
    scene.meshes = generator.meshes();
    scene.placements = generator.placements(options.objects);
    CKVBenchSceneGenerator::campusBounds(scene.placements, scene.centre, scene.radius);
    if (options.scene == "occlusion") {
        double low[3], high[3];
        CKVBenchOcclusionShell::enclose(scene.meshes, scene.placements, low, high);
        double corner = 0.0;
        for (double x : {low[0], high[0]})
            for (double y : {low[1], high[1]})
                corner = std::max(corner, std::hypot(x - scene.centre[0], y - scene.centre[1]));
        scene.eyeLevelDistance = corner + kStandOff;
        scene.eyeZ = low[2] + kEyeHeight;
    }
    return scene;
}

CKVCameraPath makePath(Scene const& scene, unsigned int framesPerTurn)
{
    CKVCameraPath path(scene.centre, scene.radius, framesPerTurn);
    if (scene.eyeLevelDistance > 0.0)
        path.setEyeLevel(scene.eyeLevelDistance, scene.eyeZ);
    return path;
}

void aimCamera(CKVSceneBench& bench, CKVCameraPath const& path, unsigned int frame, CKVBenchOptions const& options)
{
    double eye[3], target[3];
    path.eyeAt(frame, eye);
    path.target(target);
    bench.setCamera(eye, target, CKVCameraPath::kFieldOfViewDegrees, double(options.width) / options.height,
                    path.nearPlane(), path.farPlane());
}

// Opens, builds and draws the first frame; the common start of every run.
bool prepare(CKVSceneBench& bench, CKVBenchOptions const& options, Scene const& scene, CKVCameraPath const& path,
             CKVBenchReport& report)
{
    double const rssBefore = double(CKVProcessMemory::residentBytes());
    if (!bench.open(options.width, options.height))
        return false;
    double const rssOpen = double(CKVProcessMemory::residentBytes());
    auto const buildStart = Clock::now();
    if (!bench.build(scene.meshes, scene.placements))
        return false;
    report.set("build_ms", millisecondsSince(buildStart));
    aimCamera(bench, path, 0, options);
    auto const firstStart = Clock::now();
    if (!bench.frame())
        return false;
    report.set("first_frame_ms", millisecondsSince(firstStart));
    report.set("rss_open_bytes", rssOpen - rssBefore);
    report.set("rss_base_bytes", rssOpen);
    return true;
}

} // namespace

bool CKVBenchRunner::runScene(CKVSceneBench& bench, CKVBenchOptions const& options, CKVBenchReport& report)
{
    Scene const scene = makeScene(options);
    report.set("path", options.path);
    report.set("objects", double(scene.placements.size()));
    report.set("unique_meshes", double(scene.meshes.size()));
    double triangles = 0.0;
    for (CKVBenchPlacement const& placement : scene.placements)
        triangles += scene.meshes[placement.mesh].triangleCount();
    report.set("triangles", triangles);

    CKVCameraPath const path = makePath(scene, options.turnFrames ? options.turnFrames : options.frames ? options.frames : 100);
    if (!prepare(bench, options, scene, path, report))
        return false;
    for (unsigned int i = 0; i < options.warmup; ++i) {
        aimCamera(bench, path, i, options);
        bench.frame();
    }

    if (options.callgrind) {
        aimCamera(bench, path, options.warmup, options);
        CKVDrawCallCounter::Counts const before = CKVDrawCallCounter::counts();
        CALLGRIND_START_INSTRUMENTATION;
        bench.frame();
        CALLGRIND_STOP_INSTRUMENTATION;
        report.set("draw_calls", double(CKVDrawCallCounter::since(before).calls));
        report.set("callgrind_frame", 1.0);
    }

    CKVFrameStatistics statistics;
    unsigned int const measured = options.callgrind ? 0u : options.frames;
    for (unsigned int i = 0; i < measured; ++i) {
        aimCamera(bench, path, i, options);
        CKVDrawCallCounter::Counts const before = CKVDrawCallCounter::counts();
        auto const start = Clock::now();
        bench.frame();
        statistics.add("frame_ms", millisecondsSince(start));
        CKVDrawCallCounter::Counts const draws = CKVDrawCallCounter::since(before);
        statistics.add("draw_calls", double(draws.calls));
        statistics.add("multi_draws", double(draws.multiDraws));
        statistics.add("sub_draws", double(draws.subDraws));
        CKVSceneBench::TraversalTimes const times = bench.lastFrameTimes();
        if (times.update >= 0)
            statistics.add("update_ms", times.update);
        if (times.cull >= 0)
            statistics.add("cull_ms", times.cull);
        if (times.draw >= 0)
            statistics.add("draw_ms", times.draw);
        if (times.rendering >= 0)
            statistics.add("rendering_ms", times.rendering);
        if (times.update >= 0 && times.cull >= 0 && times.draw >= 0)
            statistics.add("cpu_ms", times.update + times.cull + times.draw);
    }
    report.set("frames", double(measured));
    auto const* host = dynamic_cast<CKVHostSceneBench const*>(&bench);
    if (host)
        report.set("instances_drawn", CKVCulledInstanceCounter::count(*host->context(), host->geometries()));
    bool const countVisible = options.countVisible && host;
    if (countVisible) {
        // The path turns fast (a turn in `frames`), and the pre-pass draws
        // last frame's survivors; a second frame from the same place shows
        // what culling leaves for a camera that stands or moves slowly.
        aimCamera(bench, path, measured ? measured - 1 : 0, options);
        bench.frame();
        report.set("instances_drawn_still", CKVCulledInstanceCounter::count(*host->context(), host->geometries()));
    }
    for (std::string const& name : statistics.seriesNames())
        report.set(name, statistics.median(name));
    if (measured) {
        report.set("frame_ms_p90", statistics.percentile("frame_ms", 90.0));
        report.set("cpu_ms_p90", statistics.percentile("cpu_ms", 90.0));
    }
    report.set("rss_bytes", double(CKVProcessMemory::residentBytes()));
    report.set("rss_peak_bytes", double(CKVProcessMemory::peakResidentBytes()));
    bench.reportMemory(report);
    bench.close();
    if (countVisible) {
        // The camera of the last measured frame, whose culling the drawn
        // count holds.
        CKVBenchIdRender::Camera camera;
        path.eyeAt(measured ? measured - 1 : 0, camera.eye);
        path.target(camera.target);
        camera.fovDegrees = CKVCameraPath::kFieldOfViewDegrees;
        camera.zNear = path.nearPlane();
        camera.zFar = path.farPlane();
        std::vector<bool> const visible =
            CKVBenchIdRender::visiblePlacements(scene.meshes, scene.placements, camera, options.width, options.height);
        report.set("instances_visible", visible.empty() ? -1.0 : double(std::count(visible.begin(), visible.end(), true)));
        // Those the small-feature test may not remove.
        std::vector<bool> const large = CKVBenchIdRender::largerThan(scene.meshes, scene.placements, camera, options.width,
                                                                     options.height, kSmallFeaturePixels);
        double visibleLarge = 0.0;
        for (std::size_t i = 0; i < visible.size(); ++i)
            visibleLarge += visible[i] && large[i];
        report.set("instances_visible_over_2px", visible.empty() ? -1.0 : visibleLarge);
    }
    return true;
}

bool CKVBenchRunner::runCommands(CKVHostSceneBench& bench, CKVBenchOptions const& options, CKVBenchReport& report)
{
    Scene const scene = makeScene(options);
    CKVCameraPath const path = makePath(scene, 100);
    report.set("path", options.path);
    report.set("objects", double(scene.placements.size()));
    if (!prepare(bench, options, scene, path, report))
        return false;
    CKVRenderCommandCache* cache = bench.context()->getRenderCommandCache();
    CKVRenderContextX11Imp* context = bench.context();

    auto cameraCommand = [&](unsigned int frame) {
        double eye[3], target[3];
        path.eyeAt(frame, eye);
        path.target(target);
        CKVCamera camera;
        camera.setFieldOfView(CKVCameraPath::kFieldOfViewDegrees);
        camera.setAspect(double(options.width) / options.height);
        camera.setNearFar(path.nearPlane(), path.farPlane());
        camera.setLookAt(CKVPoint3D(eye[0], eye[1], eye[2]), CKVPoint3D(target[0], target[1], target[2]),
                         CKVVector3D(0, 0, 1));
        return kv_shared_ptr<CKVRenderCommand>(new CKVRCApplyCamera(camera));
    };

    // Throughput of the drain: ticks with a large batch of camera commands
    // against ticks with none; the difference is the drain alone.
    unsigned int const batch = 20000;
    CKVFrameStatistics statistics;
    unsigned int tickMs = 100000;
    for (unsigned int round = 0; round < 7; ++round) {
        auto start = Clock::now();
        context->onTick(tickMs += 20);
        statistics.add("empty_tick_ms", millisecondsSince(start));
        std::vector<kv_shared_ptr<CKVRenderCommand>> commands;
        commands.reserve(batch);
        for (unsigned int i = 0; i < batch; ++i)
            commands.push_back(cameraCommand(i));
        start = Clock::now();
        for (auto const& command : commands)
            cache->write(command.get());
        cache->finish();
        statistics.add("write_ms", millisecondsSince(start));
        start = Clock::now();
        context->onTick(tickMs += 20);
        statistics.add("full_tick_ms", millisecondsSince(start));
    }
    double const drainMs = statistics.median("full_tick_ms") - statistics.median("empty_tick_ms");
    report.set("batch", double(batch));
    report.set("empty_tick_ms", statistics.median("empty_tick_ms"));
    report.set("full_tick_ms", statistics.median("full_tick_ms"));
    report.set("write_per_second", batch / (statistics.median("write_ms") / 1000.0));
    report.set("drain_per_second", drainMs > 0 ? batch / (drainMs / 1000.0) : 0.0);

    // Round trip of submitAndWait as a host sees it, with the context's own
    // 20 ms timer running: the wait for the next tick, the drain and the
    // signal.
    bench.startTimer();
    for (unsigned int i = 0; i < 200; ++i) {
        kv_shared_ptr<CKVRenderCommand> command = cameraCommand(i);
        auto const start = Clock::now();
        bool const done = cache->submitAndWait(command.get(), 10000);
        if (done)
            statistics.add("round_trip_ms", millisecondsSince(start));
    }
    bench.stopTimer();
    report.set("round_trips", double(statistics.count("round_trip_ms")));
    report.set("round_trip_ms", statistics.median("round_trip_ms"));
    report.set("round_trip_ms_p95", statistics.percentile("round_trip_ms", 95.0));
    report.set("round_trip_ms_max", statistics.percentile("round_trip_ms", 100.0));
    bench.close();
    return true;
}

namespace {

// The fixed list of queries: window points over placements drawn by a
// small generator of our own (the point where a placement's origin lands on
// the first camera of the path), and rectangles of a fixed size centred on
// others, so that every way and every run asks the same and most queries
// meet the model.
struct PickQueries
{
    // The rectangles' share of the window's width and height.
    static constexpr double kRectangleShare = 0.04;

    std::vector<double> points; // x, y (from the top)
    std::vector<double> rectangles; // x1, y1, x2, y2

    PickQueries(Scene const& scene, CKVCameraPath const& path, CKVBenchOptions const& options)
    {
        double eye[3], target[3];
        path.eyeAt(0, eye);
        path.target(target);
        osg::Matrixd const toWindow =
            osg::Matrixd::lookAt(osg::Vec3d(eye[0], eye[1], eye[2]), osg::Vec3d(target[0], target[1], target[2]),
                                 osg::Vec3d(0, 0, 1)) *
            osg::Matrixd::perspective(CKVCameraPath::kFieldOfViewDegrees, double(options.width) / options.height,
                                      path.nearPlane(), path.farPlane()) *
            osg::Matrixd::translate(1.0, 1.0, 1.0) *
            osg::Matrixd::scale(0.5 * options.width, 0.5 * options.height, 0.5);
        std::uint64_t state = options.seed * 6364136223846793005ull + 1442695040888963407ull;
        auto windowPointOfSomePlacement = [&](double& x, double& y) {
            state = state * 6364136223846793005ull + 1442695040888963407ull;
            CKVBenchPlacement const& placement = scene.placements[(state >> 33) % scene.placements.size()];
            osg::Vec3d const window = osg::Vec3d(placement.x, placement.y, placement.z) * toWindow;
            x = window.x();
            y = options.height - window.y();
        };
        double const w = kRectangleShare * options.width, h = kRectangleShare * options.height;
        for (unsigned int i = 0; i < options.picks; ++i) {
            double x, y;
            windowPointOfSomePlacement(x, y);
            points.push_back(x);
            points.push_back(y);
            windowPointOfSomePlacement(x, y);
            double const corners[] = {x - w / 2, y - h / 2, x + w / 2, y + h / 2};
            rectangles.insert(rectangles.end(), corners, corners + 4);
        }
    }
};

std::vector<long long> sortedPlacements(std::vector<long long> placements)
{
    std::sort(placements.begin(), placements.end());
    placements.erase(std::unique(placements.begin(), placements.end()), placements.end());
    return placements;
}

} // namespace

bool CKVBenchRunner::runPicks(CKVSceneBench& bench, CKVBenchOptions const& options, CKVBenchReport& report)
{
    Scene const scene = makeScene(options);
    CKVCameraPath const path = makePath(scene, 100);
    report.set("path", options.path);
    report.set("objects", double(scene.placements.size()));
    if (!prepare(bench, options, scene, path, report))
        return false;
    PickQueries const queries(scene, path, options);

    // The first query also waits for whatever index is still being built.
    auto start = Clock::now();
    long long const firstPick = bench.pickPlacement(queries.points[0], queries.points[1]);
    report.set("first_pick_ms", millisecondsSince(start));
    bench.reportPickIndex(report);

    CKVFrameStatistics statistics;
    std::vector<long long> picked, placements;
    std::vector<std::vector<long long>> selected;
    for (unsigned int i = 0; i < options.picks; ++i) {
        start = Clock::now();
        picked.push_back(bench.pickPlacement(queries.points[2 * i], queries.points[2 * i + 1]));
        statistics.add("pick_ms", millisecondsSince(start));
        statistics.add("pick_hits", picked.back() >= 0 ? 1.0 : 0.0);
    }
    for (unsigned int i = 0; i < options.picks; ++i) {
        double const* r = &queries.rectangles[4 * i];
        start = Clock::now();
        bench.selectPlacements(r[0], r[1], r[2], r[3], placements);
        statistics.add("select_ms", millisecondsSince(start));
        selected.push_back(sortedPlacements(placements));
        statistics.add("select_count", double(selected.back().size()));
    }

    // The same queries again, every instance tried: the answers must agree.
    unsigned int const verify = std::min(options.verify, options.picks);
    unsigned int mismatches = firstPick == (picked.empty() ? -1 : picked[0]) ? 0u : 1u;
    bench.setExhaustivePicking(true);
    for (unsigned int i = 0; i < verify; ++i) {
        start = Clock::now();
        long long const reference = bench.pickPlacement(queries.points[2 * i], queries.points[2 * i + 1]);
        statistics.add("exhaustive_pick_ms", millisecondsSince(start));
        mismatches += reference != picked[i] ? 1u : 0u;
        double const* r = &queries.rectangles[4 * i];
        start = Clock::now();
        bench.selectPlacements(r[0], r[1], r[2], r[3], placements);
        statistics.add("exhaustive_select_ms", millisecondsSince(start));
        mismatches += sortedPlacements(placements) != selected[i] ? 1u : 0u;
    }
    bench.setExhaustivePicking(false);

    report.set("picks", double(options.picks));
    report.set("pick_ms", statistics.median("pick_ms"));
    report.set("pick_ms_p95", statistics.percentile("pick_ms", 95.0));
    report.set("pick_hit_share", statistics.mean("pick_hits"));
    report.set("select_ms", statistics.median("select_ms"));
    report.set("select_ms_p95", statistics.percentile("select_ms", 95.0));
    report.set("select_count", statistics.median("select_count"));
    report.set("select_count_max", statistics.percentile("select_count", 100.0));
    report.set("verified", double(verify));
    report.set("verify_mismatches", double(mismatches));
    if (verify) {
        report.set("exhaustive_pick_ms", statistics.median("exhaustive_pick_ms"));
        report.set("exhaustive_select_ms", statistics.median("exhaustive_select_ms"));
    }
    // The answers themselves, so that two ways can be compared afterwards.
    std::string answers;
    for (long long p : picked)
        answers += std::to_string(p) + ",";
    report.set("pick_answers", answers);
    std::string counts;
    for (auto const& s : selected)
        counts += std::to_string(s.size()) + ",";
    report.set("select_answers", counts);
    bench.close();
    return true;
}

} // namespace Kelvor
