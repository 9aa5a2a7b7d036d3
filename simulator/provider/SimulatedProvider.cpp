// SPDX-License-Identifier: Apache-2.0
// SimulatedProvider: answers from the simulation's state, or as its script says.

#include "simulator/provider/SimulatedProvider.h"

#include <utility>

#include "simulator/provider/SimulatedCameraV1.h"
#include "simulator/provider/SimulatedCameraV3.h"

namespace orvo::simulator {

using android::sp;
using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using android::hardware::Return;
using android::hardware::Void;
using android::hardware::camera::common::V1_0::VendorTagSection;
using vendor::orvo::simulator::V1_0::Operation;

SimulatedProvider::SimulatedProvider(std::shared_ptr<SimulatedCameras> cameras)
    : mCameras(std::move(cameras)) {}

Return<SimulatedProvider::Status> SimulatedProvider::setCallback(const sp<Callback>& callback) {
    const auto scripted = mCameras->script().onCall(Operation::SET_CALLBACK);
    if (scripted && !scripted->withData) return scripted->status;
    if (callback == nullptr) return scripted ? scripted->status : Status::ILLEGAL_ARGUMENT;
    const Status status = mCameras->replaceListener(callback) ? Status::OK : Status::INTERNAL_ERROR;
    return scripted ? scripted->status : status;
}

Return<void> SimulatedProvider::getVendorTags(getVendorTags_cb _hidl_cb) {
    const auto scripted = mCameras->script().onCall(Operation::GET_VENDOR_TAGS);
    hidl_vec<VendorTagSection> sections;
    if (!scripted || scripted->withData) sections = mCameras->description().vendorTags;
    _hidl_cb(scripted ? scripted->status : Status::OK, sections);
    return Void();
}

Return<void> SimulatedProvider::getCameraIdList(getCameraIdList_cb _hidl_cb) {
    const auto scripted = mCameras->script().onCall(Operation::GET_CAMERA_ID_LIST);
    hidl_vec<hidl_string> names;
    if (!scripted || scripted->withData) {
        const auto builtIn = mCameras->builtInNames();
        names = hidl_vec<hidl_string>(builtIn.begin(), builtIn.end());
    }
    _hidl_cb(scripted ? scripted->status : Status::OK, names);
    return Void();
}

Return<void> SimulatedProvider::isSetTorchModeSupported(isSetTorchModeSupported_cb _hidl_cb) {
    const auto scripted = mCameras->script().onCall(Operation::IS_SET_TORCH_MODE_SUPPORTED);
    const bool known = !scripted || scripted->withData;
    _hidl_cb(scripted ? scripted->status : Status::OK,
             known && mCameras->description().torchSupported);
    return Void();
}

Return<void> SimulatedProvider::getCameraDeviceInterface_V1_x(
        const hidl_string& name, getCameraDeviceInterface_V1_x_cb _hidl_cb) {
    const auto scripted = mCameras->script().onCall(Operation::GET_CAMERA_DEVICE_INTERFACE_V1_X);
    uint64_t plug = 0;
    const Status status = mCameras->find(name, 1, &plug);
    sp<SimulatedCameraV1> device;
    if (status == Status::OK && (!scripted || scripted->withData)) {
        device = new SimulatedCameraV1(mCameras, name, plug);
    }
    _hidl_cb(scripted ? scripted->status : status, device);
    return Void();
}

Return<void> SimulatedProvider::getCameraDeviceInterface_V3_x(
        const hidl_string& name, getCameraDeviceInterface_V3_x_cb _hidl_cb) {
    const auto scripted = mCameras->script().onCall(Operation::GET_CAMERA_DEVICE_INTERFACE_V3_X);
    uint64_t plug = 0;
    const Status status = mCameras->find(name, 3, &plug);
    sp<SimulatedCameraV3> device;
    if (status == Status::OK && (!scripted || scripted->withData)) {
        device = new SimulatedCameraV3(mCameras, name, plug);
    }
    _hidl_cb(scripted ? scripted->status : status, device);
    return Void();
}

}  // namespace orvo::simulator
