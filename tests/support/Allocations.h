// SPDX-License-Identifier: Apache-2.0
// Lets a test run out of memory at a point of its choice.
#pragma once

#include <stddef.h>

namespace orvo::test {

/**
 * Watches the calling thread's operator new while it exists; at most one does in a thread. A
 * program that uses it has its operator new and operator delete replaced.
 */
class Allocations {
  public:
    /** False in the build of a sanitizer, which keeps operator new to itself: nothing is watched.
     */
    static const bool kWatched;

    /** Lets `allowed` allocations succeed; every later one throws std::bad_alloc. */
    explicit Allocations(size_t allowed);
    /** Lets all of them succeed. */
    Allocations();
    ~Allocations();
    Allocations(const Allocations&) = delete;
    Allocations& operator=(const Allocations&) = delete;

    /** True when an allocation was refused. */
    bool exhausted() const { return mExhausted; }
    /** The largest request so far, in bytes. */
    size_t largest() const { return mLargest; }

    /** How many blocks the thread has asked for and not given back. */
    long left() const { return mLeft; }

    /** Counts one request; false when it is to be refused. */
    bool admit(size_t size);
    /** Counts one block that is given back. */
    void release() { --mLeft; }

  private:
    size_t mAllowed;
    size_t mLargest = 0;
    long mLeft = 0;
    bool mExhausted = false;
};

}  // namespace orvo::test
