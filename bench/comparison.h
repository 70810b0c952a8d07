#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>
#include <unordered_map>
#include <vector>

/// Runs all benchmarks of a program, in turn and several times, and prints their medians in pairs:
/// each figure beside a peer of the same run.
class Comparison final : private benchmark::BenchmarkReporter {
public:
    Comparison(int argc, char** argv) {
        std::vector<char*> args(argv, argv + argc);
        std::string repetitions = "--benchmark_repetitions=7", least = "--benchmark_min_time=0.05",
                    mixed = "--benchmark_enable_random_interleaving=true";
        args.insert(args.end(), {repetitions.data(), least.data(), mixed.data()});
        int count = static_cast<int>(args.size());
        benchmark::Initialize(&count, args.data());
        benchmark::RunSpecifiedBenchmarks(this);
    }

    /// One line of the table. `ours` and `peer` are names of benchmarks; `limit` is the largest
    /// ratio of the two that is good.
    void row(const char* what, const char* ours, const char* peer, const char* peerName,
             double limit) {
        std::printf("%-34s %9.2f ns   %-26s %9.2f ns   ratio %6.2f (at most %.2f)\n", what,
                    medians[ours], peerName, medians[peer], medians[ours] / medians[peer], limit);
    }

private:
    bool ReportContext(const Context&) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.aggregate_name == "median")
                medians[run.run_name.function_name] =
                    run.cpu_accumulated_time / static_cast<double>(run.iterations) * 1e9;
        }
    }

    std::unordered_map<std::string, double> medians;
};
