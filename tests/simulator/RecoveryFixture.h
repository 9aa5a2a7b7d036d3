// SPDX-License-Identifier: Apache-2.0
// DeviceRecoveryTest: a device whose processes end, each of them killed or told to go.

#pragma once

#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include <gtest/gtest.h>

#include "simulator/framework/FrameworkClient.h"
#include "tests/simulator/support/InsideDevice.h"
#include "tests/simulator/support/WatchedService.h"

namespace orvo::simulator::testing {

/** How a process ends: SIGKILL, or its own exit with status 0 when it is told to. */
enum class Ending { KILLED, CLEAN };

/** A framework that has registered with legacy/0 and has heard of every camera. */
class DeviceRecoveryTest : public ::testing::TestWithParam<Ending> {
  protected:
    using Status = FrameworkClient::Status;
    using Device = StatusEvent::Device;
    using Torch = StatusEvent::Torch;
    using Names = std::vector<std::string>;

    /** Far longer than anything takes on a busy machine, ten attempts included. */
    static constexpr std::chrono::seconds kPatience{30};
    static constexpr char kExternal[] = "external/0";
    static constexpr char kVirtual[] = "virtual/0";
    static constexpr char kUsb[] = "device@3.2/legacy/usb-7C21";
    /** Cameras that are built into the default device, as the framework hears of them. */
    static const Names kExternalCameras, kVirtualCameras;

    void SetUp() override;

    void connectFramework();
    void registerFramework();
    /** Another process registers as the framework, hears of every camera, and ends. */
    static void loseAFramework();

    /** Tells a program to end in the way that the test is about. */
    static void tellToEnd(const std::string& program);
    /** Waits until it has, and looks whether it ended in that way. */
    static void awaitEnd(const std::string& program);
    static void endProvider(const std::string& instance);
    static void startProvider(const std::string& instance);
    /** As init does; a service that has ended must have been waited for. */
    void restartService();

    bool hears(const std::string& name, std::variant<Device, Torch> status, size_t mark) const;
    bool hearsAll(const Names& names, Device status, size_t mark) const;
    /** Whether a status of that camera has been heard. */
    bool heard(const std::string& name, size_t mark) const;
    /** Waits until a provider's reports so far have been answered. */
    static void awaitAnswers(const std::string& instance);
    /** Plugs the USB camera in, and waits until the framework has heard of it. */
    void plugIn();

    void expectReadable(const Names& names);
    void expectOpens(const std::string& name);

    /** Waits until the present service has logged the line that often. */
    bool logs(const std::string& line, size_t count = 1);
    void expectLogged(size_t count, const std::string& line);
    /** Waits until no reconnection of the provider is under way and its process has a listener. */
    bool reconnects(const std::string& instance);

    static std::string notFoundLine(const std::string& provider);

    std::optional<WatchedService> mService;
    std::unique_ptr<FrameworkClient> mFramework;
};

}  // namespace orvo::simulator::testing
