// SPDX-License-Identifier: Apache-2.0
// Camera devices that are only handed on: any call of one fails the test.
#pragma once

#include <gmock/gmock.h>

#include <android/hardware/camera/device/1.0/ICameraDevice.h>
#include <android/hardware/camera/device/3.2/ICameraDevice.h>

#include "tests/support/CountedInstance.h"

namespace orvo::test {
namespace uncalled {

namespace common = android::hardware::camera::common::V1_0;
namespace v1 = android::hardware::camera::device::V1_0;
namespace v3 = android::hardware::camera::device::V3_2;
using android::sp;
using android::hardware::hidl_bitfield;
using android::hardware::hidl_handle;
using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using android::hardware::Return;

// By GoogleMock's numbered macros, which a device tree has, too.
class MockDeviceV1 : public v1::ICameraDevice, public CountedInstance {
  public:
    MOCK_METHOD1(getResourceCost, Return<void>(getResourceCost_cb));
    MOCK_METHOD1(getCameraInfo, Return<void>(getCameraInfo_cb));
    MOCK_METHOD1(setTorchMode, Return<common::Status>(common::TorchMode));
    MOCK_METHOD1(dumpState, Return<common::Status>(const hidl_handle&));
    MOCK_METHOD1(open, Return<common::Status>(const sp<v1::ICameraDeviceCallback>&));
    MOCK_METHOD1(setPreviewWindow,
                 Return<common::Status>(const sp<v1::ICameraDevicePreviewCallback>&));
    MOCK_METHOD1(enableMsgType, Return<void>(hidl_bitfield<v1::FrameCallbackFlag>));
    MOCK_METHOD1(disableMsgType, Return<void>(hidl_bitfield<v1::FrameCallbackFlag>));
    MOCK_METHOD1(msgTypeEnabled, Return<bool>(hidl_bitfield<v1::FrameCallbackFlag>));
    MOCK_METHOD0(startPreview, Return<common::Status>());
    MOCK_METHOD0(stopPreview, Return<void>());
    MOCK_METHOD0(previewEnabled, Return<bool>());
    MOCK_METHOD1(storeMetaDataInBuffers, Return<common::Status>(bool));
    MOCK_METHOD0(startRecording, Return<common::Status>());
    MOCK_METHOD0(stopRecording, Return<void>());
    MOCK_METHOD0(recordingEnabled, Return<bool>());
    MOCK_METHOD2(releaseRecordingFrame, Return<void>(uint32_t, uint32_t));
    MOCK_METHOD3(releaseRecordingFrameHandle, Return<void>(uint32_t, uint32_t, const hidl_handle&));
    MOCK_METHOD1(releaseRecordingFrameHandleBatch,
                 Return<void>(const hidl_vec<v1::VideoFrameMessage>&));
    MOCK_METHOD0(autoFocus, Return<common::Status>());
    MOCK_METHOD0(cancelAutoFocus, Return<common::Status>());
    MOCK_METHOD0(takePicture, Return<common::Status>());
    MOCK_METHOD0(cancelPicture, Return<common::Status>());
    MOCK_METHOD1(setParameters, Return<common::Status>(const hidl_string&));
    MOCK_METHOD1(getParameters, Return<void>(getParameters_cb));
    MOCK_METHOD3(sendCommand, Return<common::Status>(v1::CommandType, int32_t, int32_t));
    MOCK_METHOD0(close, Return<void>());
};

class MockDeviceV3 : public v3::ICameraDevice, public CountedInstance {
  public:
    MOCK_METHOD1(getResourceCost, Return<void>(getResourceCost_cb));
    MOCK_METHOD1(getCameraCharacteristics, Return<void>(getCameraCharacteristics_cb));
    MOCK_METHOD1(setTorchMode, Return<common::Status>(common::TorchMode));
    MOCK_METHOD2(open, Return<void>(const sp<v3::ICameraDeviceCallback>&, open_cb));
    MOCK_METHOD1(dumpState, Return<void>(const hidl_handle&));
};

}  // namespace uncalled

using UncalledDeviceV1 = ::testing::StrictMock<uncalled::MockDeviceV1>;
using UncalledDeviceV3 = ::testing::StrictMock<uncalled::MockDeviceV3>;

}  // namespace orvo::test
