// SPDX-License-Identifier: Apache-2.0
// Which cameras of the providers behind a map the framework cannot tell apart.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "mapcheck/Finding.h"
#include "mapcheck/MapFile.h"

namespace orvo::mapcheck {

class CameraChecks {
  public:
    /** Findings go to `findings`, which has to live longer. */
    explicit CameraChecks(Findings* findings) : mFindings(findings) {}

    /**
     * Checks the cameras of the entry's provider, given by their device names, against those of the
     * entries before it and against one another. The entry has to live longer than this.
     */
    void add(const MapEntry& entry, const std::vector<std::string>& names);

  private:
    /** One camera behind one instance. */
    struct Camera {
        const MapEntry* entry;
        std::string name;     // As its provider reports it.
        unsigned long major;  // Of the version of its device interface.
    };
    /** Key: the camera's name, or its id, in the framework. */
    using Cameras = std::unordered_map<std::string, Camera>;

    void addCamera(const Camera& camera, const std::string& frameworkName, const std::string& id);
    void reportRepeated(const Camera& camera);
    void reportSameName(const Camera& first, const Camera& second, const std::string& name);
    void reportSameId(const Camera& first, const Camera& second, const std::string& id);

    Findings* const mFindings;
    std::unordered_map<std::string, Cameras> mByName;  // Key: the instance that they are behind.
    Cameras mById;                                     // The first one of each id.
    Cameras mByVersionAndId;                           // Of each major version, "3/100".
};

}  // namespace orvo::mapcheck
