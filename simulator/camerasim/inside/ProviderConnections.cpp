// SPDX-License-Identifier: Apache-2.0
// ProviderConnections: asks each process to tell when its listener changes.

#include "simulator/camerasim/inside/ProviderConnections.h"

#include <utility>

namespace orvo::simulator {

using android::sp;
using vendor::orvo::simulator::V1_0::ListenerState;

namespace {

/** The longest that a provider lets one such call wait; then it is made again. */
constexpr uint32_t kOneCallMs = 60000;

}  // namespace

void ProviderConnections::started(const std::string& instance, pid_t pid) {
    {
        MutexLock lock(mLock);
        Process& process = mProcesses[instance];
        process.pid = pid;
        process.control = nullptr;
        process.connection.connected = false;
        process.connection.startedAt = Clock::now();
    }
    mTimeline.add("process", instance, "ready, process " + std::to_string(pid));
    mThreads.start([this, instance, pid] { watch(instance, pid); });
}

void ProviderConnections::ended(const std::string& instance, pid_t pid, const std::string& how) {
    bool wasConnected = false;
    sp<Control> released;  // after the lock
    {
        MutexLock lock(mLock);
        Process& process = mProcesses[instance];
        if (process.pid == pid) {
            wasConnected = process.connection.connected;
            process.pid = 0;
            process.connection.connected = false;
            released = std::move(process.control);
            if (wasConnected) process.connection.lostAt = Clock::now();
        }
    }
    mTimeline.add("process", instance, how + ", process " + std::to_string(pid));
    if (wasConnected) mTimeline.add("provider", instance, "disconnected");
}

void ProviderConnections::serviceStarts() {
    MutexLock lock(mLock);
    for (auto& [instance, process] : mProcesses) process.connection.lostAt.reset();
}

ProviderConnections::Connection ProviderConnections::connectionOf(
        const std::string& instance) const {
    MutexLock lock(mLock);
    const auto found = mProcesses.find(instance);
    return found == mProcesses.end() ? Connection() : found->second.connection;
}

sp<ProviderConnections::Control> ProviderConnections::controlOf(const std::string& instance) const {
    MutexLock lock(mLock);
    const auto found = mProcesses.find(instance);
    return found == mProcesses.end() ? nullptr : found->second.control;
}

bool ProviderConnections::setControl(const std::string& instance, pid_t pid,
                                     const sp<Control>& control) {
    MutexLock lock(mLock);
    Process& process = mProcesses[instance];
    if (process.pid != pid) return false;
    process.control = control;
    return true;
}

bool ProviderConnections::setConnected(const std::string& instance, pid_t pid, bool connected) {
    bool before = false;
    {
        MutexLock lock(mLock);
        Process& process = mProcesses[instance];
        if (process.pid != pid) return false;
        before = std::exchange(process.connection.connected, connected);
    }
    if (!connected) {
        if (before) mTimeline.add("provider", instance, "disconnected");
    } else {
        mTimeline.add("provider", instance, before ? "connected anew" : "connected");
    }
    return true;
}

void ProviderConnections::watch(const std::string& instance, pid_t pid) {
    const sp<Control> control = Control::tryGetService(instance);
    if (control == nullptr || !setControl(instance, pid, control)) return;
    uint64_t seen = 0;
    for (;;) {
        ListenerState state{};
        const auto asked = control->awaitListener(seen, kOneCallMs,
                                                  [&](const ListenerState& now) { state = now; });
        if (!asked.isOk()) return;  // it is gone, which its end tells
        if (state.count == seen) continue;
        seen = state.count;
        if (!setConnected(instance, pid, state.hasListener)) return;
    }
}

}  // namespace orvo::simulator
