// Starting a program and waiting for it: VornExecuteProgram of /bin/true
// against posix_spawn and waitpid, the C library's own way there.
#include "BenchRatio.h"

#include <vsupt/VornExecuteProgram.h>

#include <spawn.h>
#include <sys/wait.h>

namespace {

using namespace VornSupport;

const vsupt_bench::RatioRegistration ratios{
    {"run /bin/true and wait (report)", "BM_VornExecuteProgram_True/real_time", "BM_PosixSpawn_True/real_time", 0},
};

void BM_VornExecuteProgram_True(benchmark::State& state)
{
    for (auto _ : state) {
        int status = -1;
        if (!VornExecuteProgram("/bin/true", true, nullptr, &status) || status != 0) {
            state.SkipWithError("/bin/true did not run");
            break;
        }
    }
}
BENCHMARK(BM_VornExecuteProgram_True)->UseRealTime();

void BM_PosixSpawn_True(benchmark::State& state)
{
    char program[] = "/bin/true";
    char* const arguments[] = {program, nullptr};
    for (auto _ : state) {
        pid_t child = 0;
        int status = -1;
        if (posix_spawn(&child, program, nullptr, nullptr, arguments, environ) != 0 ||
            waitpid(child, &status, 0) != child || status != 0) {
            state.SkipWithError("/bin/true did not run");
            break;
        }
    }
}
BENCHMARK(BM_PosixSpawn_True)->UseRealTime();

}  // namespace
