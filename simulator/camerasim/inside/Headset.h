// SPDX-License-Identifier: Apache-2.0
// Headset: one that is up: its programs, its framework, and what it tells of itself.

#pragma once

#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <map>
#include <string>

#include <android-base/result.h>

#include "host/Mutex.h"
#include "simulator/camerasim/inside/CameraTable.h"
#include "simulator/camerasim/inside/Framework.h"
#include "simulator/camerasim/inside/MainThread.h"
#include "simulator/camerasim/inside/Programs.h"
#include "simulator/camerasim/inside/ProviderConnections.h"
#include "simulator/camerasim/inside/Timeline.h"
#include "simulator/control/Condition.h"
#include "simulator/control/Protocol.h"
#include "simulator/description/HeadsetFiles.h"
#include "simulator/process/LimitedCalls.h"

namespace orvo::simulator {

/** Any thread may call, but boot(), run() and the end belong on the main thread. */
class Headset {
  public:
    /** What the user calls the camera provider service. */
    static constexpr char kServiceWord[] = "service";

    Headset(HeadsetFiles files, Installation installation, const Stage& stage,
            bool restartProviders);
    /** Ends all programs, and waits for every call to one of them. */
    ~Headset();

    /**
     * Starts everything. A provider that does not come up is told on the timeline and left; an
     * error, one line, if the service manager or the service did not.
     */
    android::base::Result<void> boot();
    /** Starts what is to be started, until stop(). @return what the process is to end with. */
    int run();
    /** Ends all programs; when it returns they have ended. Then run() returns. */
    void stop();
    /** As stop(), but run() goes on until letGo(). @return a line for each that did not end well.
     */
    std::vector<std::string> endPrograms();
    void letGo() { mMainThread.stop(); }

    /** Whether stop() or endPrograms() was called. */
    bool isStopping() const { return mStopping; }

    /** Has run() start the process of an instance that has ended, and waits for that; an error if
     *  it does not become ready. */
    android::base::Result<void> startOnMainThread(const std::string& instance);

    /** The program of a provider process or of the service; an error, one line, if `name` is
     *  neither. */
    android::base::Result<std::string> programOf(const std::string& name) const;

    /** @param ask whether providers are asked for their devices; each has two seconds. */
    HeadsetState state(bool ask);
    ConditionFacts facts();
    /** Which processes do not answer for being stopped, such as "external/0 is hung"; or "". */
    std::string whoIsHung() const;
    /** Waits until what providers and service have to report is in the camera table, or they do
     *  not answer. */
    void settle();

    const HeadsetFiles& files() const { return mFiles; }
    Timeline& timeline() { return mTimeline; }
    CameraTable& cameras() { return mCameras; }
    Framework& framework() { return mFramework; }
    ProviderConnections& providers() { return mProviders; }
    Supervisor& supervisor() { return mPrograms.supervisor(); }
    const Stage& stage() const { return mPrograms.stage(); }

  private:
    using Clock = std::chrono::steady_clock;

    android::base::Result<void> startProvider(const std::string& instance);
    void startAgain(const std::string& who);
    android::base::Result<void> startService();
    void onEnd(const std::string& program, pid_t pid, const std::string& how);
    void clearProperties();
    void warn();
    void restartLater(const std::string& who);
    ServiceState serviceState() const;
    ProviderState providerState(const std::string& instance) const;
    std::string problemOfProvider(const ProviderState& state) const;

    const HeadsetFiles mFiles;
    const bool mRestartProviders;
    Timeline mTimeline;
    CameraTable mCameras;
    Programs mPrograms;
    ProviderConnections mProviders;
    Framework mFramework;
    MainThread mMainThread;
    std::atomic<bool> mStopping{false};
    std::atomic<int> mStatus{0};
    mutable Mutex mLock;
    int mServiceStarts GUARDED_BY(mLock) = 0;
    Clock::time_point mServiceReadyAt GUARDED_BY(mLock);
    /** Key: "service" or an instance; value: when it last began and how often it failed quickly. */
    struct Pace {
        Clock::time_point startedAt;
        int quickEnds = 0;
    };
    std::map<std::string, Pace> mPaces GUARDED_BY(mLock);
    LimitedCalls mCalls{8};
};

}  // namespace orvo::simulator
