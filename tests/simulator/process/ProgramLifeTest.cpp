// SPDX-License-Identifier: Apache-2.0
// Tests of how programs hear that they shall end. As the signals stay blocked, each of these tests
// has a process of its own.

#include "simulator/process/ProgramLife.h"

#include <stdlib.h>
#include <unistd.h>

#include <future>

#include <gtest/gtest.h>

namespace orvo::simulator::testing {
namespace {

constexpr std::chrono::seconds kPatience{20};

/** @return 0 if it is called once, by the first of them. */
int hearsOf(int signal) {
    std::promise<void> heard;
    {
        const EndingSignals told([&heard] { heard.set_value(); });
        if (told.came()) return 1;
        kill(getpid(), signal);
        if (heard.get_future().wait_for(kPatience) != std::future_status::ready) return 2;
        if (!told.came()) return 3;
        kill(getpid(), signal);
    }
    return 0;
}

TEST(EndingSignalsTest, AreHeardOfOnce) {
    EXPECT_EXIT(exit(hearsOf(SIGTERM)), ::testing::ExitedWithCode(0), "");
    EXPECT_EXIT(exit(hearsOf(SIGINT)), ::testing::ExitedWithCode(0), "");
}

TEST(EndingSignalsTest, NeedNotCome) {
    EXPECT_EXIT(
            {
                bool heard = false;
                {
                    const EndingSignals told([&heard] { heard = true; });
                }
                exit(heard ? 1 : 0);
            },
            ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace orvo::simulator::testing
