// SPDX-License-Identifier: Apache-2.0
// Storm: kills providers, plugs cameras, and compares the device with the model after each calm.

#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <string>

#include "simulator/camerasim/inside/Programs.h"
#include "simulator/framework/FrameworkClient.h"
#include "tests/simulator/StormCaller.h"
#include "tests/simulator/StormModel.h"
#include "tests/simulator/support/WatchedService.h"

namespace orvo::simulator::testing {

/**
 * One storm over a booted device, for the main thread. What is not as it must be is reported as a
 * failure of the running test.
 *
 * Where the library's required behaviour ends the service, the service is started again as the
 * platform would, the framework registers again, and the end is counted by its cause.
 */
class Storm {
  public:
    Storm(Programs& device, StormModel model, uint64_t seed);

    /** The first calm: what there is now is what there must be after every other. */
    void begin();
    /** A few random acts at random moments, with constant calls in one mood. */
    void burst();
    /** Starts what is dead, waits until nothing is under way, and compares. */
    void calm();
    /** Ends the device and looks whether anything is left. */
    void end();

    size_t kills() const { return mKills; }
    /** One line for each thing that was counted. */
    std::string summary() const;
    /** What the service has logged last, to see what went before a failure. */
    std::string endOfServiceLog() const;

  private:
    using Device = StatusEvent::Device;
    using Clock = std::chrono::steady_clock;

    // Storm.cpp: what happens.
    void act();
    void kill(const std::string& provider);
    void start(const std::string& provider);
    void startAllDead();
    void moveCamera();
    /** Has the provider process plug the camera in or out. */
    void plug(const StormCamera& camera, bool in);
    void pauseAtRandom();
    size_t random(size_t below) { return mRandom() % below; }
    /** Restarts a service that has ended. */
    void keepServiceUp();
    void restartService();
    void registerFramework();
    /** Why the service has ended, from its log; fails the test if it should not have. */
    std::string causeOfEnd();
    /** Whether two deaths of one provider were being recovered from at the same time. */
    bool hadTwoReconnectionsAtOnce(const std::string& log) const;

    // StormCalm.cpp: what must be true.
    /** Restarts and waits until all is quiet; false if it never is. */
    bool awaitCalm();
    bool isQuiet();
    /** A provider that was away for too long is never looked for again: only a new service helps.
     */
    bool hasGivenUp();
    bool settleAll();
    void hear();
    void compare();
    void resolveUncertain();
    void compareView();
    void compareIds();
    void compareCameras();
    void compareLists();
    /** mActiveDevices as the service itself lists it whenever a camera comes or goes. */
    void compareActiveDevices();
    void compareUse();
    void compareChildren();

    Programs& mDevice;
    StormModel mModel;
    std::mt19937_64 mRandom;
    WatchedService mService;
    StormCaller mCaller;
    std::shared_ptr<FrameworkClient> mFramework;
    Mood mMood = Mood::HOLDING;

    size_t mHeard = 0;            ///< notifications of mFramework that the next two contain
    std::set<std::string> mView;  ///< framework names of what was heard to be present
    /** Key: provider type. Value: what its id property must hold. */
    std::map<std::string, IdList> mIds;
    /** What the present service had after its first calm. */
    std::optional<ProcessUse> mUse;
    /** Key: provider instance that is dead. */
    std::map<std::string, Clock::time_point> mDiedAt;
    std::map<std::string, std::chrono::milliseconds> mLongestAway;

    size_t mKills = 0, mCleanEnds = 0, mBursts = 0, mCalms = 0, mPlugs = 0, mLateReports = 0;
    /** Key: why the service ended. Value: how often. */
    std::map<std::string, size_t> mServiceEnds;
};

}  // namespace orvo::simulator::testing
