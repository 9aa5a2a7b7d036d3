// SPDX-License-Identifier: Apache-2.0
// Tells the thread sanitizer what orders threads inside Debian's libraries, which it cannot see.
//
// These definitions come before those of the libraries, whose own ones they call. They say no more
// than what the libraries guarantee.

#include <dlfcn.h>

#include <kj/mutex.h>
#include <sanitizer/tsan_interface.h>
#include <utils/RefBase.h>

namespace {

/** The library's own function. */
template <typename Function>
Function* own(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

namespace android {

/** All that was done with an object comes before its destruction, on whatever thread that is. */
void RefBase::decStrong(const void* id) const {
    static auto* const decrement =
            own<void(const RefBase*, const void*)>("_ZNK7android7RefBase9decStrongEPKv");
    __tsan_release(const_cast<RefBase*>(this));
    // Nobody else has a reference that could go first.
    if (getStrongCount() == 1) __tsan_acquire(const_cast<RefBase*>(this));
    decrement(this, id);
}

/** Called by the last decrement, also if it was not known to be that before. */
void RefBase::onLastStrongRef(const void* /*id*/) {
    __tsan_acquire(this);
}

}  // namespace android

namespace kj {
namespace _ {

/** A mutex orders those who hold it; whatever crosses threads in kj goes through one. */
bool Mutex::lock(Exclusivity exclusivity, Maybe<Duration> timeout, LockSourceLocationArg location) {
    static auto* const lock =
            own<bool(Mutex*, Exclusivity, Maybe<Duration>, LockSourceLocationArg)>(
                    "_ZN2kj1_5Mutex4lockENS1_11ExclusivityENS_5MaybeINS_8QuantityIlNS0_15"
                    "NanosecondLabelEEEEENS_18NoopSourceLocationE");
    const bool locked = lock(this, exclusivity, kj::mv(timeout), location);
    if (locked) __tsan_acquire(this);
    return locked;
}

void Mutex::unlock(Exclusivity exclusivity, Waiter* waiterToSkip) {
    static auto* const unlock = own<void(Mutex*, Exclusivity, Waiter*)>(
            "_ZN2kj1_5Mutex6unlockENS1_11ExclusivityEPNS1_6WaiterE");
    __tsan_release(this);
    unlock(this, exclusivity, waiterToSkip);
}

void Mutex::wait(Predicate& predicate, Maybe<Duration> timeout, LockSourceLocationArg location) {
    static auto* const wait = own<void(Mutex*, Predicate&, Maybe<Duration>, LockSourceLocationArg)>(
            "_ZN2kj1_5Mutex4waitERNS1_9PredicateENS_5MaybeINS_8QuantityIlNS0_15"
            "NanosecondLabelEEEEENS_18NoopSourceLocationE");
    __tsan_release(this);
    wait(this, predicate, kj::mv(timeout), location);
    __tsan_acquire(this);
}

}  // namespace _
}  // namespace kj
