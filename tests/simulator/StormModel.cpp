// SPDX-License-Identifier: Apache-2.0
// StormModel: sets, and nothing that the library under test has computed.

#include "tests/simulator/StormModel.h"

#include <algorithm>

#include <android-base/strings.h>

namespace orvo::simulator::testing {

using android::base::Error;
using android::base::Result;

namespace {

/** The longest value that a property takes. */
constexpr size_t kLongestValue = 91;
constexpr char kSeparator[] = ", ";

/** @param type the aggregating provider's. Names are such as "device@3.2/external/100". */
StormCamera cameraOf(const std::string& provider, const CameraDescription& described,
                     const std::string& type) {
    const size_t first = described.name.find('/');
    const size_t second = described.name.find('/', first + 1);
    StormCamera camera;
    camera.provider = provider;
    camera.described = described;
    camera.type = described.name.substr(first + 1, second - first - 1);
    camera.id = described.name.substr(second + 1);
    camera.frameworkName = described.name.substr(0, first + 1) + type + "/" + camera.id;
    return camera;
}

}  // namespace

Result<StormModel> StormModel::read(const HeadsetDescription& device, const std::string& type) {
    StormModel model;
    for (const ProviderProgram& program : device.providers) {
        auto provider = ProviderDescription::read(program.description);
        if (!provider) return Error() << provider.error().message();
        for (const CameraDescription& camera : provider->cameras) {
            model.mCameras.push_back(cameraOf(provider->instance, camera, type));
        }
        model.mProviders.push_back(*provider);
        model.mAlive.insert(provider->instance);
    }
    std::sort(model.mProviders.begin(), model.mProviders.end(),
              [](const auto& a, const auto& b) { return a.instance < b.instance; });
    return model;
}

const StormCamera* StormModel::find(const std::string& frameworkName) const {
    for (const StormCamera& camera : mCameras) {
        if (camera.frameworkName == frameworkName) return &camera;
    }
    return nullptr;
}

bool StormModel::present(const StormCamera& camera) const {
    return isAlive(camera.provider) &&
           (camera.described.builtIn() || isPluggedIn(camera.frameworkName));
}

void StormModel::started(const std::string& provider) {
    mAlive.insert(provider);
    for (const StormCamera& camera : mCameras) {
        // It will be reported when the service has found the provider.
        if (camera.provider == provider && present(camera)) mUnderWay.insert(camera.frameworkName);
    }
}

void StormModel::died(const std::string& provider) {
    mAlive.erase(provider);
    for (const StormCamera& camera : mCameras) {
        if (camera.provider != provider) continue;
        mPluggedIn.erase(camera.frameworkName);
        if (mUnderWay.erase(camera.frameworkName) != 0) mUncertain.insert(camera.frameworkName);
    }
}

void StormModel::plugged(const std::string& frameworkName, bool in) {
    if (in) {
        mPluggedIn.insert(frameworkName);
    } else {
        mPluggedIn.erase(frameworkName);
    }
    mUnderWay.insert(frameworkName);
}

void StormModel::serviceStarted() {
    mUncertain.clear();
    for (const StormCamera& camera : mCameras) {
        if (present(camera)) mUnderWay.insert(camera.frameworkName);
    }
}

std::map<std::string, std::string> StormModel::active() const {
    std::map<std::string, std::string> active;
    for (const StormCamera& camera : mCameras) {
        if (present(camera)) active[camera.frameworkName] = camera.described.name;
    }
    return active;
}

IdList::IdList(const std::string& value) {
    for (const std::string& id : android::base::Split(value, ",")) {
        if (!id.empty()) mIds.push_back(android::base::Trim(id));
    }
}

void IdList::add(const std::string& id) {
    mIds.push_back(id);
    if (value().size() > kLongestValue) mIds.pop_back();
}

void IdList::remove(const std::string& id) {
    const auto first = std::find(mIds.begin(), mIds.end(), id);
    if (first != mIds.end()) mIds.erase(first);
}

std::string IdList::value() const {
    return android::base::Join(mIds, kSeparator);
}

std::string IdList::valueWithout(const std::set<std::string>& ids) const {
    std::vector<std::string> others;
    for (const std::string& id : mIds) {
        if (ids.count(id) == 0) others.push_back(id);
    }
    return android::base::Join(others, kSeparator);
}

}  // namespace orvo::simulator::testing
