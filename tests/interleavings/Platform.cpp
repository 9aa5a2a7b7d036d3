// SPDX-License-Identifier: Apache-2.0
// The functions that the library calls, in front of the system's: on a thread of a run they are
// calls of the machine.

#include <dlfcn.h>
#include <pthread.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include <algorithm>

#include <cutils/properties.h>

#include "tests/interleavings/Faults.h"
#include "tests/interleavings/Peers.h"

namespace orvo::interleavings {
namespace {

constexpr char kMrLibrary[] = "/vendor/lib64/vendor.quill.mrprovider.provider@2.4-impl.so";
constexpr Cells kMrCell = Cells{1} << 16;

Step call(const char* kind, const std::string& detail, Cells reads, Cells writes) {
    return {kind, detail, reads, writes};
}

// All mutexes share a cell: the library has one for its objects, and one for the MR library.
Step lockStep(const char* kind, const void* mutex) {
    Step step = call(kind, "", 0, Cells{1} << 14);
    (strcmp(kind, "lock") == 0 ? step.acquires : step.releases) = mutex;
    return step;
}

char gMrLibrary;  // What dlopen hands out for it.

ICameraProvider* mrEntry(const char* name) {
    World::current()->machine().pass("call the MR entry", name);
    return World::current()->mrProvider();
}

// Not inlined, so that its caller has no locals.
__attribute__((noinline)) void* lookUpMrEntry(const char* symbol) {
    World::current()->machine().pass("look up symbol", symbol);
    return reinterpret_cast<void*>(mrEntry);
}

}  // namespace
}  // namespace orvo::interleavings

// A compiler that is older than the attribute has a warning for it.
#if defined(__clang__) && __has_cpp_attribute(clang::disable_sanitizer_instrumentation)
#define ORVO_UNINSTRUMENTED \
    [[clang::disable_sanitizer_instrumentation, clang::no_sanitize("address", "undefined")]]
#else
#define ORVO_UNINSTRUMENTED
#endif

using orvo::interleavings::call;
using orvo::interleavings::Machine;
using orvo::interleavings::World;

extern "C" {

int __real_pthread_mutex_lock(pthread_mutex_t* mutex);
int __real_pthread_mutex_unlock(pthread_mutex_t* mutex);
void* __real_dlopen(const char* path, int mode);
void* __real_dlsym(void* library, const char* symbol);

// The mutex itself is never taken: one thread runs at a time, and the machine knows who has it.
int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex) {
    Machine* const machine = Machine::current();
    if (machine == nullptr) return __real_pthread_mutex_lock(mutex);
    if (orvo::interleavings::gFault == orvo::interleavings::Fault::kNoLock) return 0;
    machine->before(orvo::interleavings::lockStep("lock", mutex));
    machine->after();
    return 0;
}

int __wrap_pthread_mutex_unlock(pthread_mutex_t* mutex) {
    Machine* const machine = Machine::current();
    if (machine == nullptr) return __real_pthread_mutex_unlock(mutex);
    if (orvo::interleavings::gFault == orvo::interleavings::Fault::kNoLock) return 0;
    machine->before(orvo::interleavings::lockStep("unlock", mutex));
    machine->after();
    return 0;
}

int nanosleep(const timespec* duration, timespec* remaining) {
    if (Machine* const machine = Machine::current()) {
        machine->pass("sleep", "");
        return 0;
    }
    return clock_nanosleep(CLOCK_REALTIME, 0, duration, remaining) == 0 ? 0 : -1;
}

void __real_exit(int status);
void __wrap_exit(int status) {
    if (Machine::current() == nullptr) __real_exit(status);
    World::current()->endProcess("status " + std::to_string(status));
}

int __android_log_print(int priority, const char* /* tag */, const char* format, ...) {
    if (Machine::current() == nullptr) return 1;
    char text[1024];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof(text), format, arguments);
    va_end(arguments);
    Machine::current()->pass("log", text);
    World::current()->log(priority, text);
    return 1;
}

int property_get(const char* name, char* value, const char* defaultValue) {
    World* const world = World::current();
    Machine* const machine = Machine::current();
    if (machine != nullptr)
        machine->before(call("read property", name, World::propertyCell(name), 0));
    std::string found = world == nullptr ? "" : world->property(name);
    if (machine != nullptr) machine->after();
    if (found.empty() && defaultValue != nullptr) found = defaultValue;
    found.resize(std::min<size_t>(found.size(), PROPERTY_VALUE_MAX - 1));
    memcpy(value, found.c_str(), found.size() + 1);
    return static_cast<int>(found.size());
}

int property_set(const char* name, const char* value) {
    Machine* const machine = Machine::current();
    if (machine != nullptr) {
        machine->before(call("write property", std::string(name) + " = " + value, 0,
                             World::propertyCell(name)));
    }
    const bool accepted = strlen(value) < PROPERTY_VALUE_MAX;
    if (accepted) World::current()->setProperty(name, value);
    if (machine != nullptr) machine->after();
    return accepted ? 0 : -1;
}

void* __wrap_dlopen(const char* path, int mode) {
    Machine* const machine = Machine::current();
    if (machine == nullptr || strcmp(path, orvo::interleavings::kMrLibrary) != 0) {
        return __real_dlopen(path, mode);
    }
    World& world = *World::current();
    machine->before(call("open library", "", 0, orvo::interleavings::kMrCell));
    if (world.mrLibraryIsOpen) machine->fail("the MR library is opened twice");
    world.mrLibraryIsOpen = true;
    machine->after();
    return &orvo::interleavings::gMrLibrary;
}

// A sanitizer's runtime calls it, too, before anything that was instrumented may run.
ORVO_UNINSTRUMENTED void* __wrap_dlsym(void* library, const char* symbol) {
    if (library != &orvo::interleavings::gMrLibrary) return __real_dlsym(library, symbol);
    return orvo::interleavings::lookUpMrEntry(symbol);
}

android::hardware::camera::provider::V2_4::ICameraProvider* HIDL_FETCH_ICameraProvider_shim(
        const char* name, android::hardware::camera::provider::V2_4::ICameraProvider* provider) {
    using orvo::interleavings::Peer;
    World& world = *World::current();
    orvo::interleavings::ProviderProcess& process = world.process(name);
    Machine& machine = world.machine();
    const int generation = static_cast<Peer*>(provider)->generation();
    machine.before(call("make a shim",
                        std::string(name) + " (process " + std::to_string(generation) + ")", 0,
                        process.cell | process.shimCell));
    world.expectHeld(provider, process.shimCell, "shim factory");
    android::sp<Peer> shim = new Peer(process, generation);
    process.shim = shim;
    process.memories.push_back(shim);
    Peer* const bare = shim.get();
    shim.clear();
    machine.after();
    return bare;
}

}  // extern "C"
