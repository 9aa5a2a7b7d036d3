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

class MockDeviceV1 : public v1::ICameraDevice, public CountedInstance {
  public:
    MOCK_METHOD(Return<void>, getResourceCost, (getResourceCost_cb), (override));
    MOCK_METHOD(Return<void>, getCameraInfo, (getCameraInfo_cb), (override));
    MOCK_METHOD(Return<common::Status>, setTorchMode, (common::TorchMode), (override));
    MOCK_METHOD(Return<common::Status>, dumpState, (const hidl_handle&), (override));
    MOCK_METHOD(Return<common::Status>, open, (const sp<v1::ICameraDeviceCallback>&), (override));
    MOCK_METHOD(Return<common::Status>, setPreviewWindow,
                (const sp<v1::ICameraDevicePreviewCallback>&), (override));
    MOCK_METHOD(Return<void>, enableMsgType, (hidl_bitfield<v1::FrameCallbackFlag>), (override));
    MOCK_METHOD(Return<void>, disableMsgType, (hidl_bitfield<v1::FrameCallbackFlag>), (override));
    MOCK_METHOD(Return<bool>, msgTypeEnabled, (hidl_bitfield<v1::FrameCallbackFlag>), (override));
    MOCK_METHOD(Return<common::Status>, startPreview, (), (override));
    MOCK_METHOD(Return<void>, stopPreview, (), (override));
    MOCK_METHOD(Return<bool>, previewEnabled, (), (override));
    MOCK_METHOD(Return<common::Status>, storeMetaDataInBuffers, (bool), (override));
    MOCK_METHOD(Return<common::Status>, startRecording, (), (override));
    MOCK_METHOD(Return<void>, stopRecording, (), (override));
    MOCK_METHOD(Return<bool>, recordingEnabled, (), (override));
    MOCK_METHOD(Return<void>, releaseRecordingFrame, (uint32_t, uint32_t), (override));
    MOCK_METHOD(Return<void>, releaseRecordingFrameHandle, (uint32_t, uint32_t, const hidl_handle&),
                (override));
    MOCK_METHOD(Return<void>, releaseRecordingFrameHandleBatch,
                (const hidl_vec<v1::VideoFrameMessage>&), (override));
    MOCK_METHOD(Return<common::Status>, autoFocus, (), (override));
    MOCK_METHOD(Return<common::Status>, cancelAutoFocus, (), (override));
    MOCK_METHOD(Return<common::Status>, takePicture, (), (override));
    MOCK_METHOD(Return<common::Status>, cancelPicture, (), (override));
    MOCK_METHOD(Return<common::Status>, setParameters, (const hidl_string&), (override));
    MOCK_METHOD(Return<void>, getParameters, (getParameters_cb), (override));
    MOCK_METHOD(Return<common::Status>, sendCommand, (v1::CommandType, int32_t, int32_t),
                (override));
    MOCK_METHOD(Return<void>, close, (), (override));
};

class MockDeviceV3 : public v3::ICameraDevice, public CountedInstance {
  public:
    MOCK_METHOD(Return<void>, getResourceCost, (getResourceCost_cb), (override));
    MOCK_METHOD(Return<void>, getCameraCharacteristics, (getCameraCharacteristics_cb), (override));
    MOCK_METHOD(Return<common::Status>, setTorchMode, (common::TorchMode), (override));
    MOCK_METHOD(Return<void>, open, (const sp<v3::ICameraDeviceCallback>&, open_cb), (override));
    MOCK_METHOD(Return<void>, dumpState, (const hidl_handle&), (override));
};

}  // namespace uncalled

using UncalledDeviceV1 = ::testing::StrictMock<uncalled::MockDeviceV1>;
using UncalledDeviceV3 = ::testing::StrictMock<uncalled::MockDeviceV3>;

}  // namespace orvo::test
