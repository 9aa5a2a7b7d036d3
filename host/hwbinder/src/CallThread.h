// SPDX-License-Identifier: Apache-2.0
// CallThread: what a thread knows of the calls it serves and of those it waits for.

#pragma once

#include <sys/types.h>

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ParcelContents.h"
#include "ThreadPool.h"
#include "host/Mutex.h"

namespace android {
namespace hardware {
namespace transport {

/** A thread of some process that waits, directly or not, for the outcome of a call. */
struct Frame {
    std::string address;
    uint64_t thread = 0;

    bool operator==(const Frame& other) const {
        return thread == other.thread && address == other.address;
    }
};
using CallChain = std::vector<Frame>;

/** The outcome of a two-way call. `contents` is null exactly if `status` is not OK. */
struct Reply {
    status_t status = OK;
    OwnedContents contents;
};

/**
 * One per thread that makes or serves calls.
 *
 * While the thread waits for a reply it serves incoming calls that belong to the same chain of
 * calls: everybody else in the chain waits too, and the pool may have no thread left.
 */
class CallThread {
  public:
    /** One two-way call that was sent. Delivered from the transport's thread, awaited here. */
    class Pending {
      public:
        /** From here on the thread takes nested calls: the first may come before await begins. */
        explicit Pending(std::shared_ptr<CallThread> caller);
        /** The first delivery counts. */
        void deliver(Reply reply);

      private:
        friend class CallThread;
        const std::shared_ptr<CallThread> mCaller;
        orvo::Mutex& mMutex;  ///< the caller's
        std::optional<Reply> mReply GUARDED_BY(mMutex);
    };

    static const std::shared_ptr<CallThread>& current();
    static CallThread* currentOrNull();
    /** The live thread with that number; null if there is none. */
    static std::shared_ptr<CallThread> find(uint64_t id);

    CallThread();
    ~CallThread();

    uint64_t id() const { return mId; }

    /** Runs nested calls until the reply is there. Only on this thread, and once for each. */
    Reply await(Pending& pending);

    /** Runs the job on this thread if it waits for a reply now; else false, job untouched. */
    bool runWhileWaiting(Job& job);

    // What follows is used only on this thread itself.

    /** Who is being served. Outside a call, this process. */
    struct Serving {
        bool active = false;
        pid_t pid = 0;
        uid_t uid = 0;
        CallChain chain;
    };
    Serving serving;
    std::vector<std::function<void()>> postCommandTasks;

    /** The chain that a two-way call made now is part of: who waits for us, and we. */
    CallChain outgoingChain(const std::string& ownAddress) const;

  private:
    const uint64_t mId;
    orvo::Mutex mMutex;
    orvo::ConditionVariable mChanged;
    size_t mWaiting GUARDED_BY(mMutex) = 0;
    std::deque<Job> mNested GUARDED_BY(mMutex);
};

}  // namespace transport
}  // namespace hardware
}  // namespace android
