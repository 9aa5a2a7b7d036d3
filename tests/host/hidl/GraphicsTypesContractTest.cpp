// SPDX-License-Identifier: Apache-2.0
// The types of the call contract: pixel formats, buffer uses and colour spaces.

#include <android/hardware/graphics/common/1.0/types.h>
#include <gtest/gtest.h>

#include "tests/host/hidl/ExpectedValues.h"

namespace {

using orvo::test::expectValues;

namespace graphicscommon {

using namespace android::hardware::graphics::common::V1_0;

TEST(GraphicsCommonTypesTest, ValuesOfPixelFormat) {
    using E = PixelFormat;
    expectValues<E>({
            {E::RGBA_8888, 1},      {E::RGBX_8888, 2},     {E::RGB_888, 3},
            {E::RGB_565, 4},        {E::BGRA_8888, 5},     {E::YCBCR_422_SP, 16},
            {E::YCRCB_420_SP, 17},  {E::YCBCR_422_I, 20},  {E::RGBA_FP16, 22},
            {E::RAW16, 32},         {E::BLOB, 33},         {E::IMPLEMENTATION_DEFINED, 34},
            {E::YCBCR_420_888, 35}, {E::RAW_OPAQUE, 36},   {E::RAW10, 37},
            {E::RAW12, 38},         {E::RGBA_1010102, 43}, {E::Y8, 538982489},
            {E::Y16, 540422489},    {E::YV12, 842094169},
    });
}

TEST(GraphicsCommonTypesTest, ValuesOfBufferUsage) {
    using E = BufferUsage;
    expectValues<E>({
            {E::CPU_READ_MASK, 0xf},
            {E::CPU_READ_NEVER, 0x0},
            {E::CPU_READ_RARELY, 0x2},
            {E::CPU_READ_OFTEN, 0x3},
            {E::CPU_WRITE_MASK, 0xf0},
            {E::CPU_WRITE_NEVER, 0x0},
            {E::CPU_WRITE_RARELY, 0x20},
            {E::CPU_WRITE_OFTEN, 0x30},
            {E::GPU_TEXTURE, 0x100},
            {E::GPU_RENDER_TARGET, 0x200},
            {E::COMPOSER_OVERLAY, 0x800},
            {E::COMPOSER_CLIENT_TARGET, 0x1000},
            {E::PROTECTED, 0x4000},
            {E::COMPOSER_CURSOR, 0x8000},
            {E::VIDEO_ENCODER, 0x10000},
            {E::CAMERA_OUTPUT, 0x20000},
            {E::CAMERA_INPUT, 0x40000},
            {E::RENDERSCRIPT, 0x100000},
            {E::VIDEO_DECODER, 0x400000},
            {E::SENSOR_DIRECT_DATA, 0x800000},
            {E::GPU_DATA_BUFFER, 0x1000000},
            {E::VENDOR_MASK, 0xf0000000},
            {E::VENDOR_MASK_HI, 0xffff000000000000},
    });
}

TEST(GraphicsCommonTypesTest, ValuesOfDataspace) {
    using E = Dataspace;
    expectValues<E>({
            {E::UNKNOWN, 0},
            {E::ARBITRARY, 1},
            {E::STANDARD_SHIFT, 16},
            {E::STANDARD_MASK, 4128768},
            {E::STANDARD_UNSPECIFIED, 0},
            {E::STANDARD_BT709, 65536},
            {E::STANDARD_BT601_625, 131072},
            {E::STANDARD_BT601_625_UNADJUSTED, 196608},
            {E::STANDARD_BT601_525, 262144},
            {E::STANDARD_BT601_525_UNADJUSTED, 327680},
            {E::STANDARD_BT2020, 393216},
            {E::STANDARD_BT2020_CONSTANT_LUMINANCE, 458752},
            {E::STANDARD_BT470M, 524288},
            {E::STANDARD_FILM, 589824},
            {E::STANDARD_DCI_P3, 655360},
            {E::STANDARD_ADOBE_RGB, 720896},
            {E::TRANSFER_SHIFT, 22},
            {E::TRANSFER_MASK, 130023424},
            {E::TRANSFER_UNSPECIFIED, 0},
            {E::TRANSFER_LINEAR, 4194304},
            {E::TRANSFER_SRGB, 8388608},
            {E::TRANSFER_SMPTE_170M, 12582912},
            {E::TRANSFER_GAMMA2_2, 16777216},
            {E::TRANSFER_GAMMA2_6, 20971520},
            {E::TRANSFER_GAMMA2_8, 25165824},
            {E::TRANSFER_ST2084, 29360128},
            {E::TRANSFER_HLG, 33554432},
            {E::RANGE_SHIFT, 27},
            {E::RANGE_MASK, 939524096},
            {E::RANGE_UNSPECIFIED, 0},
            {E::RANGE_FULL, 134217728},
            {E::RANGE_LIMITED, 268435456},
            {E::RANGE_EXTENDED, 402653184},
            {E::SRGB_LINEAR, 512},
            {E::V0_SRGB_LINEAR, 138477568},
            {E::V0_SCRGB_LINEAR, 406913024},
            {E::SRGB, 513},
            {E::V0_SRGB, 142671872},
            {E::V0_SCRGB, 411107328},
            {E::JFIF, 257},
            {E::V0_JFIF, 146931712},
            {E::BT601_625, 258},
            {E::V0_BT601_625, 281149440},
            {E::BT601_525, 259},
            {E::V0_BT601_525, 281280512},
            {E::BT709, 260},
            {E::V0_BT709, 281083904},
            {E::DCI_P3_LINEAR, 139067392},
            {E::DCI_P3, 155844608},
            {E::DISPLAY_P3_LINEAR, 139067392},
            {E::DISPLAY_P3, 143261696},
            {E::ADOBE_RGB, 151715840},
            {E::BT2020_LINEAR, 138805248},
            {E::BT2020, 147193856},
            {E::BT2020_PQ, 163971072},
            {E::DEPTH, 4096},
            {E::SENSOR, 4097},
    });
}

}  // namespace graphicscommon

}  // namespace
