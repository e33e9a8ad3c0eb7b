// The performance benchmark: one way of drawing the benchmark model per
// run, figures as key=value lines on stdout. scripts/bench runs it over
// every size and both scene graphs and writes docs/BENCHMARKS.md.
#include "bench/CKVBenchOptions.h"
#include "bench/CKVBenchReport.h"
#include "bench/CKVBenchRunner.h"
#include "bench/CKVHostSceneBench.h"
#include "bench/CKVStockSceneBench.h"

#include <iostream>
#include <memory>

using namespace Kelvor;

int main(int argc, char** argv)
{
    CKVBenchOptions options;
    std::string error;
    if (!options.parse(argc, argv, error)) {
        std::cerr << error << '\n';
        return 2;
    }
    CKVBenchReport report;
    bool ok = false;
    if (options.path == "commands") {
        CKVHostSceneBench bench;
        ok = CKVBenchRunner::runCommands(bench, options, report);
    } else if (options.path == "pick-host") {
        CKVHostSceneBench bench;
        bench.setPickable(true);
        ok = CKVBenchRunner::runPicks(bench, options, report);
    } else if (options.path == "pick-stock") {
        CKVStockSceneBench bench;
        bench.setPickable(true);
        ok = CKVBenchRunner::runPicks(bench, options, report);
    } else if (options.path == "host") {
        CKVHostSceneBench bench;
        bench.setShadowLevel(options.shadows);
        bench.setSSAOLevel(options.ssao);
        bench.setCulling(options.culling);
        ok = CKVBenchRunner::runScene(bench, options, report);
    } else {
        CKVStockSceneBench bench;
        ok = CKVBenchRunner::runScene(bench, options, report);
    }
    report.set("ok", ok ? 1.0 : 0.0);
    report.write(std::cout);
    return ok ? 0 : 1;
}
