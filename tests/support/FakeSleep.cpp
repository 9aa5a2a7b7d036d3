// SPDX-License-Identifier: Apache-2.0
// The sleep function of a test process.

#include "tests/support/FakeSleep.h"

#include <errno.h>
#include <stdlib.h>
#include <time.h>

#include <atomic>

namespace orvo::test {
namespace {

// A detached thread may look at it while the test that started the thread already ends.
std::atomic<FakeSleep*> gCurrent = nullptr;

}  // namespace

FakeSleep::FakeSleep() {
    if (gCurrent != nullptr) abort();  // Two clocks would split the sleeps.
    gCurrent = this;
}

FakeSleep::~FakeSleep() {
    gCurrent = nullptr;
}

std::vector<std::chrono::nanoseconds> FakeSleep::sleeps() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mSleeps;
}

void FakeSleep::add(std::chrono::nanoseconds duration) {
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mSleeps.push_back(duration);
    }
    if (onSleep) onSleep(duration);
}

}  // namespace orvo::test

// The program's own definition comes before the C library's, also for sleeps of the C++ library,
// which is a library of its own on a device.
extern "C" int nanosleep(const timespec* duration, timespec* remaining) {
    orvo::test::FakeSleep* const clock = orvo::test::gCurrent;
    if (clock == nullptr) {
        const int failure = clock_nanosleep(CLOCK_REALTIME, 0, duration, remaining);
        if (failure != 0) errno = failure;
        return failure == 0 ? 0 : -1;
    }
    clock->add(std::chrono::seconds(duration->tv_sec) +
               std::chrono::nanoseconds(duration->tv_nsec));
    return 0;
}
