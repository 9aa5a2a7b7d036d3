// SPDX-License-Identifier: Apache-2.0
// ProcessState: this process's membership in the binder world and its thread pool.

#pragma once

#include <functional>

#include <utils/String16.h>

#include <hwbinder/IBinder.h>

namespace android {
namespace hardware {

/**
 * One per process, made by the first self() and never destroyed.
 *
 * The directory in which the processes of one device meet is named by the environment variable
 * ORVO_DEVICE_DIR; without it no other process can be reached, and getContextObject is null. A
 * process that has used it must not fork without an exec.
 */
class ProcessState : public virtual RefBase {
  public:
    static sp<ProcessState> self();
    /** Null if self() has not been called yet. */
    static sp<ProcessState> selfOrNull();
    /** The size is kept for getMmapSize and otherwise ignored: sockets map no memory. */
    static sp<ProcessState> initWithMmapSize(size_t mmapSize);

    /** The service manager's object; null if no service manager can be reached. */
    sp<IBinder> getContextObject(const sp<IBinder>& caller);

    /** Starts the first thread of the pool, once; more follow on demand up to the maximum. */
    void startThreadPool();

    typedef bool (*context_check_func)(const String16& name, const sp<IBinder>& caller,
                                       void* userData);
    /**
     * Makes this process the one whose object (IPCThreadState::setTheContextObject) is everybody's
     * context object. False, with a line that says why, if there is one already or the device
     * directory cannot be used.
     */
    bool becomeContextManager(context_check_func checkFunc, void* userData);

    /**
     * @param maxThreads at most so many threads handle incoming calls, the caller's included if it
     *                   joins; one if never called.
     */
    status_t setThreadPoolConfiguration(size_t maxThreads, bool callerJoinsPool);
    size_t getMaxThreads();
    size_t getMmapSize();

    enum class CallRestriction { NONE, ERROR_IF_NOT_ONEWAY, FATAL_IF_NOT_ONEWAY };
    /** What happens to two-way calls that this process makes. Set it before making any. */
    void setCallRestriction(CallRestriction restriction);
    CallRestriction getCallRestriction() const;

  private:
    friend class sp<ProcessState>;
    explicit ProcessState(size_t mmapSize);
    ~ProcessState() override;

    const size_t mMmapSize;
    /** No lock: it is set before there are calls. */
    CallRestriction mCallRestriction = CallRestriction::NONE;
};

}  // namespace hardware
}  // namespace android
