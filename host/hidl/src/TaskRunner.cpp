// SPDX-License-Identifier: Apache-2.0
// TaskRunner: the queue and the thread that empties it.

#include <hidl/TaskRunner.h>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

#include <utils/AndroidThreads.h>

namespace android {
namespace hardware {
namespace details {

struct TaskRunner::Queue {
    std::mutex mutex;
    /** Tells the thread of a new task or of the end. */
    std::condition_variable changed;
    // The rest is guarded by the mutex.
    std::deque<Task> waiting;
    size_t limit = 0;
    bool hasThread = false;
    /** The runner is gone: the thread ends when nothing waits any more. */
    bool closed = false;

    void run();
};

void TaskRunner::Queue::run() {
    std::unique_lock<std::mutex> lock(mutex);
    for (;;) {
        changed.wait(lock, [this] { return closed || !waiting.empty(); });
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
    std::lock_guard<std::mutex> lock(mQueue->mutex);
    mQueue->closed = true;
    mQueue->changed.notify_one();
}

void TaskRunner::start(size_t limit) {
    std::lock_guard<std::mutex> lock(mQueue->mutex);
    mQueue->limit = limit;
}

bool TaskRunner::push(const Task& task) {
    if (task == nullptr) return false;
    std::lock_guard<std::mutex> lock(mQueue->mutex);
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
