// SPDX-License-Identifier: Apache-2.0
// StatusReporter: tells a provider's listener of changes, in order, without making anybody wait.

#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <string>
#include <thread>
#include <variant>
#include <vector>

#include <android/hardware/camera/provider/2.4/ICameraProviderCallback.h>

#include "host/Mutex.h"

namespace orvo::simulator {

/** One thing to tell the listener. */
struct StatusReport {
    std::string cameraDeviceName;
    std::variant<android::hardware::camera::common::V1_0::CameraDeviceStatus,
                 android::hardware::camera::common::V1_0::TorchModeStatus>
            status;
};

/**
 * Delivers reports to the newest listener on a thread of its own.
 *
 * The listener's methods are two-way calls to another process, which may be slow, call back, or
 * die; so none is made on a caller's thread or under a caller's lock. A listener whose process dies
 * is dropped, and what is waiting for it with it; one that merely fails stays. Any thread may call.
 */
class StatusReporter {
  public:
    using Listener = android::hardware::camera::provider::V2_4::ICameraProviderCallback;

    StatusReporter();
    /** As stop(), and waits for the report that is being delivered. */
    ~StatusReporter();

    /** Delivers nothing more, and ends every wait, present and future. Never blocks. */
    void stop();

    /**
     * A listener and the link to its death. Detached when the listener is replaced or the reporter
     * goes, so that a late notice reaches nobody.
     */
    class Link : public android::hardware::hidl_death_recipient {
      public:
        Link(StatusReporter* reporter, const android::sp<Listener>& listener);
        void serviceDied(uint64_t cookie,
                         const android::wp<android::hidl::base::V1_0::IBase>& who) override;
        void detach();

        const android::sp<Listener> listener;

      private:
        Mutex mLock;  ///< taken before the reporter's
        StatusReporter* mReporter GUARDED_BY(mLock);
    };

    /** Links to the death of a listener (not null); null if it is dead already. */
    android::sp<Link> link(const android::sp<Listener>& listener);

    /**
     * From now on reports go to this listener. What still waits for the one before it is dropped,
     * and `initial` goes out first. Never blocks, so a caller may hold the lock under which it
     * made the list.
     *
     * @return the link before, for unlink; may be null.
     */
    android::sp<Link> replaceListener(const android::sp<Link>& link,
                                      std::vector<StatusReport> initial);

    /** Gives up a link that replaceListener returned. Not under a lock. */
    static void unlink(const android::sp<Link>& link);

    /** Puts a report at the end; dropped at once if there is no listener. Never blocks. */
    void report(StatusReport report);

    /** Waits until what was reported before the call is answered or dropped; false: too long. */
    bool settle(std::chrono::milliseconds timeout);

    bool hasListener() const;

    /** How often a listener was registered or lost, and whether there is one now. */
    struct ListenerChanges {
        uint64_t count;
        bool present;
    };
    /** Waits until that has happened more often than `count`, or the time is up. */
    ListenerChanges awaitListener(uint64_t count, std::chrono::milliseconds timeout);

  private:
    void deliverUntilStopped();
    static void deliver(const android::sp<Listener>& listener, const StatusReport& report);
    /** Forgets the listener if this is still the current link. */
    void drop(const Link* link);

    mutable Mutex mLock;
    ConditionVariable mChanged;
    android::sp<Link> mLink GUARDED_BY(mLock);  ///< null while there is no listener
    std::deque<StatusReport> mQueue GUARDED_BY(mLock);
    uint64_t mAccepted GUARDED_BY(mLock) = 0;  ///< reports ever put into the queue
    uint64_t mDone GUARDED_BY(mLock) = 0;      ///< reports delivered, failed or dropped
    uint64_t mListenerChanges GUARDED_BY(mLock) = 0;
    bool mStopped GUARDED_BY(mLock) = false;
    std::thread mThread;  ///< last: it uses everything above
};

}  // namespace orvo::simulator
