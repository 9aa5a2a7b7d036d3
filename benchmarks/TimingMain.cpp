// SPDX-License-Identifier: Apache-2.0
// Measures the time of every operation with Google Benchmark, both sides in one run. It is the time
// of the processor, so that other programs of the machine matter less.

#include <time.h>

#include <algorithm>
#include <vector>

#include <benchmark/benchmark.h>

#include "benchmarks/fakes/Journal.h"
#include "benchmarks/operations/Operation.h"

namespace orvo::benchmarks {
namespace {

// Of all threads of this process, in seconds.
double processorTime() {
    timespec time;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

// What one look at that clock costs: the median of many.
double costOfClock() {
    std::vector<double> costs(1001);
    for (double& cost : costs) {
        const double start = processorTime();
        cost = processorTime() - start;
    }
    std::nth_element(costs.begin(), costs.begin() + costs.size() / 2, costs.end());
    return costs[costs.size() / 2];
}

void run(benchmark::State& state, const SideMaker& make) {
    const std::unique_ptr<Side> side = make();
    for (auto _ : state) {
        side->call();
    }
}

// For operations whose state must be brought back in between: each call is timed on its own.
void runRestored(benchmark::State& state, const SideMaker& make) {
    static const double kCostOfClock = costOfClock();
    const std::unique_ptr<Side> side = make();
    for (auto _ : state) {
        const double start = processorTime();
        side->call();
        const double elapsed = processorTime() - start;
        side->restore();
        state.SetIterationTime(std::max(elapsed - kCostOfClock, 0.0));
    }
}

void add(const Operation& operation, const char* side, const SideMaker& make) {
    const std::string title = operation.title() + "/" + side;
    if (operation.restores) {
        benchmark::RegisterBenchmark(title.c_str(), runRestored, make)->UseManualTime();
    } else {
        benchmark::RegisterBenchmark(title.c_str(), run, make);
    }
}

}  // namespace
}  // namespace orvo::benchmarks

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    orvo::benchmarks::dropLogLines();
    const auto operations = orvo::benchmarks::allOperations();
    for (const auto& operation : operations) {
        orvo::benchmarks::add(operation, "product", operation.product);
        orvo::benchmarks::add(operation, "floor", operation.floor);
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}
