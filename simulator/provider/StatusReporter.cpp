// SPDX-License-Identifier: Apache-2.0
// StatusReporter: one queue, one thread, one listener.

#define LOG_TAG "SimulatedProvider"

#include "simulator/provider/StatusReporter.h"

#include <utility>

#include <log/log.h>

namespace orvo::simulator {

using android::sp;
using android::wp;
using android::hardware::Return;
using android::hardware::camera::common::V1_0::CameraDeviceStatus;

StatusReporter::Link::Link(StatusReporter* reporter, const sp<Listener>& listener)
    : listener(listener), mReporter(reporter) {}

void StatusReporter::Link::serviceDied(uint64_t, const wp<android::hidl::base::V1_0::IBase>&) {
    MutexLock lock(mLock);
    if (mReporter != nullptr) mReporter->drop(this);
}

void StatusReporter::Link::detach() {
    MutexLock lock(mLock);
    mReporter = nullptr;
}

StatusReporter::StatusReporter() : mThread([this] { deliverUntilStopped(); }) {}

StatusReporter::~StatusReporter() {
    stop();
    mThread.join();
}

void StatusReporter::stop() {
    sp<Link> link;
    {
        MutexLock lock(mLock);
        mStopped = true;
        link = std::exchange(mLink, nullptr);
    }
    mChanged.notify_all();
    unlink(link);
}

sp<StatusReporter::Link> StatusReporter::link(const sp<Listener>& listener) {
    sp<Link> link = new Link(this, listener);
    const Return<bool> linked = listener->linkToDeath(link, 0);
    return linked.isOk() && linked ? link : nullptr;
}

sp<StatusReporter::Link> StatusReporter::replaceListener(const sp<Link>& link,
                                                         std::vector<StatusReport> initial) {
    sp<Link> before;
    {
        MutexLock lock(mLock);
        before = std::exchange(mLink, link);
        mListenerChanges++;
        mDone += mQueue.size();
        mQueue.assign(initial.begin(), initial.end());
        mAccepted += mQueue.size();
    }
    mChanged.notify_all();
    return before;
}

void StatusReporter::unlink(const sp<Link>& link) {
    if (link == nullptr) return;
    link->detach();
    // It may have died meanwhile; then there is nothing to unlink.
    if (!link->listener->unlinkToDeath(link).isOk()) ALOGI("The listener before is gone");
}

void StatusReporter::report(StatusReport report) {
    {
        MutexLock lock(mLock);
        if (mLink == nullptr) return;
        mQueue.push_back(std::move(report));
        mAccepted++;
    }
    mChanged.notify_all();
}

bool StatusReporter::settle(std::chrono::milliseconds timeout) {
    MutexLock lock(mLock);
    const uint64_t target = mAccepted;
    mChanged.wait_for(lock, timeout, [&]() REQUIRES(mLock) { return mStopped || mDone >= target; });
    return mDone >= target;
}

bool StatusReporter::hasListener() const {
    MutexLock lock(mLock);
    return mLink != nullptr;
}

StatusReporter::ListenerChanges StatusReporter::awaitListener(uint64_t count,
                                                              std::chrono::milliseconds timeout) {
    MutexLock lock(mLock);
    mChanged.wait_for(lock, timeout,
                      [&]() REQUIRES(mLock) { return mStopped || mListenerChanges > count; });
    return {mListenerChanges, mLink != nullptr};
}

void StatusReporter::deliverUntilStopped() {
    MutexLock lock(mLock);
    for (;;) {
        mChanged.wait(lock, [&]() REQUIRES(mLock) { return mStopped || !mQueue.empty(); });
        if (mStopped) return;
        const StatusReport report = std::move(mQueue.front());
        mQueue.pop_front();
        const sp<Link> link = mLink;

        lock.unlock();
        deliver(link->listener, report);
        lock.lock();

        mDone++;
        mChanged.notify_all();
    }
}

void StatusReporter::deliver(const sp<Listener>& listener, const StatusReport& report) {
    const Return<void> result = std::visit(
            [&](auto status) {
                if constexpr (std::is_same_v<decltype(status), CameraDeviceStatus>) {
                    return listener->cameraDeviceStatusChange(report.cameraDeviceName, status);
                } else {
                    return listener->torchModeStatusChange(report.cameraDeviceName, status);
                }
            },
            report.status);
    if (result.isOk()) return;
    // It stays registered until its own death: what failed may lie behind it.
    ALOGW("The listener did not take the report on %s: %s", report.cameraDeviceName.c_str(),
          result.description().c_str());
}

void StatusReporter::drop(const Link* link) {
    sp<Link> dropped;  // released after the lock: the listener's destructor may run here
    {
        MutexLock lock(mLock);
        if (mLink == nullptr || mLink.get() != link) return;
        ALOGI("The listener is gone; nobody is told of changes until a new one registers");
        dropped = std::exchange(mLink, nullptr);
        mListenerChanges++;
        mDone += mQueue.size();
        mQueue.clear();
    }
    mChanged.notify_all();
}

}  // namespace orvo::simulator
