// SPDX-License-Identifier: Apache-2.0
// SimulatedCameraV3: device interface 3.2 over the simulation's state.

#define LOG_TAG "SimulatedProvider"

#include "simulator/provider/SimulatedCameraV3.h"

#include <utility>

#include <log/log.h>

#include "simulator/provider/CameraDump.h"

namespace orvo::simulator {

using android::sp;
using android::hardware::hidl_handle;
using android::hardware::hidl_vec;
using android::hardware::MQDescriptorSync;
using android::hardware::Return;
using android::hardware::Void;
using android::hardware::camera::device::V3_2::CameraMetadata;
using android::hardware::camera::device::V3_2::HalStreamConfiguration;
using vendor::orvo::simulator::V1_0::Operation;

SimulatedCameraV3::SimulatedCameraV3(std::shared_ptr<SimulatedCameras> cameras, std::string name,
                                     uint64_t plug)
    : mCameras(std::move(cameras)), mName(std::move(name)), mPlug(plug) {}

Return<void> SimulatedCameraV3::getResourceCost(getResourceCost_cb _hidl_cb) {
    answerResourceCost(identity(), _hidl_cb);
    return Void();
}

Return<void> SimulatedCameraV3::getCameraCharacteristics(getCameraCharacteristics_cb _hidl_cb) {
    const auto [status, withData] = statusOf(identity(), Operation::DEVICE_GET_CHARACTERISTICS);
    CameraMetadata characteristics;
    if (withData) {
        characteristics = mCameras->describe(mName).characteristics;
    }
    _hidl_cb(status, characteristics);
    return Void();
}

Return<SimulatedCameraV3::Status> SimulatedCameraV3::setTorchMode(TorchMode mode) {
    return answerTorchMode(identity(), mode);
}

Return<void> SimulatedCameraV3::open(const sp<Callback>& callback, open_cb _hidl_cb) {
    const auto scripted = mCameras->script().onCall(Operation::DEVICE_OPEN);
    if (scripted && !scripted->withData) {
        _hidl_cb(scripted->status, nullptr);
        return Void();
    }
    Status status = Status::ILLEGAL_ARGUMENT;
    sp<SimulatedSession> session;
    if (callback != nullptr) status = mCameras->open(mName, mPlug);
    if (status == Status::OK) session = new SimulatedSession(mCameras, mName, mPlug);
    _hidl_cb(scripted ? scripted->status : status, session);
    return Void();
}

Return<void> SimulatedCameraV3::dumpState(const hidl_handle& fd) {
    // Counted, but it has no status that could be scripted.
    mCameras->script().onCall(Operation::DEVICE_DUMP_STATE);
    if (!writeDump(fd, mCameras->dump(mName))) ALOGW("The state of %s went nowhere", mName.c_str());
    return Void();
}

SimulatedSession::SimulatedSession(std::shared_ptr<SimulatedCameras> cameras, std::string name,
                                   uint64_t plug)
    : mCameras(std::move(cameras)), mName(std::move(name)), mPlug(plug) {}

SimulatedSession::~SimulatedSession() {
    if (!mClosed) mCameras->close(mName, mPlug);
}

SimulatedSession::Status SimulatedSession::unlessClosed(Status status) const {
    if (mCameras->checkPlugged(mName, mPlug) != Status::OK) return Status::INTERNAL_ERROR;
    MutexLock lock(mLock);
    return mClosed ? Status::INTERNAL_ERROR : status;
}

Return<void> SimulatedSession::constructDefaultRequestSettings(
        RequestTemplate, constructDefaultRequestSettings_cb _hidl_cb) {
    // No template is supported, which is what ILLEGAL_ARGUMENT says.
    _hidl_cb(unlessClosed(Status::ILLEGAL_ARGUMENT), CameraMetadata());
    return Void();
}

Return<void> SimulatedSession::configureStreams(const StreamConfiguration&,
                                                configureStreams_cb _hidl_cb) {
    // No combination of streams is supported.
    _hidl_cb(unlessClosed(Status::ILLEGAL_ARGUMENT), HalStreamConfiguration());
    return Void();
}

Return<void> SimulatedSession::processCaptureRequest(const hidl_vec<CaptureRequest>&,
                                                     const hidl_vec<BufferCache>&,
                                                     processCaptureRequest_cb _hidl_cb) {
    // Every request names streams, and none was ever configured.
    _hidl_cb(unlessClosed(Status::ILLEGAL_ARGUMENT), 0);
    return Void();
}

Return<void> SimulatedSession::getCaptureRequestMetadataQueue(
        getCaptureRequestMetadataQueue_cb _hidl_cb) {
    _hidl_cb(MQDescriptorSync<uint8_t>());  // no queue: settings travel in the call
    return Void();
}

Return<void> SimulatedSession::getCaptureResultMetadataQueue(
        getCaptureResultMetadataQueue_cb _hidl_cb) {
    _hidl_cb(MQDescriptorSync<uint8_t>());
    return Void();
}

Return<SimulatedSession::Status> SimulatedSession::flush() {
    return unlessClosed(Status::OK);
}

Return<void> SimulatedSession::close() {
    {
        MutexLock lock(mLock);
        if (mClosed) return Void();
        mClosed = true;
    }
    mCameras->close(mName, mPlug);
    return Void();
}

}  // namespace orvo::simulator
