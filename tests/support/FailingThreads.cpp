// SPDX-License-Identifier: Apache-2.0
// The thread creation of a test process, in front of the system's, also for the C++ library.

#include "tests/support/FailingThreads.h"

#include <dlfcn.h>
#include <errno.h>
#include <pthread.h>

#include <atomic>

namespace orvo::test {
namespace {

std::atomic<bool> gFail = false;

}  // namespace

FailingThreads::FailingThreads() {
    gFail = true;
}

FailingThreads::~FailingThreads() {
    gFail = false;
}

}  // namespace orvo::test

using CreateThread = int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);

// A sanitizer's own function, when there is one in the program.
extern "C" __attribute__((weak)) CreateThread __interceptor_pthread_create;

extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*body)(void*), void* argument) {
    static CreateThread* const next =
            __interceptor_pthread_create != nullptr
                    ? __interceptor_pthread_create
                    : reinterpret_cast<CreateThread*>(dlsym(RTLD_NEXT, "pthread_create"));
    if (orvo::test::gFail) return EAGAIN;
    return next(thread, attributes, body, argument);
}
