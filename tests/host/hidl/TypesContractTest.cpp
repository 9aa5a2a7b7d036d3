// SPDX-License-Identifier: Apache-2.0
// The types of the call contract: values of enums and layout of structures.

#include <stddef.h>

#include <android/hardware/camera/common/1.0/types.h>
#include <android/hardware/camera/device/1.0/types.h>
#include <android/hardware/camera/device/3.2/types.h>
#include <android/hidl/base/1.0/types.h>
#include <android/hidl/manager/1.0/IServiceManager.h>
#include <gtest/gtest.h>

#include "tests/host/hidl/ExpectedValues.h"

namespace {

using orvo::test::expectValues;

namespace hidlbase {

using namespace android::hidl::base::V1_0;

TEST(HidlBaseTypesTest, ValuesOfDebugInfoArchitecture) {
    using E = DebugInfo::Architecture;
    expectValues<E>({
            {E::UNKNOWN, 0},
            {E::IS_64BIT, 1},
            {E::IS_32BIT, 2},
    });
}

static_assert(sizeof(DebugInfo) == 24 && alignof(DebugInfo) == 8, "size");
static_assert(offsetof(DebugInfo, pid) == 0, "offset");
static_assert(offsetof(DebugInfo, ptr) == 8, "offset");
static_assert(offsetof(DebugInfo, arch) == 16, "offset");

}  // namespace hidlbase

namespace hidlmanager {

using namespace android::hidl::manager::V1_0;

TEST(HidlManagerTypesTest, ValuesOfIServiceManagerTransport) {
    using E = IServiceManager::Transport;
    expectValues<E>({
            {E::EMPTY, 0},
            {E::HWBINDER, 1},
            {E::PASSTHROUGH, 2},
    });
}

TEST(HidlManagerTypesTest, ValuesOfIServiceManagerPidConstant) {
    using E = IServiceManager::PidConstant;
    expectValues<E>({
            {E::NO_PID, -1},
    });
}

static_assert(sizeof(IServiceManager::InstanceDebugInfo) == 64 &&
                      alignof(IServiceManager::InstanceDebugInfo) == 8,
              "size");
static_assert(offsetof(IServiceManager::InstanceDebugInfo, interfaceName) == 0, "offset");
static_assert(offsetof(IServiceManager::InstanceDebugInfo, instanceName) == 16, "offset");
static_assert(offsetof(IServiceManager::InstanceDebugInfo, pid) == 32, "offset");
static_assert(offsetof(IServiceManager::InstanceDebugInfo, clientPids) == 40, "offset");
static_assert(offsetof(IServiceManager::InstanceDebugInfo, arch) == 56, "offset");

}  // namespace hidlmanager

namespace cameracommon {

using namespace android::hardware::camera::common::V1_0;

TEST(CameraCommonTypesTest, ValuesOfStatus) {
    using E = Status;
    expectValues<E>({
            {E::OK, 0},
            {E::ILLEGAL_ARGUMENT, 1},
            {E::CAMERA_IN_USE, 2},
            {E::MAX_CAMERAS_IN_USE, 3},
            {E::METHOD_NOT_SUPPORTED, 4},
            {E::OPERATION_NOT_SUPPORTED, 5},
            {E::CAMERA_DISCONNECTED, 6},
            {E::INTERNAL_ERROR, 7},
    });
}

TEST(CameraCommonTypesTest, ValuesOfTorchMode) {
    using E = TorchMode;
    expectValues<E>({
            {E::OFF, 0},
            {E::ON, 1},
    });
}

TEST(CameraCommonTypesTest, ValuesOfCameraMetadataType) {
    using E = CameraMetadataType;
    expectValues<E>({
            {E::BYTE, 0},
            {E::INT32, 1},
            {E::FLOAT, 2},
            {E::INT64, 3},
            {E::DOUBLE, 4},
            {E::RATIONAL, 5},
    });
}

TEST(CameraCommonTypesTest, ValuesOfTagBoundaryId) {
    using E = TagBoundaryId;
    expectValues<E>({
            {E::AOSP, 0},
            {E::VENDOR, 2147483648u},
    });
}

TEST(CameraCommonTypesTest, ValuesOfCameraDeviceStatus) {
    using E = CameraDeviceStatus;
    expectValues<E>({
            {E::NOT_PRESENT, 0},
            {E::PRESENT, 1},
            {E::ENUMERATING, 2},
    });
}

TEST(CameraCommonTypesTest, ValuesOfTorchModeStatus) {
    using E = TorchModeStatus;
    expectValues<E>({
            {E::NOT_AVAILABLE, 0},
            {E::AVAILABLE_OFF, 1},
            {E::AVAILABLE_ON, 2},
    });
}

static_assert(sizeof(VendorTag) == 32 && alignof(VendorTag) == 8, "size");
static_assert(offsetof(VendorTag, tagId) == 0, "offset");
static_assert(offsetof(VendorTag, tagName) == 8, "offset");
static_assert(offsetof(VendorTag, tagType) == 24, "offset");

static_assert(sizeof(VendorTagSection) == 32 && alignof(VendorTagSection) == 8, "size");
static_assert(offsetof(VendorTagSection, sectionName) == 0, "offset");
static_assert(offsetof(VendorTagSection, tags) == 16, "offset");

static_assert(sizeof(CameraResourceCost) == 24 && alignof(CameraResourceCost) == 8, "size");
static_assert(offsetof(CameraResourceCost, resourceCost) == 0, "offset");
static_assert(offsetof(CameraResourceCost, conflictingDevices) == 8, "offset");

}  // namespace cameracommon

namespace cameradevice1 {

using namespace android::hardware::camera::device::V1_0;

TEST(CameraDevice1TypesTest, ValuesOfCameraFacing) {
    using E = CameraFacing;
    expectValues<E>({
            {E::BACK, 0},
            {E::FRONT, 1},
            {E::EXTERNAL, 2},
    });
}

TEST(CameraDevice1TypesTest, ValuesOfFrameCallbackFlag) {
    using E = FrameCallbackFlag;
    expectValues<E>({
            {E::ENABLE_MASK, 1},
            {E::ONE_SHOT_MASK, 2},
            {E::COPY_OUT_MASK, 4},
            {E::NOOP, 0},
            {E::CAMCORDER, 1},
            {E::CAMERA, 5},
            {E::BARCODE_SCANNER, 7},
    });
}

TEST(CameraDevice1TypesTest, ValuesOfCommandType) {
    using E = CommandType;
    expectValues<E>({
            {E::START_SMOOTH_ZOOM, 1},
            {E::STOP_SMOOTH_ZOOM, 2},
            {E::START_FACE_DETECTION, 6},
            {E::STOP_FACE_DETECTION, 7},
            {E::ENABLE_FOCUS_MOVE_MSG, 8},
            {E::SET_VIDEO_FORMAT, 11},
    });
}

TEST(CameraDevice1TypesTest, ValuesOfNotifyCallbackMsg) {
    using E = NotifyCallbackMsg;
    expectValues<E>({
            {E::ERROR, 1},
            {E::SHUTTER, 2},
            {E::FOCUS, 4},
            {E::ZOOM, 8},
            {E::FOCUS_MOVE, 2048},
    });
}

TEST(CameraDevice1TypesTest, ValuesOfDataCallbackMsg) {
    using E = DataCallbackMsg;
    expectValues<E>({
            {E::PREVIEW_FRAME, 16},
            {E::VIDEO_FRAME, 32},
            {E::POSTVIEW_FRAME, 64},
            {E::RAW_IMAGE, 128},
            {E::COMPRESSED_IMAGE, 256},
            {E::RAW_IMAGE_NOTIFY, 512},
            {E::PREVIEW_METADATA, 1024},
    });
}

static_assert(sizeof(CameraInfo) == 8 && alignof(CameraInfo) == 4, "size");
static_assert(offsetof(CameraInfo, facing) == 0, "offset");
static_assert(offsetof(CameraInfo, orientation) == 4, "offset");

static_assert(sizeof(CameraFace) == 48 && alignof(CameraFace) == 4, "size");
static_assert(offsetof(CameraFace, rect) == 0, "offset");
static_assert(offsetof(CameraFace, score) == 16, "offset");
static_assert(offsetof(CameraFace, id) == 20, "offset");
static_assert(offsetof(CameraFace, leftEye) == 24, "offset");
static_assert(offsetof(CameraFace, rightEye) == 32, "offset");
static_assert(offsetof(CameraFace, mouth) == 40, "offset");

static_assert(sizeof(CameraFrameMetadata) == 16 && alignof(CameraFrameMetadata) == 8, "size");
static_assert(offsetof(CameraFrameMetadata, faces) == 0, "offset");

static_assert(sizeof(HandleTimestampMessage) == 32 && alignof(HandleTimestampMessage) == 8, "size");
static_assert(offsetof(HandleTimestampMessage, frameData) == 0, "offset");
static_assert(offsetof(HandleTimestampMessage, data) == 16, "offset");
static_assert(offsetof(HandleTimestampMessage, bufferIndex) == 20, "offset");
static_assert(offsetof(HandleTimestampMessage, timestamp) == 24, "offset");

static_assert(sizeof(VideoFrameMessage) == 24 && alignof(VideoFrameMessage) == 8, "size");
static_assert(offsetof(VideoFrameMessage, frameData) == 0, "offset");
static_assert(offsetof(VideoFrameMessage, data) == 16, "offset");
static_assert(offsetof(VideoFrameMessage, bufferIndex) == 20, "offset");

}  // namespace cameradevice1

namespace cameradevice3 {

using namespace android::hardware::camera::device::V3_2;

TEST(CameraDevice3TypesTest, ValuesOfStreamType) {
    using E = StreamType;
    expectValues<E>({
            {E::OUTPUT, 0},
            {E::INPUT, 1},
    });
}

TEST(CameraDevice3TypesTest, ValuesOfStreamRotation) {
    using E = StreamRotation;
    expectValues<E>({
            {E::ROTATION_0, 0},
            {E::ROTATION_90, 1},
            {E::ROTATION_180, 2},
            {E::ROTATION_270, 3},
    });
}

TEST(CameraDevice3TypesTest, ValuesOfStreamConfigurationMode) {
    using E = StreamConfigurationMode;
    expectValues<E>({
            {E::NORMAL_MODE, 0},
            {E::CONSTRAINED_HIGH_SPEED_MODE, 1},
            {E::VENDOR_MODE_0, 32768},
            {E::VENDOR_MODE_1, 32769},
            {E::VENDOR_MODE_2, 32770},
            {E::VENDOR_MODE_3, 32771},
            {E::VENDOR_MODE_4, 32772},
            {E::VENDOR_MODE_5, 32773},
            {E::VENDOR_MODE_6, 32774},
            {E::VENDOR_MODE_7, 32775},
    });
}

TEST(CameraDevice3TypesTest, ValuesOfBufferStatus) {
    using E = BufferStatus;
    expectValues<E>({
            {E::OK, 0},
            {E::ERROR, 1},
    });
}

TEST(CameraDevice3TypesTest, ValuesOfCameraBlobId) {
    using E = CameraBlobId;
    expectValues<E>({
            {E::JPEG, 255},
    });
}

TEST(CameraDevice3TypesTest, ValuesOfMsgType) {
    using E = MsgType;
    expectValues<E>({
            {E::ERROR, 1},
            {E::SHUTTER, 2},
    });
}

TEST(CameraDevice3TypesTest, ValuesOfErrorCode) {
    using E = ErrorCode;
    expectValues<E>({
            {E::ERROR_DEVICE, 1},
            {E::ERROR_REQUEST, 2},
            {E::ERROR_RESULT, 3},
            {E::ERROR_BUFFER, 4},
    });
}

TEST(CameraDevice3TypesTest, ValuesOfRequestTemplate) {
    using E = RequestTemplate;
    expectValues<E>({
            {E::PREVIEW, 1},
            {E::STILL_CAPTURE, 2},
            {E::VIDEO_RECORD, 3},
            {E::VIDEO_SNAPSHOT, 4},
            {E::ZERO_SHUTTER_LAG, 5},
            {E::MANUAL, 6},
            {E::VENDOR_TEMPLATE_START, 1073741824},
    });
}

static_assert(sizeof(Stream) == 40 && alignof(Stream) == 8, "size");
static_assert(offsetof(Stream, id) == 0, "offset");
static_assert(offsetof(Stream, streamType) == 4, "offset");
static_assert(offsetof(Stream, width) == 8, "offset");
static_assert(offsetof(Stream, height) == 12, "offset");
static_assert(offsetof(Stream, format) == 16, "offset");
static_assert(offsetof(Stream, usage) == 24, "offset");
static_assert(offsetof(Stream, dataSpace) == 32, "offset");
static_assert(offsetof(Stream, rotation) == 36, "offset");

static_assert(sizeof(StreamConfiguration) == 24 && alignof(StreamConfiguration) == 8, "size");
static_assert(offsetof(StreamConfiguration, streams) == 0, "offset");
static_assert(offsetof(StreamConfiguration, operationMode) == 16, "offset");

static_assert(sizeof(HalStream) == 32 && alignof(HalStream) == 8, "size");
static_assert(offsetof(HalStream, id) == 0, "offset");
static_assert(offsetof(HalStream, overrideFormat) == 4, "offset");
static_assert(offsetof(HalStream, producerUsage) == 8, "offset");
static_assert(offsetof(HalStream, consumerUsage) == 16, "offset");
static_assert(offsetof(HalStream, maxBuffers) == 24, "offset");

static_assert(sizeof(HalStreamConfiguration) == 16 && alignof(HalStreamConfiguration) == 8, "size");
static_assert(offsetof(HalStreamConfiguration, streams) == 0, "offset");

static_assert(sizeof(StreamBuffer) == 72 && alignof(StreamBuffer) == 8, "size");
static_assert(offsetof(StreamBuffer, streamId) == 0, "offset");
static_assert(offsetof(StreamBuffer, bufferId) == 8, "offset");
static_assert(offsetof(StreamBuffer, buffer) == 16, "offset");
static_assert(offsetof(StreamBuffer, status) == 32, "offset");
static_assert(offsetof(StreamBuffer, acquireFence) == 40, "offset");
static_assert(offsetof(StreamBuffer, releaseFence) == 56, "offset");

static_assert(sizeof(CameraBlob) == 8 && alignof(CameraBlob) == 4, "size");
static_assert(offsetof(CameraBlob, blobId) == 0, "offset");
static_assert(offsetof(CameraBlob, blobSize) == 4, "offset");

static_assert(sizeof(ErrorMsg) == 12 && alignof(ErrorMsg) == 4, "size");
static_assert(offsetof(ErrorMsg, frameNumber) == 0, "offset");
static_assert(offsetof(ErrorMsg, errorStreamId) == 4, "offset");
static_assert(offsetof(ErrorMsg, errorCode) == 8, "offset");

static_assert(sizeof(ShutterMsg) == 16 && alignof(ShutterMsg) == 8, "size");
static_assert(offsetof(ShutterMsg, frameNumber) == 0, "offset");
static_assert(offsetof(ShutterMsg, timestamp) == 8, "offset");

static_assert(sizeof(NotifyMsg) == 24 && alignof(NotifyMsg) == 8, "size");
static_assert(offsetof(NotifyMsg, type) == 0, "offset");
static_assert(offsetof(NotifyMsg, msg) == 8, "offset");

static_assert(sizeof(CaptureRequest) == 120 && alignof(CaptureRequest) == 8, "size");
static_assert(offsetof(CaptureRequest, frameNumber) == 0, "offset");
static_assert(offsetof(CaptureRequest, fmqSettingsSize) == 8, "offset");
static_assert(offsetof(CaptureRequest, settings) == 16, "offset");
static_assert(offsetof(CaptureRequest, inputBuffer) == 32, "offset");
static_assert(offsetof(CaptureRequest, outputBuffers) == 104, "offset");

static_assert(sizeof(CaptureResult) == 128 && alignof(CaptureResult) == 8, "size");
static_assert(offsetof(CaptureResult, frameNumber) == 0, "offset");
static_assert(offsetof(CaptureResult, fmqResultSize) == 8, "offset");
static_assert(offsetof(CaptureResult, result) == 16, "offset");
static_assert(offsetof(CaptureResult, outputBuffers) == 32, "offset");
static_assert(offsetof(CaptureResult, inputBuffer) == 48, "offset");
static_assert(offsetof(CaptureResult, partialResult) == 120, "offset");

static_assert(sizeof(BufferCache) == 16 && alignof(BufferCache) == 8, "size");
static_assert(offsetof(BufferCache, streamId) == 0, "offset");
static_assert(offsetof(BufferCache, bufferId) == 8, "offset");

}  // namespace cameradevice3

}  // namespace
