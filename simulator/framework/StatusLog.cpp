// SPDX-License-Identifier: Apache-2.0
// StatusLog: a list that can be waited on.

#include "simulator/framework/StatusLog.h"

#include <utility>

namespace orvo::simulator {

using android::hardware::hidl_string;
using android::hardware::Return;
using android::hardware::Void;

std::string StatusEvent::toText() const {
    if (const Device* device = std::get_if<Device>(&status)) {
        return cameraDeviceName + " " + toString(*device);
    }
    return cameraDeviceName + " torch " + toString(std::get<Torch>(status));
}

Return<void> StatusLog::cameraDeviceStatusChange(const hidl_string& name,
                                                 StatusEvent::Device status) {
    add({name, status});
    return Void();
}

Return<void> StatusLog::torchModeStatusChange(const hidl_string& name, StatusEvent::Torch status) {
    add({name, status});
    return Void();
}

void StatusLog::add(StatusEvent event) {
    {
        MutexLock lock(mLock);
        mEvents.push_back(std::move(event));
    }
    mChanged.notify_all();
}

size_t StatusLog::size() const {
    MutexLock lock(mLock);
    return mEvents.size();
}

std::vector<StatusEvent> StatusLog::events(size_t from) const {
    MutexLock lock(mLock);
    if (from >= mEvents.size()) return {};
    return {mEvents.begin() + from, mEvents.end()};
}

std::optional<StatusEvent> StatusLog::waitFor(const Predicate& predicate,
                                              std::chrono::milliseconds timeout,
                                              size_t from) const {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    MutexLock lock(mLock);
    size_t next = from;
    for (;;) {
        for (; next < mEvents.size(); next++) {
            if (predicate(mEvents[next])) return mEvents[next];
        }
        const auto more = [&]() REQUIRES(mLock) { return mClosed || mEvents.size() > next; };
        if (mClosed || !mChanged.wait_until(lock, deadline, more)) return std::nullopt;
    }
}

void StatusLog::close() {
    {
        MutexLock lock(mLock);
        mClosed = true;
    }
    mChanged.notify_all();
}

bool StatusLog::isClosed() const {
    MutexLock lock(mLock);
    return mClosed;
}

}  // namespace orvo::simulator
