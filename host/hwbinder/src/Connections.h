// SPDX-License-Identifier: Apache-2.0
// Connections: this process's socket, and its connections to other processes.

#pragma once

#include <future>
#include <map>
#include <memory>
#include <set>
#include <string>

#include <android-base/unique_fd.h>

#include "Connection.h"

namespace android {
namespace hardware {
namespace transport {

/** One per process that meets others, never destroyed. Knows nothing of objects. */
class Connections {
  public:
    /**
     * Accepts from now on.
     *
     * @param directory where the sockets of all processes are.
     * @param address the name in there of this process's own, which is `listener`.
     */
    Connections(EventLoop& loop, std::string directory, std::string address,
                base::unique_fd listener, ConnectionUser& user);

    // On any thread.
    const std::string& address() const { return mAddress; }
    const std::string& directory() const { return mDirectory; }
    std::string socketPath(const std::string& address) const { return mDirectory + "/" + address; }

    /**
     * Breaks all connections, without telling the user, and makes no more: other processes are
     * gone for this one, and this one for them. Waits until that is so. Not on the event loop.
     */
    void breakAll();

    // On the event loop only.

    /**
     * The connection to the process with that socket, made now if need be; null if it is gone.
     * Throws if it may be there and cannot be reached.
     */
    Connection* to(const std::string& address);
    /** The process at the other end has told its socket's name. */
    void introduced(Connection& connection, const std::string& address);
    /** Runs in the background; what it fails with is logged. */
    void watch(kj::Promise<void> promise);

  private:
    kj::Promise<void> acceptLoop();
    Connection& open(kj::Own<kj::AsyncCapabilityStream> stream, bool accepted,
                     std::shared_ptr<Peer> peer);
    void disconnected(Connection& connection);

    EventLoop& mLoop;
    const std::string mDirectory;
    const std::string mAddress;
    ConnectionUser& mUser;
    kj::Own<kj::TaskSet> mTasks GUARDED_BY(gLoopThread);
    kj::Own<kj::ConnectionReceiver> mListener GUARDED_BY(gLoopThread);
    kj::Promise<void> mAccepting GUARDED_BY(gLoopThread) = nullptr;
    /** Key: the address of the other end. */
    std::map<std::string, Connection*> mConnections GUARDED_BY(gLoopThread);
    std::set<Connection*> mUnbroken GUARDED_BY(gLoopThread);
    bool mBreaksAll GUARDED_BY(gLoopThread) = false;
    std::promise<void> mAllBroken;
};

}  // namespace transport
}  // namespace hardware
}  // namespace android
