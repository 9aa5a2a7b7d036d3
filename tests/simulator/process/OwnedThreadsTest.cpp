// SPDX-License-Identifier: Apache-2.0
// Tests of threads that have an owner, and of calls that may hang.

#include <algorithm>
#include <atomic>
#include <fstream>
#include <future>
#include <iterator>
#include <optional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "simulator/process/LimitedCalls.h"
#include "simulator/process/OwnedThreads.h"

namespace orvo::simulator::testing {
namespace {

using std::chrono::milliseconds;

constexpr std::chrono::seconds kPatience{30};

TEST(OwnedThreadsTest, AreWaitedForByTheirOwner) {
    std::atomic<int> ended{0};
    {
        OwnedThreads threads;
        for (int i = 0; i < 8; i++) {
            threads.start([&ended] {
                std::this_thread::sleep_for(milliseconds(5));
                ended++;
            });
        }
    }
    EXPECT_EQ(8, ended);
}

TEST(OwnedThreadsTest, MayStartOthersWhileTheyAreWaitedFor) {
    bool ended = false;
    {
        OwnedThreads threads;
        threads.start([&] {
            std::this_thread::sleep_for(milliseconds(5));
            threads.start([&ended] { ended = true; });
        });
    }
    EXPECT_TRUE(ended);
}

/** Pieces of memory that are mapped: the stack of a thread that nobody has joined is one. */
int64_t mappings() {
    std::ifstream maps("/proc/self/maps");
    return std::count(std::istreambuf_iterator<char>(maps), {}, '\n');
}

TEST(OwnedThreadsTest, ThatHaveEndedLeaveNothingBehind) {
    OwnedThreads threads;
    const int64_t before = mappings();
    for (int i = 0; i < 200; i++) {
        std::promise<void> ran;
        threads.start([&ran] { ran.set_value(); });
        ran.get_future().wait();
    }
    EXPECT_LT(mappings(), before + 100);
}

TEST(LimitedCallsTest, GiveTheResultOrGoOnWithoutIt) {
    std::promise<void> gate;
    LimitedCalls calls(2);
    EXPECT_EQ(7, calls.within<int>(kPatience, [] { return 7; }));
    const auto slow = calls.within<int>(milliseconds(1), [&gate] {
        gate.get_future().wait();
        return 7;
    });
    EXPECT_EQ(std::nullopt, slow);
    EXPECT_EQ(8, calls.within<int>(kPatience, [] { return 8; })) << "there is a second place";
    gate.set_value();
}

TEST(LimitedCallsTest, AreNotBegunWhileTooManyOthersHang) {
    std::promise<void> gate;
    LimitedCalls calls(1);
    const auto hung = calls.within<int>(milliseconds(1), [&gate] {
        gate.get_future().wait();
        return 1;
    });
    EXPECT_EQ(std::nullopt, hung);
    const auto later = calls.within<int>(milliseconds(1), []() -> int {
        ADD_FAILURE() << "began beside the one that hangs, or after its caller went on";
        return 2;
    });
    EXPECT_EQ(std::nullopt, later);
    gate.set_value();
    EXPECT_EQ(3, calls.within<int>(kPatience, [] { return 3; })) << "its place is free again";
}

TEST(LimitedCallsTest, AreWaitedForByTheirOwner) {
    std::promise<void> gate;
    std::atomic<bool> ended{false};
    std::thread opens;
    {
        LimitedCalls calls(1);
        calls.within<int>(milliseconds(1), [&] {
            gate.get_future().wait();
            ended = true;
            return 0;
        });
        opens = std::thread([&gate] { gate.set_value(); });
    }
    EXPECT_TRUE(ended);
    opens.join();
}

}  // namespace
}  // namespace orvo::simulator::testing
