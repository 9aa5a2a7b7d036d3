// SPDX-License-Identifier: Apache-2.0
// The sleep function of a test process.

#include "tests/support/FakeSleep.h"

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

// The linker sends the calls of the program's own objects here.
extern "C" int __real_nanosleep(const timespec* duration, timespec* remaining);
extern "C" int __wrap_nanosleep(const timespec* duration, timespec* remaining) {
    orvo::test::FakeSleep* const clock = orvo::test::gCurrent;
    if (clock == nullptr) return __real_nanosleep(duration, remaining);
    clock->add(std::chrono::seconds(duration->tv_sec) +
               std::chrono::nanoseconds(duration->tv_nsec));
    return 0;
}
