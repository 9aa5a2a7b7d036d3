// SPDX-License-Identifier: Apache-2.0
// ControlServer: takes requests for a running headset from other programs of the same user.

#pragma once

#include <functional>
#include <set>
#include <string>
#include <thread>

#include <android-base/result.h>
#include <android-base/unique_fd.h>
#include <nlohmann/json_fwd.hpp>

#include "host/Mutex.h"
#include "simulator/control/Protocol.h"
#include "simulator/process/OwnedThreads.h"

namespace orvo::simulator {

/** One request's way back. One thread. A client that is gone or reads nothing harms nobody else. */
class Reply {
  public:
    explicit Reply(int connection) : mConnection(connection) {}

    /** False if the client is gone. */
    bool event(const TimelineEvent& event);
    // Exactly one of these, once, at the end.
    void result(const nlohmann::json& result);
    void error(const android::base::ResultError& error);

    /** Hung up, as poll calls it, when the client is gone. */
    int connection() const { return mConnection; }

  private:
    bool send(const nlohmann::json& line);

    const int mConnection;
};

/** A Unix stream socket; one line is one request, each connection brings one. */
class ControlServer {
  public:
    /** Answers a request; called on a thread of its own for each, several at once. */
    using Handler = std::function<void(const std::string& line, Reply& reply)>;

    /**
     * Makes the socket. From then on clients can connect, and wait for serve().
     *
     * @param root the headset's temporary directory, where there is none yet.
     */
    static android::base::Result<android::base::unique_fd> listen(const std::string& root);

    ControlServer(android::base::unique_fd socket, Handler handler);
    /** Hangs up on everybody and waits until the handlers have returned. */
    ~ControlServer();

    /** Begins to accept. */
    void serve();

  private:
    void acceptUntilClosed();
    void answer(int connection);
    /** Closes and forgets a connection. */
    void finish(int connection);

    const android::base::unique_fd mSocket;
    const Handler mHandler;
    Mutex mLock;
    ConditionVariable mChanged;
    std::set<int> mConnections GUARDED_BY(mLock);
    std::thread mAcceptor;
    OwnedThreads mThreads;  ///< one for each connection
};

}  // namespace orvo::simulator
