// Writing a million ints into a buffer stream against appending their bytes
// to a std::vector<char>, and reading ints back at growing counts. Every
// read moves the unread rest of the payload down to the front, so reading a
// whole stream back costs time in the square of its size; the complexity
// line of the read-back shows it.
#include "BenchRatio.h"

#include <vsupt/VornBufferStream.h>

#include <cstring>
#include <vector>

namespace {

using VornSupport::VornBufferStream;

const vsupt_bench::RatioRegistration ratios{
    {"write a million ints", "BM_VornBufferStream_WriteMillionInts", "BM_VectorChar_AppendMillionInts", 0},
    {"read back 16384 ints", "BM_VornBufferStream_ReadBack/16384", "BM_VectorChar_ReadBack/16384", 0},
};

const int kMillion = 1000000;

void BM_VornBufferStream_WriteMillionInts(benchmark::State& state)
{
    for (auto _ : state) {
        VornBufferStream stream;
        for (int i = 0; i < kMillion; ++i) {
            stream << i;
        }
        benchmark::DoNotOptimize(stream.buffer());
    }
}
BENCHMARK(BM_VornBufferStream_WriteMillionInts)->Unit(benchmark::kMillisecond);

void BM_VectorChar_AppendMillionInts(benchmark::State& state)
{
    for (auto _ : state) {
        std::vector<char> bytes;
        for (int i = 0; i < kMillion; ++i) {
            const char* value = reinterpret_cast<const char*>(&i);
            bytes.insert(bytes.end(), value, value + sizeof i);
        }
        benchmark::DoNotOptimize(bytes.data());
    }
}
BENCHMARK(BM_VectorChar_AppendMillionInts)->Unit(benchmark::kMillisecond);

void BM_VornBufferStream_ReadBack(benchmark::State& state)
{
    const auto count = static_cast<int>(state.range(0));
    VornBufferStream written;
    for (int i = 0; i < count; ++i) {
        written << i;
    }
    for (auto _ : state) {
        state.PauseTiming();
        VornBufferStream stream(written);
        state.ResumeTiming();
        int value = 0;
        for (int i = 0; i < count; ++i) {
            stream >> value;
        }
        benchmark::DoNotOptimize(value);
    }
    state.SetComplexityN(count);
}
BENCHMARK(BM_VornBufferStream_ReadBack)->RangeMultiplier(4)->Range(1 << 10, 1 << 14)->Complexity();

void BM_VectorChar_ReadBack(benchmark::State& state)
{
    const auto count = static_cast<int>(state.range(0));
    std::vector<char> bytes(static_cast<std::size_t>(count) * sizeof(int));
    for (auto _ : state) {
        int value = 0;
        for (std::size_t offset = 0; offset < bytes.size(); offset += sizeof value) {
            std::memcpy(&value, bytes.data() + offset, sizeof value);
            benchmark::DoNotOptimize(value);
        }
    }
    state.SetComplexityN(count);
}
BENCHMARK(BM_VectorChar_ReadBack)->RangeMultiplier(4)->Range(1 << 10, 1 << 14)->Complexity();

}  // namespace
