// A wildcard search through one directory of 10 000 entries, half of them
// matching: VornFindFile against glob(3) without sorting, as VornFindFile
// does not sort either.
#include "BenchRatio.h"

#include <vsupt/VornFindFile.h>

#include <glob.h>
#include <stdlib.h>

#include <cstdio>
#include <filesystem>
#include <string>

namespace {

using namespace VornSupport;

const vsupt_bench::RatioRegistration ratios{
    {"search 10 000 entries for *.txt (report)", "BM_VornFindFile_TenThousand/real_time",
     "BM_Glob_TenThousand/real_time", 0},
};

constexpr int kEntries = 10000;

// Made at the first use, removed at exit.
class EntryDirectory {
public:
    EntryDirectory()
    {
        char name[] = "/tmp/vsupt-bench-find-XXXXXX";
        m_path = mkdtemp(name);
        for (int i = 0; i < kEntries; ++i) {
            char entry[32];
            std::snprintf(entry, sizeof entry, "/entry%05d.%s", i, i % 2 == 0 ? "txt" : "dat");
            std::FILE* file = std::fopen((m_path + entry).c_str(), "w");
            if (file != nullptr) {
                std::fclose(file);
            }
        }
    }
    ~EntryDirectory() { std::filesystem::remove_all(m_path); }

    std::string pattern() const { return m_path + "/*.txt"; }

private:
    std::string m_path;
};

const EntryDirectory& entries()
{
    static const EntryDirectory directory;
    return directory;
}

void BM_VornFindFile_TenThousand(benchmark::State& state)
{
    const std::string pattern = entries().pattern();
    for (auto _ : state) {
        int found = 0;
        VornFindFile find(pattern);
        while (find.hasMore()) {
            benchmark::DoNotOptimize(find.next());
            ++found;
        }
        if (found != kEntries / 2) {
            state.SkipWithError("wrong number of matches");
            break;
        }
    }
}
BENCHMARK(BM_VornFindFile_TenThousand)->UseRealTime();

void BM_Glob_TenThousand(benchmark::State& state)
{
    const std::string pattern = entries().pattern();
    for (auto _ : state) {
        glob_t matches{};
        const int result = glob(pattern.c_str(), GLOB_NOSORT, nullptr, &matches);
        const bool complete = result == 0 && matches.gl_pathc == kEntries / 2;
        globfree(&matches);
        if (!complete) {
            state.SkipWithError("wrong number of matches");
            break;
        }
    }
}
BENCHMARK(BM_Glob_TenThousand)->UseRealTime();

}  // namespace
