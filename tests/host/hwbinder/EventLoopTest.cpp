// SPDX-License-Identifier: Apache-2.0
// What belongs to the event loop stays there, and what may wait never runs on it.

#include "EventLoop.h"

#include <future>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "ThreadPool.h"

namespace {

using namespace android;
using namespace android::hardware::transport;

/** Tells on which thread it was destroyed. */
class Witness : public RefBase {
  public:
    explicit Witness(std::promise<std::thread::id>* destroyedOn) : mDestroyedOn(destroyedOn) {}

  protected:
    ~Witness() override { mDestroyedOn->set_value(std::this_thread::get_id()); }

  private:
    std::promise<std::thread::id>* const mDestroyedOn;
};

/** Its thread runs until the process has ended. */
EventLoop& eventLoop() {
    static EventLoop& loop = *new EventLoop();
    return loop;
}

TEST(EventLoopTest, WhatIsForTheLoopEndsTheProcessElsewhere) {
    EXPECT_DEATH(EventLoop::assertCurrent(), "for the event loop's thread only");
}

TEST(EventLoopTest, WhatIsForTheLoopRunsThere) {
    std::promise<void> done;
    eventLoop().post([&done] {
        eventLoop().io();
        done.set_value();
    });
    done.get_future().wait();
}

TEST(EventLoopTest, WhatIsPostedBeforeItsEndRunsAndWhatIsPostedAfterDoesNot) {
    static auto& ended = *new std::vector<EventLoop*>();  // none is ever destroyed
    EventLoop& loop = *ended.emplace_back(new EventLoop());
    int runs = 0;
    EXPECT_TRUE(loop.post([&runs] { runs++; }));
    loop.end();
    EXPECT_EQ(1, runs);
    EXPECT_FALSE(loop.post([&runs] { runs++; }));
    EXPECT_EQ(1, runs);
}

TEST(EventLoopTest, AnObjectThatIsReleasedOnTheLoopGoesOnAPoolThread) {
    ThreadPool::instance().start();
    std::promise<std::thread::id> destroyedOn;
    std::promise<std::thread::id> releasedOn;
    eventLoop().post([&releasedOn, last = sp<RefBase>(new Witness(&destroyedOn))]() mutable {
        EventLoop::release(std::move(last));
        releasedOn.set_value(std::this_thread::get_id());
    });
    const std::thread::id destroyer = destroyedOn.get_future().get();
    EXPECT_NE(destroyer, releasedOn.get_future().get());
    EXPECT_NE(destroyer, std::this_thread::get_id());
}

TEST(EventLoopTest, AnObjectThatIsReleasedElsewhereGoesThere) {
    std::promise<std::thread::id> destroyedOn;
    EventLoop::release(new Witness(&destroyedOn));
    EXPECT_EQ(std::this_thread::get_id(), destroyedOn.get_future().get());
}

}  // namespace
