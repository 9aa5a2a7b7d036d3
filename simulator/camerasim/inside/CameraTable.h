// SPDX-License-Identifier: Apache-2.0
// CameraTable: the cameras that the framework has been told of.

#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "host/Mutex.h"
#include "simulator/control/Protocol.h"

namespace orvo::simulator {

/** Any thread may call. */
class CameraTable {
  public:
    /** A service reported the status of a camera, such as "PRESENT". */
    void report(const std::string& service, const std::string& name, const std::string& status);
    /** A service reported a torch, such as "AVAILABLE_ON"; it may come before any status. */
    void reportTorch(const std::string& service, const std::string& name, const std::string& torch);
    /** Nothing if it is not in the table. */
    void setOpen(const std::string& name, bool open);
    /** The services are gone, and with them every status that they have reported. */
    void clear();

    /** Sorted by name. One with a torch but no status yet has the status "". */
    std::vector<CameraState> cameras() const;
    std::optional<CameraState> find(const std::string& name) const;
    /** Names of those that are held open. */
    std::vector<std::string> heldOpen() const;
    /** Every name that ever had a status, also before the last clear(). */
    std::set<std::string> everReported() const;

  private:
    mutable Mutex mLock;
    std::map<std::string, CameraState> mCameras GUARDED_BY(mLock);  ///< key: framework name
    std::set<std::string> mEverReported GUARDED_BY(mLock);
};

}  // namespace orvo::simulator
