// SPDX-License-Identifier: Apache-2.0
// This process as one of a device of its own, for a stranger in it to talk to.

#pragma once

#include <string>

namespace orvo::fuzz {

/**
 * Makes a device directory, on the first call, and makes this process a part of the device with one
 * thread for incoming calls. Returns the directory of the sockets.
 */
const std::string& joinFreshDevice();

/** Joins, serves the object as the device's context object, and returns the socket's path. */
const std::string& serveKinds();

/** Joins, and makes the name of a socket in the device's directory that of the context object. */
void pretendManager(const std::string& address);

/** Connects to the socket, or ends the process. Both directions give up after ten seconds. */
int connectAsStranger(const std::string& path);

}  // namespace orvo::fuzz
