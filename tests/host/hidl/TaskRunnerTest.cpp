// SPDX-License-Identifier: Apache-2.0
// TaskRunner: order, limits, and what is left when it goes.

#include <future>
#include <memory>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <hidl/TaskRunner.h>
#include <pthread.h>

namespace {

using android::hardware::details::TaskRunner;

TEST(TaskRunnerTest, NothingIsTakenBeforeTheStart) {
    TaskRunner runner;
    EXPECT_FALSE(runner.push([] {}));
}

TEST(TaskRunnerTest, AnEmptyTaskIsRefused) {
    TaskRunner runner;
    runner.start(10);
    EXPECT_FALSE(runner.push(nullptr));
}

TEST(TaskRunnerTest, TasksRunInOrderOnOneOtherThread) {
    TaskRunner runner;
    runner.start(100);
    std::vector<int> order;
    std::vector<std::thread::id> threads;
    std::promise<void> done;
    for (int i = 0; i < 50; i++) {
        ASSERT_TRUE(runner.push([&, i] {
            order.push_back(i);
            threads.push_back(std::this_thread::get_id());
            if (i == 49) done.set_value();
        }));
    }
    done.get_future().wait();
    for (int i = 0; i < 50; i++) {
        EXPECT_EQ(i, order[i]);
        EXPECT_EQ(threads[0], threads[i]);
    }
    EXPECT_NE(std::this_thread::get_id(), threads[0]);
}

TEST(TaskRunnerTest, TheThreadHasAName) {
    TaskRunner runner;
    runner.start(1);
    std::promise<std::string> name;
    ASSERT_TRUE(runner.push([&] {
        char text[16] = {};
        pthread_getname_np(pthread_self(), text, sizeof(text));
        name.set_value(text);
    }));
    EXPECT_EQ("HIDL TaskRunner", name.get_future().get());
}

TEST(TaskRunnerTest, OnlySoManyTasksMayWait) {
    TaskRunner runner;
    runner.start(2);
    std::promise<void> running;
    std::promise<void> gate;
    std::shared_future<void> opened = gate.get_future().share();
    ASSERT_TRUE(runner.push([&running, opened] {
        running.set_value();
        opened.wait();
    }));
    // The task that runs does not wait any more.
    running.get_future().wait();
    EXPECT_TRUE(runner.push([] {}));
    std::promise<void> last;
    EXPECT_TRUE(runner.push([&] { last.set_value(); }));
    EXPECT_FALSE(runner.push([] {}));
    gate.set_value();
    last.get_future().wait();
    EXPECT_TRUE(runner.push([] {}));
}

TEST(TaskRunnerTest, QueuedTasksStillRunWhenTheRunnerIsGone) {
    auto runner = std::make_unique<TaskRunner>();
    runner->start(10);
    std::promise<void> running;
    std::promise<void> gate;
    std::promise<void> last;
    std::shared_future<void> opened = gate.get_future().share();
    ASSERT_TRUE(runner->push([&running, opened] {
        running.set_value();
        opened.wait();
    }));
    ASSERT_TRUE(runner->push([&last] { last.set_value(); }));
    running.get_future().wait();
    // Does not wait for the task that holds the thread.
    runner.reset();
    gate.set_value();
    last.get_future().wait();
}

TEST(TaskRunnerTest, ATaskMayPushAndMayDestroyTheRunner) {
    auto runner = std::make_shared<TaskRunner>();
    runner->start(10);
    std::promise<bool> pushed;
    std::promise<void> ran;
    TaskRunner* raw = runner.get();
    ASSERT_TRUE(raw->push([&pushed, &ran, owner = std::move(runner)]() mutable {
        const bool taken = owner->push([&ran] { ran.set_value(); });
        owner.reset();
        pushed.set_value(taken);
    }));
    EXPECT_TRUE(pushed.get_future().get());
    ran.get_future().wait();
}

}  // namespace
