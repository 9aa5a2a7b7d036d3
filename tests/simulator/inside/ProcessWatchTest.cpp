// SPDX-License-Identifier: Apache-2.0
// Tests of what tells a device's supervisor of ends, of connections, and of work for its thread.

#include <signal.h>
#include <sys/wait.h>

#include <atomic>
#include <chrono>
#include <future>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "simulator/camerasim/inside/MainThread.h"
#include "simulator/camerasim/inside/Supervisor.h"
#include "simulator/provider/StatusReporter.h"
#include "tests/simulator/support/FreshDirectory.h"
#include "tests/simulator/support/GatedListener.h"

namespace orvo::simulator::testing {
namespace {

using ::testing::ElementsAre;

constexpr std::chrono::seconds kPatience{30};

class SupervisorObserverTest : public ::testing::Test {
  protected:
    SupervisorObserverTest() {
        mSupervisor.observeEnds([this](const std::string& name, pid_t pid, const std::string& end) {
            std::lock_guard lock(mLock);
            mEnds.push_back(name + " " + end);
            EXPECT_GT(pid, 0);
            EXPECT_FALSE(mSupervisor.isRunning(name)) << "it is told of after it has ended";
        });
    }

    void start(const std::string& name, const std::string& script) {
        const auto started =
                mSupervisor.start({name, {"/bin/sh", "-c", script}, mDirectory.path() + "/log"});
        ASSERT_TRUE(started) << started.error().message();
    }

    std::vector<std::string> ends() {
        std::lock_guard lock(mLock);
        return mEnds;
    }

