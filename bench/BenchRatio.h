// Ratios between benchmarks of one run, printed after the usual table.
//
// A raw time says little on a shared or throttled machine; the time of a
// benchmark divided by the time of its peer measured in the same run does.
// Each benchmark file registers the pairs it wants compared:
//
//   const vsupt_bench::RatioRegistration ratios{
//       {"lock+unlock", "BM_Mine", "BM_Peer", 1.5},
//   };
//
// Names are benchmark names as reported ("BM_X/real_time/threads:2"), and
// the ratio is of real time per iteration. A pair of benchmarks that run on
// one thread and never wait may ask for CPU time instead (Clock::Cpu): the
// thread's CPU time leaves out the moments when other processes had the
// processor, which on a shared machine swing a real-time ratio of two
// samples taken seconds apart by half either way. With
// --benchmark_repetitions the medians are compared. A target of 0 means that
// the ratio is for reading only; otherwise the line says whether the ratio is
// at most the target.
// BenchMain.cpp, linked into every benchmark program, runs the benchmarks
// with RatioReporter.
#ifndef VSUPT_BENCH_BENCHRATIO_H
#define VSUPT_BENCH_BENCHRATIO_H

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <initializer_list>
#include <map>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace vsupt_bench {

enum class Clock { Real, Cpu };

struct Ratio {
    std::string title;
    std::string numerator;
    std::string denominator;
    double target;
    Clock clock = Clock::Real;
};

inline std::vector<Ratio>& registeredRatios()
{
    static std::vector<Ratio> ratios;
    return ratios;
}

struct RatioRegistration {
    RatioRegistration(std::initializer_list<Ratio> ratios)
    {
        registeredRatios().insert(registeredRatios().end(), ratios);
    }
};

// The console table as usual, then one line for each registered ratio.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    RatioReporter(std::vector<Ratio> ratios, OutputOptions options)
        : ConsoleReporter(options), m_ratios(std::move(ratios))
    {
    }

    void ReportRuns(const std::vector<Run>& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.error_occurred) {
                continue;
            }
            const double multiplier = benchmark::GetTimeUnitMultiplier(run.time_unit);
            const Times times{run.GetAdjustedRealTime() / multiplier, run.GetAdjustedCPUTime() / multiplier};
            if (run.run_type == Run::RT_Iteration) {
                m_samples[run.run_name.str()].push_back(times);
            } else if (run.aggregate_name == "median") {
                m_medians[run.run_name.str()] = times;
            }
        }
    }

    void Finalize() override
    {
        ConsoleReporter::Finalize();
        std::string lines;
        for (const Ratio& ratio : m_ratios) {
            lines += "ratio " + ratio.title + (ratio.clock == Clock::Cpu ? " (CPU time)" : "") + ": " +
                     ratio.numerator + " / " + ratio.denominator + " = ";
            double numerator = 0;
            double denominator = 0;
            if (!timeOf(ratio.numerator, ratio.clock, numerator) || !timeOf(ratio.denominator, ratio.clock, denominator) ||
                denominator <= 0) {
                lines += "not measured\n";
                continue;
            }
            const double value = numerator / denominator;
            lines += format("%.2fx", value);
            if (ratio.target > 0) {
                lines += format(" (target <= %gx: ", ratio.target);
                lines += value <= ratio.target ? "met)" : "missed)";
            }
            lines += "\n";
        }
        GetOutputStream() << lines << std::flush;
    }

private:
    struct Times {
        double real;
        double cpu;
        double of(Clock clock) const { return clock == Clock::Cpu ? cpu : real; }
    };

    bool timeOf(const std::string& name, Clock clock, double& seconds)
    {
        if (auto median = m_medians.find(name); median != m_medians.end()) {
            seconds = median->second.of(clock);
            return true;
        }
        auto samples = m_samples.find(name);
        if (samples == m_samples.end()) {
            return false;
        }
        std::vector<double> values;
        for (const Times& times : samples->second) {
            values.push_back(times.of(clock));
        }
        std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
        seconds = values[values.size() / 2];
        return true;
    }

    static std::string format(const char* pattern, double value)
    {
        char text[64];
        std::snprintf(text, sizeof text, pattern, value);
        return text;
    }

    std::vector<Ratio> m_ratios;
    std::map<std::string, std::vector<Times>> m_samples;
    std::map<std::string, Times> m_medians;
};

}  // namespace vsupt_bench

#endif
