// SPDX-License-Identifier: Apache-2.0
// Tour: walks a person through a headset that boots, serves its cameras and notices changes.

#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "simulator/camerasim/tour/Narrator.h"
#include "simulator/camerasim/tour/TourPlan.h"
#include "simulator/camerasim/tour/Witness.h"

namespace orvo::simulator {

/**
 * A client of a headset, as any other terminal is one. Every expectation comes from the headset's
 * files; every observation comes through the provider library's service. One thread.
 */
class Tour {
  public:
    /**
     * @param root the headset's temporary directory; it may still be booting.
     * @param pause waited after each step.
     */
    Tour(TourPlan plan, const std::string& root, Narrator& narrator,
         std::chrono::milliseconds pause);

    /** Ends at the first step that is not as expected. @return true if every step was. */
    bool run();

  private:
    struct Step {
        std::string title;
        std::string explanation;
        std::string whyNot;  ///< why there is nothing to walk through; "" if there is
        std::function<bool()> walk;
    };
    std::vector<Step> steps();

    // The steps, in order. Each returns whether all was as expected.
    bool boot();
    bool hearOfCameras();
    bool listCameras();
    bool askForTorch();
    bool readVendorTags();
    bool readCamera();
    bool openCamera();
    bool plugIn();
    bool pullOut();
    bool switchTorch();
    bool askMrProvider();
    bool loseProvider();
    bool regainProvider();
    bool shutDown();

    /** Checks the list that a service answers with. */
    bool checkList(const std::string& service, const std::vector<ProviderDescription>& described);
    /** Checks the property of a camera's provider. */
    bool checkIds(const TourCamera& camera, bool withPlugged, const std::string& when);
    /** Checks that the provider that dies has this to tell of all of its cameras. */
    bool hearOfLostProvider(const std::string& status, int64_t from, const std::string& since);

    const TourPlan mPlan;
    Narrator& mNarrator;
    Witness mWitness;
    const std::chrono::milliseconds mPause;
    double mKilledAt = 0;  ///< seconds since the boot
};

}  // namespace orvo::simulator