    FreshDirectory mDirectory;
    std::mutex mLock;
    std::vector<std::string> mEnds;
    Supervisor mSupervisor;
};

TEST_F(SupervisorObserverTest, IsToldBeforeAnybodyWhoWaits) {
    for (int round = 1; round <= 20; round++) {
        start("seven", "exit 7");
        ASSERT_TRUE(mSupervisor.awaitEnd("seven", kPatience));
        ASSERT_EQ(static_cast<size_t>(round), ends().size());
        ASSERT_EQ(round, mSupervisor.historyOf("seven").ends);
    }
    EXPECT_EQ("seven ended with status 7", ends().back());
}

TEST_F(SupervisorObserverTest, AnEndIsAwaitedAlsoIfTheNextOneRunsAlready) {
    start("one", "exit 0");
    ASSERT_TRUE(mSupervisor.awaitMoreEnds("one", 0, kPatience));
    start("one", "exec sleep 600");
    EXPECT_TRUE(mSupervisor.awaitMoreEnds("one", 0, kPatience));
    EXPECT_FALSE(mSupervisor.awaitMoreEnds("one", 1, std::chrono::milliseconds(1)));
}

TEST_F(SupervisorObserverTest, TheHistoryOutlivesTheNextStart) {
    start("one", "exit 3");
    ASSERT_TRUE(mSupervisor.awaitEnd("one", kPatience));
    start("one", "exec sleep 600");
    EXPECT_EQ(1, mSupervisor.historyOf("one").ends);
    EXPECT_EQ("ended with status 3", mSupervisor.historyOf("one").lastEnd);
    EXPECT_EQ("", mSupervisor.endOf("one")) << "the one that runs now has not ended";
    EXPECT_EQ(0, mSupervisor.historyOf("stranger").ends);
}

TEST_F(SupervisorObserverTest, AStoppedProgramIsHungUntilItGoesOn) {
    start("sleeper", "exec sleep 600");
    EXPECT_FALSE(mSupervisor.isHung("sleeper"));
    EXPECT_FALSE(mSupervisor.isHung("stranger"));
    const pid_t pid = *mSupervisor.pidOf("sleeper");
    siginfo_t info;
    ASSERT_TRUE(mSupervisor.signal("sleeper", SIGSTOP));
    ASSERT_EQ(0, waitid(P_PID, pid, &info, WSTOPPED));
    EXPECT_TRUE(mSupervisor.isHung("sleeper"));
    EXPECT_TRUE(mSupervisor.isRunning("sleeper"));
    ASSERT_TRUE(mSupervisor.signal("sleeper", SIGCONT));
    ASSERT_EQ(0, waitid(P_PID, pid, &info, WCONTINUED));
    EXPECT_FALSE(mSupervisor.isHung("sleeper"));
    ASSERT_TRUE(mSupervisor.signal("sleeper", SIGKILL));
    ASSERT_TRUE(mSupervisor.awaitEnd("sleeper", kPatience));
    EXPECT_FALSE(mSupervisor.isHung("sleeper"));
}

TEST_F(SupervisorObserverTest, StoppingTellsOfEveryProgram) {
    start("first", "exec sleep 600");
    start("second", "exec sleep 600");
    mSupervisor.stopAll();
    EXPECT_THAT(ends(), ElementsAre("second ended by signal 15 (Terminated)",
                                    "first ended by signal 15 (Terminated)"));
}

TEST_F(SupervisorObserverTest, StoppingWaitsForTheObserverOfOneThatEndedByItself) {
    std::promise<void> begun, let;
    std::atomic<bool> returned{false};
    mSupervisor.observeEnds([&](const std::string& /*name*/, pid_t /*pid*/, const std::string&) {
        begun.set_value();
        let.get_future().wait();
        returned = true;
    });
    start("one", "exit 0");
    begun.get_future().wait();
    std::thread stopping([&] {
        mSupervisor.stopAll();
        EXPECT_TRUE(returned);
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    let.set_value();
    stopping.join();
}

class ListenerChangesTest : public ::testing::Test {
  protected:
    android::sp<StatusReporter::Link> registerOne() {
        const auto link = mReporter.link(new GatedListener());
        mReporter.replaceListener(link, {});
        return link;
    }

    StatusReporter mReporter;
};

TEST_F(ListenerChangesTest, ARegistrationEndsTheWait) {
    auto waiting = std::async(std::launch::async,
                              [this] { return mReporter.awaitListener(0, kPatience); });
    registerOne();
    const auto changes = waiting.get();
    EXPECT_EQ(1u, changes.count);
    EXPECT_TRUE(changes.present);
}

TEST_F(ListenerChangesTest, ALossEndsTheWait) {
    const auto link = registerOne();
    auto waiting = std::async(std::launch::async,
                              [this] { return mReporter.awaitListener(1, kPatience); });
    link->serviceDied(0, nullptr);
    const auto changes = waiting.get();
    EXPECT_EQ(2u, changes.count);
    EXPECT_FALSE(changes.present);
}

TEST_F(ListenerChangesTest, WhatHappenedBeforeIsToldAtOnce) {
    registerOne();
    registerOne();
    EXPECT_EQ(2u, mReporter.awaitListener(0, kPatience).count);
}

TEST_F(ListenerChangesTest, NothingHappensInTime) {
    const auto changes = mReporter.awaitListener(0, std::chrono::milliseconds(1));
    EXPECT_EQ(0u, changes.count);
    EXPECT_FALSE(changes.present);
}

TEST(MainThreadTest, DoesWhatOthersAskForOnItsOwnThread) {
    MainThread queue;
    std::thread::id ranOn;
    std::thread asker([&] {
        EXPECT_TRUE(queue.perform([&] { ranOn = std::this_thread::get_id(); }));
        queue.stop();
    });
    queue.run();
    asker.join();
    EXPECT_EQ(std::this_thread::get_id(), ranOn);
}

TEST(MainThreadTest, KeepsTheOrderOfTimes) {
    MainThread queue;
    std::vector<int> order;
    queue.post(
            [&] {
                order.push_back(3);
                queue.stop();
            },
            std::chrono::milliseconds(20));
    queue.post([&] { order.push_back(1); });
    queue.post([&] { order.push_back(2); });
    queue.run();
    EXPECT_THAT(order, ElementsAre(1, 2, 3));
}

TEST(MainThreadTest, WhoAsksAfterTheEndIsTold) {
    MainThread queue;
    queue.stop();
    queue.run();
    EXPECT_FALSE(queue.perform([] { FAIL() << "nobody is there to do it"; }));
}

}  // namespace
}  // namespace orvo::simulator::testing
