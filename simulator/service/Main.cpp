// SPDX-License-Identifier: Apache-2.0
// camera_provider_service: loads the passthrough library for each instance and serves it to others.

#include <unistd.h>

#include <climits>
#include <iostream>
#include <string>
#include <vector>

#include <android/hardware/camera/provider/2.4/ICameraProvider.h>
#include <hidl/LegacySupport.h>

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

}  // namespace

/**
 * Serves what can be served: one instance that cannot be had leaves the others alone. Ends with 1
 * if none could, with 2 if it was called wrongly, with 0 when told to stop.
 */
int main(int argc, char** argv) {
    const std::vector<std::string> instances = orvo::simulator::wordsOrLeave(
            argc, argv,
            {"camera_provider_service",
             "Serves the passthrough camera provider library to other processes.", "INSTANCE",
             "instance name, such as legacy/0", INT_MAX});
    orvo::simulator::endQuietlyOnSignals();
    android::hardware::configureRpcThreadpool(kPoolThreads, true);
    if (serveInstances(instances) == 0) {
        std::cerr << "camera_provider_service: there is nothing to serve\n";
        _exit(kNothingServed);
    }
    orvo::simulator::announceReady();
    android::hardware::joinRpcThreadpool();
    _exit(0);
}
