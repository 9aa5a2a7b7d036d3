// SPDX-License-Identifier: Apache-2.0
// Installation: found from the path of the running program.

#include "simulator/camerasim/outside/Installation.h"

#include <unistd.h>

#include <filesystem>
#include <system_error>

namespace orvo::simulator {

using android::base::Error;
using android::base::Result;

namespace {

// From the directory of the programs in an installation, <prefix>/lib/orvo-camera/bin. What a
// person calls is a link to there, which this path has already followed.
constexpr char kInstalledDevice[] = "../../../share/orvo-camera/devices/headset";

std::filesystem::path thisProgram(std::error_code& failure) {
    return std::filesystem::read_symlink("/proc/self/exe", failure);
}

}  // namespace

Result<Installation> Installation::ofThisProgram() {
    std::error_code failure;
    const auto self = thisProgram(failure);
    if (failure) {
        return Error() << "cannot find out where this program is (" << failure.message()
                       << "); mount /proc";
    }
    const auto bin = self.parent_path();
    const auto lib = bin.parent_path() / "lib";
    Installation found;
    found.camerasim = self;
    found.serviceManager = bin / "hwservicemanager";
    found.cameraProviderService = bin / "camera_provider_service";
    found.simulatedProvider = bin / "simulated_provider";
    found.providerLibrary = lib / "android.hardware.camera.provider@2.4-impl-orvo.so";
    found.mrProviderLibrary = lib / "vendor.quill.mrprovider.provider@2.4-impl.so";
    for (const std::string& file :
         {found.serviceManager, found.cameraProviderService, found.simulatedProvider,
          found.providerLibrary, found.mrProviderLibrary}) {
        if (access(file.c_str(), R_OK) != 0) {
            return Error() << "'" << file << "' is missing; build everything first (make build), or"
                           << " install the tools again";
        }
    }
    return found;
}

std::string Installation::defaultHeadset() {
    std::error_code failure;
    const auto self = thisProgram(failure);
    const auto installed = (self.parent_path() / kInstalledDevice).lexically_normal();
    if (!failure && std::filesystem::is_directory(installed, failure)) return installed;
    return ORVO_DEFAULT_DEVICE;
}

}  // namespace orvo::simulator
