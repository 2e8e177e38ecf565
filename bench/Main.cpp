#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>

#include "BlendBench.h"
#include "CodecBench.h"
#include "GroupBench.h"
#include "PagesBench.h"
#include "PlacesBench.h"
#include "SetupBench.h"
#include "VectorTarget.h"

using namespace vantu::bench;

/// Runs the benchmarks; IMAGEOP_BENCH_TARGET=AVX2 (or another target) makes the library take that vector code.
int main(int argc, char** argv) {
    if (const char* const target = std::getenv("IMAGEOP_BENCH_TARGET"); target != nullptr && *target != '\0') {
        if (!ForceVectorTarget(target)) {
            std::fprintf(stderr, "imageop_bench: this machine does not run %s\n", target);
            return 1;
        }
    }
    benchmark::AddCustomContext("target", VectorTargetName());
    benchmark::AddCustomContext("compiler", IMAGEOP_COMPILER);
    RegisterBlendBenchmarks();
    RegisterPagesBenchmarks();
    RegisterPlacesBenchmarks();
    RegisterGroupBenchmarks();
    RegisterSetupBenchmarks();
    RegisterCodecBenchmarks();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
