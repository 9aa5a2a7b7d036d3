// SPDX-License-Identifier: Apache-2.0
// Tests of SimulatedCameras and its reporter: plugging, torches, opening, and who is told what.

#include "simulator/provider/SimulatedCameras.h"

#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/simulator/support/GatedListener.h"

namespace orvo::simulator::testing {
namespace {

using android::sp;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using vendor::orvo::simulator::V1_0::Result;
using Status = SimulatedCameras::Status;
using Device = StatusEvent::Device;
using Torch = StatusEvent::Torch;

constexpr char kBack[] = "device@3.2/external/0";
constexpr char kFront[] = "device@3.2/external/1";
constexpr char kUsb[] = "device@3.2/external/usb";
constexpr std::chrono::seconds kPatience{10};

CameraDescription camera(const std::string& name, Facing facing, bool flash, uint32_t cost) {
    CameraDescription described{};
    described.name = name;
    described.majorVersion = 3;
    described.facing = facing;
    described.present = facing != Facing::EXTERNAL;
    described.flash = flash;
    described.resourceCost = cost;
    return described;
}

ProviderDescription provider(bool reportsBuiltIn = false) {
    ProviderDescription described{};
    described.instance = "external/0";
    described.torchSupported = true;
    described.reportsBuiltIn = reportsBuiltIn;
    described.cameras = {camera(kBack, Facing::BACK, true, 60),
                         camera(kFront, Facing::FRONT, false, 40),
                         camera(kUsb, Facing::EXTERNAL, true, 30)};
    return described;
}

class SimulatedCamerasTest : public ::testing::Test {
  protected:
    explicit SimulatedCamerasTest(bool reportsBuiltIn = false)
        : mCameras(provider(reportsBuiltIn)) {}

    void settle() { ASSERT_TRUE(mCameras.reporter().settle(kPatience)); }
    uint64_t plugOf(const std::string& name) {
        uint64_t plug = 0;
        EXPECT_EQ(Status::OK, mCameras.find(name, 3, &plug));
        return plug;
    }

