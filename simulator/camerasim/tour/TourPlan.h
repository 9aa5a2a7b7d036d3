// SPDX-License-Identifier: Apache-2.0
// TourPlan: which cameras a guided tour of a headset shows, and what must be seen of them.

#pragma once

#include <optional>
#include <string>
#include <vector>

#include <android-base/result.h>

#include "simulator/description/HeadsetDescription.h"
#include "simulator/description/ProviderDescription.h"

namespace orvo::simulator {

/** A camera behind the aggregating provider. */
struct TourCamera {
    std::string provider;  ///< instance, such as "external/0"
    CameraDescription described;
    std::string frameworkName;  ///< such as "device@3.2/legacy/100"
    std::string id;             ///< such as "100"
    std::string idProperty;     ///< such as "camera.external.ids"
};

/** All that the tour expects, from the headset's files alone. What there is none of is left out. */
struct TourPlan {
    std::string name;                         ///< of the headset
    std::vector<std::string> served;          ///< instances of the service
    std::vector<std::string> processes;       ///< instances of provider processes
    std::string aggregator;                   ///< instance, such as "legacy/0"; or ""
    std::vector<ProviderDescription> behind;  ///< in the order in which the aggregator asks them
    std::vector<TourCamera> announced;        ///< reported PRESENT to a new listener
    std::optional<TourCamera> opened;         ///< announced, of version 3; one with a flash if any
    std::optional<TourCamera> plugged;        ///< external and not there at the start
    std::optional<ProviderDescription> mrProvider;  ///< what the MR library describes

    /** Whether the camera that is opened has a torch that can be switched. */
    bool hasTorch() const { return opened && opened->described.flash; }

    /**
     * Reads the map and every description.
     *
     * @return an error, one line, if a file is missing or wrong.
     */
    static android::base::Result<TourPlan> make(const std::string& directory);
};

}  // namespace orvo::simulator
