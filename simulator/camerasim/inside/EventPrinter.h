// SPDX-License-Identifier: Apache-2.0
// EventPrinter: prints the timeline of a device as it goes on.

#pragma once

#include <string>
#include <thread>

#include <android-base/unique_fd.h>

#include "host/Mutex.h"
#include "simulator/camerasim/inside/Timeline.h"

namespace orvo::simulator {

/** One line of the timeline for a person, without its end. */
std::string eventLine(const TimelineEvent& event, bool colour);

/** A thread that writes to stdout; the device never waits for it. */
class EventPrinter {
  public:
    /** Begins to print. */
    EventPrinter(Timeline& timeline, bool colour);
    /** Prints what is left; not more than a second's worth, for a terminal may stand still. */
    void finish();

  private:
    void printUntilFinished();

    Timeline& mTimeline;
    const bool mColour;
    android::base::unique_fd mFinishFd;  ///< rung by finish()
    Mutex mLock;
    ConditionVariable mChanged;
    bool mDone GUARDED_BY(mLock) = false;
};

}  // namespace orvo::simulator
