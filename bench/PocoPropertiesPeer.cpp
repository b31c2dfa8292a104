// Poco's property file configuration as the peer of the property benchmarks.
// Built only when Poco is installed.
#include "BenchRatio.h"
#include "PropertyBenchFile.h"

#include <Poco/AutoPtr.h>
#include <Poco/Util/PropertyFileConfiguration.h>

namespace {

using Poco::AutoPtr;
using Poco::Util::PropertyFileConfiguration;

void BM_Poco_Load(benchmark::State& state)
{
    const std::string& path = vsupt_bench::propertyFile();
    for (auto _ : state) {
        AutoPtr<PropertyFileConfiguration> configuration(new PropertyFileConfiguration);
        configuration->load(path);
        benchmark::DoNotOptimize(configuration.get());
    }
}
BENCHMARK(BM_Poco_Load)->Unit(benchmark::kMillisecond);

void BM_Poco_Save(benchmark::State& state)
{
    AutoPtr<PropertyFileConfiguration> configuration(new PropertyFileConfiguration(vsupt_bench::propertyFile()));
    const std::string path = vsupt_bench::scratchFile();
    for (auto _ : state) {
        configuration->save(path);
    }
}
BENCHMARK(BM_Poco_Save)->Unit(benchmark::kMillisecond);

}  // namespace
