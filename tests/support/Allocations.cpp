// SPDX-License-Identifier: Apache-2.0
// The operator new of a test process.

#include "tests/support/Allocations.h"

#include <stdlib.h>

#include <algorithm>
#include <limits>
#include <new>

#ifdef __has_feature
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define ORVO_SANITIZED
#endif
#endif

namespace orvo::test {

#ifdef ORVO_SANITIZED
const bool Allocations::kWatched = false;
#else
const bool Allocations::kWatched = true;
#endif

namespace {

thread_local Allocations* gCurrent = nullptr;

}  // namespace

Allocations::Allocations(size_t allowed) : mAllowed(allowed) {
    if (gCurrent != nullptr) abort();
    gCurrent = this;
}

Allocations::Allocations() : Allocations(std::numeric_limits<size_t>::max()) {}

Allocations::~Allocations() {
    gCurrent = nullptr;
}

bool Allocations::admit(size_t size) {
    mLargest = std::max(mLargest, size);
    if (mAllowed == 0) {
        mExhausted = true;
        return false;
    }
    --mAllowed;
    ++mLeft;
    return true;
}

}  // namespace orvo::test

#ifndef ORVO_SANITIZED

// The array forms and those that do not throw come here by themselves.
void* operator new(size_t size) {
    orvo::test::Allocations* const watcher = orvo::test::gCurrent;
    if (watcher != nullptr && !watcher->admit(size)) throw std::bad_alloc();
    void* const memory = malloc(std::max<size_t>(size, 1));
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

void operator delete(void* memory) noexcept {
    orvo::test::Allocations* const watcher = orvo::test::gCurrent;
    if (watcher != nullptr && memory != nullptr) watcher->release();
    free(memory);
}

void operator delete(void* memory, size_t /* size */) noexcept {
    operator delete(memory);
}

#endif
