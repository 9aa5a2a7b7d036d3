// SPDX-License-Identifier: Apache-2.0
// WatchedService: what the supervisor, the log and /proc tell of one program.

#include "tests/simulator/support/WatchedService.h"

#include <atomic>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <thread>
#include <vector>

#include <cutils/properties.h>

namespace orvo::simulator::testing {

using vendor::orvo::simulator::V1_0::ProviderState;

namespace {

std::string propertyOf(const std::string& name) {
    char value[PROPERTY_VALUE_MAX];
    property_get(name.c_str(), value, "");
    return value;
}

/** Threads that the pool starts; the main thread, which joins, is the last of its sixteen. */
constexpr size_t kPoolThreads = 15;
/** More callers than threads, so that some call always waits for a thread. */
constexpr size_t kCallers = 32;
constexpr std::chrono::seconds kPatience{20};

size_t poolThreadsOf(pid_t process) {
    size_t count = 0;
    std::error_code failure;
    const std::string tasks = "/proc/" + std::to_string(process) + "/task";
    for (std::filesystem::directory_iterator it(tasks, failure), end; !failure && it != end;
         it.increment(failure)) {
        std::string name;
        std::getline(std::ifstream(it->path() / "comm"), name);
        if (name.rfind("HwBinder:", 0) == 0) count++;
    }
    return count;
}

}  // namespace

WatchedService::WatchedService(Programs& device)
    : mDevice(device), mLog(device.stage().logOf(Programs::kService)) {}

bool WatchedService::isRunning() const {
    return mDevice.supervisor().isRunning(Programs::kService);
}

pid_t WatchedService::pid() const {
    return mDevice.supervisor().pidOf(Programs::kService).value_or(0);
}

bool WatchedService::awaitEnd(std::chrono::milliseconds patience) const {
    return mDevice.supervisor().awaitEnd(Programs::kService, patience);
}

std::string WatchedService::end() const {
    return mDevice.supervisor().endOf(Programs::kService);
}

android::base::Result<void> WatchedService::restart() {
    mStart = mLog.mark();
    mRestarts++;
    return mDevice.startService();
}

bool WatchedService::fillThreadPool(FrameworkClient& framework) const {
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    const pid_t process = pid();
    std::atomic<bool> enough = false;
    std::vector<std::thread> callers;
    for (size_t i = 0; i < kCallers; i++) {
        callers.emplace_back([&] {
            while (!enough && std::chrono::steady_clock::now() < deadline) {
                (void)framework.vendorTags();
                if (poolThreadsOf(process) >= kPoolThreads) enough = true;
            }
        });
    }
    for (std::thread& caller : callers) caller.join();
    return enough;
}

bool WatchedService::hasReconnected(const std::string& instance, const std::string& written) const {
    // Each death starts a reconnection, and each of these ends with one of two lines.
    const size_t deaths = occurrences(providerDiedLine(instance), written);
    const size_t ends = occurrences(providerBackLine(instance), written) +
                        occurrences(providerGivenUpLine(instance), written);
    if (deaths != ends) return false;
    const auto control = mDevice.control(instance);
    if (control == nullptr) return false;
    bool hasListener = false;
    const auto asked =
            control->getState([&](const ProviderState& state) { hasListener = state.hasListener; });
    return asked.isOk() && hasListener;
}

std::string providerDiedLine(const std::string& instance) {
    return "Camera provider " + instance + " has died\n";
}

std::string providerBackLine(const std::string& instance) {
    return "Successfully reinitialized provider " + instance + " (attempt ";
}

std::string providerGivenUpLine(const std::string& instance) {
    return "Failed to reconnect to " + instance + " after 10 attempts\n";
}

bool settle(const Programs& device, const std::string& instance) {
    const auto control = device.control(instance);
    if (control == nullptr) return false;
    const auto settled = control->settle(std::chrono::milliseconds(kPatience).count());
    return settled.isOk() && settled;
}

std::string setDeviceStatus(const Programs& device, const std::string& instance,
                            const std::string& cameraDeviceName, StatusEvent::Device status) {
    const auto control = device.control(instance);
    if (control == nullptr) return instance + " has no control";
    std::string refusal;
    const auto taken = control->setDeviceStatus(
            cameraDeviceName, status, [&](auto, const auto& message) { refusal = message; });
    return taken.isOk() ? refusal : taken.description();
}

std::string listedIds(const std::string& type) {
    return propertyOf("camera." + type + ".ids");
}

std::string externalAdded() {
    return propertyOf("service.cam_prvdr.external_0.added");
}

}  // namespace orvo::simulator::testing
