// SPDX-License-Identifier: Apache-2.0
// What the thread sanitizer reports with the suppressions in use: every race but those that are
// meant to be.

#include <pthread.h>
#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/ProviderTest.h"

namespace orvo::test {
namespace {

using android::sp;
using testing::ExitedWithCode;

constexpr int kReported = 66;  // The sanitizer's own status.
constexpr int kRounds = 300;

/** Runs both again and again, at the same time and ordered by nothing. */
void runTogether(const std::function<void()>& one, const std::function<void()>& other) {
    pthread_barrier_t start;
    pthread_barrier_init(&start, nullptr, 2);
    const auto repeat = [&start](const std::function<void()>& action) {
        pthread_barrier_wait(&start);
        for (int i = 0; i < kRounds; i++) action();
    };
    std::thread thread([&] { repeat(other); });
    repeat(one);
    thread.join();
}

/** What a process says at its end if that entry of the suppressions was needed. */
std::string matched(const std::string& entry) {
    return "Matched.*race:[^\n]*" + entry;
}

class ThreadSanitizerTest : public ProviderTest {
  protected:
    ThreadSanitizerTest() {
        // For the processes of the tests, which then say what was suppressed.
        setenv("TSAN_OPTIONS", "print_suppressions=1", 1);
    }

    void replaceCallbacksWhile(const std::function<void()>& action) {
        makeObject("legacy/0", {});
        // Neither of them ever goes away, as a callback that is in use might.
        const sp<RecordingCallback> other = new RecordingCallback;
        mObject->setCallback(mFramework);
        runTogether(action, [&] {
            mObject->setCallback(other);
            mObject->setCallback(mFramework);
        });
        exit(0);
    }

    void reconnectWhile(const std::function<void()>& action) {
        makeConnectedObject({"external/0"});
        // Each time with the same service and the same shim: a reader that meets half of a
        // replacement by another one would crash, as it may on a device.
        const auto service = descriptor("external/0")->mProvider;
        const sp<ScriptedProvider> shim = mShims.shim("external/0");
        runTogether(action, [&] {
            mShims.prepare("external/0", shim);
            mObject->initializeProviderService(descriptor("external/0"), "external/0");
        });
        exit(0);
    }
};

TEST(ThreadSanitizerSuppressionsTest, NameTheThreeReferencesAndNothingElse) {
    std::ifstream file(ORVO_TSAN_SUPPRESSIONS);
    std::vector<std::string> entries;
    for (std::string line; std::getline(file, line);) {
        if (!line.empty() && line[0] != '#') entries.push_back(line);
    }
    EXPECT_THAT(entries,
                testing::ElementsAre(
                        testing::ContainsRegex("^race:.*sp<.*ICameraProviderCallback>::sp"),
                        testing::ContainsRegex("^race:.*sp<.*ICameraProvider>::sp"),
                        testing::ContainsRegex("^race:.*wp<.*ICameraProvider>::promote"),
                        testing::ContainsRegex("^race:.*sp<.*ICameraProviderCallback>::get"),
                        testing::ContainsRegex("^race:.*sp<.*ICameraProvider>::get")));
}

TEST_F(ThreadSanitizerTest, AnInjectedRaceIsReported) {
    int shared = 0;
    const auto increment = [&shared] { shared = shared + 1; };
    EXPECT_EXIT(
            {
                runTogether(increment, increment);
                exit(0);
            },
            ExitedWithCode(kReported), "ThreadSanitizer: data race");
}

TEST_F(ThreadSanitizerTest, ALookAtTheActiveDevicesWithoutTheirLockIsReported) {
    makeObject("legacy/0", {"external/0"});
    EXPECT_EXIT(
            {
                runTogether(
                        [this] {
                            for (const auto status :
                                 {CameraDeviceStatus::PRESENT, CameraDeviceStatus::NOT_PRESENT}) {
                                mObject->cameraDeviceStatusChange("device@3.2/external/1", status);
                            }
                        },
                        [this] { mObject->mActiveDevices.count("device@3.2/legacy/1"); });
                exit(0);
            },
            ExitedWithCode(kReported), "ThreadSanitizer: data race");
}

TEST_F(ThreadSanitizerTest, ReplacingTheCallbackDuringANotificationIsMeantToBe) {
    EXPECT_EXIT(replaceCallbacksWhile([this] {
                    mObject->torchModeStatusChange("device@3.2/external/1",
                                                   TorchModeStatus::AVAILABLE_ON);
                }),
                ExitedWithCode(0), matched("sp<.*ICameraProviderCallback>::sp\\("));
}

TEST_F(ThreadSanitizerTest, ReconnectingWhileVendorTagsAreReadIsMeantToBe) {
    EXPECT_EXIT(reconnectWhile([this] { mObject->getVendorTags([](auto, const auto&) {}); }),
                ExitedWithCode(0), matched("sp<.*ICameraProvider>::sp\\("));
}

TEST_F(ThreadSanitizerTest, ReconnectingWhileCamerasAreListedIsMeantToBe) {
    EXPECT_EXIT(reconnectWhile([this] { mObject->getCameraIdList([](auto, const auto&) {}); }),
                ExitedWithCode(0), matched("wp<.*ICameraProvider>::promote\\("));
}

TEST_F(ThreadSanitizerTest, LookingAtTheObjectWhileAllOfThemAreReplacedIsMeantToBe) {
    // A handle with a descriptor, so that there is somebody to tell.
    native_handle_t* const handle = native_handle_create(1, 0);
    handle->data[0] = STDERR_FILENO;
    const auto look = [&] { mObject->debug(android::hardware::hidl_handle(handle), {}); };
    EXPECT_EXIT(replaceCallbacksWhile(look), ExitedWithCode(0),
                matched("sp<.*ICameraProviderCallback>::get\\("));
    EXPECT_EXIT(reconnectWhile(look), ExitedWithCode(0), matched("sp<.*ICameraProvider>::get\\("));
    native_handle_delete(handle);
}

}  // namespace
}  // namespace orvo::test
