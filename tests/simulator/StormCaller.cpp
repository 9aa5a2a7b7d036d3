// SPDX-License-Identifier: Apache-2.0
// StormCaller: which call comes next, and what its answer must be.

#include "tests/simulator/StormCaller.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include <android-base/strings.h>

namespace orvo::simulator::testing {

using Status = FrameworkClient::Status;
using Device = StatusEvent::Device;

namespace {

/** The longest pause between two calls. */
constexpr std::chrono::milliseconds longestPause(Mood mood) {
    switch (mood) {
        case Mood::HOLDING:
            return std::chrono::milliseconds(2);
        case Mood::ATTENTIVE:
            return std::chrono::milliseconds(100);
        case Mood::HEEDLESS:
            break;
    }
    return std::chrono::milliseconds(0);
}

/** Each provider's name, and behind it all of its sections or, while it is away, none. */
bool areTagsOf(const std::vector<ProviderDescription>& providers,
               const std::vector<FrameworkClient::VendorTagSection>& sections) {
    size_t next = 0;
    for (const ProviderDescription& provider : providers) {
        if (next == sections.size() || sections[next].sectionName != provider.instance ||
            sections[next].tags.size() != 0) {
            return false;
        }
        next++;
        const auto& own = provider.vendorTags;
        if (sections.size() - next >= own.size() &&
            std::equal(own.begin(), own.end(), sections.begin() + static_cast<ptrdiff_t>(next))) {
            next += own.size();
        }
    }
    return next == sections.size();
}

}  // namespace

StormCaller::StormCaller(const StormModel& model, uint64_t seed)
    : mProviders(model.providers()),
      mCameras(model.cameras()),
      mRandom(seed),
      mThread([this] { run(); }) {}

StormCaller::~StormCaller() {
    {
        std::lock_guard lock(mLock);
        mStopped = true;
    }
    mChanged.notify_all();
    mThread.join();
}

void StormCaller::call(std::shared_ptr<FrameworkClient> client, Mood mood) {
    {
        std::lock_guard lock(mLock);
        mClient = std::move(client);
        mMood = mood;
    }
    mChanged.notify_all();
}

void StormCaller::pause() {
    std::unique_lock lock(mLock);
    mClient = nullptr;
    mChanged.notify_all();
    mChanged.wait(lock, [this] { return !mCalling; });
}

size_t StormCaller::calls() const {
    std::lock_guard lock(mLock);
    return mCalls;
}

std::vector<std::string> StormCaller::complaints() const {
    std::lock_guard lock(mLock);
    return mComplaints;
}

void StormCaller::complain(const std::string& line) {
    std::lock_guard lock(mLock);
    mComplaints.push_back(line);
}

void StormCaller::run() {
    std::unique_lock lock(mLock);
    for (;;) {
        mChanged.wait(lock, [this] { return mStopped || mClient != nullptr; });
        if (mStopped) return;
        const std::shared_ptr<FrameworkClient> client = mClient;
        const Mood mood = mMood;
        mCalling = true;
        mCalls++;
        lock.unlock();
        hear(client);
        makeCall(*client, mood);
        lock.lock();
        mCalling = false;
        mChanged.notify_all();
        std::chrono::milliseconds pause = longestPause(mood);
        // A service that is gone answers at once; until there is a new one it is left alone.
        if (client->log().isClosed()) pause = std::chrono::seconds(1);
        if (pause.count() == 0) continue;
        const auto length = std::chrono::microseconds(mRandom() % (pause.count() * 1000));
        mChanged.wait_for(lock, length, [&] { return mStopped || mClient != client; });
    }
}

void StormCaller::hear(const std::shared_ptr<FrameworkClient>& client) {
    if (mHeardOf != client) {
        mHeardOf = client;
        mHeard = 0;
        mPresent.clear();
    }
    for (const StatusEvent& event : client->log().events(mHeard)) {
        mHeard++;
        const Device* status = std::get_if<Device>(&event.status);
        if (status == nullptr) continue;
        if (*status == Device::PRESENT) {
            mPresent.insert(event.cameraDeviceName);
        } else {
            mPresent.erase(event.cameraDeviceName);
        }
    }
}

void StormCaller::makeCall(FrameworkClient& client, Mood mood) {
    if (mood == Mood::HOLDING) return askHeldDevice();
    const bool heedless = mood == Mood::HEEDLESS;
    switch (mRandom() % 8) {
        case 0:
            if (heedless || allBuiltInHeard()) askForList(client);
            break;
        case 1:
            if (heedless || allBuiltInHeard()) askForTorch(client);
            break;
        case 2:
        case 3:
            askForTags(client);
            break;
        default:
            // Rarely a camera that may not be there: that question is the service's certain end.
            const bool ofAll = heedless && mRandom() % 32 == 0;
            if (const StormCamera* camera = pick(ofAll); camera != nullptr) {
                askForCamera(client, *camera);
            }
    }
}

const StormCamera* StormCaller::pick(bool ofAll) {
    std::vector<const StormCamera*> cameras;
    for (const StormCamera& camera : mCameras) {
        if (ofAll || mPresent.count(camera.frameworkName) != 0) cameras.push_back(&camera);
    }
    return cameras.empty() ? nullptr : cameras[mRandom() % cameras.size()];
}

bool StormCaller::allBuiltInHeard() const {
    return std::all_of(mCameras.begin(), mCameras.end(), [this](const StormCamera& camera) {
        return !camera.described.builtIn() || mPresent.count(camera.frameworkName) != 0;
    });
}

void StormCaller::askForList(FrameworkClient& client) {
    std::vector<std::string> expected;
    for (const ProviderDescription& provider : mProviders) {
        for (const CameraDescription& camera : provider.cameras) {
            if (camera.builtIn()) expected.push_back(camera.name);
        }
    }
    const auto names = client.cameraIdList();
    if (names.arrived() && (!names.ok() || names.value != expected)) {
        complain("the camera list was " + toString(names.status) + " " +
                 android::base::Join(names.value, " "));
    }
}

void StormCaller::askForTorch(FrameworkClient& client) {
    const auto torch = client.isTorchSupported();
    if (torch.arrived() && (!torch.ok() || torch.value != mProviders[0].torchSupported)) {
        complain("torch support was " + toString(torch.status) + " " + std::to_string(torch.value));
    }
}

void StormCaller::askForTags(FrameworkClient& client) {
    const auto tags = client.vendorTags();
    if (tags.arrived() && (!tags.ok() || !areTagsOf(mProviders, tags.value))) {
        complain("vendor tags were " + toString(tags.status) + " with " +
                 std::to_string(tags.value.size()) + " sections");
    }
}

void StormCaller::askForCamera(FrameworkClient& client, const StormCamera& camera) {
    const std::string& name = camera.frameworkName;
    const bool isVersion3 = camera.described.majorVersion == 3;
    switch (isVersion3 ? mRandom() % 4 : 0) {
        case 1: {
            const auto session = client.openSession(name);
            // Looked at because it may have died with its provider.
            if (session.ok()) (void)session.value->close().isOk();
            break;
        }
        case 2:
            (void)client.setTorchMode(name, mRandom() % 2 == 0);
            break;
        case 3: {
            const auto device = client.deviceV3(name);
            if (device.ok()) mHeld = device.value;
            break;
        }
        default: {
            const auto facts = client.readCamera(name);
            if (facts.ok() && facts.value.resourceCost != camera.described.resourceCost) {
                complain(name + " costs " + std::to_string(facts.value.resourceCost));
            }
        }
    }
}

void StormCaller::askHeldDevice() {
    if (mHeld == nullptr) return;
    const auto asked = mHeld->getResourceCost([](Status, const auto&) {});
    if (!asked.isOk()) mHeld = nullptr;
}

}  // namespace orvo::simulator::testing
