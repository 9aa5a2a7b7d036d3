// SPDX-License-Identifier: Apache-2.0
// Endpoint: this process among those of its device, as its other threads see it.

#pragma once

#include <memory>
#include <string>

#include "CallThread.h"
#include "Connections.h"
#include "EventLoop.h"
#include "ObjectTable.h"

namespace android {
namespace hardware {
namespace transport {

/**
 * One per process that meets others, never destroyed. Public methods may be called on any thread
 * but the event loop's.
 */
class Endpoint {
  public:
    /** Null, with a line that says why, if the device directory cannot be used. */
    static Endpoint* instance();

    /** Makes a call and waits. `data` must be sealed. */
    Reply call(const std::shared_ptr<RemoteObject>& target, uint32_t code, uint32_t flags,
               OwnedContents data);
    /** Queues a call. */
    void send(const std::shared_ptr<RemoteObject>& target, uint32_t code, uint32_t flags,
              OwnedContents data);

    /** The service manager's object; null if there is none. */
    sp<IBinder> contextObject();
    bool becomeContextManager();
    void setContextObject(const sp<BHwBinder>& object) { mObjects.setContextObject(object); }

    /** From here on calls fail, also those that wait, and none comes. */
    void disconnect() { mConnections.breakAll(); }
    /** After that, and once no handler runs any more. */
    void end() { mLoop.end(); }

  private:
    Endpoint(const std::string& directory, const std::string& address, base::unique_fd listener);
    static Endpoint* create();

    std::string managerAddress() const;

    // On the event loop only.
    void request(const std::shared_ptr<RemoteObject>& target, uint32_t code, uint32_t flags,
                 const CallChain& chain, OwnedContents data,
                 std::shared_ptr<CallThread::Pending> pending);
    kj::Promise<Reply> readReply(capnp::Response<wire::Binder::TransactResults>&& response,
                                 Connection& from);
    kj::Promise<sp<IBinder>> askForContextObject(const std::string& manager);

    EventLoop mLoop;
    ObjectTable mObjects;  // before the connections, which bring calls to it from their beginning
    Connections mConnections;
};

}  // namespace transport
}  // namespace hardware
}  // namespace android
