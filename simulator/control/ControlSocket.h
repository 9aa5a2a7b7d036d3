// SPDX-License-Identifier: Apache-2.0
// controlAddress: where both ends of the control protocol meet.

#pragma once

#include <sys/un.h>

#include <cstring>
#include <string>

#include <android-base/result.h>

namespace orvo::simulator {

/** `root` is a headset's temporary directory; an error, one line, if its name is too long. */
inline android::base::Result<sockaddr_un> controlAddress(const std::string& root) {
    const std::string path = root + "/run/control";
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof(address.sun_path)) {
        return android::base::Error() << "'" << path << "' is too long a name for a socket; set"
                                      << " TMPDIR to a shorter one";
    }
    memcpy(address.sun_path, path.c_str(), path.size());
    return address;
}

}  // namespace orvo::simulator
