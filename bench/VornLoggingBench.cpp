// The logger's costs that matter to a service: a call site whose level is
// switched off, and one finished record of three items to stdout sent to a
// file, from one thread and from four at once.
#include "BenchRatio.h"

#include <vsupt/VornLogging.h>

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>

namespace {

using namespace VornSupport;

const vsupt_bench::RatioRegistration ratios{
    {"disabled call site (read as ns: target <= 1 ns)", "BM_Logging_DisabledCallSite", "BM_Baseline_LoadCompare", 0},
    {"record of three items to a file", "BM_Logging_Record", "BM_Fprintf_FinishedLine", 2.0, vsupt_bench::Clock::Cpu},
    {"record of three items to a file, four threads", "BM_Logging_Record/real_time/threads:4",
     "BM_Fprintf_FinishedLineUnderMutex/real_time/threads:4", 2.0},
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

// One logger and one redirection for all the threads of a run. At level 9
// every record of every thread is written: at a lower level, a record whose
// level another thread's endrecord has put back before its first item
// would be refused, and cost less.
std::unique_ptr<StdoutToFile> g_redirect;
std::unique_ptr<VornLogging> g_logger;

void redirectStdout(const benchmark::State&)
{
    g_redirect = std::make_unique<StdoutToFile>();
}

void restoreStdout(const benchmark::State&)
{
    g_redirect.reset();
}

void installLogger(const benchmark::State& state)
{
    redirectStdout(state);
    g_logger = std::make_unique<VornLogging>("bench", VornLogging::TargetStdout, 9);
    VornLogging::setInstance(*g_logger);
}

void removeLogger(const benchmark::State& state)
{
    g_logger.reset();
    restoreStdout(state);
}

void BM_Logging_Record(benchmark::State& state)
{
    for (auto _ : state) {
        if (logsAt(5)) {
            *VornLogging::getInstance() << setloglevel("bench", 5) << "request " << 1234 << " served" << endrecord;
        }
    }
}
BENCHMARK(BM_Logging_Record)->Setup(installLogger)->Teardown(removeLogger);
BENCHMARK(BM_Logging_Record)->Setup(installLogger)->Teardown(removeLogger)->Threads(4)->UseRealTime();

const char* const g_prefix = "20261122_08:13:11 5 bench      [-1008462016] ";
const char* const g_text = "request 1234 served";

void BM_Fprintf_FinishedLine(benchmark::State& state)
{
    for (auto _ : state) {
        std::fprintf(stdout, "%s%s\n", g_prefix, g_text);
        std::fflush(stdout);
    }
}
BENCHMARK(BM_Fprintf_FinishedLine)->Setup(redirectStdout)->Teardown(restoreStdout);

std::mutex g_lineMutex;

void BM_Fprintf_FinishedLineUnderMutex(benchmark::State& state)
{
    for (auto _ : state) {
        std::lock_guard<std::mutex> hold(g_lineMutex);
        std::fprintf(stdout, "%s%s\n", g_prefix, g_text);
        std::fflush(stdout);
    }
}
BENCHMARK(BM_Fprintf_FinishedLineUnderMutex)
    ->Setup(redirectStdout)
    ->Teardown(restoreStdout)
    ->Threads(4)
    ->UseRealTime();

}  // namespace
