// SPDX-License-Identifier: Apache-2.0
// Running posted tasks and I/O events on one thread.

#define LOG_TAG "hwbinder"

#include "EventLoop.h"

#include <pthread.h>
#include <signal.h>

#include <future>

#include <log/log.h>

#include "ThreadPool.h"

namespace android {
namespace hardware {
namespace transport {

namespace {

thread_local bool tIsLoop = false;

/** Signals are for the program's own threads; a write to a dead peer shows as an error instead. */
void blockSignals() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, nullptr);
}

}  // namespace

EventLoop::EventLoop() {
    std::promise<void> running;
    mThread = std::thread([this, &running] {
        blockSignals();
        tIsLoop = true;
        assertCurrent();
        mContext = kj::heap<kj::AsyncIoContext>(kj::setupAsyncIo());
        running.set_value();
        run();
    });
    pthread_setname_np(mThread.native_handle(), "HwBinder:io");
    running.get_future().wait();
}

void EventLoop::assertCurrent() {
    LOG_ALWAYS_FATAL_IF(!tIsLoop, "This is for the event loop's thread only");
}

kj::LowLevelAsyncIoProvider& EventLoop::io() {
    assertCurrent();
    return *mContext->lowLevelProvider;
}

void EventLoop::release(sp<RefBase> last) {
    if (tIsLoop && last != nullptr) ThreadPool::instance().submit([last = std::move(last)] {});
}

bool EventLoop::post(kj::Function<void()> task) {
    orvo::MutexLock lock(mMutex);
    mTasks.push_back(kj::mv(task));
    if (!mEnded) wakeUpLocked();
    return !mEnded;
}

void EventLoop::end() {
    {
        orvo::MutexLock lock(mMutex);
        mEnding = true;
        wakeUpLocked();
    }
    mThread.join();
}

void EventLoop::wakeUpLocked() {
    KJ_IF_MAYBE (wakeUp, mWakeUp) {
        (*wakeUp)->fulfill();
        mWakeUp = nullptr;
    }
}

void EventLoop::run() {
    assertCurrent();
    kj::WaitScope& waitScope = mContext->waitScope;
    // So many events are handled between two looks at the sockets and at what other threads want.
    waitScope.setBusyPollInterval(64);
    while (true) {
        auto wakeUp = kj::newPromiseAndCrossThreadFulfiller<void>();
        std::deque<kj::Function<void()>> tasks;
        bool ended = false;
        {
            orvo::MutexLock lock(mMutex);
            tasks.swap(mTasks);
            mEnded = ended = mEnding && tasks.empty();
            if (tasks.empty()) mWakeUp = kj::mv(wakeUp.fulfiller);
        }
        // Somebody may wait for what is still to happen.
        if (ended) return (void)waitScope.poll();
        if (tasks.empty()) {
            // All I/O happens in here.
            wakeUp.promise.wait(waitScope);
            continue;
        }
        for (auto& task : tasks) {
            KJ_IF_MAYBE (exception, kj::runCatchingExceptions([&task] { task(); })) {
                ALOGE("Task failed: %s", exception->getDescription().cStr());
            }
        }
        // A flood of tasks must not keep the sockets waiting, nor a flood on them the tasks.
        io().getTimer().afterDelay(0 * kj::NANOSECONDS).wait(waitScope);
    }
}

}  // namespace transport
}  // namespace hardware
}  // namespace android
