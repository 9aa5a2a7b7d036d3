// SPDX-License-Identifier: Apache-2.0
// TaskRunner: the queue and the thread that empties it.

#include <hidl/TaskRunner.h>

#include <deque>
#include <thread>
#include <utility>

#include <utils/AndroidThreads.h>

#include "host/Mutex.h"

namespace android {
namespace hardware {
namespace details {

struct TaskRunner::Queue {
    orvo::Mutex mutex;
    /** Tells the thread of a new task or of the end. */
    orvo::ConditionVariable changed;
    std::deque<Task> waiting GUARDED_BY(mutex);
    size_t limit GUARDED_BY(mutex) = 0;
    bool hasThread GUARDED_BY(mutex) = false;
    /** The runner is gone: the thread ends when nothing waits any more. */
    bool closed GUARDED_BY(mutex) = false;

    void run();
};

void TaskRunner::Queue::run() {
    orvo::MutexLock lock(mutex);
    for (;;) {
        changed.wait(lock, [this]() REQUIRES(mutex) { return closed || !waiting.empty(); });
        if (waiting.empty()) return;
        Task task = std::move(waiting.front());
        waiting.pop_front();
        lock.unlock();
        task();
        // What the task holds goes before the lock is taken: its destructor may push again.
        task = nullptr;
        lock.lock();
    }
}

TaskRunner::TaskRunner() : mQueue(std::make_shared<Queue>()) {}

TaskRunner::~TaskRunner() {
    orvo::MutexLock lock(mQueue->mutex);
    mQueue->closed = true;
    mQueue->changed.notify_one();
}

void TaskRunner::start(size_t limit) {
    orvo::MutexLock lock(mQueue->mutex);
    mQueue->limit = limit;
}

bool TaskRunner::push(const Task& task) {
    if (task == nullptr) return false;
    orvo::MutexLock lock(mQueue->mutex);
    if (mQueue->waiting.size() >= mQueue->limit) return false;
    mQueue->waiting.push_back(task);
    mQueue->changed.notify_one();
    if (!mQueue->hasThread) {
        mQueue->hasThread = true;
        std::thread([queue = mQueue] {
            androidSetThreadName("HIDL TaskRunner");
            queue->run();
        }).detach();
    }
    return true;
}

}  // namespace details
}  // namespace hardware
}  // namespace android
