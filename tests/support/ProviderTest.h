// SPDX-License-Identifier: Apache-2.0
// The fixture of the provider object's tests: the object with fakes all around it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <android-base/thread_annotations.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "provider/OrvoCameraServiceImplementation.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/FakeProperties.h"
#include "tests/support/FakeProviderMapper.h"
#include "tests/support/FakeServiceInteractionProxy.h"
#include "tests/support/FakeShimFactory.h"
#include "tests/support/FakeSleep.h"
#include "tests/support/RecordingCallback.h"
#include "tests/support/ScriptedProvider.h"

namespace orvo::test {

/** Lines of the provider object, by priority. */
LogLine infoLine(const std::string& text);
LogLine warningLine(const std::string& text);
LogLine errorLine(const std::string& text);

/** The two lines with which the process ends. */
std::vector<LogLine> shutdownLines();

/** What a death test expects on standard error: `lines`, and then the two last ones. */
std::string shutdownText(std::vector<LogLine> lines);

class ProviderTest : public ::testing::Test {
  protected:
    using Object = android::hardware::camera::provider::V2_4::implementation::
            OrvoCameraServiceImplementation;
    using Descriptor = Object::HALDescriptor;
    using Status = android::hardware::camera::common::V1_0::Status;
    using CameraDeviceStatus = android::hardware::camera::common::V1_0::CameraDeviceStatus;
    using TorchModeStatus = android::hardware::camera::common::V1_0::TorchModeStatus;

    ProviderTest();
    /** Lets go of everything and proves that nothing of it is left alive. */
    void TearDown() override;

    /** Makes mObject for `name` in front of `replacements`, unconnected. Forgets the log lines. */
    void makeObject(const std::string& name, const std::vector<std::string>& replacements);
    /**
     * Makes mObject for "legacy/0" in front of `replacements`, with a running service for each,
     * all connected. Forgets the log lines.
     */
    void makeConnectedObject(const std::vector<std::string>& replacements);
    /** Declares and starts a provider; does not connect it. */
    android::sp<ScriptedProvider> startService(const std::string& name);

    /** The descriptor of that name in mObject. */
    Descriptor* descriptor(const std::string& name);
    /** Reports the devices present, through the callback face. Forgets the log lines. */
    void reportPresent(const std::vector<std::string>& providerDeviceNames);
    /** A copy of mObject's active devices. */
    std::map<std::string, std::string> activeDevices();
    /** As activeDevices(), for a hook on the thread that holds mActiveDevicesMutex. */
    std::map<std::string, std::string> lockedActiveDevices() NO_THREAD_SAFETY_ANALYSIS {
        return mObject->mActiveDevices;
    }
    /** True when no thread holds mActiveDevicesMutex. Callable on any thread. */
    bool activeDevicesAreUnlocked();

    FakeProperties mProperties;
    FakeShimFactory mShims;
    FakeSleep mSleep;
    CapturedLog mLog;
    std::shared_ptr<FakeServiceInteractionProxy> mProxy;
    std::shared_ptr<FakeProviderMapper> mMapper;
    android::sp<RecordingCallback> mFramework;  // Not registered until a test does it.
    android::sp<Object> mObject;
};

}  // namespace orvo::test
