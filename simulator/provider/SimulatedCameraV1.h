// SPDX-License-Identifier: Apache-2.0
// SimulatedCameraV1: a camera with device interface 1.0.

#pragma once

#include <memory>
#include <string>

#include <android/hardware/camera/device/1.0/ICameraDevice.h>

#include "host/Mutex.h"
#include "simulator/provider/CameraAnswers.h"
#include "simulator/provider/SimulatedCameras.h"

namespace orvo::simulator {

/**
 * One plugging of one camera: stale for good once the camera was pulled out. It can be opened and
 * closed and keeps its message types and parameters; as there are no pictures, preview, recording,
 * focus and capture answer OPERATION_NOT_SUPPORTED while open and INTERNAL_ERROR otherwise. Any
 * thread.
 */
class SimulatedCameraV1 : public android::hardware::camera::device::V1_0::ICameraDevice {
  public:
    using Status = android::hardware::camera::common::V1_0::Status;
    using TorchMode = android::hardware::camera::common::V1_0::TorchMode;
    using Callback = android::hardware::camera::device::V1_0::ICameraDeviceCallback;
    using PreviewCallback = android::hardware::camera::device::V1_0::ICameraDevicePreviewCallback;
    using CommandType = android::hardware::camera::device::V1_0::CommandType;
    using VideoFrameMessage = android::hardware::camera::device::V1_0::VideoFrameMessage;
    using hidl_handle = android::hardware::hidl_handle;
    using hidl_string = android::hardware::hidl_string;
    template <typename T>
    using Return = android::hardware::Return<T>;

    SimulatedCameraV1(std::shared_ptr<SimulatedCameras> cameras, std::string name, uint64_t plug);
    ~SimulatedCameraV1() override;

    Return<void> getResourceCost(getResourceCost_cb _hidl_cb) override;
    Return<void> getCameraInfo(getCameraInfo_cb _hidl_cb) override;
    Return<Status> setTorchMode(TorchMode mode) override;
    Return<Status> dumpState(const hidl_handle& fd) override;
    Return<Status> open(const android::sp<Callback>& callback) override;
    Return<Status> setPreviewWindow(const android::sp<PreviewCallback>& window) override;
    Return<void> enableMsgType(uint32_t msgType) override;
    Return<void> disableMsgType(uint32_t msgType) override;
    Return<bool> msgTypeEnabled(uint32_t msgType) override;
    Return<Status> startPreview() override;
    Return<void> stopPreview() override;
    Return<bool> previewEnabled() override;
    Return<Status> storeMetaDataInBuffers(bool enable) override;
    Return<Status> startRecording() override;
    Return<void> stopRecording() override;
    Return<bool> recordingEnabled() override;
    Return<void> releaseRecordingFrame(uint32_t memId, uint32_t bufferIndex) override;
    Return<void> releaseRecordingFrameHandle(uint32_t memId, uint32_t bufferIndex,
                                             const hidl_handle& frame) override;
    Return<void> releaseRecordingFrameHandleBatch(
            const android::hardware::hidl_vec<VideoFrameMessage>& batch) override;
    Return<Status> autoFocus() override;
    Return<Status> cancelAutoFocus() override;
    Return<Status> takePicture() override;
    Return<Status> cancelPicture() override;
    Return<Status> setParameters(const hidl_string& params) override;
    Return<void> getParameters(getParameters_cb _hidl_cb) override;
    Return<Status> sendCommand(CommandType cmd, int32_t arg1, int32_t arg2) override;
    Return<void> close() override;

  private:
    DeviceIdentity identity() const { return {*mCameras, mName, mPlug}; }
    /** `status` while this object has the camera open, else INTERNAL_ERROR. */
    Status whileOpen(Status status) const;

    const std::shared_ptr<SimulatedCameras> mCameras;
    const std::string mName;
    const uint64_t mPlug;
    mutable Mutex mLock;
    bool mOpen GUARDED_BY(mLock) = false;
    uint32_t mMessageTypes GUARDED_BY(mLock) = 0;
    std::string mParameters GUARDED_BY(mLock);
};

}  // namespace orvo::simulator
