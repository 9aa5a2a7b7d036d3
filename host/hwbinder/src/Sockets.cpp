// SPDX-License-Identifier: Apache-2.0
// Listening and connecting.

#define LOG_TAG "hwbinder"

#include "Sockets.h"

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/random.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>

#include <log/log.h>

namespace android {
namespace hardware {
namespace transport {

namespace {

constexpr size_t kMaxAddressLength = 40;

bool fillAddress(const std::string& path, sockaddr_un* address) {
    *address = {};
    address->sun_family = AF_UNIX;
    if (path.size() >= sizeof(address->sun_path)) return false;
    memcpy(address->sun_path, path.c_str(), path.size() + 1);
    return true;
}

base::unique_fd newSocket(int flags) {
    return base::unique_fd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | flags, 0));
}

}  // namespace

uint64_t randomNumber() {
    uint64_t number = 0;
    if (getrandom(&number, sizeof(number), 0) != sizeof(number)) {
        LOG_ALWAYS_FATAL("No random numbers: %s", strerror(errno));
    }
    return number;
}

std::string newAddress() {
    char name[kMaxAddressLength];
    snprintf(name, sizeof(name), "%d-%016llx", getpid(),
             static_cast<unsigned long long>(randomNumber()));
    return name;
}

bool isAddress(const std::string& name) {
    return !name.empty() && name.size() < kMaxAddressLength &&
           std::all_of(name.begin(), name.end(), [](char c) {
               return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || c == '-';
           });
}

bool isAddressOf(const std::string& name, pid_t pid) {
    const std::string prefix = std::to_string(pid) + "-";
    return name.compare(0, prefix.size(), prefix) == 0;
}

base::unique_fd listenAt(const std::string& path) {
    sockaddr_un address;
    if (!fillAddress(path, &address)) {
        ALOGE("Cannot listen at %s: the path is %zu characters long and a socket's may have %zu; "
              "choose a shorter ORVO_DEVICE_DIR",
              path.c_str(), path.size(), sizeof(address.sun_path) - 1);
        return {};
    }
    base::unique_fd listener = newSocket(SOCK_NONBLOCK);
    if (listener < 0 ||
        bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0 ||
        listen(listener, SOMAXCONN) != 0) {
        ALOGE("Cannot listen at %s: %s; check ORVO_DEVICE_DIR", path.c_str(), strerror(errno));
        return {};
    }
    return listener;
}

base::unique_fd connectTo(const std::string& path, bool* isGone) {
    sockaddr_un address;
    *isGone = false;
    if (!fillAddress(path, &address)) return {};
    // Not blocking: a peer whose backlog is full must not stop us.
    base::unique_fd connection = newSocket(SOCK_NONBLOCK);
    if (connection < 0) return {};
    if (connect(connection, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0) {
        return connection;
    }
    *isGone = errno == ECONNREFUSED || errno == ENOENT;
    return {};
}

base::unique_fd duplicate(int socket) {
    return base::unique_fd(fcntl(socket, F_DUPFD_CLOEXEC, 0));
}

}  // namespace transport
}  // namespace hardware
}  // namespace android
