// SPDX-License-Identifier: Apache-2.0
// Counts the fakes that are alive.

#include "tests/support/CountedInstance.h"

#include <condition_variable>
#include <mutex>

namespace orvo::test {
namespace {

struct Count {
    std::mutex mutex;
    std::condition_variable changed;
    int alive = 0;
};

// Never destroyed: a detached thread may let go of a fake while the process exits.
Count& count() {
    static Count& instance = *new Count;
    return instance;
}

void change(int difference) {
    const std::lock_guard<std::mutex> lock(count().mutex);
    count().alive += difference;
    count().changed.notify_all();
}

}  // namespace

int CountedInstance::alive() {
    const std::lock_guard<std::mutex> lock(count().mutex);
    return count().alive;
}

bool CountedInstance::waitUntilNoneIsAlive(std::chrono::milliseconds timeout) {
    std::unique_lock<std::mutex> lock(count().mutex);
    return count().changed.wait_for(lock, timeout, [] { return count().alive == 0; });
}

CountedInstance::CountedInstance() {
    change(1);
}

CountedInstance::CountedInstance(const CountedInstance&) {
    change(1);
}

CountedInstance::~CountedInstance() {
    change(-1);
}

}  // namespace orvo::test
