// SPDX-License-Identifier: Apache-2.0
// StopWatch: hears when the outer half of a session says that it is over, or is gone.

#pragma once

#include <functional>
#include <thread>

#include <android-base/unique_fd.h>

namespace orvo::simulator {

/** A thread that waits for the end of what can be read from a descriptor. */
class StopWatch {
  public:
    /** Calls the function, at most once, on the thread. */
    StopWatch(android::base::unique_fd stop, std::function<void()> function);
    /** Waits for the function if it has been called. */
    ~StopWatch();

  private:
    const android::base::unique_fd mStop;
    const android::base::unique_fd mFinish;  ///< rung when nobody cares any more
    std::thread mThread;
};

}  // namespace orvo::simulator
