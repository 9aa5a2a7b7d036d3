// SPDX-License-Identifier: Apache-2.0
// Counts the instructions of every operation. Run it under
//
//     valgrind --tool=callgrind --collect-atstart=no --dump-before=none
//
// which writes one profile for each side of each operation; its trigger is the line printed here,
// and the instructions in it are those of that many calls.

#include <stdio.h>
#include <string.h>

#include <valgrind/callgrind.h>

#include "benchmarks/fakes/Journal.h"
#include "benchmarks/fakes/Surroundings.h"
#include "benchmarks/operations/Operation.h"

namespace orvo::benchmarks {
namespace {

void count(const std::string& title, const SideMaker& make, int calls) {
    const std::unique_ptr<Side> side = make();
    // The first call also fills caches of the platform's; it is not what a call costs. Where one
    // call is long, that is lost in it.
    if (calls > 1) {
        side->call();
        side->restore();
    }
    CALLGRIND_ZERO_STATS;
    for (int i = 0; i < calls; ++i) {
        collectAfterPause(true);
        CALLGRIND_TOGGLE_COLLECT;
        side->call();
        CALLGRIND_TOGGLE_COLLECT;
        collectAfterPause(false);
        side->restore();
    }
    const std::string trigger = title + " calls " + std::to_string(calls);
    CALLGRIND_DUMP_STATS_AT(trigger.c_str());
    puts(trigger.c_str());
}

}  // namespace
}  // namespace orvo::benchmarks

// usage: benchmark_instructions [MAXIMUM_SIZE]
int main(int argc, char** argv) {
    const size_t maximum = argc > 1 ? strtoul(argv[1], nullptr, 10) : SIZE_MAX;
    orvo::benchmarks::dropLogLines();
    for (const auto& operation : orvo::benchmarks::allOperations()) {
        if (operation.size > maximum) continue;
        const std::string title = operation.title();
        orvo::benchmarks::count(title + "/product", operation.product, operation.countedCalls);
        orvo::benchmarks::count(title + "/floor", operation.floor, operation.countedCalls);
        if (operation.name == orvo::benchmarks::kMapFileOperation) {
            orvo::benchmarks::count(title + "/walk", orvo::benchmarks::bareWalkOf(operation.size),
                                    operation.countedCalls);
        }
    }
}
