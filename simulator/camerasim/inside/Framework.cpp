// SPDX-License-Identifier: Apache-2.0
// Framework: reports of a service that has ended meanwhile are told by their generation.

#include "simulator/camerasim/inside/Framework.h"

#include <chrono>
#include <utility>

namespace orvo::simulator {

namespace {

std::string statusWord(const Answer<bool>& answer) {
    return answer.arrived() ? toString(answer.status) : answer.failure;
}

}  // namespace

void Framework::attach(const std::string& instance, bool listed) {
    uint64_t generation = 0;
    {
        MutexLock lock(mLock);
        generation = mGeneration;
    }
    auto connected = FrameworkClient::connect(instance);
    if (!connected) {
        mTimeline.add("service", instance, "not served; its log says why");
        return;
    }
    const Client client = std::move(*connected);
    {
        MutexLock lock(mLock);
        if (mGeneration != generation) return;  // that service has ended again
        mAttached[instance].client = client;
    }
    mThreads.start([=] { hear(generation, instance, client); });
    mThreads.start([=] { registerWith(generation, instance, client, listed); });
}

void Framework::registerWith(uint64_t generation, const std::string& instance, const Client& client,
                             bool listed) {
    const Answer<bool> answer = client->registerCallback();
    {
        MutexLock lock(mLock);
        if (mGeneration != generation) return;
        mAttached[instance].registered = answer.ok();
    }
    mTimeline.add("service", instance,
                  answer.ok() ? "serves the framework"
                              : "did not take the callback: " + statusWord(answer));
    if (!listed || !answer.ok()) return;
    const auto names = client->cameraIdList();
    if (names.ok()) addListed(generation, instance, names.value);
}

void Framework::addListed(uint64_t generation, const std::string& instance,
                          const std::vector<std::string>& names) {
    MutexLock lock(mLock);
    if (mGeneration != generation) return;
    for (const std::string& name : names) {
        // A report that came meanwhile is newer than the list.
        const auto known = mCameras.find(name);
        if (known && !known->status.empty()) continue;
        mCameras.report(instance, name, "PRESENT");
        mTimeline.add("camera", name, "PRESENT (listed)");
    }
}

void Framework::hear(uint64_t generation, const std::string& instance, const Client& client) {
    const auto any = [](const StatusEvent&) { return true; };
    for (size_t mark = 0;;) {
        const auto event = client->log().waitFor(any, std::chrono::hours(1), mark);
        if (!event) {
            if (client->log().isClosed()) return;
            continue;
        }
        if (!apply(generation, instance, *event)) return;
        mark++;
    }
}

bool Framework::apply(uint64_t generation, const std::string& instance, const StatusEvent& event) {
    Session stale;  // released after the lock
    const std::string& name = event.cameraDeviceName;
    const auto* device = std::get_if<StatusEvent::Device>(&event.status);
    {
        MutexLock lock(mLock);
        if (mGeneration != generation) return false;
        if (device != nullptr) {
            mCameras.report(instance, name, toString(*device));
            mTimeline.add("camera", name, toString(*device));
            if (*device == StatusEvent::Device::NOT_PRESENT) stale = std::exchange(mHeld[name], {});
            if (stale != nullptr) mTimeline.add("camera", name, "the session held open is gone");
        } else {
            const std::string torch = toString(std::get<StatusEvent::Torch>(event.status));
            mCameras.reportTorch(instance, name, torch);
            mTimeline.add("torch", name, torch);
        }
        mAttached[instance].applied++;
    }
    mApplied.notify_all();
    return true;
}

void Framework::detachAll() {
    std::map<std::string, Attached> attached;  // both released after the lock
    std::map<std::string, Session> held;
    {
        MutexLock lock(mLock);
        mGeneration++;
        attached.swap(mAttached);
        held.swap(mHeld);
        mCameras.clear();
    }
    mApplied.notify_all();
}

std::vector<std::string> Framework::instances() const {
    MutexLock lock(mLock);
    std::vector<std::string> names;
    for (const auto& [instance, attached] : mAttached) names.push_back(instance);
    return names;
}

bool Framework::isRegistered(const std::string& instance) const {
    MutexLock lock(mLock);
    const auto found = mAttached.find(instance);
    return found != mAttached.end() && found->second.registered;
}

Framework::Client Framework::clientOf(const std::string& instance) const {
    MutexLock lock(mLock);
    const auto found = mAttached.find(instance);
    return found == mAttached.end() ? nullptr : found->second.client;
}

void Framework::catchUp() {
    MutexLock lock(mLock);
    std::map<std::string, size_t> targets;
    for (const auto& [instance, attached] : mAttached) {
        targets[instance] = attached.client->log().size();
    }
    const uint64_t generation = mGeneration;
    mApplied.wait_for(lock, std::chrono::seconds(1), [&]() REQUIRES(mLock) {
        if (mGeneration != generation) return true;
        for (const auto& [instance, target] : targets) {
            if (mAttached[instance].applied < target) return false;
        }
        return true;
    });
}

bool Framework::hold(const std::string& camera, const Session& session) {
    MutexLock lock(mLock);
    const auto known = mCameras.find(camera);
    if (!known || known->status != "PRESENT" || mHeld[camera] != nullptr) return false;
    mHeld[camera] = session;
    mCameras.setOpen(camera, true);
    return true;
}

Framework::Session Framework::release(const std::string& camera) {
    MutexLock lock(mLock);
    mCameras.setOpen(camera, false);
    return std::exchange(mHeld[camera], {});
}

}  // namespace orvo::simulator
