// SPDX-License-Identifier: Apache-2.0
// The fixture of tests in which providers die.

#include "tests/support/RecoveryTest.h"

#include <poll.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <thread>

#include "tests/support/FailingThreads.h"

namespace orvo::test {
namespace {

// The kernel's own count: a walk over the threads may miss one while another one ends.
int threadCount() {
    std::ifstream status("/proc/self/status");
    std::string word;
    int count = 0;
    while (status >> word && word != "Threads:") {
    }
    status >> count;
    return count;
}

// When the program runs none of its own: a sanitizer brings some along with the first.
int countThreadsAtStart() {
    pid_t first = 0;
    std::thread([&first] { first = gettid(); }).join();
    // It is counted for a moment longer than it can be joined.
    while (tgkill(getpid(), first, 0) == 0) poll(nullptr, 0, 1);
    return threadCount();
}

const int gThreadsAtStart = countThreadsAtStart();

}  // namespace

bool waitUntilNoOtherThreadIsLeft() {
    // A detached thread tells nobody that it has ended, so this has to look again and again.
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    while (threadCount() > gThreadsAtStart) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        poll(nullptr, 0, 1);  // A wait that is not a sleep of the fake clock.
    }
    seeWhatEndedThreadsDid();
    return true;
}

RecoveryTest::RecoveryTest() {
    mSleep.onSleep = [this](std::chrono::nanoseconds) { mReconnection.pass(); };
}

void RecoveryTest::TearDown() {
    finishReconnections();
    mServices.clear();
    ProviderTest::TearDown();
}

void RecoveryTest::connect(const std::vector<std::string>& replacements) {
    for (const std::string& name : replacements) mServices[name] = startService(name);
    makeObject("legacy/0", replacements);
    mObject->initialize();
    mLog.take();
}

uint64_t RecoveryTest::cookie(const std::string& name) {
    return reinterpret_cast<uintptr_t>(descriptor(name));
}

std::vector<LogLine> RecoveryTest::die(const std::string& name) {
    service(name).die();
    return mLog.take();
}

void RecoveryTest::finishReconnections() {
    mReconnection.open();
    EXPECT_TRUE(waitUntilNoOtherThreadIsLeft()) << "a reconnection thread never ended";
}

LogLine RecoveryTest::diedLine(const std::string& name) {
    return errorLine("Camera provider " + name + " has died");
}

LogLine RecoveryTest::withdrawnLine(int notified, int removed, const std::string& type) {
    return infoLine("Notified framework about " + std::to_string(notified) + "/" +
                    std::to_string(removed) + " devices from dead provider " + type);
}

LogLine RecoveryTest::reconnectedLine(const std::string& name, int attempt) {
    return infoLine("Successfully reinitialized provider " + name + " (attempt " +
                    std::to_string(attempt) + ")");
}

LogLine RecoveryTest::gaveUpLine(const std::string& name) {
    return errorLine("Failed to reconnect to " + name + " after 10 attempts");
}

}  // namespace orvo::test
