// SPDX-License-Identifier: Apache-2.0
// FakeDevice: a device's directory and control socket, whose answers a test writes.

#pragma once

#include <condition_variable>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <android-base/thread_annotations.h>
#include <android-base/unique_fd.h>
#include <nlohmann/json.hpp>

#include "simulator/control/Protocol.h"

namespace orvo::simulator::testing {

/** Two providers that are well, one that has died, one that is only named; five cameras. */
HeadsetState sampleState();
/** Three events, numbered from 1. */
std::vector<TimelineEvent> sampleEvents();

/** Serves `<temporary>/camerasim.<six characters>/run/control` on a thread of its own. */
class FakeDevice {
  public:
    using Json = nlohmann::json;

    /** @param suffix six characters. Until told otherwise it answers "state" only. */
    FakeDevice(const std::string& temporary, const std::string& suffix, HeadsetState state);
    explicit FakeDevice(const std::string& temporary)
        : FakeDevice(temporary, "fake01", sampleState()) {}
    ~FakeDevice();

    const std::string& root() const { return mState.root; }
    const HeadsetState& state() const { return mState; }
    std::string write(const std::string& file, const std::string& content) const;

    void answer(const std::string& command, const Json& result);
    void refuse(const std::string& command, const std::string& text, int status = 1);
    /** Answers with these bytes, whatever they are, and closes. */
    void answerRaw(const std::string& command, const std::string& bytes);
    void haveEvents(std::vector<TimelineEvent> events);
    /** Sends it to everybody who follows. */
    void happen(const TimelineEvent& event);
    /** From now on requests are read and never answered. */
    void beSilent();
    /** Lets go of the socket and of everybody who follows; the directory stays. */
    void end();

    /** The requests of a command so far; waits until there are so many. */
    std::vector<Json> requests(const std::string& command, size_t count = 1);

  private:
    void serve();
    void handle(android::base::unique_fd connection);
    void sendEvents(android::base::unique_fd connection, const Json& request) REQUIRES(mLock);

    HeadsetState mState;
    android::base::unique_fd mSocket;
    std::mutex mLock;
    std::condition_variable mChanged;
    std::map<std::string, std::string> mAnswers GUARDED_BY(mLock);  ///< key: command; value: lines
    std::vector<TimelineEvent> mEvents GUARDED_BY(mLock);
    std::vector<android::base::unique_fd> mFollowers GUARDED_BY(mLock);
    std::vector<Json> mRequests GUARDED_BY(mLock);
    bool mSilent GUARDED_BY(mLock) = false;
    std::thread mThread;
};

}  // namespace orvo::simulator::testing
