// SPDX-License-Identifier: Apache-2.0
// This process's part in the binder world.

#define LOG_TAG "hwbinder"

#include <hwbinder/ProcessState.h>

#include "Endpoint.h"
#include "ThreadPool.h"
#include "host/Mutex.h"

namespace android {
namespace hardware {

namespace {

/** What a device's kernel maps for a process by default; only reported here. */
constexpr size_t kDefaultMmapSize = 1024 * 1024 - 2 * 4096;

orvo::Mutex gMutex;
/** Holds one reference for good. */
ProcessState* gProcess GUARDED_BY(gMutex) = nullptr;

}  // namespace

sp<ProcessState> ProcessState::self() {
    return initWithMmapSize(kDefaultMmapSize);
}

sp<ProcessState> ProcessState::selfOrNull() {
    orvo::MutexLock lock(gMutex);
    return gProcess;
}

sp<ProcessState> ProcessState::initWithMmapSize(size_t mmapSize) {
    orvo::MutexLock lock(gMutex);
    if (gProcess == nullptr) {
        gProcess = new ProcessState(mmapSize);
        gProcess->incStrong(&gMutex);
    }
    return gProcess;
}

ProcessState::ProcessState(size_t mmapSize) : mMmapSize(mmapSize) {}

ProcessState::~ProcessState() = default;

sp<IBinder> ProcessState::getContextObject(const sp<IBinder>& /*caller*/) {
    transport::Endpoint* endpoint = transport::Endpoint::instance();
    return endpoint == nullptr ? nullptr : endpoint->contextObject();
}

void ProcessState::startThreadPool() {
    transport::ThreadPool::instance().start();
}

bool ProcessState::becomeContextManager(context_check_func /*checkFunc*/, void* /*userData*/) {
    transport::Endpoint* endpoint = transport::Endpoint::instance();
    return endpoint != nullptr && endpoint->becomeContextManager();
}

status_t ProcessState::setThreadPoolConfiguration(size_t maxThreads, bool callerJoinsPool) {
    if (maxThreads == 0 && callerJoinsPool) return BAD_VALUE;
    transport::ThreadPool::instance().configure(maxThreads, callerJoinsPool);
    return OK;
}

size_t ProcessState::getMaxThreads() {
    return transport::ThreadPool::instance().maxThreads();
}

size_t ProcessState::getMmapSize() {
    return mMmapSize;
}

void ProcessState::setCallRestriction(CallRestriction restriction) {
    mCallRestriction = restriction;
}

ProcessState::CallRestriction ProcessState::getCallRestriction() const {
    return mCallRestriction;
}

}  // namespace hardware
}  // namespace android
