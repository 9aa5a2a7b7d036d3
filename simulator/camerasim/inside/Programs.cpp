// SPDX-License-Identifier: Apache-2.0
// Programs: the order of a boot.

#include "simulator/camerasim/inside/Programs.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <utility>

#include <android-base/unique_fd.h>
#include <android/hardware/camera/provider/2.4/ICameraProvider.h>

namespace orvo::simulator {

using android::sp;
using android::base::ErrnoError;
using android::base::Error;
using android::base::Result;
using android::base::unexpected;
using android::base::unique_fd;
using android::hardware::camera::provider::V2_4::ICameraProvider;

namespace {

/** Far longer than a boot takes on a busy machine; a program that ends is noticed at once. */
constexpr std::chrono::seconds kPatience{30};

/** Reads until the line is there. False if the writer ended or time is up. */
bool awaitLine(int fd, const std::string& line) {
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    std::string seen;
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                deadline - std::chrono::steady_clock::now());
        pollfd ready{fd, POLLIN, 0};
        if (left.count() <= 0 || poll(&ready, 1, static_cast<int>(left.count())) <= 0) return false;
        char bytes[64];
        const ssize_t count = TEMP_FAILURE_RETRY(read(fd, bytes, sizeof(bytes)));
        if (count <= 0) return false;
        seen.append(bytes, count);
        if (seen.find(line + "\n") != std::string::npos) return true;
    }
}

}  // namespace

Programs::Programs(HeadsetDescription device, Installation installation, Stage stage)
    : mDevice(std::move(device)),
      mInstallation(std::move(installation)),
      mStage(std::move(stage)) {}

std::string Programs::programOf(const std::string& instance) {
    std::string name = "provider-" + instance;
    std::replace(name.begin(), name.end(), '/', '-');
    return name;
}

std::vector<std::string> Programs::programs() const {
    std::vector<std::string> names = {kServiceManager};
    for (const ProviderProgram& provider : mDevice.providers) {
        names.push_back(programOf(provider.instance));
    }
    names.push_back(kService);
    return names;
}

Result<void> Programs::boot() {
    Result<void> step = startServiceManager();
    for (size_t i = 0; step && i < mDevice.providers.size(); i++) {
        step = startProvider(mDevice.providers[i].instance);
    }
    return step ? startService() : step;
}

Result<void> Programs::startServiceManager() {
    return startProgram(kServiceManager, {mInstallation.serviceManager});
}

Result<void> Programs::startProvider(const std::string& instance) {
    for (const ProviderProgram& provider : mDevice.providers) {
        if (provider.instance != instance) continue;
        return startProgram(programOf(instance),
                            {mInstallation.simulatedProvider, provider.description});
    }
    return Error() << "the device has no provider process " << instance;
}

Result<void> Programs::startService() {
    std::vector<std::string> command = {mInstallation.cameraProviderService};
    command.insert(command.end(), mDevice.serviceInstances.begin(), mDevice.serviceInstances.end());
    Result<void> started = startProgram(kService, command);
    if (!started) return started;
    // It is ready with whatever it could serve.
    for (const std::string& instance : mDevice.serviceInstances) {
        if (ICameraProvider::tryGetService(instance) == nullptr) {
            return Error() << failureOf(kService, "does not serve " + instance);
        }
    }
    return {};
}

Result<void> Programs::startProgram(const std::string& program, std::vector<std::string> command) {
    unique_fd readEnd, writeEnd;
    if (!android::base::Pipe(&readEnd, &writeEnd)) return ErrnoError() << "cannot make a pipe";
    const auto started =
            mSupervisor.start({program, std::move(command), mStage.logOf(program), writeEnd.get()});
    if (!started) return unexpected(started.error());
    writeEnd.reset();
    if (awaitLine(readEnd.get(), "ready")) return {};
    // Its pipe closes a moment before it has ended.
    mSupervisor.awaitEnd(program, std::chrono::seconds(1));
    return Error() << failureOf(program, "did not become ready");
}

std::string Programs::failureOf(const std::string& program, const std::string& what) const {
    const std::string end = mSupervisor.endOf(program);
    return program + " " + what + (end.empty() ? "" : ": it " + end) + "; its log says why";
}

sp<Programs::Control> Programs::control(const std::string& instance) const {
    return Control::tryGetService(instance);
}

std::vector<std::string> Programs::shutDown() {
    std::vector<std::string> complaints;
    for (const std::string& program : programs()) {
        if (!mSupervisor.isRunning(program)) {
            const std::string end = mSupervisor.endOf(program);
            complaints.push_back(program + (end.empty() ? " was not started" : " " + end) +
                                 " before it was told to");
        }
    }
    mSupervisor.stopAll();
    if (!complaints.empty()) return complaints;
    for (const std::string& program : programs()) {
        const std::string end = mSupervisor.endOf(program);
        if (end != "ended with status 0") complaints.push_back(program + " " + end);
    }
    return complaints;
}

}  // namespace orvo::simulator
