// SPDX-License-Identifier: Apache-2.0
// TourPlan: which cameras a guided tour of a device shows, and what must be seen of them.

#pragma once

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

/** All that the tour expects, from the device's files alone. */
struct TourPlan {
    std::string aggregator;                   ///< instance, such as "legacy/0"
    std::vector<ProviderDescription> behind;  ///< in the order in which the aggregator asks them
    std::vector<TourCamera> announced;        ///< reported PRESENT to a new listener
    TourCamera lit;                           ///< announced, version 3, with a flash
    TourCamera plugged;                       ///< external and not there at the start
    ProviderDescription mrProvider;           ///< what the MR library describes

    /**
     * Reads the map, the manifest and every description.
     *
     * @return an error, one line, if a file is missing or wrong, if a provider is declared by
     *         nobody, or if the device lacks a camera that the tour shows.
     */
    static android::base::Result<TourPlan> make(const HeadsetDescription& device);
};

}  // namespace orvo::simulator
