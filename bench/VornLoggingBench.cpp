// The logger's two costs that matter to a service: a call site whose level
// is switched off, and one finished record of three items to stdout.
#include "BenchRatio.h"

#include <vsupt/VornLogging.h>

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace {

using namespace VornSupport;

const vsupt_bench::RatioRegistration ratios{
    {"disabled call site (read as ns: target <= 1 ns)", "BM_Logging_DisabledCallSite", "BM_Baseline_LoadCompare", 0},
    {"record of three items to a file", "BM_Logging_Record", "BM_Fprintf_FinishedLine", 2.0},
};

// stdout sent to a scratch file for the life of the object.
class StdoutToFile {
public:
    StdoutToFile()
    {
        std::fflush(stdout);
        m_saved = dup(STDOUT_FILENO);
        char name[] = "/tmp/vsupt-bench-XXXXXX";
        const int file = mkstemp(name);
        unlink(name);
        dup2(file, STDOUT_FILENO);
        close(file);
    }
    ~StdoutToFile()
    {
        std::fflush(stdout);
        dup2(m_saved, STDOUT_FILENO);
        close(m_saved);
    }

private:
    int m_saved;
};

bool logsAt(int level)
{
    return VornLogging::isAccessAllowed() && VornLogging::getInstance()->getLogLevel() >= level;
}

void BM_Logging_DisabledCallSite(benchmark::State& state)
{
    VornLogging logger("bench", VornLogging::TargetStdout, 1);
    VornLogging::setInstance(logger);
    for (auto _ : state) {
        if (logsAt(5)) {
            *VornLogging::getInstance() << setloglevel(5) << "never" << endrecord;
        }
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_Logging_DisabledCallSite);

// The floor of any guard: one load of a level and a compare.
std::atomic<int> g_level{1};

void BM_Baseline_LoadCompare(benchmark::State& state)
{
    for (auto _ : state) {
        if (g_level.load(std::memory_order_relaxed) >= 5) {
            std::abort();
        }
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_Baseline_LoadCompare);

void BM_Logging_Record(benchmark::State& state)
{
    VornLogging logger("bench", VornLogging::TargetStdout, 5);
    VornLogging::setInstance(logger);
    StdoutToFile redirect;
    for (auto _ : state) {
        if (logsAt(5)) {
            *VornLogging::getInstance() << setloglevel("bench", 5) << "request " << 1234 << " served" << endrecord;
        }
    }
}
BENCHMARK(BM_Logging_Record);

void BM_Fprintf_FinishedLine(benchmark::State& state)
{
    const char* prefix = "20261122_08:13:11 5 bench      [-1008462016] ";
    const char* text = "request 1234 served";
    StdoutToFile redirect;
    for (auto _ : state) {
        std::fprintf(stdout, "%s%s\n", prefix, text);
        std::fflush(stdout);
    }
}
BENCHMARK(BM_Fprintf_FinishedLine);

}  // namespace
