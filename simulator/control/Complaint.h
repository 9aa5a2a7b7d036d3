// SPDX-License-Identifier: Apache-2.0
// Complaint: errors that know the exit status they end camerasim with, also across the socket.

#pragma once

#include <string>

#include <android-base/result.h>

namespace orvo::simulator {

constexpr int kAsExpected = 0;
constexpr int kNotAsExpected = 1;  ///< the thing could be, but is not so now, or did not happen
constexpr int kBadUse = 2;         ///< what was asked for cannot be: a wrong word, an unknown name

/** What two builds that declare different messages tell each other. */
constexpr char kOtherBuild[] =
        "the device was booted by another build of camerasim; use the one that booted it";

/** Ends with kBadUse. */
android::base::ResultError badUse(const std::string& line);

/** Ends with kNotAsExpected. */
android::base::ResultError didNotHappen(const std::string& line);

/** Writes the error as one line to stderr. @return the exit status that goes with it. */
int complain(const android::base::ResultError& error);

}  // namespace orvo::simulator
