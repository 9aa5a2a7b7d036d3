// SPDX-License-Identifier: Apache-2.0
// Tour: walks a person through a device that boots, serves its cameras and notices changes.

#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <variant>

#include "simulator/camerasim/inside/Programs.h"
#include "simulator/camerasim/tour/Narrator.h"
#include "simulator/camerasim/tour/TourPlan.h"
#include "simulator/framework/FrameworkClient.h"

namespace orvo::simulator {

/**
 * The framework's side of a device, step by step. Every expectation comes from the device's files;
 * every observation comes through the provider library's service. One thread.
 */
class Tour {
  public:
    /** @param pause waited after each step. */
    Tour(TourPlan plan, Programs& device, Narrator& narrator, std::chrono::seconds pause);

    /** Ends at the first step that is not as expected. @return true if every step was. */
    bool run();

  private:
    using Status = FrameworkClient::Status;

    // The steps, in order. Each prints itself and returns whether it was as expected.
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

    /** Waits for a status under a framework name, among those heard from the mark on. */
    bool hear(const std::string& name, std::variant<StatusEvent::Device, StatusEvent::Torch> status,
              size_t mark);
    /** Tells a provider process to plug a camera; prints what it answers if it refuses. */
    bool setDeviceStatus(const TourCamera& camera, StatusEvent::Device status);
    /** The ids of a camera's provider as they should stand in its property. */
    std::string expectedIds(const TourCamera& camera, bool withPlugged) const;
    bool checkIds(const TourCamera& camera, bool withPlugged, const std::string& when);
    /** Waits until each announced camera of the provider that dies has that status. */
    bool hearOfLostProvider(StatusEvent::Device status, size_t mark);
    void tellTime(const std::string& what);

    const TourPlan mPlan;
    Programs& mDevice;
    Narrator& mNarrator;
    const std::chrono::seconds mPause;
    std::unique_ptr<FrameworkClient> mFramework;      ///< set by hearOfCameras
    std::chrono::steady_clock::time_point mKilledAt;  ///< set by loseProvider
};

}  // namespace orvo::simulator
