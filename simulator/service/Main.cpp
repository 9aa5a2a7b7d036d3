// SPDX-License-Identifier: Apache-2.0
// camera_provider_service: loads the passthrough library for each instance and serves it to others.

#include <stdio.h>
#include <unistd.h>

#include <chrono>
#include <climits>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include <android/hardware/camera/provider/2.4/ICameraProvider.h>
#include <hidl/LegacySupport.h>

#include "host/TransportEnd.h"
#include "host/log/ProgramLog.h"
#include "simulator/process/ProgramLife.h"

namespace {

using android::hardware::camera::provider::V2_4::ICameraProvider;

constexpr int kNothingServed = 1;

/**
 * Framework calls, notifications of several providers and the calls that these cause in turn all
 * run at once; with one thread two of them could wait for each other.
 */
constexpr size_t kPoolThreads = 16;

/** @return how many of the instances are served now. */
size_t serveInstances(const std::vector<std::string>& instances) {
    size_t served = 0;
    for (const std::string& instance : instances) {
        const android::status_t status =
                android::hardware::registerPassthroughServiceImplementation<ICameraProvider>(
                        instance);
        if (status == android::OK) {
            served++;
            continue;
        }
        std::cerr << "camera_provider_service: " << instance
                  << " is not served: no library gives it, or the service manager refused it;"
                     " see the lines above\n";
    }
    return served;
}

/** For the calls that are being served when the program is told to end. */
constexpr std::chrono::seconds kLastCalls{1};

/** Before that, a call of the library's that waits for a hung process must not fail: the platform
 *  aborts a service that passes such a failure on. */
void end() {
    if (orvo::stopServing(kLastCalls)) return orvo::endTransport();
    fflush(stderr);
    _exit(0);
}

int serve(const std::vector<std::string>& instances) {
    const orvo::simulator::EndingSignals told(end);
    android::hardware::configureRpcThreadpool(kPoolThreads, true);
    if (serveInstances(instances) == 0) {
        if (told.came()) return 0;
        std::cerr << "camera_provider_service: there is nothing to serve\n";
        return kNothingServed;
    }
    orvo::simulator::announceReady();
    android::hardware::joinRpcThreadpool();
    return 0;
}

/** Whether this is not the only thread; one that was joined is still seen for a moment. */
bool otherThreadsRun() {
    for (int looks = 0; looks < 50; looks++) {
        const std::filesystem::directory_iterator threads("/proc/self/task");
        if (std::distance(begin(threads), std::filesystem::end(threads)) == 1) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

}  // namespace

/**
 * Serves what can be served: one instance that cannot be had leaves the others alone. Ends with 1
 * if none could, with 2 if it was called wrongly, with 0 when told to stop.
 */
int main(int argc, char** argv) {
    orvo::logToStandardError();
    const std::vector<std::string> instances = orvo::simulator::wordsOrLeave(
            argc, argv,
            {"camera_provider_service",
             "Serves the passthrough camera provider library to other processes.", "INSTANCE",
             "instance name, such as legacy/0", INT_MAX});
    const int status = serve(instances);
    orvo::endTransport();
    // The library looks for a provider that died on a thread that nobody joins, for five seconds.
    // That is too long to wait for, and nothing may be destroyed under it.
    if (!otherThreadsRun()) return status;
    fflush(stderr);
    _exit(status);
}
