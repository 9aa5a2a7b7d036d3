// SPDX-License-Identifier: Apache-2.0
// HeadsetFiles: which providers the files of a device speak of, and where.

#pragma once

#include <set>
#include <string>
#include <vector>

#include <android-base/result.h>

#include "simulator/description/HeadsetDescription.h"
#include "simulator/description/ProviderMap.h"

namespace orvo::simulator {

constexpr char kCameraProvider[] = "android.hardware.camera.provider@2.4::ICameraProvider";
constexpr char kMrInstance[] = "default/0";

/** The library hands names that begin with the MR provider's to that, without asking the map. */
bool isMrInstance(const std::string& instance);

/** The description, the VINTF manifest and the provider map of one device, read once. */
class HeadsetFiles {
  public:
    /**
     * Reads the manifest and the map of the description's vendor tree. A map that the library
     * cannot read puts nothing behind anything.
     *
     * @return an error, one line, if the manifest is malformed: nothing would boot.
     */
    static android::base::Result<HeadsetFiles> read(const HeadsetDescription& description);

    const HeadsetDescription& description() const { return mDescription; }

    /** Every instance that any of the files names, each once: those that the service serves first,
     *  then provider processes, then the map's and the manifest's. */
    const std::vector<std::string>& instances() const { return mInstances; }
    /** An error, one line with all of them, if an instance is none of those. */
    android::base::Result<void> checkKnown(const std::string& instance) const;

    bool isDeclared(const std::string& instance) const { return mDeclared.count(instance) != 0; }
    bool isServed(const std::string& instance) const;
    bool isDescribed(const std::string& instance) const;
    /** The instance that the map puts it behind, the first one if there are several; or "". */
    std::string behind(const std::string& instance) const;
    /** What the map puts behind it, in the order in which it asks them. */
    std::vector<std::string> allBehind(const std::string& instance) const {
        return mMap.behind(instance);
    }

    /** What the library's reader complains of in the map, one line each. */
    const std::vector<std::string>& warnings() const { return mMap.warnings(); }

  private:
    void addInstance(const std::string& instance);

    HeadsetDescription mDescription;
    std::set<std::string> mDeclared;
    ProviderMap mMap;
    std::vector<std::string> mInstances;
};

}  // namespace orvo::simulator
