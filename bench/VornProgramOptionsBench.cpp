// Parsing a command line of 50 arguments in strict mode, beside the least
// any parser does: copying the arguments into strings. Then the two
// command-line splitters over long lines, against the standard library's
// word extraction over the same line, at two lengths, ten times apart, whose
// ratio shows whether the cost grows with the line alone (10x): the option
// splitter over short options, the execution splitter over quoted words.
#include "BenchRatio.h"

#include <vsupt/VornCmdLineTokenizer.h>
#include <vsupt/VornProgramOptions.h>
#include <vsupt/VornStringUtilities.h>

#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace VornSupport;

const vsupt_bench::RatioRegistration ratios{
    {"parse 50 arguments vs copying them", "BM_ProgramOptions_Parse50", "BM_CopyArguments50", 0},
    {"split 256 KiB of options vs std::istringstream", "BM_VornCmdLineTokenizer_Options/262144",
     "BM_Istringstream_Options/262144", 0},
    {"split options, 256 KiB vs 25.6 KiB", "BM_VornCmdLineTokenizer_Options/262144",
     "BM_VornCmdLineTokenizer_Options/26214", 0},
    {"split 2 MiB of quoted words vs std::quoted", "BM_VornParseCommandLine_Quoted/2097152",
     "BM_Quoted_Quoted/2097152", 0},
    {"split quoted words, 2 MiB vs 205 KiB", "BM_VornParseCommandLine_Quoted/2097152",
     "BM_VornParseCommandLine_Quoted/209715", 0},
};

// Whole pieces of text repeated up to about the length asked for.
std::string lineOf(const std::string& piece, long length)
{
    std::string line;
    while (static_cast<long>(line.size()) < length) {
        line += piece;
    }
    return line;
}

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


void BM_VornCmdLineTokenizer_Options(benchmark::State& state)
{
    const std::string line = lineOf("-a ", state.range(0));
    for (auto _ : state) {
        VornCmdLineTokenizer<std::string> tokenizer(line);
        tokenizer.setSeparators(" \t");
        tokenizer.setQuotes("\"'");
        std::size_t words = 0;
        while (tokenizer.hasMoreTokens()) {
            words += tokenizer.next().size();
        }
        benchmark::DoNotOptimize(words);
    }
}
BENCHMARK(BM_VornCmdLineTokenizer_Options)->Arg(26214)->Arg(262144)->Unit(benchmark::kMicrosecond);

void BM_Istringstream_Options(benchmark::State& state)
{
    const std::string line = lineOf("-a ", state.range(0));
    for (auto _ : state) {
        std::istringstream stream(line);
        std::size_t words = 0;
        for (std::string word; stream >> word;) {
            words += word.size();
        }
        benchmark::DoNotOptimize(words);
    }
}
BENCHMARK(BM_Istringstream_Options)->Arg(262144)->Unit(benchmark::kMicrosecond);

void BM_VornParseCommandLine_Quoted(benchmark::State& state)
{
    const std::string line = lineOf("\"x y\"z ", state.range(0));
    for (auto _ : state) {
        std::vector<std::string> words;
        VornParseCommandLine(line, words);
        benchmark::DoNotOptimize(words.data());
    }
}
BENCHMARK(BM_VornParseCommandLine_Quoted)->Arg(209715)->Arg(2097152)->Unit(benchmark::kMicrosecond);

void BM_Quoted_Quoted(benchmark::State& state)
{
    const std::string line = lineOf("\"x y\"z ", state.range(0));
    for (auto _ : state) {
        std::istringstream stream(line);
        std::vector<std::string> words;
        for (std::string word; stream >> std::quoted(word);) {
            words.push_back(word);
        }
        benchmark::DoNotOptimize(words.data());
    }
}
BENCHMARK(BM_Quoted_Quoted)->Arg(2097152)->Unit(benchmark::kMicrosecond);

}  // namespace
