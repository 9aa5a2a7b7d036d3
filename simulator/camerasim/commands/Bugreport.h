// SPDX-License-Identifier: Apache-2.0
// Bugreport: everything about a device that somebody else needs to understand what went wrong.

#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include <android-base/result.h>

#include "simulator/camerasim/commands/Archive.h"
#include "simulator/control/Protocol.h"

namespace orvo::simulator {

/**
 * Collects into one archive, under one directory of the archive's own name:
 *
 *     REPORT.txt         what it is of, and what is missing and why
 *     state.json         what the device tells of itself
 *     dump.txt           what the services tell of themselves
 *     properties.json    its properties; or properties.lmdb, their store, if it does not answer
 *     events.ndjson      what has happened since the boot
 *     log/               what every program has logged
 *     vendor/etc/        the map, the manifest and all else that the device reads there
 */
class Bugreport {
  public:
    /** @param patience how long the device is waited for. */
    Bugreport(std::string root, std::chrono::milliseconds patience);

    /** The device's name, or "device" if it does not answer; fit for a file's name. */
    std::string headsetName() const;

    /** Writes the archive. An error if that fails; what cannot be had is only missing. */
    android::base::Result<void> write(const std::string& file);

    /** One line for each part that could not be had. */
    const std::vector<std::string>& missing() const { return mMissing; }

  private:
    android::base::Result<void> addAnswers(Archive& archive);
    android::base::Result<void> addDump(Archive& archive);
    android::base::Result<void> addProperties(Archive& archive);
    android::base::Result<void> addEvents(Archive& archive);
    /** All files below a directory. */
    android::base::Result<void> addTree(Archive& archive, const std::string& directory,
                                        const std::string& name);
    android::base::Result<void> addFile(Archive& archive, const std::string& file,
                                        const std::string& name);
    std::string reportText() const;

    const std::string mRoot;
    const std::chrono::milliseconds mPatience;
    std::optional<HeadsetState> mState;  ///< nothing if the device does not answer
    std::string mSilence;                ///< why it does not
    std::string mPrefix;
    std::vector<std::string> mMissing;
};

}  // namespace orvo::simulator
