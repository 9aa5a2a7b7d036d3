// SPDX-License-Identifier: Apache-2.0
// Tests with a whole device: the framework's side, the library in its service, provider processes.

#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <string>
#include <vector>

#include <android-base/file.h>
#include <android-base/unique_fd.h>
#include <android/hidl/manager/1.2/IServiceManager.h>
#include <cutils/properties.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hidl/ServiceManagement.h>

#include "simulator/framework/FrameworkClient.h"
#include "tests/simulator/support/InsideDevice.h"
#include "tests/simulator/support/ProgramRun.h"

namespace orvo::simulator::testing {
namespace {

using android::sp;
using android::base::unique_fd;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using vendor::orvo::simulator::V1_0::ISimulatedProvider;
using vendor::orvo::simulator::V1_0::Operation;
using vendor::orvo::simulator::V1_0::ProviderState;
using vendor::orvo::simulator::V1_0::Result;
using Status = FrameworkClient::Status;
using Device = StatusEvent::Device;
using Torch = StatusEvent::Torch;

constexpr std::chrono::seconds kPatience{20};

/** Names of the default device, as the framework hears them. */
constexpr char kColour[] = "device@3.2/legacy/100";
constexpr char kUsb[] = "device@3.2/legacy/usb-7C21";
constexpr char kOldAvatar[] = "device@1.0/legacy/8";

/** A framework that has registered with legacy/0 and heard of every camera. */
class DeviceTest : public ::testing::Test {
  protected:
    void SetUp() override {
        auto client = FrameworkClient::connect("legacy/0");
        ASSERT_TRUE(client) << client.error().message();
        mFramework = std::move(*client);
        mExternal = ISimulatedProvider::tryGetService("external/0");
        mVirtual = ISimulatedProvider::tryGetService("virtual/0");
        ASSERT_NE(nullptr, mExternal);
        ASSERT_NE(nullptr, mVirtual);
        ASSERT_TRUE(mFramework->registerCallback().ok());
        settle();
        ASSERT_EQ(4u, mFramework->log().size());
    }

    void settle() {
        for (const auto& control : {mExternal, mVirtual}) {
            const auto settled = control->settle(kPatience.count() * 1000);
            ASSERT_TRUE(settled.isOk());
            ASSERT_TRUE(settled);
        }
    }

    /** Makes a request of a provider process, which must take it. */
    static void expectTaken(const android::hardware::Return<void>& call, Result result,
                            const std::string& message) {
        ASSERT_TRUE(call.isOk()) << call.description();
        EXPECT_EQ(Result::OK, result) << message;
    }
    void plug(const sp<ISimulatedProvider>& control, const std::string& name, Device status) {
        Result result{};
        std::string message;
        expectTaken(control->setDeviceStatus(name, status,
                                             [&](Result r, const auto& m) {
                                                 result = r;
                                                 message = m;
                                             }),
                    result, message);
    }
    void answerWith(const sp<ISimulatedProvider>& control, Operation operation, Status status,
                    bool withData) {
        Result result{};
        std::string message;
        expectTaken(control->answerWith(operation, status, withData,
                                        [&](Result r, const auto& m) {
                                            result = r;
                                            message = m;
                                        }),
                    result, message);
    }
    void answerNormally(const sp<ISimulatedProvider>& control, Operation operation) {
        Result result{};
        std::string message;
        expectTaken(control->answerNormally(operation,
                                            [&](Result r, const auto& m) {
                                                result = r;
                                                message = m;
                                            }),
                    result, message);
    }

    bool hears(const std::string& name, std::variant<Device, Torch> status, size_t mark) const {
        const auto wanted = [&](const StatusEvent& event) { return event.is(name, status); };
        return mFramework->log().waitFor(wanted, kPatience, mark).has_value();
    }

