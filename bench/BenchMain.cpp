// Entry point shared by the benchmark programs: the usual command line of
// Google Benchmark, and the registered ratios after the table. The screen
// always gets the console table; for JSON or CSV use --benchmark_out and
// --benchmark_out_format.
#include "BenchRatio.h"

#include <unistd.h>

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    const auto options = isatty(STDOUT_FILENO) ? benchmark::ConsoleReporter::OO_Defaults
                                               : benchmark::ConsoleReporter::OO_Tabular;
    vsupt_bench::RatioReporter reporter(vsupt_bench::registeredRatios(), options);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
