// SPDX-License-Identifier: Apache-2.0
// The device's camera provider service: loads the library for each instance that its .rc names and
// serves it to other processes.

#include <stdlib.h>

#include <android/hardware/camera/provider/2.4/ICameraProvider.h>
#include <android/log.h>
#include <hidl/LegacySupport.h>

namespace {

using android::hardware::camera::provider::V2_4::ICameraProvider;

constexpr char kLogTag[] = "OrvoCameraService";

/**
 * Calls of the framework, notifications of several providers, deaths, and the calls that all these
 * make in turn run at the same time. With one thread, a callback that blocks would delay the news
 * of every death.
 */
constexpr size_t kPoolThreads = 8;

}  // namespace

/**
 * Serves what can be served: an instance that cannot be had leaves the others alone. Ends, with
 * status 1, only when there is nothing to serve; init then starts it again.
 */
int main(int argc, char** argv) {
    if (argc < 2) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                            "No instance to serve: name them after the program in the .rc file");
        return EXIT_FAILURE;
    }

    android::hardware::configureRpcThreadpool(kPoolThreads, true /* callerWillJoin */);
    int served = 0;
    for (int i = 1; i < argc; ++i) {
        const android::status_t status =
                android::hardware::registerPassthroughServiceImplementation<ICameraProvider>(
                        argv[i]);
        if (status == android::OK) {
            ++served;
            continue;
        }
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Not serving %s: status %d", argv[i],
                            status);
    }
    if (served == 0) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "None of %d instances can be served",
                            argc - 1);
        return EXIT_FAILURE;
    }
    android::hardware::joinRpcThreadpool();
    return EXIT_FAILURE;
}
