// Parsing two version strings and comparing them, against splitting with
// strtol into vectors and comparing those.
#include "BenchRatio.h"

#include <vsupt/VornVersion.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

using VornSupport::VornVersion;

const vsupt_bench::RatioRegistration ratios{
    {"version parse+compare", "BM_VornVersion_ParseCompare", "BM_Strtol_ParseCompare", 0},
};

const std::string kFirst = "4.2.17.beta";
const std::string kSecond = "4.2.9";

void BM_VornVersion_ParseCompare(benchmark::State& state)
{
    for (auto _ : state) {
        const VornVersion first(kFirst);
        const VornVersion second(kSecond);
        benchmark::DoNotOptimize(VornVersion::compare(first, second));
    }
}
BENCHMARK(BM_VornVersion_ParseCompare);

struct PlainVersion {
    std::vector<int> numbers;
    std::string label;
};

PlainVersion plainParse(const std::string& text)
{
    PlainVersion version;
    const char* cursor = text.c_str();
    while (*cursor != '\0') {
        if (*cursor >= '0' && *cursor <= '9') {
            char* end = nullptr;
            version.numbers.push_back(static_cast<int>(std::strtol(cursor, &end, 10)));
            cursor = end;
        } else {
            const char* dot = std::strchr(cursor, '.');
            version.label.assign(cursor, dot != nullptr ? dot : cursor + std::strlen(cursor));
            cursor = dot != nullptr ? dot : cursor + std::strlen(cursor);
        }
        if (*cursor == '.') {
            ++cursor;
        }
    }
    return version;
}

void BM_Strtol_ParseCompare(benchmark::State& state)
{
    for (auto _ : state) {
        const PlainVersion first = plainParse(kFirst);
        const PlainVersion second = plainParse(kSecond);
        const bool lower = first.numbers != second.numbers ? first.numbers < second.numbers : first.label < second.label;
        benchmark::DoNotOptimize(lower);
    }
}
BENCHMARK(BM_Strtol_ParseCompare);

}  // namespace
