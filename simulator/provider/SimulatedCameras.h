// SPDX-License-Identifier: Apache-2.0
// SimulatedCameras: the state of a provider's cameras and the rules by which it changes.

#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <vendor/orvo/simulator/1.0/types.h>

#include "host/Mutex.h"
#include "simulator/description/ProviderDescription.h"
#include "simulator/provider/AnswerScript.h"
#include "simulator/provider/StatusReporter.h"

namespace orvo::simulator {

/** How a request from outside went; the message is one line, empty when the result is OK. */
struct Outcome {
    vendor::orvo::simulator::V1_0::Result result = vendor::orvo::simulator::V1_0::Result::OK;
    std::string message;
};

/**
 * All that a simulated provider knows: its description, what is plugged in, lit and open.
 *
 * Device objects and sessions hold a plug number: which time of being plugged in they belong to.
 * Once the camera has been pulled out they are stale for good, also after it comes back. Changes
 * are given to the reporter under the lock, so that reports keep the order of the changes. Any
 * thread may call.
 */
class SimulatedCameras {
  public:
    using Status = android::hardware::camera::common::V1_0::Status;
    using CameraDeviceStatus = android::hardware::camera::common::V1_0::CameraDeviceStatus;
    using TorchModeStatus = android::hardware::camera::common::V1_0::TorchModeStatus;
    using DeviceState = vendor::orvo::simulator::V1_0::DeviceState;

    explicit SimulatedCameras(ProviderDescription description);

    const ProviderDescription& description() const { return mDescription; }
    AnswerScript& script() { return mScript; }
    StatusReporter& reporter() { return mReporter; }
    std::vector<DeviceState> state() const;

    // What a person or a test does to the cameras.
    Outcome setDeviceStatus(const std::string& name, CameraDeviceStatus status);
    Outcome setTorchStatus(const std::string& name, TorchModeStatus status);

    // What the framework does.
    /** The new listener is told of what it cannot assume; false if it is dead already. */
    bool replaceListener(const android::sp<StatusReporter::Listener>& listener);
    std::vector<std::string> builtInNames() const;
    /**
     * Looks for a camera that a device object can be made for.
     *
     * @param[out] plug its plug number, when the answer is OK.
     */
    Status find(const std::string& name, int majorVersion, uint64_t* plug) const;
    /** OK while that plugging lasts, else CAMERA_DISCONNECTED. */
    Status checkPlugged(const std::string& name, uint64_t plug) const;
    Status setTorchMode(const std::string& name, uint64_t plug, bool on);
    Status open(const std::string& name, uint64_t plug);
    /** Does nothing if that plugging is over or the camera is not open. */
    void close(const std::string& name, uint64_t plug);

    /** The description of a camera of this provider. */
    const CameraDescription& describe(const std::string& name) const;
    /** The camera's state as text for dumpState. */
    std::string dump(const std::string& name) const;

  private:
    struct Camera {
        const CameraDescription* description;
        CameraDeviceStatus status;
        TorchModeStatus torch;
        bool open = false;
        uint64_t plug = 0;  ///< grows each time the camera is pulled out
    };

    /** What a new listener cannot assume. */
    std::vector<StatusReport> initialReports() const REQUIRES(mLock);
    Outcome unknown(const std::string& name) const;
    Camera* pluggedCamera(const std::string& name, uint64_t plug) REQUIRES(mLock);
    void changeTorch(const std::string& name, Camera* camera, TorchModeStatus status)
            REQUIRES(mLock);
    bool fitsBesideOpenCameras(const CameraDescription& candidate) const REQUIRES(mLock);

    const ProviderDescription mDescription;
    AnswerScript mScript;
    StatusReporter mReporter;
    mutable Mutex mLock;
    std::map<std::string, Camera> mCameras GUARDED_BY(mLock);  ///< key: camera device name
};

}  // namespace orvo::simulator