    std::unique_ptr<FrameworkClient> mFramework;
    sp<ISimulatedProvider> mExternal, mVirtual;
};

const std::vector<std::string> kAllNames = {"device@3.2/external/100", "device@3.2/external/101",
                                            "device@3.2/virtual/7", "device@1.0/virtual/8"};

TEST_F(DeviceTest, AProviderThatFailsToListIsSeenWithItsNamesIncluded) {
    answerWith(mExternal, Operation::GET_CAMERA_ID_LIST, Status::INTERNAL_ERROR, true);
    auto names = mFramework->cameraIdList();
    ASSERT_TRUE(names.arrived()) << names.failure;
    EXPECT_EQ(Status::INTERNAL_ERROR, names.status);
    EXPECT_EQ(kAllNames, names.value);

    answerNormally(mExternal, Operation::GET_CAMERA_ID_LIST);
    names = mFramework->cameraIdList();
    EXPECT_TRUE(names.ok());
    EXPECT_EQ(kAllNames, names.value);
}

TEST_F(DeviceTest, OfTwoProvidersThatFailTheLastOneIsSeen) {
    answerWith(mExternal, Operation::GET_VENDOR_TAGS, Status::CAMERA_DISCONNECTED, false);
    answerWith(mVirtual, Operation::GET_VENDOR_TAGS, Status::MAX_CAMERAS_IN_USE, true);
    const auto tags = mFramework->vendorTags();
    ASSERT_TRUE(tags.arrived()) << tags.failure;
    EXPECT_EQ(Status::MAX_CAMERAS_IN_USE, tags.status);
    ASSERT_EQ(3u, tags.value.size());
    EXPECT_EQ("external/0", tags.value[0].sectionName);
    EXPECT_EQ("virtual/0", tags.value[1].sectionName);
    EXPECT_EQ("com.orvo.avatar", tags.value[2].sectionName);
}

TEST_F(DeviceTest, EveryStatusOfADevicePassesThrough) {
    for (uint32_t value = 1; value <= static_cast<uint32_t>(Status::INTERNAL_ERROR); value++) {
        const Status status = static_cast<Status>(value);
        answerWith(mExternal, Operation::IS_SET_TORCH_MODE_SUPPORTED, status, true);
        EXPECT_EQ(status, mFramework->isTorchSupported().status);
        answerWith(mExternal, Operation::GET_CAMERA_DEVICE_INTERFACE_V3_X, status, false);
        EXPECT_EQ(status, mFramework->deviceV3(kColour).status);
        answerNormally(mExternal, Operation::GET_CAMERA_DEVICE_INTERFACE_V3_X);
        answerWith(mExternal, Operation::DEVICE_OPEN, status, false);
        EXPECT_EQ(status, mFramework->openSession(kColour).status);
        answerWith(mExternal, Operation::DEVICE_SET_TORCH_MODE, status, false);
        EXPECT_EQ(status, mFramework->setTorchMode(kColour, true).status);
        answerWith(mExternal, Operation::DEVICE_GET_CHARACTERISTICS, status, false);
        EXPECT_EQ(status, mFramework->readCamera(kColour).status);
        answerNormally(mExternal, Operation::DEVICE_GET_CHARACTERISTICS);
        answerWith(mExternal, Operation::DEVICE_GET_RESOURCE_COST, status, false);
        EXPECT_EQ(status, mFramework->readCamera(kColour).status);
        answerNormally(mExternal, Operation::DEVICE_GET_RESOURCE_COST);
        answerWith(mVirtual, Operation::GET_CAMERA_DEVICE_INTERFACE_V1_X, status, false);
        EXPECT_EQ(status, mFramework->deviceV1(kOldAvatar).status);
    }
}

TEST_F(DeviceTest, AProviderThatRefusesTheCallbackStillCounts) {
    answerWith(mExternal, Operation::SET_CALLBACK, Status::INTERNAL_ERROR, true);
    const size_t mark = mFramework->log().size();
    EXPECT_TRUE(mFramework->registerCallback().ok());
    EXPECT_TRUE(hears(kColour, Device::PRESENT, mark));
}

TEST_F(DeviceTest, OperationsAndStatusesThatDoNotExistAreRefused) {
    Result result = Result::OK;
    std::string message;
    const auto keep = [&](Result r, const auto& m) {
        result = r;
        message = m;
    };
    ASSERT_TRUE(mExternal->answerWith(static_cast<Operation>(99), Status::OK, true, keep).isOk());
    EXPECT_EQ(Result::ILLEGAL_ARGUMENT, result);
    ASSERT_TRUE(mExternal->answerWith(Operation::DEVICE_OPEN, static_cast<Status>(8), true, keep)
                        .isOk());
    EXPECT_EQ(Result::ILLEGAL_ARGUMENT, result);
    ASSERT_TRUE(mExternal->answerNormally(static_cast<Operation>(99), keep).isOk());
    EXPECT_EQ(Result::ILLEGAL_ARGUMENT, result);
    EXPECT_EQ("there is no such operation or status", message);
}

TEST_F(DeviceTest, OnlyTheNewestFrameworkIsTold) {
    auto second = FrameworkClient::connect("legacy/0");
    ASSERT_TRUE(second) << second.error().message();
    ASSERT_TRUE((*second)->registerCallback().ok());
    settle();
    const size_t mark = mFramework->log().size();
    plug(mExternal, "device@3.2/external/usb-7C21", Device::PRESENT);
    settle();
    EXPECT_EQ(mark, mFramework->log().size());
    EXPECT_EQ("device@3.2/legacy/usb-7C21 PRESENT", (*second)->log().events().back().toText());
}

TEST_F(DeviceTest, ACameraOfVersion1TellsItsInfo) {
    const auto facts = mFramework->readCamera(kOldAvatar);
    ASSERT_TRUE(facts.ok()) << facts.failure << toString(facts.status);
    EXPECT_EQ(10u, facts.value.resourceCost);
    EXPECT_EQ("facing FRONT, orientation 90", facts.value.info);
    EXPECT_EQ(0u, facts.value.characteristicsBytes);
}

TEST_F(DeviceTest, ACameraOfVersion1OpensAndHasNoPictures) {
    const auto device = mFramework->deviceV1(kOldAvatar);
    ASSERT_TRUE(device.ok()) << device.failure;
    const auto opened = device.value->open(nullptr);
    ASSERT_TRUE(opened.isOk());
    EXPECT_EQ(Status::ILLEGAL_ARGUMENT, static_cast<Status>(opened));
    EXPECT_EQ(Status::INTERNAL_ERROR,
              device.value->takePicture().withDefault(Status::MAX_CAMERAS_IN_USE));
}

TEST_F(DeviceTest, TheStateOfACameraIsWrittenToTheFrameworksDescriptor) {
    const auto device = mFramework->deviceV3(kColour);
    ASSERT_TRUE(device.ok()) << device.failure;
    const unique_fd file(memfd_create("dump", MFD_CLOEXEC));
    native_handle_t* handle = native_handle_create(1, 0);
    handle->data[0] = file.get();
    EXPECT_TRUE(device.value->dumpState(handle).isOk());
    native_handle_delete(handle);
    lseek(file.get(), 0, SEEK_SET);
    std::string text;
    ASSERT_TRUE(android::base::ReadFdToString(file, &text));
    EXPECT_THAT(text, HasSubstr("device@3.2/external/100 of external/0\n  status: PRESENT"));
}

TEST_F(DeviceTest, ADeviceThatWasPulledOutIsStaleAlsoAfterItComesBack) {
    size_t mark = mFramework->log().size();
    plug(mExternal, "device@3.2/external/usb-7C21", Device::PRESENT);
    ASSERT_TRUE(hears(kUsb, Device::PRESENT, mark));
    const auto device = mFramework->deviceV3(kUsb);
    ASSERT_TRUE(device.ok()) << device.failure;
    mark = mFramework->log().size();
    plug(mExternal, "device@3.2/external/usb-7C21", Device::NOT_PRESENT);
    plug(mExternal, "device@3.2/external/usb-7C21", Device::PRESENT);
    ASSERT_TRUE(hears(kUsb, Device::PRESENT, mark));
    Status status = Status::OK;
    ASSERT_TRUE(device.value->getResourceCost([&](Status s, const auto&) { status = s; }).isOk());
    EXPECT_EQ(Status::CAMERA_DISCONNECTED, status);
    EXPECT_TRUE(mFramework->readCamera(kUsb).ok());
}

TEST_F(DeviceTest, ACameraWithoutASessionIsFreeAgain) {
    size_t mark = mFramework->log().size();
    {
        const auto session = mFramework->openSession(kColour);
        ASSERT_TRUE(session.ok()) << session.failure;
        EXPECT_TRUE(hears(kColour, Torch::NOT_AVAILABLE, mark));
        EXPECT_EQ(Status::CAMERA_IN_USE, mFramework->openSession(kColour).status);
        EXPECT_EQ(Status::OK, session.value->flush().withDefault(Status::INTERNAL_ERROR));
    }
    // Its last reference is gone, as if the client had died without closing it.
    EXPECT_TRUE(hears(kColour, Torch::AVAILABLE_OFF, mark));
    EXPECT_TRUE(mFramework->openSession(kColour).ok());
}

TEST_F(DeviceTest, AClosedSessionAnswersInternalError) {
    const auto session = mFramework->openSession(kColour);
    ASSERT_TRUE(session.ok()) << session.failure;
    Status status = Status::OK;
    const auto keep = [&](Status s, const auto&) { status = s; };
    ASSERT_TRUE(session.value->configureStreams({}, keep).isOk());
    EXPECT_EQ(Status::ILLEGAL_ARGUMENT, status);
    ASSERT_TRUE(session.value->close().isOk());
    ASSERT_TRUE(session.value->configureStreams({}, keep).isOk());
    EXPECT_EQ(Status::INTERNAL_ERROR, status);
    EXPECT_EQ(Status::INTERNAL_ERROR, session.value->flush().withDefault(Status::OK));
}

TEST_F(DeviceTest, AProviderTellsItsStateAndCountsItsCalls) {
    ASSERT_TRUE(mFramework->cameraIdList().ok());
    ProviderState state;
    ASSERT_TRUE(mExternal->getState([&](const ProviderState& s) { state = s; }).isOk());
    EXPECT_EQ("external/0", state.instance);
    EXPECT_EQ(device().supervisor().pidOf("provider-external-0"), state.pid);
    EXPECT_TRUE(state.hasListener);
    EXPECT_EQ(3u, state.devices.size());
    ASSERT_EQ(11u, state.operations.size());
    EXPECT_EQ(Operation::GET_CAMERA_ID_LIST, state.operations[2].operation);
    EXPECT_EQ(1u, state.operations[2].calls);
    EXPECT_FALSE(state.operations[2].scripted);
}

TEST_F(DeviceTest, AServiceForAnInstanceThatTheMapDoesNotMentionEnds) {
    const ProgramEnd end = runProgram({programPath("camera_provider_service"), "unknown/0"});
    EXPECT_EQ(1, end.status);
    EXPECT_THAT(end.err, HasSubstr("camera_provider_service: unknown/0 is not served"));
    EXPECT_THAT(end.err, HasSubstr("camera_provider_service: there is nothing to serve"));
}

TEST_F(DeviceTest, TheFrameworkProgramPrintsWhatItHearsUntilTheProviderIsGone) {
    ProgramRun run({programPath("camera_framework"), "legacy/0"});
    EXPECT_TRUE(run.awaitOutput("cameras: OK\n  device@3.2/external/100\n"));
    EXPECT_TRUE(run.awaitOutput("torch: OK, supported\n"));
    EXPECT_TRUE(run.awaitOutput("    0x80010000 exposureBoost FLOAT\n"));
    EXPECT_TRUE(run.awaitOutput("camera device@3.2/legacy/100: OK\n  resource cost: 45\n"));
    plug(mExternal, "device@3.2/external/usb-7C21", Device::PRESENT);
    EXPECT_TRUE(run.awaitOutput("status: device@3.2/legacy/usb-7C21 PRESENT\n"));
    EXPECT_TRUE(device().supervisor().signal(Programs::kService, SIGKILL));
    const ProgramEnd end = run.awaitEnd();
    EXPECT_EQ(1, end.status);
    EXPECT_THAT(end.err, HasSubstr("camera_framework: the provider's process is gone\n"));
}

TEST_F(DeviceTest, AFrameworkThatWaitsIsToldOfTheServicesEnd) {
    EXPECT_TRUE(device().supervisor().signal(Programs::kService, SIGKILL));
    const auto never = [](const StatusEvent&) { return false; };
    EXPECT_FALSE(mFramework->log().waitFor(never, std::chrono::hours(1)).has_value());
    EXPECT_TRUE(mFramework->log().isClosed());
    EXPECT_EQ("the provider's process is gone", mFramework->cameraIdList().failure);
    const auto again = FrameworkClient::connect("default/0");
    ASSERT_FALSE(again.has_value());
    EXPECT_EQ("no camera provider is registered as default/0; start one, or name one that is there",
              again.error().message());
}

TEST_F(DeviceTest, AFrameworkThatDiesEndsTheServiceAtTheNextReportAndNobodyElse) {
    {
        ProgramRun run({programPath("camera_framework"), "legacy/0"});
        ASSERT_TRUE(run.awaitOutput("camera device@3.2/legacy/7: OK"));
        run.signal(SIGKILL);
        EXPECT_EQ(128 + SIGKILL, run.awaitEnd().status);
    }
    plug(mExternal, "device@3.2/external/usb-7C21", Device::PRESENT);
    settle();
    // The library returns the framework's failure as its own, which the platform's stub forbids.
    Supervisor& supervisor = device().supervisor();
    ASSERT_TRUE(supervisor.awaitEnd(Programs::kService, kPatience));
    EXPECT_EQ("ended by signal 6 (Aborted)", supervisor.endOf(Programs::kService));
    EXPECT_TRUE(supervisor.isRunning("provider-external-0"));
    EXPECT_TRUE(supervisor.isRunning("provider-virtual-0"));

    const auto restarted = device().startService();
    ASSERT_TRUE(restarted) << restarted.error().message();
    auto client = FrameworkClient::connect("legacy/0");
    ASSERT_TRUE(client) << client.error().message();
    mFramework = std::move(*client);
    EXPECT_TRUE(mFramework->registerCallback().ok());
    EXPECT_TRUE(hears(kUsb, Device::PRESENT, 0));
}

TEST_F(DeviceTest, TheFirstConnectionOfExternalIsRecorded) {
    char value[PROPERTY_VALUE_MAX];
    property_get("service.cam_prvdr.external_0.added", value, "");
    EXPECT_STREQ("1", value);
}

TEST(FreshDeviceTest, NobodyIsToldBeforeAFrameworkRegisters) {
    const auto control = ISimulatedProvider::tryGetService("external/0");
    ASSERT_NE(nullptr, control);
    ProviderState state;
    ASSERT_TRUE(control->getState([&](const ProviderState& s) { state = s; }).isOk());
    EXPECT_FALSE(state.hasListener);
}

}  // namespace
}  // namespace orvo::simulator::testing
