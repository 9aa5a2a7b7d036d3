// SPDX-License-Identifier: Apache-2.0
// Values that the runtime itself writes into parcels.

#include <array>
#include <memory>

#include <gtest/gtest.h>
#include <hidl/HidlTransportSupport.h>

#include "tests/host/hidl/LoopBackBinder.h"

namespace {

using namespace android;
using namespace android::hardware;
using orvo::test::LoopBackBinder;

TEST(StatusInParcelTest, ASuccessIsOneNumber) {
    Parcel parcel;
    ASSERT_EQ(OK, writeToParcel(Status::ok(), &parcel));
    EXPECT_EQ(4u, parcel.dataSize());
    parcel.setDataPosition(0);
    Status status = Status::fromStatusT(BAD_VALUE);
    EXPECT_EQ(OK, readFromParcel(&status, parcel));
    EXPECT_TRUE(status.isOk());
}

TEST(StatusInParcelTest, AnExceptionTakesItsMessageAlong) {
    Parcel parcel;
    const Status sent = Status::fromExceptionCode(Status::EX_ILLEGAL_STATE, "Zustand ungültig");
    ASSERT_EQ(OK, writeToParcel(sent, &parcel));
    parcel.setDataPosition(0);
    Status status;
    EXPECT_EQ(OK, readFromParcel(&status, parcel));
    EXPECT_EQ("Status(EX_ILLEGAL_STATE): 'Zustand ungültig'", status.description());
}

TEST(StatusInParcelTest, AFailedCallIsNotWrittenButReported) {
    Parcel parcel;
    EXPECT_EQ(DEAD_OBJECT, writeToParcel(Status::fromStatusT(DEAD_OBJECT), &parcel));
    EXPECT_EQ(0u, parcel.dataSize());
}

TEST(StatusInParcelTest, AnEmptyReplyIsAFailure) {
    const Parcel parcel;
    Status status;
    EXPECT_EQ(NOT_ENOUGH_DATA, readFromParcel(&status, parcel));
    EXPECT_EQ(NOT_ENOUGH_DATA, status.transactionError());
}

TEST(StatusInParcelTest, AnExceptionWithoutItsMessageIsAFailure) {
    Parcel parcel;
    ASSERT_EQ(OK, parcel.writeInt32(Status::EX_ILLEGAL_STATE));
    parcel.setDataPosition(0);
    Status status;
    EXPECT_EQ(NOT_ENOUGH_DATA, readFromParcel(&status, parcel));
    EXPECT_EQ(NOT_ENOUGH_DATA, status.transactionError());
}

TEST(VersionInParcelTest, AVersionIsOneNumber) {
    Parcel parcel;
    ASSERT_EQ(OK, writeToParcel(make_hidl_version(2, 4), parcel));
    parcel.setDataPosition(0);
    uint32_t number = 0;
    ASSERT_EQ(OK, parcel.readUint32(&number));
    EXPECT_EQ(0x00020004u, number);
    parcel.setDataPosition(0);
    const std::unique_ptr<hidl_version> version(readFromParcel(parcel));
    ASSERT_NE(nullptr, version);
    EXPECT_TRUE(make_hidl_version(2, 4) == *version);
    EXPECT_EQ(nullptr, std::unique_ptr<hidl_version>(readFromParcel(parcel)));
}

/** What reading gives for a hidl_string whose bytes, one more than its length, are `bytes`. */
status_t readTextOf(const std::array<char, 4>& bytes) {
    // The sixteen bytes of a hidl_string, as a process may send them that does not use the class.
    const struct {
        const char* buffer;
        uint32_t length;
        uint32_t owns;
    } text = {bytes.data(), static_cast<uint32_t>(bytes.size() - 1), 0};
    static_assert(sizeof(text) == sizeof(hidl_string), "the same layout");
    Parcel sent;
    size_t parent = 0;
    size_t child = 0;
    EXPECT_EQ(OK, sent.writeBuffer(&text, sizeof(text), &parent));
    EXPECT_EQ(OK, sent.writeEmbeddedBuffer(bytes.data(), bytes.size(), &child, parent, 0));
    Parcel received;
    EXPECT_EQ(OK, LoopBackBinder::carry(sent, &received));
    const void* copy = nullptr;
    EXPECT_EQ(OK, received.readBuffer(sizeof(text), &parent, &copy));
    return readEmbeddedFromParcel(*static_cast<const hidl_string*>(copy), received, parent, 0);
}

TEST(StringInParcelTest, ReceivedTextMustEndWithANul) {
    EXPECT_EQ(OK, readTextOf({'a', 'b', 'c', '\0'}));
    EXPECT_EQ(BAD_VALUE, readTextOf({'a', 'b', 'c', 'd'}));
}

TEST(ThreadPoolDeathTest, JoiningNeedsAConfiguration) {
    EXPECT_DEATH(joinRpcThreadpool(), "call configureRpcThreadpool first");
}

TEST(ThreadPoolDeathTest, NoThreadsCannotIncludeTheCaller) {
    EXPECT_DEATH(configureRpcThreadpool(0, true), "0 threads cannot include the caller");
}

}  // namespace
