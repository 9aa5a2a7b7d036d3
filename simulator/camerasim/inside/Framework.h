// SPDX-License-Identifier: Apache-2.0
// Framework: the camera framework of a running device, one client for each served instance.

#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/Mutex.h"
#include "simulator/camerasim/inside/CameraTable.h"
#include "simulator/camerasim/inside/Timeline.h"
#include "simulator/framework/FrameworkClient.h"
#include "simulator/process/OwnedThreads.h"

namespace orvo::simulator {

/**
 * Keeps the camera table and the timeline in step with what the service reports. Any thread may
 * call. The service has to end before this does, so that its threads do.
 */
class Framework {
  public:
    using Client = std::shared_ptr<FrameworkClient>;
    using Session = android::sp<FrameworkClient::Session>;

    Framework(Timeline& timeline, CameraTable& cameras) : mTimeline(timeline), mCameras(cameras) {}

    /**
     * Connects with an instance of the service that runs now; registers with it, and hears its
     * reports, on other threads.
     *
     * @param listed whether its camera list is in the framework's own words, so that the cameras in
     *        it can be taken for present without a report, as the platform does.
     */
    void attach(const std::string& instance, bool listed);
    /** The service has ended: everything that is known through it is forgotten. */
    void detachAll();

    /** The instances that the service serves. */
    std::vector<std::string> instances() const;
    /** Whether an instance has taken the callback. */
    bool isRegistered(const std::string& instance) const;
    /** Null if it is not served. */
    Client clientOf(const std::string& instance) const;
    /** Waits, for a second at most, until what was reported so far is in the table. */
    void catchUp();

    /** Keeps a camera open. False if it is held already, or is gone. */
    bool hold(const std::string& camera, const Session& session);
    /** Gives up a camera that is held; null if it is not. The caller closes it. */
    Session release(const std::string& camera);

  private:
    struct Attached {
        Client client;
        bool registered = false;
        size_t applied = 0;  ///< events of its log that are in the table
    };

    void registerWith(uint64_t generation, const std::string& instance, const Client& client,
                      bool listed);
    void hear(uint64_t generation, const std::string& instance, const Client& client);
    /** False if the service that reported it has ended. */
    bool apply(uint64_t generation, const std::string& instance, const StatusEvent& event);
    void addListed(uint64_t generation, const std::string& instance,
                   const std::vector<std::string>& names);

    Timeline& mTimeline;
    CameraTable& mCameras;
    mutable Mutex mLock;
    ConditionVariable mApplied;
    uint64_t mGeneration GUARDED_BY(mLock) = 0;                   ///< grows when a service ends
    std::map<std::string, Attached> mAttached GUARDED_BY(mLock);  ///< key: instance
    std::map<std::string, Session> mHeld GUARDED_BY(mLock);       ///< key: framework name
    OwnedThreads mThreads;                                        ///< two for each client
};

}  // namespace orvo::simulator
