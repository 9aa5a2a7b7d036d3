// SPDX-License-Identifier: Apache-2.0
// Tells a person what the provider object holds at the moment: what `lshal debug` prints.

#include <limits.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <sstream>
#include <string_view>

#include "provider/OrvoCameraServiceImplementation.h"
#include "provider/naming/CameraIdProperty.h"
#include "provider/naming/DeviceInfo.h"

namespace android::hardware::camera::provider::V2_4::implementation {
namespace {

std::string describe(OrvoCameraServiceImplementation& object) {
    std::map<std::string, std::string> devices;
    {
        const std::lock_guard<std::mutex> lock(object.mActiveDevicesMutex);
        devices = object.mActiveDevices;
    }

    std::ostringstream text;
    text << "Camera provider " << object.mProviderName << " of type " << object.mProviderType
         << "\nFramework: " << (object.mCallback.get() == nullptr ? "not " : "")
         << "registered\nProviders:\n";
    std::set<std::string> types;
    for (const auto& descriptor : object.mHalDescriptors) {
        text << "  " << descriptor.mName << " of type " << descriptor.mType
             << (descriptor.mProvider.get() == nullptr ? ": not connected" : ": connected")
             << (descriptor.mShim.promote() == nullptr ? ", no shim\n" : ", shim alive\n");
        types.insert(descriptor.mType);
    }

    text << "Active devices:" << (devices.empty() ? " none\n" : "\n");
    for (const auto& [androidDeviceName, providerDeviceName] : devices) {
        text << "  " << androidDeviceName << " <- " << providerDeviceName << "\n";
        // A provider may report devices of a type that is not its own.
        DeviceNameParts parts;
        if (splitDeviceName(providerDeviceName, parts)) types.emplace(parts.type);
    }

    text << "Properties:\n";
    const auto add = [&text](const std::string& property) {
        text << "  " << property << " = \"" << readProperty(property) << "\"\n";
    };
    for (const std::string& type : types) add(cameraIdProperty(type));
    add(kExternalProviderAddedProperty);
    return text.str();
}

// Writes what the descriptor takes at once and drops the rest. It cannot be made non-blocking, as
// its flags are also those of whoever sent it; but poll finds a pipe writable only if PIPE_BUF
// bytes fit in.
void writeWithoutWaiting(int fd, std::string_view text) {
    // A reader that leaves in the middle must not end the process, whose signals are not ours.
    sigset_t brokenPipe;
    sigset_t before;
    sigemptyset(&brokenPipe);
    sigaddset(&brokenPipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &brokenPipe, &before);
    while (!text.empty()) {
        pollfd writable = {fd, POLLOUT, 0};
        if (poll(&writable, 1, 0) != 1 || writable.revents != POLLOUT) break;
        const ssize_t written = write(fd, text.data(), std::min<size_t>(text.size(), PIPE_BUF));
        if (written <= 0) break;
        text.remove_prefix(written);
    }
    constexpr timespec kNow = {};
    sigtimedwait(&brokenPipe, nullptr, &kNow);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

}  // namespace

Return<void> OrvoCameraServiceImplementation::debug(const hidl_handle& fd,
                                                    const hidl_vec<hidl_string>& /* options */) {
    const native_handle_t* const handle = fd;
    if (handle == nullptr || handle->numFds < 1) return Void();
    writeWithoutWaiting(handle->data[0], describe(*this));
    return Void();
}

}  // namespace android::hardware::camera::provider::V2_4::implementation
