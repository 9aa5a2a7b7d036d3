// SPDX-License-Identifier: Apache-2.0
// For programs whose threads take turns: to wake one on another processor costs far more.
#pragma once

#include <sched.h>

#include <vector>

namespace orvo::test {

/** From now on the calling thread, and those that it starts, run on that processor. */
inline void runOnProcessor(int processor) {
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(processor, &one);
    sched_setaffinity(0, sizeof(one), &one);
}

inline void runOnOneProcessor() {
    runOnProcessor(sched_getcpu());
}

/** Of several programs that share the work, each has a number, and a processor of its own. */
inline void runOnOneProcessor(size_t number) {
    cpu_set_t all;
    CPU_ZERO(&all);
    sched_getaffinity(0, sizeof(all), &all);
    std::vector<int> processors;
    for (int i = 0; i < CPU_SETSIZE; ++i) {
        if (CPU_ISSET(i, &all)) processors.push_back(i);
    }
    if (!processors.empty()) runOnProcessor(processors[number % processors.size()]);
}

}  // namespace orvo::test
