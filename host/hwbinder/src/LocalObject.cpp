// SPDX-License-Identifier: Apache-2.0
// How calls from other processes reach the objects of this one.

#define LOG_TAG "hwbinder"

#include "LocalObject.h"

#include <algorithm>

#include <hwbinder/Parcel.h>
#include <log/log.h>

namespace android {
namespace hardware {
namespace transport {

namespace {

/** Far more than nested calls between live threads need; a chain names each thread once. */
constexpr size_t kMaxChain = 256;

/** The thread of this process that waits for the call that `chain` belongs to; null if none. */
std::shared_ptr<CallThread> waitingThread(const CallChain& chain, const std::string& ownAddress) {
    auto innermost = std::find_if(chain.rbegin(), chain.rend(), [&ownAddress](const Frame& frame) {
        return frame.address == ownAddress;
    });
    return innermost == chain.rend() ? nullptr : CallThread::find(innermost->thread);
}

void answerWith(IncomingCall& call, Reply reply) {
    if (call.answer.get() != nullptr) call.answer->fulfill(std::move(reply));
}

void answerWith(IncomingCall& call, const Parcel& parcel) {
    Reply reply;
    reply.contents = parcel.contents().seal(&reply.status);
    answerWith(call, std::move(reply));
}

void runPostCommandTasks(CallThread& thread) {
    std::vector<std::function<void()>> tasks;
    tasks.swap(thread.postCommandTasks);
    for (const auto& task : tasks) task();
}

}  // namespace

IncomingCall::~IncomingCall() {
    // A call that was refused ends on the event loop.
    EventLoop::release(std::move(object));
}

void serve(IncomingCall& call) {
    CallThread& thread = *CallThread::current();
    CallThread::Serving outer = std::move(thread.serving);
    thread.serving = {true, call.pid, call.uid, call.chain};
    {
        Parcel data;
        Parcel reply;
        data.adopt(std::unique_ptr<ParcelContents>(call.data.release()));
        bool answered = false;
        const status_t status = call.object->transact(call.code, data, &reply, call.flags,
                                                      [&call, &answered](Parcel& finished) {
                                                          // From here on the caller runs again,
                                                          // even before the handler returns.
                                                          answered = true;
                                                          answerWith(call, finished);
                                                      });
        const status_t outcome = status != OK ? status : reply.errorCheck();
        if (!answered && outcome == OK) {
            answerWith(call, reply);
        } else if (!answered) {
            answerWith(call, Reply{outcome, nullptr});
        } else if (outcome != OK) {
            ALOGW("Call %u failed with %d after it had been answered", call.code, outcome);
        }
    }
    // An object whose last reference this was goes here, on a thread that may wait.
    call.object = nullptr;
    thread.serving = std::move(outer);
    if (!thread.serving.active) runPostCommandTasks(thread);
}

void OnewayQueue::reserve(const std::shared_ptr<IncomingCall>& call) {
    orvo::MutexLock lock(mMutex);
    mCalls.push_back(call);
}

void OnewayQueue::dataArrived(const std::shared_ptr<IncomingCall>& call, OwnedContents data) {
    orvo::MutexLock lock(mMutex);
    call->data = std::move(data);
    scheduleLocked();
}

void OnewayQueue::cancel(const std::shared_ptr<IncomingCall>& call) {
    orvo::MutexLock lock(mMutex);
    mCalls.erase(std::remove(mCalls.begin(), mCalls.end(), call), mCalls.end());
    scheduleLocked();
}

void OnewayQueue::scheduleLocked() {
    if (mRunning || mCalls.empty() || mCalls.front()->data == nullptr) return;
    mRunning = true;
    ThreadPool::instance().submit([self = shared_from_this()] { self->runNext(); });
}

void OnewayQueue::runNext() {
    std::shared_ptr<IncomingCall> call;
    {
        orvo::MutexLock lock(mMutex);
        call = std::move(mCalls.front());
        mCalls.pop_front();
    }
    serve(*call);
    orvo::MutexLock lock(mMutex);
    mRunning = false;
    scheduleLocked();
}

LocalObject::LocalObject(ObjectTable& table, const sp<BHwBinder>& object, uint64_t id)
    : mTable(table), mObject(object), mId(id) {
    EventLoop::assertCurrent();
}

LocalObject::~LocalObject() {
    EventLoop::assertCurrent();
    mTable.forget(*this);
    EventLoop::release(std::move(mObject));
}

const sp<BHwBinder>& LocalObject::object() const {
    EventLoop::assertCurrent();
    return mObject;
}

kj::Promise<void> ObjectServer::transact(TransactContext context) {
    EventLoop::assertCurrent();
    auto params = context.getParams();
    auto call = std::make_shared<IncomingCall>();
    call->object = mObject->object();
    call->code = params.getCode();
    call->flags = params.getFlags();
    call->pid = mConnection->peer->pid;
    call->uid = mConnection->peer->uid;
    KJ_REQUIRE(params.getChain().size() <= kMaxChain, "calls nested too deeply");
    for (wire::Frame::Reader frame : params.getChain()) {
        call->chain.push_back({frame.getAddress().cStr(), frame.getThread()});
    }
    const bool oneway = (call->flags & IBinder::FLAG_ONEWAY) != 0;
    return oneway ? transactOneway(std::move(call), context)
                  : transactTwoWay(std::move(call), context);
}

kj::Promise<void> ObjectServer::transactOneway(std::shared_ptr<IncomingCall> call,
                                               TransactContext context) {
    EventLoop::assertCurrent();
    std::shared_ptr<OnewayQueue> queue = mObject->onewayCalls();
    // The order is that of arrival, also when descriptors take one call longer than the next.
    queue->reserve(call);
    auto decoded = kj::evalNow([this, &context]() {
        EventLoop::assertCurrent();
        return mTable.decode(context.getParams().getData(), *mConnection);
    });
    return decoded.then(
            [queue, call, context](OwnedContents&& data) mutable {
                context.releaseParams();
                queue->dataArrived(call, std::move(data));
            },
            [queue, call](kj::Exception&& exception) {
                ALOGW("Refused a oneway call: %s", exception.getDescription().cStr());
                queue->cancel(call);
            });
}

kj::Promise<void> ObjectServer::transactTwoWay(std::shared_ptr<IncomingCall> call,
                                               TransactContext context) {
    EventLoop::assertCurrent();
    auto decoded = kj::evalNow([this, &context]() {
        EventLoop::assertCurrent();
        return mTable.decode(context.getParams().getData(), *mConnection);
    });
    auto answered = decoded.then([this, call, context](OwnedContents&& data) mutable {
        context.releaseParams();
        call->data = std::move(data);
        auto answer = kj::newPromiseAndCrossThreadFulfiller<Reply>();
        call->answer = kj::mv(answer.fulfiller);
        Job job = [call] { serve(*call); };
        auto waiting = waitingThread(call->chain, mTable.ownAddress());
        if (waiting == nullptr || !waiting->runWhileWaiting(job)) {
            ThreadPool::instance().submit(std::move(job));
        }
        return kj::mv(answer.promise);
    });
    auto refuse = [](kj::Exception&& exception) {
        ALOGW("Refused a call: %s", exception.getDescription().cStr());
        return Reply{FAILED_TRANSACTION, nullptr};
    };
    return answered.catch_(refuse).then([this, context](Reply&& reply) mutable {
        EventLoop::assertCurrent();
        auto results = context.getResults();
        results.setStatus(reply.status);
        if (reply.contents == nullptr) return;
        mTable.encode(*reply.contents, *mConnection, results.initReply());
    });
}

}  // namespace transport
}  // namespace hardware
}  // namespace android
