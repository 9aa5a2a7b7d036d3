// SPDX-License-Identifier: Apache-2.0
// Timeline: a bounded list, and one eventfd for each who waits for more.

#include "simulator/camerasim/inside/Timeline.h"

#include <sys/eventfd.h>
#include <time.h>

#include <cstdio>

namespace orvo::simulator {

namespace {

/** The time of day, local, with microseconds. */
std::string timeOfDay() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm parts{};
    localtime_r(&now.tv_sec, &parts);
    char text[32];
    snprintf(text, sizeof(text), "%02d:%02d:%02d.%06ld", parts.tm_hour, parts.tm_min, parts.tm_sec,
             now.tv_nsec / 1000);
    return text;
}

}  // namespace

Timeline::Timeline(size_t kept) : mKept(kept) {}

void Timeline::add(const std::string& kind, const std::string& who, const std::string& what) {
    MutexLock lock(mLock);
    // Taken under the lock, so that the times are in the order of the numbers.
    mEvents.push_back({mNext++, timeOfDay(), secondsSinceStart(), kind, who, what});
    if (mEvents.size() > mKept) mEvents.pop_front();
    // Never blocks: a bell that has been ringing for 2^64 events would be the first to fail.
    for (const int bell : mBells) (void)eventfd_write(bell, 1);
}

std::vector<TimelineEvent> Timeline::events(int64_t from) const {
    MutexLock lock(mLock);
    std::vector<TimelineEvent> found;
    const int64_t first = mNext - static_cast<int64_t>(mEvents.size());
    for (int64_t number = from < first ? first : from; number < mNext; number++) {
        found.push_back(mEvents[number - first]);
    }
    return found;
}

int64_t Timeline::next() const {
    MutexLock lock(mLock);
    return mNext;
}

double Timeline::secondsSinceStart() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - mStart).count();
}

Timeline::Bell::Bell(Timeline& timeline)
    : mTimeline(timeline), mFd(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    MutexLock lock(mTimeline.mLock);
    if (mFd.ok()) mTimeline.mBells.insert(mFd.get());
}

Timeline::Bell::~Bell() {
    MutexLock lock(mTimeline.mLock);
    mTimeline.mBells.erase(mFd.get());
}

void Timeline::Bell::silence() const {
    eventfd_t rung = 0;
    (void)eventfd_read(mFd.get(), &rung);
}

}  // namespace orvo::simulator
