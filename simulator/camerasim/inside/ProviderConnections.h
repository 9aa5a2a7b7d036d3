// SPDX-License-Identifier: Apache-2.0
// ProviderConnections: to which provider processes of a running device the service is connected.

#pragma once

#include <sys/types.h>

#include <chrono>
#include <map>
#include <optional>
#include <string>

#include <vendor/orvo/simulator/1.0/ISimulatedProvider.h>

#include "host/Mutex.h"
#include "simulator/camerasim/inside/Timeline.h"
#include "simulator/process/OwnedThreads.h"

namespace orvo::simulator {

/**
 * One thread for each provider process waits for that process to say that a listener has registered
 * with it or was lost. Any thread may call. The processes have to end before this does, so that the
 * threads do.
 */
class ProviderConnections {
  public:
    using Control = vendor::orvo::simulator::V1_0::ISimulatedProvider;
    using Clock = std::chrono::steady_clock;

    explicit ProviderConnections(Timeline& timeline) : mTimeline(timeline) {}

    /** The process of an instance is ready; from now on its connection is watched. */
    void started(const std::string& instance, pid_t pid);
    /** It has ended, as the text says. */
    void ended(const std::string& instance, pid_t pid, const std::string& how);
    /** A new service comes up, which has not lost anybody yet. */
    void serviceStarts();

    /** What is known of the newest process of an instance. */
    struct Connection {
        bool connected = false;
        Clock::time_point startedAt;
        std::optional<Clock::time_point> lostAt;  ///< when the service last lost one of them
    };
    Connection connectionOf(const std::string& instance) const;

    /** The handle of the process that runs; null if there is none, or not yet. */
    android::sp<Control> controlOf(const std::string& instance) const;

  private:
    struct Process {
        pid_t pid = 0;  ///< 0: none runs
        Connection connection;
        android::sp<Control> control;
    };

    void watch(const std::string& instance, pid_t pid);
    /** False if that process is not the newest one any more. */
    bool setControl(const std::string& instance, pid_t pid, const android::sp<Control>& control);
    bool setConnected(const std::string& instance, pid_t pid, bool connected);

    Timeline& mTimeline;
    mutable Mutex mLock;
    std::map<std::string, Process> mProcesses GUARDED_BY(mLock);  ///< key: instance
    OwnedThreads mThreads;                                        ///< one for each process
};

}  // namespace orvo::simulator
