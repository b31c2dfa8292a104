// Parsing a command line of 50 arguments in strict mode, beside the least
// any parser does: copying the arguments into strings.
#include "BenchRatio.h"

#include <vsupt/VornProgramOptions.h>

#include <string>
#include <vector>

namespace {

using namespace VornSupport;

const vsupt_bench::RatioRegistration ratios{
    {"parse 50 arguments vs copying them", "BM_ProgramOptions_Parse50", "BM_CopyArguments50", 0},
};

// Options of every form, each with a positional argument behind it.
std::vector<std::string> fiftyArguments()
{
    const char* forms[] = {"-a", "-bvalue", "-file", "name.txt", "--help", "--level=3", "input"};
    std::vector<std::string> arguments{"prog"};
    while (arguments.size() < 51) {
        arguments.push_back(forms[arguments.size() % 7]);
    }
    // Data for an option that takes it must not be the last argument.
    arguments.back() = "input";
    return arguments;
}

std::vector<char*> pointersTo(std::vector<std::string>& arguments)
{
    std::vector<char*> pointers;
    for (std::string& argument : arguments) {
        pointers.push_back(argument.data());
    }
    return pointers;
}

void BM_ProgramOptions_Parse50(benchmark::State& state)
{
    std::vector<std::string> arguments = fiftyArguments();
    std::vector<char*> argv = pointersTo(arguments);
    for (auto _ : state) {
        VornProgramOptions options(static_cast<int>(argv.size()), argv.data(), "ab:", ":help:level:file.:", false);
        benchmark::DoNotOptimize(options.getArgumentCount());
    }
}
BENCHMARK(BM_ProgramOptions_Parse50);

void BM_CopyArguments50(benchmark::State& state)
{
    std::vector<std::string> arguments = fiftyArguments();
    std::vector<char*> argv = pointersTo(arguments);
    for (auto _ : state) {
        std::vector<std::string> copies(argv.begin() + 1, argv.end());
        benchmark::DoNotOptimize(copies.data());
    }
}
BENCHMARK(BM_CopyArguments50);

}  // namespace