    sp<GatedListener> mListener = new GatedListener();
    SimulatedCameras mCameras;
};

class ReportingCamerasTest : public SimulatedCamerasTest {
  protected:
    ReportingCamerasTest() : SimulatedCamerasTest(true) {}
};

TEST_F(SimulatedCamerasTest, ANewListenerIsToldNothingThatItAssumes) {
    ASSERT_TRUE(mCameras.replaceListener(mListener));
    settle();
    EXPECT_THAT(mListener->texts(), IsEmpty());
}

TEST_F(SimulatedCamerasTest, ANewListenerIsToldOfExternalCamerasAbsentBuiltInOnesAndLights) {
    mCameras.setDeviceStatus(kUsb, Device::PRESENT);
    mCameras.setDeviceStatus(kFront, Device::NOT_PRESENT);
    mCameras.setTorchStatus(kBack, Torch::AVAILABLE_ON);
    ASSERT_TRUE(mCameras.replaceListener(mListener));
    settle();
    EXPECT_THAT(mListener->texts(), ElementsAre("device@3.2/external/0 torch AVAILABLE_ON",
                                                "device@3.2/external/1 NOT_PRESENT",
                                                "device@3.2/external/usb PRESENT"));
}

TEST_F(ReportingCamerasTest, BuiltInCamerasAreReportedWhereTheDescriptionSaysSo) {
    ASSERT_TRUE(mCameras.replaceListener(mListener));
    settle();
    EXPECT_THAT(mListener->texts(),
                ElementsAre("device@3.2/external/0 PRESENT", "device@3.2/external/1 PRESENT"));
}

TEST_F(SimulatedCamerasTest, TheLastListenerCountsAndWhatWaitsForTheOneBeforeIsDropped) {
    ASSERT_TRUE(mCameras.replaceListener(mListener));
    mListener->closeGate();
    mCameras.setDeviceStatus(kUsb, Device::PRESENT);
    mListener->awaitSomebodyAtTheGate();
    mCameras.setDeviceStatus(kFront, Device::NOT_PRESENT);  // waits behind it

    const sp<GatedListener> second = new GatedListener();
    ASSERT_TRUE(mCameras.replaceListener(second));
    mListener->openGate();
    settle();
    EXPECT_THAT(mListener->texts(), ElementsAre("device@3.2/external/usb PRESENT"));
    EXPECT_THAT(second->texts(), ElementsAre("device@3.2/external/1 NOT_PRESENT",
                                             "device@3.2/external/usb PRESENT"));
}

TEST_F(SimulatedCamerasTest, AListenerThatTakesItsTimeHoldsNobodyUp) {
    ASSERT_TRUE(mCameras.replaceListener(mListener));
    mListener->closeGate();
    mCameras.setDeviceStatus(kUsb, Device::PRESENT);
    mListener->awaitSomebodyAtTheGate();
    EXPECT_EQ(Result::OK, mCameras.setTorchStatus(kBack, Torch::AVAILABLE_ON).result);
    EXPECT_EQ(Status::OK, mCameras.open(kFront, plugOf(kFront)));
    EXPECT_FALSE(mCameras.reporter().settle(std::chrono::milliseconds(1)));
    mListener->openGate();
    settle();
    EXPECT_THAT(mListener->texts(), ElementsAre("device@3.2/external/usb PRESENT",
                                                "device@3.2/external/0 torch AVAILABLE_ON"));
}

TEST_F(SimulatedCamerasTest, OnlyChangesAreReported) {
    ASSERT_TRUE(mCameras.replaceListener(mListener));
    mCameras.setDeviceStatus(kUsb, Device::ENUMERATING);
    mCameras.setDeviceStatus(kUsb, Device::PRESENT);
    mCameras.setDeviceStatus(kUsb, Device::PRESENT);
    mCameras.setTorchStatus(kUsb, Torch::AVAILABLE_OFF);
    mCameras.setDeviceStatus(kUsb, Device::NOT_PRESENT);
    settle();
    EXPECT_THAT(mListener->texts(), ElementsAre("device@3.2/external/usb ENUMERATING",
                                                "device@3.2/external/usb PRESENT",
                                                "device@3.2/external/usb NOT_PRESENT"));
}

TEST_F(SimulatedCamerasTest, RequestsThatCannotBeAreRefusedWithALine) {
    const Outcome unknown = mCameras.setDeviceStatus("device@3.2/external/9", Device::PRESENT);
    EXPECT_EQ(Result::UNKNOWN_DEVICE, unknown.result);
    EXPECT_EQ(
            "external/0 has no camera 'device@3.2/external/9'; it has device@3.2/external/0,"
            " device@3.2/external/1, device@3.2/external/usb",
            unknown.message);
    EXPECT_EQ(Result::ILLEGAL_ARGUMENT,
              mCameras.setDeviceStatus(kBack, Device::ENUMERATING).result);
    EXPECT_EQ(Result::ILLEGAL_ARGUMENT,
              mCameras.setDeviceStatus(kBack, static_cast<Device>(3)).result);
    EXPECT_EQ(Result::NO_FLASH, mCameras.setTorchStatus(kFront, Torch::AVAILABLE_ON).result);
    EXPECT_EQ(Result::NOT_PRESENT, mCameras.setTorchStatus(kUsb, Torch::AVAILABLE_ON).result);
    EXPECT_EQ(Result::ILLEGAL_ARGUMENT,
              mCameras.setTorchStatus(kBack, static_cast<Torch>(3)).result);
}

TEST_F(SimulatedCamerasTest, ADeviceThatWasPulledOutIsStaleAlsoAfterItComesBack) {
    mCameras.setDeviceStatus(kUsb, Device::PRESENT);
    const uint64_t plug = plugOf(kUsb);
    EXPECT_EQ(Status::OK, mCameras.checkPlugged(kUsb, plug));
    mCameras.setDeviceStatus(kUsb, Device::NOT_PRESENT);
    mCameras.setDeviceStatus(kUsb, Device::PRESENT);
    EXPECT_EQ(Status::CAMERA_DISCONNECTED, mCameras.checkPlugged(kUsb, plug));
    EXPECT_EQ(Status::CAMERA_DISCONNECTED, mCameras.open(kUsb, plug));
    EXPECT_EQ(Status::CAMERA_DISCONNECTED, mCameras.setTorchMode(kUsb, plug, true));
    EXPECT_EQ(Status::OK, mCameras.checkPlugged(kUsb, plugOf(kUsb)));
}

TEST_F(SimulatedCamerasTest, LookingForACameraTellsWhyThereIsNone) {
    uint64_t plug = 0;
    EXPECT_EQ(Status::ILLEGAL_ARGUMENT, mCameras.find("device@3.2/external/9", 3, &plug));
    EXPECT_EQ(Status::ILLEGAL_ARGUMENT, mCameras.find(kUsb, 3, &plug));
    EXPECT_EQ(Status::OPERATION_NOT_SUPPORTED, mCameras.find(kBack, 1, &plug));
    EXPECT_EQ(Status::OK, mCameras.find(kBack, 3, &plug));
}

TEST_F(SimulatedCamerasTest, OpeningTakesTheFlashAndClosingGivesItBack) {
    ASSERT_TRUE(mCameras.replaceListener(mListener));
    const uint64_t plug = plugOf(kBack);
    EXPECT_EQ(Status::OK, mCameras.open(kBack, plug));
    EXPECT_EQ(Status::CAMERA_IN_USE, mCameras.open(kBack, plug));
    EXPECT_EQ(Status::CAMERA_IN_USE, mCameras.setTorchMode(kBack, plug, true));
    mCameras.close(kBack, plug);
    EXPECT_EQ(Status::OK, mCameras.setTorchMode(kBack, plug, true));
    settle();
    EXPECT_THAT(mListener->texts(), ElementsAre("device@3.2/external/0 torch NOT_AVAILABLE",
                                                "device@3.2/external/0 torch AVAILABLE_OFF",
                                                "device@3.2/external/0 torch AVAILABLE_ON"));
}

TEST_F(SimulatedCamerasTest, CostsOfOpenCamerasAddUp) {
    mCameras.setDeviceStatus(kUsb, Device::PRESENT);
    EXPECT_EQ(Status::OK, mCameras.open(kBack, plugOf(kBack)));
    EXPECT_EQ(Status::OK, mCameras.open(kFront, plugOf(kFront)));
    EXPECT_EQ(Status::MAX_CAMERAS_IN_USE, mCameras.open(kUsb, plugOf(kUsb)));
    mCameras.close(kFront, plugOf(kFront));
    EXPECT_EQ(Status::OK, mCameras.open(kUsb, plugOf(kUsb)));
}

TEST_F(SimulatedCamerasTest, ACameraThatIsEnumeratingCannotBeOpened) {
    mCameras.setDeviceStatus(kUsb, Device::ENUMERATING);
    EXPECT_EQ(Status::CAMERA_IN_USE, mCameras.open(kUsb, plugOf(kUsb)));
}

TEST(ConflictTest, CamerasThatExcludeEachOtherAreNotOpenTogether) {
    ProviderDescription described = provider();
    described.cameras[0].resourceCost = 1;
    described.cameras[1].resourceCost = 1;
    described.cameras[1].conflicts = {kBack};
    for (const bool backFirst : {true, false}) {
        SimulatedCameras cameras(described);
        EXPECT_EQ(Status::OK, cameras.open(backFirst ? kBack : kFront, 0));
        EXPECT_EQ(Status::MAX_CAMERAS_IN_USE, cameras.open(backFirst ? kFront : kBack, 0));
    }
}

TEST(TorchlessTest, AProviderWithoutTorchModeSaysSo) {
    ProviderDescription described = provider();
    described.torchSupported = false;
    SimulatedCameras cameras(described);
    EXPECT_EQ(Status::METHOD_NOT_SUPPORTED, cameras.setTorchMode(kBack, 0, true));
}

TEST_F(SimulatedCamerasTest, ACameraWithoutAFlashSaysSo) {
    EXPECT_EQ(Status::OPERATION_NOT_SUPPORTED, mCameras.setTorchMode(kFront, plugOf(kFront), true));
}

TEST_F(SimulatedCamerasTest, AnyListenerMayPlugFromInsideAReport) {
    // A handler that calls back must not meet a lock that its own report holds.
    struct Meddler : GatedListener {
        explicit Meddler(SimulatedCameras& cameras) : cameras(cameras) {}
        Return<void> cameraDeviceStatusChange(const android::hardware::hidl_string& name,
                                              StatusEvent::Device status) override {
            if (status == Device::PRESENT) cameras.setDeviceStatus(name, Device::NOT_PRESENT);
            return GatedListener::cameraDeviceStatusChange(name, status);
        }
        SimulatedCameras& cameras;
    };
    const sp<Meddler> meddler = new Meddler(mCameras);
    ASSERT_TRUE(mCameras.replaceListener(meddler));
    mCameras.setDeviceStatus(kUsb, Device::PRESENT);
    const auto gone = [](const StatusEvent& event) { return event.is(kUsb, Device::NOT_PRESENT); };
    EXPECT_TRUE(meddler->waitFor(gone, kPatience).has_value());
}

TEST_F(SimulatedCamerasTest, ReportsKeepTheOrderOfTheChanges) {
    ASSERT_TRUE(mCameras.replaceListener(mListener));
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; i++) {
        threads.emplace_back([this] {
            for (int j = 0; j < 100; j++) {
                mCameras.setDeviceStatus(kUsb, j % 2 == 0 ? Device::PRESENT : Device::NOT_PRESENT);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    settle();
    // Only changes are reported, so an order that is kept alternates.
    Device last = Device::NOT_PRESENT;
    for (const StatusEvent& event : mListener->events()) {
        const Device status = std::get<Device>(event.status);
        EXPECT_NE(last, status);
        last = status;
    }
}

}  // namespace
}  // namespace orvo::simulator::testing
