// SPDX-License-Identifier: Apache-2.0
// SimulatedCameraV3: a camera with device interface 3.2, and the session that opening it gives.

#pragma once

#include <memory>
#include <string>

#include <android/hardware/camera/device/3.2/ICameraDevice.h>
#include <android/hardware/camera/device/3.2/ICameraDeviceSession.h>

#include "host/Mutex.h"
#include "simulator/provider/CameraAnswers.h"
#include "simulator/provider/SimulatedCameras.h"

namespace orvo::simulator {

/** One plugging of one camera: stale for good once the camera was pulled out. Any thread. */
class SimulatedCameraV3 : public android::hardware::camera::device::V3_2::ICameraDevice {
  public:
    using Status = android::hardware::camera::common::V1_0::Status;
    using TorchMode = android::hardware::camera::common::V1_0::TorchMode;
    using Callback = android::hardware::camera::device::V3_2::ICameraDeviceCallback;
    template <typename T>
    using Return = android::hardware::Return<T>;

    SimulatedCameraV3(std::shared_ptr<SimulatedCameras> cameras, std::string name, uint64_t plug);

    Return<void> getResourceCost(getResourceCost_cb _hidl_cb) override;
    Return<void> getCameraCharacteristics(getCameraCharacteristics_cb _hidl_cb) override;
    Return<Status> setTorchMode(TorchMode mode) override;
    Return<void> open(const android::sp<Callback>& callback, open_cb _hidl_cb) override;
    Return<void> dumpState(const android::hardware::hidl_handle& fd) override;

  private:
    DeviceIdentity identity() const { return {*mCameras, mName, mPlug}; }
    const std::shared_ptr<SimulatedCameras> mCameras;
    const std::string mName;
    const uint64_t mPlug;
};

/**
 * An open camera without streams: it holds the camera, and answers every request for pictures with
 * the status of a device that can give none. Closed by close() or by the loss of its last
 * reference, such as the death of the client. Any thread.
 */
class SimulatedSession : public android::hardware::camera::device::V3_2::ICameraDeviceSession {
  public:
    using Status = android::hardware::camera::common::V1_0::Status;
    using RequestTemplate = android::hardware::camera::device::V3_2::RequestTemplate;
    using StreamConfiguration = android::hardware::camera::device::V3_2::StreamConfiguration;
    using CaptureRequest = android::hardware::camera::device::V3_2::CaptureRequest;
    using BufferCache = android::hardware::camera::device::V3_2::BufferCache;
    template <typename T>
    using Return = android::hardware::Return<T>;

    SimulatedSession(std::shared_ptr<SimulatedCameras> cameras, std::string name, uint64_t plug);
    ~SimulatedSession() override;

    Return<void> constructDefaultRequestSettings(
            RequestTemplate type, constructDefaultRequestSettings_cb _hidl_cb) override;
    Return<void> configureStreams(const StreamConfiguration& requested,
                                  configureStreams_cb _hidl_cb) override;
    Return<void> processCaptureRequest(
            const android::hardware::hidl_vec<CaptureRequest>& requests,
            const android::hardware::hidl_vec<BufferCache>& cachesToRemove,
            processCaptureRequest_cb _hidl_cb) override;
    Return<void> getCaptureRequestMetadataQueue(
            getCaptureRequestMetadataQueue_cb _hidl_cb) override;
    Return<void> getCaptureResultMetadataQueue(getCaptureResultMetadataQueue_cb _hidl_cb) override;
    Return<Status> flush() override;
    Return<void> close() override;

  private:
    /** INTERNAL_ERROR once the session is closed or the camera is gone, else `status`. */
    Status unlessClosed(Status status) const;

    const std::shared_ptr<SimulatedCameras> mCameras;
    const std::string mName;
    const uint64_t mPlug;
    mutable Mutex mLock;
    bool mClosed GUARDED_BY(mLock) = false;
};

}  // namespace orvo::simulator
