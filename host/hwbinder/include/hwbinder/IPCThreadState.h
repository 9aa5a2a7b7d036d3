// SPDX-License-Identifier: Apache-2.0
// IPCThreadState: what one thread knows of the call that it is serving.

#pragma once

#include <sys/types.h>

#include <functional>

#include <hwbinder/Binder.h>

namespace android {
namespace hardware {

/** One per thread; use it only on the thread that self() was called on. */
class IPCThreadState {
  public:
    static IPCThreadState* self();
    /** Null if this thread has not called self() yet. */
    static IPCThreadState* selfOrNull();

    /** Who made the call that this thread is serving; this process outside a call. */
    pid_t getCallingPid() const;
    uid_t getCallingUid() const;
    /** Always null: there are no security contexts on this platform. */
    const char* getCallingSid() const;

    /** Makes this process the caller until restoreCallingIdentity gets the token back. */
    int64_t clearCallingIdentity();
    void restoreCallingIdentity(int64_t token);

    /** Serves incoming calls on this thread. Returns when the program ends its transport. */
    void joinThreadPool(bool isMain = true);

    /**
     * For programs that serve calls from an event loop of their own: `fd` becomes readable when
     * handlePolledCommands has something to do. No pool threads may be configured beside it.
     */
    int setupPolling(int* fd);
    status_t handlePolledCommands();
    /** Nothing is ever held back here. */
    void flushCommands();

    bool isLooperThread() const;
    /** True on the only thread that can serve incoming calls: waiting there for one hangs. */
    bool isOnlyBinderThread() const;
    bool isServingCall() const;

    /** Runs `task` after the call that this thread is serving has been answered. */
    void addPostCommandTask(const std::function<void(void)>& task);

    /** The object that getContextObject hands out once becomeContextManager was called. */
    void setTheContextObject(sp<BHwBinder> obj);
};

}  // namespace hardware
}  // namespace android
