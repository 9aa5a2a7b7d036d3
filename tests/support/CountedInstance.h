// SPDX-License-Identifier: Apache-2.0
// Lets a test prove that nothing it made is left alive.
#pragma once

#include <chrono>

#include "tests/support/CapturedLog.h"

namespace orvo::test {

/** Base of every fake: counts the fakes that are alive in the process. */
class CountedInstance {
  public:
    /** How many are alive now. */
    static int alive();
    /** Waits until none is alive. False when one still is at the end of the time. */
    static bool waitUntilNoneIsAlive(std::chrono::milliseconds timeout = kPatience);

  protected:
    CountedInstance();
    CountedInstance(const CountedInstance&);
    CountedInstance& operator=(const CountedInstance&) = default;
    ~CountedInstance();
};

}  // namespace orvo::test
