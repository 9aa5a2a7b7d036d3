// SPDX-License-Identifier: Apache-2.0
// ProcessUse: how many threads and descriptors a process has, so that none is left over unseen.

#pragma once

#include <sys/types.h>

#include <chrono>
#include <ostream>
#include <set>

namespace orvo::simulator::testing {

struct ProcessUse {
    size_t threads = 0;
    /** Without the two pipes to each program that it started, such as a sanitizer's symbolizer. */
    size_t descriptors = 0;

    static ProcessUse of(pid_t process);

    bool operator==(const ProcessUse& other) const {
        return threads == other.threads && descriptors == other.descriptors;
    }
};

/** For messages of failed tests. */
std::ostream& operator<<(std::ostream& out, const ProcessUse& use);

/**
 * Waits until the process has as many as that. A thread or a connection that is ending takes a
 * moment to go, of which nobody outside the process is told.
 *
 * @return what it has in the end.
 */
ProcessUse awaitUse(pid_t process, const ProcessUse& wanted,
                    std::chrono::milliseconds patience = std::chrono::seconds(10));

/** Processes whose parent is that one; such as have ended and were not waited for count too. */
std::set<pid_t> childrenOf(pid_t parent);

}  // namespace orvo::simulator::testing
