// SPDX-License-Identifier: Apache-2.0
// DeviceRecoveryTest: ending, starting and waiting.

#include "tests/simulator/RecoveryFixture.h"

#include <signal.h>

#include <algorithm>

#include "tests/simulator/support/ProgramRun.h"

namespace orvo::simulator::testing {

namespace {

int signalOf(Ending ending) {
    return ending == Ending::KILLED ? SIGKILL : SIGTERM;
}

}  // namespace

const DeviceRecoveryTest::Names DeviceRecoveryTest::kExternalCameras = {"device@3.2/legacy/100",
                                                                        "device@3.2/legacy/101"};
const DeviceRecoveryTest::Names DeviceRecoveryTest::kVirtualCameras = {"device@1.0/legacy/8",
                                                                       "device@3.2/legacy/7"};

void DeviceRecoveryTest::SetUp() {
    mService.emplace(device());
    registerFramework();
    ASSERT_TRUE(hearsAll(kExternalCameras, Device::PRESENT, 0));
    ASSERT_TRUE(hearsAll(kVirtualCameras, Device::PRESENT, 0));
    ASSERT_EQ("100, 101", listedIds("external"));
    ASSERT_EQ("8, 7", listedIds("virtual"));
}

void DeviceRecoveryTest::connectFramework() {
    auto client = FrameworkClient::connect("legacy/0");
    ASSERT_TRUE(client) << client.error().message();
    mFramework = std::move(*client);
}

void DeviceRecoveryTest::registerFramework() {
    ASSERT_NO_FATAL_FAILURE(connectFramework());
    const auto registered = mFramework->registerCallback();
    ASSERT_TRUE(registered.ok()) << registered.failure << toString(registered.status);
}

void DeviceRecoveryTest::loseAFramework() {
    ProgramRun run({programPath("camera_framework"), "legacy/0"});
    for (const Names& names : {kExternalCameras, kVirtualCameras}) {
        for (const std::string& name : names) {
            ASSERT_TRUE(run.awaitOutput("camera " + name + ": OK"));
        }
    }
    awaitAnswers(kExternal);
    awaitAnswers(kVirtual);
    run.signal(signalOf(GetParam()));
    EXPECT_EQ(GetParam() == Ending::KILLED ? 128 + SIGKILL : 0, run.awaitEnd().status);
}

void DeviceRecoveryTest::tellToEnd(const std::string& program) {
    ASSERT_TRUE(device().supervisor().signal(program, signalOf(GetParam()))) << program;
}

void DeviceRecoveryTest::awaitEnd(const std::string& program) {
    ASSERT_TRUE(device().supervisor().awaitEnd(program, kPatience)) << program;
    EXPECT_EQ(GetParam() == Ending::KILLED ? "ended by signal 9 (Killed)" : "ended with status 0",
              device().supervisor().endOf(program));
}

void DeviceRecoveryTest::endProvider(const std::string& instance) {
    tellToEnd(Programs::programOf(instance));
    awaitEnd(Programs::programOf(instance));
}

void DeviceRecoveryTest::startProvider(const std::string& instance) {
    const auto started = device().startProvider(instance);
    ASSERT_TRUE(started) << started.error().message();
}

void DeviceRecoveryTest::restartService() {
    const auto started = mService->restart();
    ASSERT_TRUE(started) << started.error().message();
}

bool DeviceRecoveryTest::hears(const std::string& name, std::variant<Device, Torch> status,
                               size_t mark) const {
    const auto wanted = [&](const StatusEvent& event) { return event.is(name, status); };
    return mFramework->log().waitFor(wanted, kPatience, mark).has_value();
}

bool DeviceRecoveryTest::hearsAll(const Names& names, Device status, size_t mark) const {
    return std::all_of(names.begin(), names.end(),
                       [&](const std::string& name) { return hears(name, status, mark); });
}

bool DeviceRecoveryTest::heard(const std::string& name, size_t mark) const {
    const auto events = mFramework->log().events(mark);
    return std::any_of(events.begin(), events.end(), [&](const StatusEvent& event) {
        return event.cameraDeviceName == name && std::holds_alternative<Device>(event.status);
    });
}

void DeviceRecoveryTest::awaitAnswers(const std::string& instance) {
    ASSERT_TRUE(settle(device(), instance)) << instance;
}

void DeviceRecoveryTest::plugIn() {
    const size_t mark = mFramework->log().size();
    ASSERT_EQ("", setDeviceStatus(device(), kExternal, "device@3.2/external/usb-7C21",
                                  Device::PRESENT));
    ASSERT_TRUE(hears(kUsb, Device::PRESENT, mark));
    awaitAnswers(kExternal);
}

void DeviceRecoveryTest::expectReadable(const Names& names) {
    for (const std::string& name : names) {
        const auto facts = mFramework->readCamera(name);
        EXPECT_TRUE(facts.ok()) << name << ": " << facts.failure << toString(facts.status);
    }
}

void DeviceRecoveryTest::expectOpens(const std::string& name) {
    const auto session = mFramework->openSession(name);
    ASSERT_TRUE(session.ok()) << session.failure << toString(session.status);
    EXPECT_TRUE(session.value->close().isOk());
}

bool DeviceRecoveryTest::logs(const std::string& line, size_t count) {
    return mService->log().waitForCount(line, count, mService->start(), kPatience);
}

void DeviceRecoveryTest::expectLogged(size_t count, const std::string& line) {
    EXPECT_EQ(count, mService->log().count(line, mService->start())) << line;
}

bool DeviceRecoveryTest::reconnects(const std::string& instance) {
    const auto reconnected = [&](const std::string& written) {
        return mService->hasReconnected(instance, written);
    };
    return mService->log().waitFor(reconnected, mService->start(), kPatience);
}

std::string DeviceRecoveryTest::notFoundLine(const std::string& provider) {
    return "Failed to get service " + provider + "\n";
}

}  // namespace orvo::simulator::testing
