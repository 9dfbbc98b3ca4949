#pragma once

#include <benchmark/benchmark.h>

/** Runs the registered benchmarks with the arguments of a program.
 *  @return the program's exit code: 1 for an argument that is not understood */
inline int runBenchmarks(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
