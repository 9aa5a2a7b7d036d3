// SPDX-License-Identifier: Apache-2.0
// LocalObject: an object of this process that others refer to, and how their calls reach it.

#pragma once

#include <deque>
#include <memory>

#include "CallThread.h"
#include "ObjectTable.h"
#include "host/Mutex.h"

namespace android {
namespace hardware {
namespace transport {

/** A call that arrived. Made on the event loop, run on a pool thread or on a waiting one. */
struct IncomingCall {
    ~IncomingCall();

    sp<BHwBinder> object;
    uint32_t code = 0;
    uint32_t flags = 0;
    CallChain chain;
    pid_t pid = 0;
    uid_t uid = 0;
    OwnedContents data;  ///< null until it has been decoded
    /** Null for oneway calls. Any thread may fulfil it. */
    kj::Own<kj::CrossThreadPromiseFulfiller<Reply>> answer;
};

/** Runs the call on this thread and answers it. */
void serve(IncomingCall& call);

/** Runs oneway calls to one object one at a time, in the order in which they arrived. */
class OnewayQueue : public std::enable_shared_from_this<OnewayQueue> {
  public:
    /** Keeps the call's place; it runs once its data is there, or is dropped if cancelled. */
    void reserve(const std::shared_ptr<IncomingCall>& call);
    void dataArrived(const std::shared_ptr<IncomingCall>& call, OwnedContents data);
    void cancel(const std::shared_ptr<IncomingCall>& call);

  private:
    void runNext();
    void scheduleLocked() REQUIRES(mMutex);

    orvo::Mutex mMutex;
    std::deque<std::shared_ptr<IncomingCall>> mCalls GUARDED_BY(mMutex);
    bool mRunning GUARDED_BY(mMutex) = false;
};

/** Exists while another process refers to the object, which it keeps alive. Event loop only. */
class LocalObject {
  public:
    LocalObject(ObjectTable& table, const sp<BHwBinder>& object, uint64_t id);
    ~LocalObject();

    const sp<BHwBinder>& object() const;
    uint64_t id() const { return mId; }
    /** May be used on any thread. */
    const std::shared_ptr<OnewayQueue>& onewayCalls() const { return mOnewayCalls; }

  private:
    ObjectTable& mTable;
    sp<BHwBinder> mObject GUARDED_BY(gLoopThread);
    const uint64_t mId;
    const std::shared_ptr<OnewayQueue> mOnewayCalls = std::make_shared<OnewayQueue>();
};

/** A local object as the other end of one connection sees it, so that calls tell who makes them. */
class ObjectServer final : public wire::Binder::Server {
  public:
    ObjectServer(ObjectTable& table, Connection& connection, std::shared_ptr<LocalObject> object)
        : mTable(table), mConnection(kj::addRef(connection)), mObject(std::move(object)) {}

    kj::Promise<void> transact(TransactContext context) override;

  private:
    kj::Promise<void> transactOneway(std::shared_ptr<IncomingCall> call, TransactContext context);
    kj::Promise<void> transactTwoWay(std::shared_ptr<IncomingCall> call, TransactContext context);

    ObjectTable& mTable;
    kj::Own<Connection> mConnection GUARDED_BY(gLoopThread);
    const std::shared_ptr<LocalObject> mObject;
};

}  // namespace transport
}  // namespace hardware
}  // namespace android
