// SPDX-License-Identifier: Apache-2.0
// Plays the scripts of a provider.

#include "tests/support/ScriptedProvider.h"

#include <utility>

namespace orvo::test {

using android::DEAD_OBJECT;
using android::hardware::hidl_string;
using HidlStatus = android::hardware::Status;

void ScriptedProvider::begin(const char* operation) {
    if (onCall) onCall(operation);
}

template <typename Value, typename ResultCallback>
android::hardware::Return<void> ScriptedProvider::play(Script<Value>& script,
                                                       const ResultCallback& resultCallback) {
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        ++script.calls;
    }
    for (int i = 0; i < script.answers; ++i) resultCallback(script.status, script.value);
    if (script.transportFails) return HidlStatus::fromStatusT(DEAD_OBJECT);
    return android::hardware::Void();
}

ScriptedProvider::Return<ScriptedProvider::Status> ScriptedProvider::setCallback(
        const sp<Callback>& callback) {
    begin("setCallback");
    const std::lock_guard<std::mutex> lock(mMutex);
    mCallbacks.push_back(callback);
    if (setCallbackFails) return HidlStatus::fromStatusT(DEAD_OBJECT);
    return setCallbackStatus;
}

ScriptedProvider::Return<void> ScriptedProvider::getVendorTags(getVendorTags_cb _hidl_cb) {
    begin("getVendorTags");
    return play(vendorTags, _hidl_cb);
}

ScriptedProvider::Return<void> ScriptedProvider::getCameraIdList(getCameraIdList_cb _hidl_cb) {
    begin("getCameraIdList");
    return play(cameraIds, _hidl_cb);
}

ScriptedProvider::Return<void> ScriptedProvider::isSetTorchModeSupported(
        isSetTorchModeSupported_cb _hidl_cb) {
    begin("isSetTorchModeSupported");
    return play(torchSupport, _hidl_cb);
}

ScriptedProvider::Return<void> ScriptedProvider::getCameraDeviceInterface_V1_x(
        const hidl_string& name, getCameraDeviceInterface_V1_x_cb _hidl_cb) {
    begin("getCameraDeviceInterface_V1_x");
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mAskedDevices.push_back("1 " + std::string(name));
    }
    return play(deviceV1, _hidl_cb);
}

ScriptedProvider::Return<void> ScriptedProvider::getCameraDeviceInterface_V3_x(
        const hidl_string& name, getCameraDeviceInterface_V3_x_cb _hidl_cb) {
    begin("getCameraDeviceInterface_V3_x");
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mAskedDevices.push_back("3 " + std::string(name));
    }
    return play(deviceV3, _hidl_cb);
}

ScriptedProvider::Return<bool> ScriptedProvider::linkToDeath(const sp<Recipient>& recipient,
                                                             uint64_t cookie) {
    begin("linkToDeath");
    if (linkFails) return HidlStatus::fromStatusT(DEAD_OBJECT);
    if (linkRefused) return false;
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mLinks.push_back({recipient, cookie});
    }
    if (onLinked) onLinked();
    return true;
}

ScriptedProvider::Return<bool> ScriptedProvider::unlinkToDeath(const sp<Recipient>& recipient) {
    begin("unlinkToDeath");
    const std::lock_guard<std::mutex> lock(mMutex);
    ++mUnlinkCalls;
    if (unlinkFails) return HidlStatus::fromStatusT(DEAD_OBJECT);
    for (auto link = mLinks.rbegin(); link != mLinks.rend(); ++link) {
        if (link->recipient.unsafe_get() != recipient.get()) continue;
        mLinks.erase(std::next(link).base());
        return true;
    }
    return false;
}

std::vector<ScriptedProvider::Link> ScriptedProvider::links() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mLinks;
}

int ScriptedProvider::unlinkCalls() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mUnlinkCalls;
}

std::vector<android::sp<ScriptedProvider::Callback>> ScriptedProvider::callbacks() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mCallbacks;
}

std::vector<std::string> ScriptedProvider::askedDevices() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mAskedDevices;
}

void ScriptedProvider::die() {
    std::vector<Link> told;
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        told = std::exchange(mLinks, {});
    }
    for (const Link& link : told) {
        const sp<Recipient> recipient = link.recipient.promote();
        if (recipient != nullptr) recipient->serviceDied(link.cookie, this);
    }
}

}  // namespace orvo::test
