// SPDX-License-Identifier: Apache-2.0
// Tells a person what the provider object holds at the moment: what `lshal debug` prints.

#include <fcntl.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

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

// Fills a pipe of our own and moves it on. A pipe that was sent has the flags of whoever sent it,
// so it cannot be made non-blocking, and only a move between pipes may be asked not to wait.
void writeToPipe(int fd, std::string_view text) {
    int own[2];
    if (pipe2(own, O_CLOEXEC | O_NONBLOCK) != 0) return;
    while (!text.empty()) {
        const ssize_t size = write(own[1], text.data(), text.size());
        if (size <= 0) break;
        if (splice(own[0], nullptr, fd, nullptr, size, SPLICE_F_NONBLOCK) != size) break;
        text.remove_prefix(size);
    }
    close(own[0]);
    close(own[1]);
}

// Writes what the descriptor takes at once and drops the rest. Anything but a file, a pipe or a
// socket takes nothing: a terminal, for one, says that there is room and then waits for more.
void writeWithoutWaiting(int fd, std::string_view text) {
    struct stat status;
    if (fstat(fd, &status) != 0) return;
    // A reader that has gone must not end the process, whose signals are not ours.
    sigset_t brokenPipe;
    sigset_t before;
    sigemptyset(&brokenPipe);
    sigaddset(&brokenPipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &brokenPipe, &before);
    if (S_ISFIFO(status.st_mode)) {
        writeToPipe(fd, text);
    } else if (S_ISSOCK(status.st_mode)) {
        (void)send(fd, text.data(), text.size(), MSG_DONTWAIT);
    } else if (S_ISREG(status.st_mode)) {
        // With what a full disk leaves out there is nothing to do.
        const ssize_t written = write(fd, text.data(), text.size());
        (void)written;
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
