// A message set of 10 000 messages: loading it (the base file, and the two
// optional files the "C" locale asks for, which are absent) and looking
// messages up. Peers: the wide property store loading the same file alone,
// and a std::map of wide strings for the look-up.
#include "BenchRatio.h"
#include "PropertyBenchFile.h"

#include <vsupt/VornMessageSet.h>
#include <vsupt/VornProperties.h>

#include <fstream>
#include <locale>
#include <map>
#include <string>

namespace {

using namespace VornSupport;

const int messageCount = 10000;

std::string messageKey(int i)
{
    return "message.number" + std::to_string((i * 7919) % messageCount);
}

// The base name of the set; its file is written once per run.
const std::string& messageBase()
{
    static const std::string base = [] {
        const std::string path = vsupt_bench::scratchDirectory().path() + "/messages";
        std::ofstream out(path + ".pro");
        for (int i = 0; i < messageCount; ++i) {
            out << messageKey(i) << "=The text of message " << i << ", as a user would read it\n";
        }
        return path;
    }();
    return base;
}

void BM_VornMessageSet_Load(benchmark::State& state)
{
    const std::string& base = messageBase();
    for (auto _ : state) {
        VornMessageSet messages(base, std::locale::classic());
        benchmark::DoNotOptimize(&messages);
    }
}
BENCHMARK(BM_VornMessageSet_Load)->Unit(benchmark::kMillisecond);

void BM_WideProperties_Load(benchmark::State& state)
{
    const std::string path = messageBase() + ".pro";
    for (auto _ : state) {
        VornProperties<std::wstring> store(false);
        store.loadProperties(path, L'=');
        benchmark::DoNotOptimize(store.size());
    }
}
BENCHMARK(BM_WideProperties_Load)->Unit(benchmark::kMillisecond);

void BM_VornMessageSet_GetMessage(benchmark::State& state)
{
    const VornMessageSet messages(messageBase(), std::locale::classic());
    int i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(messages.getMessage(messageKey(i)));
        i = i + 1 == messageCount ? 0 : i + 1;
    }
}
BENCHMARK(BM_VornMessageSet_GetMessage);

void BM_WideMap_Find(benchmark::State& state)
{
    std::map<std::wstring, std::wstring> messages;
    for (int i = 0; i < messageCount; ++i) {
        const std::string key = messageKey(i);
        messages[std::wstring(key.begin(), key.end())] = L"The text of a message";
    }
    int i = 0;
    for (auto _ : state) {
        const std::string key = messageKey(i);
        benchmark::DoNotOptimize(messages.find(std::wstring(key.begin(), key.end()))->second);
        i = i + 1 == messageCount ? 0 : i + 1;
    }
}
BENCHMARK(BM_WideMap_Find);

const vsupt_bench::RatioRegistration ratios{
    {"message set load, 10 000 messages, vs the wide store alone", "BM_VornMessageSet_Load",
     "BM_WideProperties_Load", 0},
    {"message look-up vs std::map<wstring, wstring>", "BM_VornMessageSet_GetMessage", "BM_WideMap_Find", 0},
};

}  // namespace
