// SPDX-License-Identifier: Apache-2.0
// Timeline: what has happened to a running device, numbered, for any number of readers.

#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <set>
#include <string>
#include <vector>

#include <android-base/unique_fd.h>

#include "host/Mutex.h"
#include "simulator/control/Protocol.h"

namespace orvo::simulator {

/**
 * The newest events of a device, in memory.
 *
 * Adding never waits for a reader. Who wants to be told of new events holds a Bell and polls it
 * beside whatever else it waits for. Every method may be called on any thread.
 */
class Timeline {
  public:
    /** An older event is forgotten when this many newer ones are there. */
    static constexpr size_t kKept = 10000;

    explicit Timeline(size_t kept = kKept);
    Timeline(const Timeline&) = delete;
    Timeline& operator=(const Timeline&) = delete;

    /** Appends an event with the next number and the time of now, and rings every bell. */
    void add(const std::string& kind, const std::string& who, const std::string& what);

    /** The events from that number on, oldest first; those that are forgotten are left out. */
    std::vector<TimelineEvent> events(int64_t from) const;
    /** The number that the next event will have. */
    int64_t next() const;
    double secondsSinceStart() const;

    /** Rings when an event is added. The timeline must outlive it. */
    class Bell {
      public:
        explicit Bell(Timeline& timeline);
        ~Bell();
        Bell(const Bell&) = delete;
        Bell& operator=(const Bell&) = delete;

        /** Readable while it rings; -1 if the system had none to give, and then it never rings. */
        int fd() const { return mFd.get(); }
        /** To be called before the events are read, so that none is missed. */
        void silence() const;

      private:
        Timeline& mTimeline;
        const android::base::unique_fd mFd;
    };

  private:
    const size_t mKept;
    const std::chrono::steady_clock::time_point mStart = std::chrono::steady_clock::now();
    mutable Mutex mLock;
    std::deque<TimelineEvent> mEvents GUARDED_BY(mLock);
    int64_t mNext GUARDED_BY(mLock) = 1;
    std::set<int> mBells GUARDED_BY(mLock);  ///< descriptors to ring
};

}  // namespace orvo::simulator
