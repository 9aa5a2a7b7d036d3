// SPDX-License-Identifier: Apache-2.0
// The fixture of the provider object's tests.

#include "tests/support/ProviderTest.h"

#include <future>

#include <android/log.h>

namespace orvo::test {

using android::sp;
using android::wp;

namespace {

constexpr char kTag[] = "OrvoCameraServiceImpl";

}  // namespace

LogLine infoLine(const std::string& text) {
    return {ANDROID_LOG_INFO, kTag, text};
}

LogLine warningLine(const std::string& text) {
    return {ANDROID_LOG_WARN, kTag, text};
}

LogLine errorLine(const std::string& text) {
    return {ANDROID_LOG_ERROR, kTag, text};
}

std::vector<LogLine> shutdownLines() {
    return {errorLine("Shutting down in error state in 1s ..."),
            errorLine("Exiting in error state.")};
}

std::string shutdownText(std::vector<LogLine> lines) {
    return MirroredLog::text(lines) + MirroredLog::text(shutdownLines());
}

ProviderTest::ProviderTest()
    : mProxy(std::make_shared<FakeServiceInteractionProxy>()),
      mMapper(std::make_shared<FakeProviderMapper>()),
      mFramework(new RecordingCallback) {
    ::testing::FLAGS_gtest_death_test_style = "threadsafe";
}

void ProviderTest::TearDown() {
    // A shim holds the object as its callback, so the shims go first.
    for (const FakeShimFactory::Call& call : mShims.calls()) mShims.drop(call.name);
    const wp<Object> object = mObject;
    mObject.clear();
    mFramework.clear();
    mProxy.reset();
    mMapper.reset();
    EXPECT_TRUE(CountedInstance::waitUntilNoneIsAlive())
            << CountedInstance::alive() << " fakes are left alive";
    EXPECT_EQ(object.promote(), nullptr) << "the provider object is left alive";
}

void ProviderTest::makeObject(const std::string& name,
                              const std::vector<std::string>& replacements) {
    mMapper->replacements[name] = replacements;
    mObject = new Object(name.c_str(), mProxy, mMapper);
    mLog.take();
}

void ProviderTest::makeConnectedObject(const std::vector<std::string>& replacements) {
    for (const std::string& name : replacements) startService(name);
    makeObject("legacy/0", replacements);
    mObject->initialize();
    mLog.take();
}

sp<ScriptedProvider> ProviderTest::startService(const std::string& name) {
    const sp<ScriptedProvider> service = new ScriptedProvider;
    mProxy->declared.push_back(name);
    mProxy->start(name, service);
    return service;
}

ProviderTest::Descriptor* ProviderTest::descriptor(const std::string& name) {
    return Descriptor::findByName(mObject->mHalDescriptors, name);
}

void ProviderTest::reportPresent(const std::vector<std::string>& providerDeviceNames) {
    for (const std::string& name : providerDeviceNames) {
        EXPECT_TRUE(mObject->cameraDeviceStatusChange(name, CameraDeviceStatus::PRESENT).isOk());
    }
    mLog.take();
}

std::map<std::string, std::string> ProviderTest::activeDevices() {
    const std::lock_guard<std::mutex> lock(mObject->mActiveDevicesMutex);
    return mObject->mActiveDevices;
}

bool ProviderTest::activeDevicesAreUnlocked() {
    // On another thread, because a mutex may not be tried by the thread that holds it.
    return std::async(std::launch::async,
                      [this] {
                          const std::unique_lock<std::mutex> lock(mObject->mActiveDevicesMutex,
                                                                  std::try_to_lock);
                          return lock.owns_lock();
                      })
            .get();
}

}  // namespace orvo::test
