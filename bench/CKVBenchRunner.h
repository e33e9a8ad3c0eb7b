#pragma once

namespace Kelvor {

class CKVBenchReport;
class CKVHostSceneBench;
class CKVSceneBench;
struct CKVBenchOptions;

// The measuring procedure, the same for every way of drawing the model:
// build, first frame, warm-up, then the measured frames along the camera
// path, each timed from the outside and read from the viewer's statistics.
class CKVBenchRunner
{
public:
    static bool runScene(CKVSceneBench& bench, CKVBenchOptions const& options, CKVBenchReport& report);
    // Command throughput of the drain and round trip of a synchronous
    // command, on a host scene that `runScene`-style building has set up.
    static bool runCommands(CKVHostSceneBench& bench, CKVBenchOptions const& options, CKVBenchReport& report);
    // Point picks and rectangle selections along a fixed list of window
    // points and rectangles, from the first camera of the path.
    static bool runPicks(CKVSceneBench& bench, CKVBenchOptions const& options, CKVBenchReport& report);
};

} // namespace Kelvor
