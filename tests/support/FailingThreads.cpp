// SPDX-License-Identifier: Apache-2.0
// The thread creation of a test process, in front of the system's, also for the C++ library.

#include "tests/support/FailingThreads.h"

#include <dlfcn.h>
#include <errno.h>
#include <pthread.h>

#include <atomic>
#include <memory>

namespace orvo::test {
namespace {

using Body = void*(void*);
using CreateThread = int(pthread_t*, const pthread_attr_t*, Body*, void*);

std::atomic<bool> gFail = false;
std::atomic<size_t> gEnded = 0;

struct Start {
    Body* body;
    void* argument;
};

void* run(void* argument) {
    const std::unique_ptr<Start> start(static_cast<Start*>(argument));
    void* const result = start->body(start->argument);
    gEnded.fetch_add(1);
    return result;
}

}  // namespace

FailingThreads::FailingThreads() {
    gFail = true;
}

FailingThreads::~FailingThreads() {
    gFail = false;
}

void seeWhatEndedThreadsDid() {
    gEnded.load();
}

}  // namespace orvo::test

// A sanitizer's own function, when there is one in the program.
extern "C" __attribute__((weak)) orvo::test::CreateThread __interceptor_pthread_create;

extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*body)(void*), void* argument) {
    using namespace orvo::test;
    static CreateThread* const next =
            __interceptor_pthread_create != nullptr
                    ? __interceptor_pthread_create
                    : reinterpret_cast<CreateThread*>(dlsym(RTLD_NEXT, "pthread_create"));
    if (gFail) return EAGAIN;
    auto start = std::make_unique<Start>(Start{body, argument});
    const int failure = next(thread, attributes, run, start.get());
    if (failure == 0) start.release();  // The thread's.
    return failure;
}
