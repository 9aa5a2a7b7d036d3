// SPDX-License-Identifier: Apache-2.0
// Waiting for replies and serving nested calls meanwhile.

#include "CallThread.h"

#include <unistd.h>

#include <algorithm>
#include <map>

#include "Sockets.h"
#include "host/Mutex.h"

namespace android {
namespace hardware {
namespace transport {

namespace {

/** All threads that have a CallThread, by number, for the calls that come back to them. */
struct Registry {
    orvo::Mutex mutex;
    std::map<uint64_t, std::weak_ptr<CallThread>> threads GUARDED_BY(mutex);
};

Registry& registry() {
    // Never destroyed: threads may end after static destruction.
    static Registry& registry = *new Registry();
    return registry;
}

/** Set once the thread's own objects are gone: static destructors may still make calls. */
thread_local bool tEnding = false;
/** What such calls use. Never freed, as nothing runs any more that could. */
thread_local std::shared_ptr<CallThread>* tLast = nullptr;

struct Current {
    ~Current() { tEnding = true; }
    std::shared_ptr<CallThread> thread;
};
thread_local Current tCurrent;

void enter(const std::shared_ptr<CallThread>& thread) {
    Registry& all = registry();
    orvo::MutexLock lock(all.mutex);
    all.threads[thread->id()] = thread;
}

}  // namespace

CallThread::CallThread() : serving{false, getpid(), getuid(), {}}, mId(randomNumber()) {}

CallThread::~CallThread() {
    Registry& all = registry();
    orvo::MutexLock lock(all.mutex);
    all.threads.erase(mId);
}

const std::shared_ptr<CallThread>& CallThread::current() {
    if (tEnding) {
        if (tLast == nullptr) {
            tLast = new std::shared_ptr<CallThread>(std::make_shared<CallThread>());
            enter(*tLast);
        }
        return *tLast;
    }
    if (tCurrent.thread == nullptr) {
        tCurrent.thread = std::make_shared<CallThread>();
        enter(tCurrent.thread);
    }
    return tCurrent.thread;
}

CallThread* CallThread::currentOrNull() {
    if (tEnding) return tLast == nullptr ? nullptr : tLast->get();
    return tCurrent.thread.get();
}

std::shared_ptr<CallThread> CallThread::find(uint64_t id) {
    Registry& all = registry();
    orvo::MutexLock lock(all.mutex);
    auto found = all.threads.find(id);
    return found == all.threads.end() ? nullptr : found->second.lock();
}

CallThread::Pending::Pending(std::shared_ptr<CallThread> caller)
    : mCaller(std::move(caller)), mMutex(mCaller->mMutex) {
    orvo::MutexLock lock(mCaller->mMutex);
    mCaller->mWaiting++;
}

void CallThread::Pending::deliver(Reply reply) {
    orvo::MutexLock lock(mMutex);
    if (mReply) return;
    mReply = std::move(reply);
    mCaller->mChanged.notify_all();
}

Reply CallThread::await(Pending& pending) {
    orvo::MutexLock lock(mMutex);
    pending.mMutex.isHeld();  // it is this thread's
    while (true) {
        // Nested calls first: the one we wait for may have returned while they still run, but
        // they were made on behalf of our call and nobody else would run them.
        if (!mNested.empty()) {
            Job job = std::move(mNested.front());
            mNested.pop_front();
            lock.unlock();
            // Still one that waits: a nested call is answered before it ends, and the next one
            // may be here already.
            job();
            job = nullptr;
            lock.lock();
            continue;
        }
        if (pending.mReply) break;
        mChanged.wait(lock);
    }
    mWaiting--;
    return std::move(*pending.mReply);
}

bool CallThread::runWhileWaiting(Job& job) {
    orvo::MutexLock lock(mMutex);
    if (mWaiting == 0) return false;
    mNested.push_back(std::move(job));
    mChanged.notify_all();
    return true;
}

CallChain CallThread::outgoingChain(const std::string& ownAddress) const {
    CallChain chain = serving.chain;
    const Frame self{ownAddress, mId};
    // Once is enough: whoever calls back needs only to know that this thread waits.
    if (std::find(chain.begin(), chain.end(), self) == chain.end()) chain.push_back(self);
    return chain;
}

}  // namespace transport
}  // namespace hardware
}  // namespace android
