// SPDX-License-Identifier: Apache-2.0
// Sockets: the names and the system calls of the sockets on which processes meet.

#pragma once

#include <sys/types.h>

#include <string>

#include <android-base/unique_fd.h>

namespace android {
namespace hardware {
namespace transport {

/** A number that nobody can guess, and that nobody else has. */
uint64_t randomNumber();

/** A name that no other process of the device has. */
std::string newAddress();

/** Whether a peer may have sent this as the name of a socket: nothing that leaves the directory. */
bool isAddress(const std::string& name);

/** Whether it is the name of a socket of that process. */
bool isAddressOf(const std::string& name, pid_t pid);

/** A socket that listens at `path`; invalid, with a line that says why, if that cannot be. */
base::unique_fd listenAt(const std::string& path);

/**
 * A socket connected to the one at `path`; invalid if that cannot be. `isGone` tells whether the
 * reason is that nobody listens there, rather than one that may pass.
 */
base::unique_fd connectTo(const std::string& path, bool* isGone);

/** Another descriptor for the same socket, for asking the kernel about its peer. */
base::unique_fd duplicate(int socket);

}  // namespace transport
}  // namespace hardware
}  // namespace android
