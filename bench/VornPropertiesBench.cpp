// Loading and saving a property file of 100 000 lines, against Poco's
// property file configuration (when Poco is installed) and against the
// plainest code that does the same job: a std::getline loop into a std::map,
// and a stream loop out of one.
#include "BenchRatio.h"
#include "PropertyBenchFile.h"

#include <vsupt/VornProperties.h>

#include <fstream>
#include <map>
#include <string>

namespace {

using namespace VornSupport;

const vsupt_bench::RatioRegistration ratios{
    {"load 100 000 lines vs Poco", "BM_Properties_Load", "BM_Poco_Load", 1.0},
    {"load 100 000 lines vs getline into std::map", "BM_Properties_Load", "BM_GetlineMap_Load", 1.5},
    {"save 100 000 lines vs Poco", "BM_Properties_Save", "BM_Poco_Save", 1.0},
    {"save 100 000 lines vs stream loop over std::map", "BM_Properties_Save", "BM_StreamMap_Save", 1.5},
};

void BM_Properties_Load(benchmark::State& state)
{
    const std::string& path = vsupt_bench::propertyFile();
    for (auto _ : state) {
        VornProperties<std::string> store;
        store.loadProperties(path);
        benchmark::DoNotOptimize(store.size());
    }
}
BENCHMARK(BM_Properties_Load)->Unit(benchmark::kMillisecond);

void BM_GetlineMap_Load(benchmark::State& state)
{
    const std::string& path = vsupt_bench::propertyFile();
    for (auto _ : state) {
        std::map<std::string, std::string> properties;
        std::ifstream in(path);
        std::string line;
        while (std::getline(in, line)) {
            const std::string::size_type separator = line.find('=');
            if (separator != std::string::npos) {
                properties[line.substr(0, separator)] = line.substr(separator + 1);
            }
        }
        benchmark::DoNotOptimize(properties.size());
    }
}
BENCHMARK(BM_GetlineMap_Load)->Unit(benchmark::kMillisecond);

void BM_Properties_Save(benchmark::State& state)
{
    VornProperties<std::string> store;
    store.loadProperties(vsupt_bench::propertyFile());
    const std::string path = vsupt_bench::scratchFile();
    for (auto _ : state) {
        store.saveProperties(path);
    }
}
BENCHMARK(BM_Properties_Save)->Unit(benchmark::kMillisecond);

void BM_StreamMap_Save(benchmark::State& state)
{
    std::map<std::string, std::string> properties;
    for (const auto& entry : vsupt_bench::propertyLines()) {
        properties[entry.first] = entry.second;
    }
    const std::string path = vsupt_bench::scratchFile();
    for (auto _ : state) {
        std::ofstream out(path, std::ios::trunc);
        for (const auto& entry : properties) {
            out << entry.first << '=' << entry.second << '\n';
        }
    }
}
BENCHMARK(BM_StreamMap_Save)->Unit(benchmark::kMillisecond);

}  // namespace
