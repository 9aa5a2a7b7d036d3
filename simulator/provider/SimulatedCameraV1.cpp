// SPDX-License-Identifier: Apache-2.0
// SimulatedCameraV1: device interface 1.0 over the simulation's state.

#include "simulator/provider/SimulatedCameraV1.h"

#include <utility>

#include "simulator/provider/CameraDump.h"

namespace orvo::simulator {

using android::sp;
using android::hardware::hidl_vec;
using android::hardware::Return;
using android::hardware::Void;
using android::hardware::camera::device::V1_0::CameraFacing;
using android::hardware::camera::device::V1_0::CameraInfo;
using vendor::orvo::simulator::V1_0::Operation;

namespace {

CameraFacing platformFacing(Facing facing) {
    switch (facing) {
        case Facing::BACK:
            return CameraFacing::BACK;
        case Facing::FRONT:
            return CameraFacing::FRONT;
        case Facing::EXTERNAL:
            return CameraFacing::EXTERNAL;
    }
    return CameraFacing::BACK;
}

}  // namespace

SimulatedCameraV1::SimulatedCameraV1(std::shared_ptr<SimulatedCameras> cameras, std::string name,
                                     uint64_t plug)
    : mCameras(std::move(cameras)), mName(std::move(name)), mPlug(plug) {}

SimulatedCameraV1::~SimulatedCameraV1() {
    if (mOpen) mCameras->close(mName, mPlug);
}

SimulatedCameraV1::Status SimulatedCameraV1::whileOpen(Status status) const {
    if (mCameras->checkPlugged(mName, mPlug) != Status::OK) return Status::INTERNAL_ERROR;
    MutexLock lock(mLock);
    return mOpen ? status : Status::INTERNAL_ERROR;
}

Return<void> SimulatedCameraV1::getResourceCost(getResourceCost_cb _hidl_cb) {
    answerResourceCost(identity(), _hidl_cb);
    return Void();
}

Return<void> SimulatedCameraV1::getCameraInfo(getCameraInfo_cb _hidl_cb) {
    const auto [status, withData] = statusOf(identity(), Operation::DEVICE_GET_CHARACTERISTICS);
    CameraInfo info{};
    if (withData) {
        const CameraDescription& camera = mCameras->describe(mName);
        info.facing = platformFacing(camera.facing);
        info.orientation = camera.orientation;
    }
    _hidl_cb(status, info);
    return Void();
}

Return<SimulatedCameraV1::Status> SimulatedCameraV1::setTorchMode(TorchMode mode) {
    return answerTorchMode(identity(), mode);
}

Return<SimulatedCameraV1::Status> SimulatedCameraV1::dumpState(const hidl_handle& fd) {
    const auto scripted = mCameras->script().onCall(Operation::DEVICE_DUMP_STATE);
    if (scripted && !scripted->withData) return scripted->status;
    const Status status =
            writeDump(fd, mCameras->dump(mName)) ? Status::OK : Status::ILLEGAL_ARGUMENT;
    return scripted ? scripted->status : status;
}

Return<SimulatedCameraV1::Status> SimulatedCameraV1::open(const sp<Callback>& callback) {
    const auto scripted = mCameras->script().onCall(Operation::DEVICE_OPEN);
    if (scripted && !scripted->withData) return scripted->status;
    if (callback == nullptr) return scripted ? scripted->status : Status::ILLEGAL_ARGUMENT;
    const Status status = mCameras->open(mName, mPlug);
    if (status == Status::OK) {
        MutexLock lock(mLock);
        mOpen = true;
        mMessageTypes = 0;
    }
    return scripted ? scripted->status : status;
}

Return<SimulatedCameraV1::Status> SimulatedCameraV1::setPreviewWindow(const sp<PreviewCallback>&) {
    return whileOpen(Status::OPERATION_NOT_SUPPORTED);
}

Return<void> SimulatedCameraV1::enableMsgType(uint32_t msgType) {
    MutexLock lock(mLock);
    mMessageTypes |= msgType;
    return Void();
}

Return<void> SimulatedCameraV1::disableMsgType(uint32_t msgType) {
    MutexLock lock(mLock);
    mMessageTypes &= ~msgType;
    return Void();
}

Return<bool> SimulatedCameraV1::msgTypeEnabled(uint32_t msgType) {
    MutexLock lock(mLock);
    return (mMessageTypes & msgType) != 0;
}

Return<SimulatedCameraV1::Status> SimulatedCameraV1::startPreview() {
    return whileOpen(Status::OPERATION_NOT_SUPPORTED);
}

Return<void> SimulatedCameraV1::stopPreview() {
    return Void();
}

Return<bool> SimulatedCameraV1::previewEnabled() {
    return false;
}

Return<SimulatedCameraV1::Status> SimulatedCameraV1::storeMetaDataInBuffers(bool) {
    return whileOpen(Status::OPERATION_NOT_SUPPORTED);
}

Return<SimulatedCameraV1::Status> SimulatedCameraV1::startRecording() {
    return whileOpen(Status::OPERATION_NOT_SUPPORTED);
}

Return<void> SimulatedCameraV1::stopRecording() {
    return Void();
}

Return<bool> SimulatedCameraV1::recordingEnabled() {
    return false;
}

// No frame was ever handed out, so there is none to take back.
Return<void> SimulatedCameraV1::releaseRecordingFrame(uint32_t, uint32_t) {
    return Void();
}

Return<void> SimulatedCameraV1::releaseRecordingFrameHandle(uint32_t, uint32_t,
                                                            const hidl_handle&) {
    return Void();
}

Return<void> SimulatedCameraV1::releaseRecordingFrameHandleBatch(
        const hidl_vec<VideoFrameMessage>&) {
    return Void();
}

Return<SimulatedCameraV1::Status> SimulatedCameraV1::autoFocus() {
    return whileOpen(Status::OPERATION_NOT_SUPPORTED);
}

Return<SimulatedCameraV1::Status> SimulatedCameraV1::cancelAutoFocus() {
    return whileOpen(Status::OK);
}

Return<SimulatedCameraV1::Status> SimulatedCameraV1::takePicture() {
    return whileOpen(Status::OPERATION_NOT_SUPPORTED);
}

Return<SimulatedCameraV1::Status> SimulatedCameraV1::cancelPicture() {
    return whileOpen(Status::OK);
}

Return<SimulatedCameraV1::Status> SimulatedCameraV1::setParameters(const hidl_string& params) {
    const Status status = whileOpen(Status::OK);
    if (status != Status::OK) return status;
    MutexLock lock(mLock);
    mParameters = params;
    return Status::OK;
}

Return<void> SimulatedCameraV1::getParameters(getParameters_cb _hidl_cb) {
    std::string parameters;
    {
        MutexLock lock(mLock);
        parameters = mParameters;
    }
    _hidl_cb(parameters);
    return Void();
}

Return<SimulatedCameraV1::Status> SimulatedCameraV1::sendCommand(CommandType, int32_t, int32_t) {
    return whileOpen(Status::OPERATION_NOT_SUPPORTED);
}

Return<void> SimulatedCameraV1::close() {
    {
        MutexLock lock(mLock);
        if (!mOpen) return Void();
        mOpen = false;
    }
    mCameras->close(mName, mPlug);
    return Void();
}

}  // namespace orvo::simulator
