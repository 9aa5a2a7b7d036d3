// SPDX-License-Identifier: Apache-2.0
// EventPrinter: prints the timeline of a headset as it goes on.

#pragma once

#include <pthread.h>

#include <atomic>
#include <string>
#include <thread>

#include <android-base/unique_fd.h>

#include "simulator/camerasim/inside/Timeline.h"

namespace orvo::simulator {

/** A thread that writes to stdout; the headset never waits for it. */
class EventPrinter {
  public:
    /** Begins to print: the greeting, then a line for each event. */
    EventPrinter(Timeline& timeline, std::string greeting, bool colour);
    /** Prints what is left; not more than a second's worth, for a terminal may stand still. */
    ~EventPrinter();

  private:
    void print();
    /** False if nobody reads, or nobody has read until the patience was over. */
    bool write(const std::string& text);

    Timeline& mTimeline;
    const std::string mGreeting;
    const bool mColour;
    const android::base::unique_fd mFinishFd;  ///< rung when nothing more will happen
    std::atomic<bool> mGivenUp{false};
    std::atomic<bool> mDone{false};
    std::thread mThread;
};

}  // namespace orvo::simulator
