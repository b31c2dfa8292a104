// Writing a million ints into a buffer stream against appending their bytes
// to a std::vector<char>, and reading 10 000 and 100 000 ints back against
// reading them from a vector. The scaling row (100 000 against 10 000) shows
// whether reading back grows with the payload alone (10x). Every read and
// write of a stream takes the stream's lock, so the rows against a vector
// read or append under that same lock for each value show what the stream
// costs beyond its lock.
#include "BenchRatio.h"

#include <vsupt/VornBufferStream.h>
#include <vsupt/VornCriticalSection.h>

#include <cstring>
#include <vector>

namespace {

using VornSupport::VornBufferStream;
using VornSupport::VornCriticalSection;
using VornSupport::VornCriticalSectionObject;

const vsupt_bench::RatioRegistration ratios{
    {"write a million ints", "BM_VornBufferStream_WriteMillionInts", "BM_VectorChar_AppendMillionInts", 2},
    {"write a million ints vs appending under the same lock", "BM_VornBufferStream_WriteMillionInts",
     "BM_LockedVectorChar_AppendMillionInts", 0},
    {"read back 100 000 ints", "BM_VornBufferStream_ReadBack/100000", "BM_VectorChar_ReadBack/100000", 3},
    {"read back 100 000 ints vs reading under the same lock", "BM_VornBufferStream_ReadBack/100000",
     "BM_LockedVectorChar_ReadBack/100000", 0},
    {"read back, 100 000 vs 10 000 ints", "BM_VornBufferStream_ReadBack/100000", "BM_VornBufferStream_ReadBack/10000",
     12},
    {"vector read, 100 000 vs 10 000 ints", "BM_VectorChar_ReadBack/100000", "BM_VectorChar_ReadBack/10000", 0},
};

const int kMillion = 1000000;

void appendInt(std::vector<char>& bytes, int value)
{
    const char* first = reinterpret_cast<const char*>(&value);
    bytes.insert(bytes.end(), first, first + sizeof value);
}

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
            appendInt(bytes, i);
        }
        benchmark::DoNotOptimize(bytes.data());
    }
}
BENCHMARK(BM_VectorChar_AppendMillionInts)->Unit(benchmark::kMillisecond);

void BM_LockedVectorChar_AppendMillionInts(benchmark::State& state)
{
    VornCriticalSectionObject lock;
    for (auto _ : state) {
        std::vector<char> bytes;
        for (int i = 0; i < kMillion; ++i) {
            VornCriticalSection guard(lock, true);
            appendInt(bytes, i);
        }
        benchmark::DoNotOptimize(bytes.data());
    }
}
BENCHMARK(BM_LockedVectorChar_AppendMillionInts)->Unit(benchmark::kMillisecond);

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
}
BENCHMARK(BM_VornBufferStream_ReadBack)->Arg(10000)->Arg(100000)->Unit(benchmark::kMicrosecond);

void BM_VectorChar_ReadBack(benchmark::State& state)
{
    const auto count = static_cast<std::size_t>(state.range(0));
    std::vector<char> bytes(count * sizeof(int));
    for (auto _ : state) {
        int value = 0;
        for (std::size_t offset = 0; offset < bytes.size(); offset += sizeof value) {
            std::memcpy(&value, bytes.data() + offset, sizeof value);
            benchmark::DoNotOptimize(value);
        }
    }
}
BENCHMARK(BM_VectorChar_ReadBack)->Arg(10000)->Arg(100000)->Unit(benchmark::kMicrosecond);

void BM_LockedVectorChar_ReadBack(benchmark::State& state)
{
    const auto count = static_cast<std::size_t>(state.range(0));
    std::vector<char> bytes(count * sizeof(int));
    VornCriticalSectionObject lock;
    for (auto _ : state) {
        int value = 0;
        for (std::size_t offset = 0; offset < bytes.size(); offset += sizeof value) {
            VornCriticalSection guard(lock, true);
            std::memcpy(&value, bytes.data() + offset, sizeof value);
            benchmark::DoNotOptimize(value);
        }
    }
}
BENCHMARK(BM_LockedVectorChar_ReadBack)->Arg(100000)->Unit(benchmark::kMicrosecond);

}  // namespace
