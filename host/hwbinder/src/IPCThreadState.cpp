// SPDX-License-Identifier: Apache-2.0
// What a thread may ask about the call that it serves, and how threads join the pool.

#include <hwbinder/IPCThreadState.h>

#include <unistd.h>

#include "CallThread.h"
#include "Endpoint.h"
#include "ThreadPool.h"

namespace android {
namespace hardware {

using transport::CallThread;
using transport::ThreadPool;

IPCThreadState* IPCThreadState::self() {
    // It has no state of its own; the thread's own record has it.
    static IPCThreadState instance;
    CallThread::current();
    return &instance;
}

IPCThreadState* IPCThreadState::selfOrNull() {
    return CallThread::currentOrNull() == nullptr ? nullptr : self();
}

pid_t IPCThreadState::getCallingPid() const {
    return CallThread::current()->serving.pid;
}

uid_t IPCThreadState::getCallingUid() const {
    return CallThread::current()->serving.uid;
}

const char* IPCThreadState::getCallingSid() const {
    return nullptr;
}

int64_t IPCThreadState::clearCallingIdentity() {
    CallThread::Serving& serving = CallThread::current()->serving;
    const int64_t token = (static_cast<int64_t>(serving.uid) << 32) | serving.pid;
    serving.uid = getuid();
    serving.pid = getpid();
    return token;
}

void IPCThreadState::restoreCallingIdentity(int64_t token) {
    CallThread::Serving& serving = CallThread::current()->serving;
    serving.uid = static_cast<uid_t>(token >> 32);
    serving.pid = static_cast<pid_t>(token);
}

void IPCThreadState::joinThreadPool(bool /*isMain*/) {
    ThreadPool::instance().join();
}

int IPCThreadState::setupPolling(int* fd) {
    *fd = ThreadPool::instance().pollDescriptor();
    return *fd < 0 ? UNKNOWN_ERROR : OK;
}

status_t IPCThreadState::handlePolledCommands() {
    ThreadPool::instance().drain();
    return OK;
}

void IPCThreadState::flushCommands() {}

bool IPCThreadState::isLooperThread() const {
    return ThreadPool::isPoolThread();
}

bool IPCThreadState::isOnlyBinderThread() const {
    return ThreadPool::instance().isOnlyThread();
}

bool IPCThreadState::isServingCall() const {
    return CallThread::current()->serving.active;
}

void IPCThreadState::addPostCommandTask(const std::function<void(void)>& task) {
    CallThread::current()->postCommandTasks.push_back(task);
}

void IPCThreadState::setTheContextObject(sp<BHwBinder> obj) {
    transport::Endpoint* endpoint = transport::Endpoint::instance();
    if (endpoint != nullptr) endpoint->setContextObject(obj);
}

}  // namespace hardware
}  // namespace android
