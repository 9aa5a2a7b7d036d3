// SPDX-License-Identifier: Apache-2.0
// TaskRunner: runs tasks one after the other on a thread of its own.

#pragma once

#include <stddef.h>

#include <functional>
#include <memory>

namespace android {
namespace hardware {
namespace details {

using Task = std::function<void(void)>;

/**
 * First in, first out, on one thread that is started by the first task. Every method may be called
 * on any thread; no task runs under a lock of the runner.
 */
class TaskRunner {
  public:
    TaskRunner();
    /** Does not wait: tasks that are queued still run. */
    ~TaskRunner();

    /** Allows at most `limit` waiting tasks; none are allowed before this. */
    void start(size_t limit);

    /** False for an empty task, before start, and while `limit` tasks wait. */
    bool push(const Task& task);

  private:
    struct Queue;
    /** Shared with the thread, which outlives the runner while tasks wait. */
    const std::shared_ptr<Queue> mQueue;
};

}  // namespace details
}  // namespace hardware
}  // namespace android
