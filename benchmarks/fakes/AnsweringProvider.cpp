// SPDX-License-Identifier: Apache-2.0
// Answers at once.

#include "benchmarks/fakes/AnsweringProvider.h"

namespace orvo::benchmarks {

using android::sp;
using android::hardware::hidl_death_recipient;
using android::hardware::hidl_string;
using android::hardware::Return;
using android::hardware::Void;
using android::hardware::camera::common::V1_0::CameraDeviceStatus;
using android::hardware::camera::common::V1_0::TorchModeStatus;
using Status = AnsweringProvider::Status;

namespace {

void note(const std::string& who, const char* operation, const std::string& what = "") {
    Journal::add(who + " " + operation + " " + what);
}

}  // namespace

AnsweringProvider::AnsweringProvider(const std::string& instance, size_t idCount,
                                     size_t sectionCount)
    : mInstance(instance) {
    const std::string type = instance.substr(0, instance.find('/'));
    mIds.resize(idCount);
    for (size_t i = 0; i < idCount; ++i) mIds[i] = "device@3.2/" + type + "/" + std::to_string(i);
    mSections.resize(sectionCount);
    for (size_t i = 0; i < sectionCount; ++i) {
        mSections[i].sectionName = "com." + type + ".section" + std::to_string(i);
        mSections[i].tags.resize(sectionCount);
        for (size_t tag = 0; tag < sectionCount; ++tag) {
            mSections[i].tags[tag].tagId = static_cast<uint32_t>(0x80000000 + i * 256 + tag);
            mSections[i].tags[tag].tagName = "exposureCompensation" + std::to_string(tag);
        }
    }
}

Return<Status> AnsweringProvider::setCallback(const sp<Callback>& callback) {
    if (Journal::isOn()) note(mInstance, "setCallback", callback == nullptr ? "null" : "set");
    return Status::OK;
}

Return<void> AnsweringProvider::getVendorTags(getVendorTags_cb _hidl_cb) {
    if (Journal::isOn()) note(mInstance, "getVendorTags");
    _hidl_cb(Status::OK, mSections);
    return Void();
}

Return<void> AnsweringProvider::getCameraIdList(getCameraIdList_cb _hidl_cb) {
    if (Journal::isOn()) note(mInstance, "getCameraIdList");
    _hidl_cb(Status::OK, mIds);
    return Void();
}

Return<void> AnsweringProvider::isSetTorchModeSupported(isSetTorchModeSupported_cb _hidl_cb) {
    if (Journal::isOn()) note(mInstance, "isSetTorchModeSupported");
    _hidl_cb(Status::OK, true);
    return Void();
}

Return<void> AnsweringProvider::getCameraDeviceInterface_V1_x(
        const hidl_string& name, getCameraDeviceInterface_V1_x_cb _hidl_cb) {
    if (Journal::isOn()) note(mInstance, "getCameraDeviceInterface_V1_x", name);
    _hidl_cb(Status::OK, nullptr);
    return Void();
}

Return<void> AnsweringProvider::getCameraDeviceInterface_V3_x(
        const hidl_string& name, getCameraDeviceInterface_V3_x_cb _hidl_cb) {
    if (Journal::isOn()) note(mInstance, "getCameraDeviceInterface_V3_x", name);
    _hidl_cb(Status::OK, nullptr);
    return Void();
}

Return<bool> AnsweringProvider::linkToDeath(const sp<hidl_death_recipient>& newRecipient,
                                            uint64_t newCookie) {
    if (Journal::isOn()) note(mInstance, "linkToDeath");
    recipient = newRecipient.get();
    cookie = newCookie;
    return true;
}

Return<bool> AnsweringProvider::unlinkToDeath(const sp<hidl_death_recipient>& oldRecipient) {
    if (Journal::isOn()) note(mInstance, "unlinkToDeath");
    return oldRecipient.get() == recipient;
}

Return<void> SilentFramework::cameraDeviceStatusChange(const hidl_string& name,
                                                       CameraDeviceStatus status) {
    if (Journal::isOn())
        note("framework", "cameraDeviceStatusChange", std::string(name) + " " + toString(status));
    return Void();
}

Return<void> SilentFramework::torchModeStatusChange(const hidl_string& name,
                                                    TorchModeStatus status) {
    if (Journal::isOn())
        note("framework", "torchModeStatusChange", std::string(name) + " " + toString(status));
    return Void();
}

}  // namespace orvo::benchmarks
