// SPDX-License-Identifier: Apache-2.0
// StormCaller: a thread that calls a camera provider without end, as a busy framework would.

#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <android-base/thread_annotations.h>

#include "simulator/framework/FrameworkClient.h"
#include "tests/simulator/StormModel.h"

namespace orvo::simulator::testing {

/**
 * How careful the calls are. A call that passes through the service to a provider that has just
 * died ends the service, as does a question for a camera that is not there; without a mood that
 * spares it, the service would hardly ever live to see a provider come back.
 */
enum class Mood {
    HOLDING,    ///< no call to the service; calls to devices that it has given out
    ATTENTIVE,  ///< asks for cameras of which it has heard, at random moments
    HEEDLESS,   ///< everything, all the time, also for cameras that are not there
};

class StormCaller {
  public:
    StormCaller(const StormModel& model, uint64_t seed);
    ~StormCaller();

    /** From now on calls go to this client. Resumes a caller that was paused. */
    void call(std::shared_ptr<FrameworkClient> client, Mood mood);
    /** Waits until the call that is being made has returned; there is none after it. */
    void pause();

    size_t calls() const;
    /** One line for each answer that was not what it must be. */
    std::vector<std::string> complaints() const;

  private:
    void run();
    void makeCall(FrameworkClient& client, Mood mood);
    void hear(const std::shared_ptr<FrameworkClient>& client);

    void askForList(FrameworkClient& client);
    void askForTorch(FrameworkClient& client);
    void askForTags(FrameworkClient& client);
    void askForCamera(FrameworkClient& client, const StormCamera& camera);
    void askHeldDevice();
    /** A random one among those that it has heard of, or among all; null if there is none. */
    const StormCamera* pick(bool ofAll);
    bool allBuiltInHeard() const;
    void complain(const std::string& line);

    const std::vector<ProviderDescription> mProviders;
    const std::vector<StormCamera> mCameras;

    // Of the calling thread alone.
    std::mt19937_64 mRandom;
    std::shared_ptr<FrameworkClient> mHeardOf;  ///< whose log the next two are about
    size_t mHeard = 0;
    std::set<std::string> mPresent;  ///< framework names
    android::sp<FrameworkClient::DeviceV3> mHeld;

    mutable std::mutex mLock;
    std::condition_variable mChanged;
    std::shared_ptr<FrameworkClient> mClient GUARDED_BY(mLock);  ///< null: paused
    Mood mMood GUARDED_BY(mLock) = Mood::HOLDING;
    bool mCalling GUARDED_BY(mLock) = false;
    bool mStopped GUARDED_BY(mLock) = false;
    size_t mCalls GUARDED_BY(mLock) = 0;
    std::vector<std::string> mComplaints GUARDED_BY(mLock);
    std::thread mThread;  ///< last: it uses everything above
};

}  // namespace orvo::simulator::testing
