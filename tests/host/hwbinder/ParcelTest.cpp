// SPDX-License-Identifier: Apache-2.0
// What is written into a parcel is what is read from it, and nothing else can be.

#include <hwbinder/Parcel.h>

#include <gtest/gtest.h>

namespace {

using namespace android;
using android::hardware::BHwBinder;
using android::hardware::IBinder;
using android::hardware::Parcel;

class Object : public BHwBinder {};

TEST(ParcelTest, ValuesComeBackInTheOrderInWhichTheyWereWritten) {
    Parcel parcel;
    parcel.writeInt8(-1);
    parcel.writeUint8(200);
    parcel.writeInt16(-300);
    parcel.writeUint16(60000);
    parcel.writeInt32(-70000);
    parcel.writeUint32(4000000000u);
    parcel.writeInt64(INT64_MIN);
    parcel.writeUint64(UINT64_MAX);
    parcel.writeFloat(1.5f);
    parcel.writeDouble(-2.25);
    parcel.writeBool(true);
    parcel.setDataPosition(0);

    int8_t i8;
    uint8_t u8;
    int16_t i16;
    uint16_t u16;
    int32_t i32;
    uint32_t u32;
    int64_t i64;
    uint64_t u64;
    float f;
    double d;
    bool b;
    ASSERT_EQ(OK, parcel.readInt8(&i8));
    ASSERT_EQ(OK, parcel.readUint8(&u8));
    ASSERT_EQ(OK, parcel.readInt16(&i16));
    ASSERT_EQ(OK, parcel.readUint16(&u16));
    ASSERT_EQ(OK, parcel.readInt32(&i32));
    ASSERT_EQ(OK, parcel.readUint32(&u32));
    ASSERT_EQ(OK, parcel.readInt64(&i64));
    ASSERT_EQ(OK, parcel.readUint64(&u64));
    ASSERT_EQ(OK, parcel.readFloat(&f));
    ASSERT_EQ(OK, parcel.readDouble(&d));
    ASSERT_EQ(OK, parcel.readBool(&b));
    EXPECT_EQ(-1, i8);
    EXPECT_EQ(200, u8);
    EXPECT_EQ(-300, i16);
    EXPECT_EQ(60000, u16);
    EXPECT_EQ(-70000, i32);
    EXPECT_EQ(4000000000u, u32);
    EXPECT_EQ(INT64_MIN, i64);
    EXPECT_EQ(UINT64_MAX, u64);
    EXPECT_EQ(1.5f, f);
    EXPECT_EQ(-2.25, d);
    EXPECT_TRUE(b);
    EXPECT_EQ(0u, parcel.dataAvail());
}

TEST(ParcelTest, FlatValuesArePaddedToFourBytesAndNotToEight) {
    Parcel parcel;
    parcel.writeUint8(1);
    EXPECT_EQ(4u, parcel.dataSize());
    parcel.writeInt64(1);
    EXPECT_EQ(12u, parcel.dataSize());
    parcel.writeInterfaceToken("abcd");
    EXPECT_EQ(20u, parcel.dataSize()) << "five bytes with the NUL";
}

TEST(ParcelTest, EveryByteButZeroIsTrue) {
    Parcel parcel;
    for (const uint8_t byte : {0, 1, 208}) parcel.writeUint8(byte);
    parcel.setDataPosition(0);
    for (const bool expected : {false, true, true}) {
        bool flag = !expected;
        ASSERT_EQ(OK, parcel.readBool(&flag));
        EXPECT_EQ(expected, flag);
    }
}

TEST(ParcelTest, ReadingPastTheEndGivesNotEnoughData) {
    Parcel parcel;
    parcel.writeInt32(1);
    parcel.setDataPosition(0);
    int64_t value;
    EXPECT_EQ(NOT_ENOUGH_DATA, parcel.readInt64(&value));
    int32_t small;
    EXPECT_EQ(OK, parcel.readInt32(&small));
    EXPECT_EQ(NOT_ENOUGH_DATA, parcel.readInt32(&small));
}

TEST(ParcelTest, AnEmptyParcelHasNoStringAndNothingToRead) {
    const Parcel parcel;
    EXPECT_EQ(nullptr, parcel.readCString());
    EXPECT_FALSE(parcel.enforceInterface(""));
    char byte;
    EXPECT_EQ(OK, parcel.read(&byte, 0));
    EXPECT_EQ(NOT_ENOUGH_DATA, parcel.read(&byte, 1));
}

TEST(ParcelTest, OnlyTheSameInterfaceTokenIsAccepted) {
    Parcel parcel;
    parcel.writeInterfaceToken("a.b@1.0::IFoo");
    parcel.setDataPosition(0);
    EXPECT_FALSE(parcel.enforceInterface("a.b@1.0::IFo"));
    parcel.setDataPosition(0);
    EXPECT_TRUE(parcel.enforceInterface("a.b@1.0::IFoo"));
    EXPECT_FALSE(parcel.enforceInterface("a.b@1.0::IFoo")) << "nothing is left";
}

TEST(ParcelTest, ATokenWithoutAnEndIsRefused) {
    Parcel parcel;
    parcel.write("abcdefgh", 8);
    parcel.setDataPosition(0);
    EXPECT_EQ(nullptr, parcel.readCString());
    EXPECT_FALSE(parcel.enforceInterface("abcdefgh"));
}

TEST(ParcelTest, String16ComesBackAndALengthBeyondTheEndDoesNot) {
    Parcel parcel;
    parcel.writeString16(String16("camera"));
    parcel.setDataPosition(0);
    String16 text;
    ASSERT_EQ(OK, parcel.readString16(&text));
    EXPECT_EQ(String16("camera"), text);

    Parcel lying;
    lying.writeUint32(0xffffffffu);
    lying.writeInt32(0);
    lying.setDataPosition(0);
    EXPECT_EQ(NOT_ENOUGH_DATA, lying.readString16(&text));
}

TEST(ParcelTest, BuffersAreNumberedFromZeroAndReadWithTheLengthThatWasWritten) {
    const char first[] = "first";
    const uint64_t second = 2;
    Parcel parcel;
    size_t number = 99;
    ASSERT_EQ(OK, parcel.writeBuffer(first, sizeof(first), &number));
    EXPECT_EQ(0u, number);
    ASSERT_EQ(OK, parcel.writeBuffer(&second, sizeof(second), &number));
    EXPECT_EQ(1u, number);

    const void* out;
    parcel.setDataPosition(0);
    ASSERT_EQ(OK, parcel.readBuffer(sizeof(first), &number, &out));
    EXPECT_STREQ("first", static_cast<const char*>(out));
    EXPECT_EQ(BAD_VALUE, parcel.readBuffer(sizeof(second) - 1, &number, &out));
    EXPECT_EQ(nullptr, out);
}

TEST(ParcelTest, AnEmbeddedBufferIsReadOnlyWithItsOwnParentAndOffset) {
    struct {
        const void* pointer;
        uint64_t other;
    } parent = {};
    const char child[] = "child";
    parent.pointer = child;
    Parcel parcel;
    size_t parentNumber;
    size_t childNumber;
    ASSERT_EQ(OK, parcel.writeBuffer(&parent, sizeof(parent), &parentNumber));
    ASSERT_EQ(OK, parcel.writeEmbeddedBuffer(child, sizeof(child), &childNumber, parentNumber, 0));

    const size_t place = sizeof(uint32_t);
    const void* out;
    parcel.setDataPosition(place);
    EXPECT_EQ(BAD_VALUE,
              parcel.readEmbeddedBuffer(sizeof(child), &childNumber, parentNumber, 8, &out));
    parcel.setDataPosition(place);
    EXPECT_EQ(BAD_VALUE, parcel.readBuffer(sizeof(child), &childNumber, &out)) << "it is embedded";
    parcel.setDataPosition(place);
    ASSERT_EQ(OK, parcel.readEmbeddedBuffer(sizeof(child), &childNumber, parentNumber, 0, &out));
    EXPECT_STREQ("child", static_cast<const char*>(out));
    parent.pointer = nullptr;
    parcel.setDataPosition(place);
    EXPECT_EQ(BAD_VALUE,
              parcel.readEmbeddedBuffer(sizeof(child), &childNumber, parentNumber, 0, &out))
            << "the parent points elsewhere";
}

TEST(ParcelTest, EmbeddingNeedsEightBytesOfABuffer) {
    const uint64_t words[2] = {};
    Parcel parcel;
    size_t number;
    ASSERT_EQ(OK, parcel.writeBuffer(words, sizeof(words), &number));
    EXPECT_EQ(OK, parcel.writeEmbeddedBuffer(nullptr, 0, nullptr, number, 8));
    EXPECT_EQ(BAD_VALUE, parcel.writeEmbeddedBuffer(words, 8, nullptr, number, 9));
    EXPECT_EQ(BAD_VALUE, parcel.writeEmbeddedBuffer(words, 8, nullptr, number, SIZE_MAX));
    EXPECT_EQ(BAD_VALUE, parcel.writeEmbeddedBuffer(words, 8, nullptr, 7, 0)) << "no such buffer";
    EXPECT_EQ(BAD_VALUE, parcel.writeEmbeddedNativeHandle(nullptr, 7, 0));
    EXPECT_EQ(8u, parcel.dataSize()) << "what was refused left no trace";
}

TEST(ParcelTest, NullBuffersAreNullOnlyForWhoAllowsThem) {
    const uint64_t parent = 0;
    Parcel parcel;
    size_t number;
    ASSERT_EQ(OK, parcel.writeBuffer(&parent, sizeof(parent), &number));
    ASSERT_EQ(OK, parcel.writeEmbeddedBuffer(nullptr, 0, nullptr, number, 0));

    const void* out = &parent;
    parcel.setDataPosition(4);
    EXPECT_EQ(OK, parcel.readNullableEmbeddedBuffer(0, nullptr, number, 0, &out));
    EXPECT_EQ(nullptr, out);
    parcel.setDataPosition(4);
    EXPECT_EQ(UNEXPECTED_NULL, parcel.readEmbeddedBuffer(0, nullptr, number, 0, &out));
    parcel.setDataPosition(4);
    EXPECT_EQ(BAD_VALUE, parcel.readNullableEmbeddedBuffer(16, nullptr, number, 0, &out))
            << "sixteen bytes behind a null pointer";
}

TEST(ParcelTest, BindersComeBackAsThemselvesAndNullAsNull) {
    sp<IBinder> object = new Object;
    Parcel parcel;
    parcel.writeStrongBinder(object);
    parcel.writeStrongBinder(nullptr);
    parcel.writeInt32(5);
    parcel.setDataPosition(0);
    sp<IBinder> read;
    ASSERT_EQ(OK, parcel.readNullableStrongBinder(&read));
    EXPECT_EQ(object, read);
    ASSERT_EQ(OK, parcel.readNullableStrongBinder(&read));
    EXPECT_EQ(nullptr, read);
    EXPECT_NE(OK, parcel.readNullableStrongBinder(&read)) << "a value is not a binder";
    parcel.setDataPosition(4);
    EXPECT_EQ(UNEXPECTED_NULL, parcel.readStrongBinder(&read));
}

TEST(ParcelTest, AParcelKeepsItsBindersAlive) {
    sp<IBinder> object = new Object;
    wp<IBinder> watched = object;
    {
        Parcel parcel;
        parcel.writeStrongBinder(object);
        object = nullptr;
        EXPECT_NE(nullptr, watched.promote());
    }
    EXPECT_EQ(nullptr, watched.promote());
}

TEST(ParcelTest, HandlesOfTheWrongShapeAreNotWritten) {
    native_handle_t* handle = native_handle_create(0, 1);
    Parcel parcel;
    EXPECT_EQ(OK, parcel.writeNativeHandleNoDup(handle));
    handle->version = 3;
    EXPECT_EQ(BAD_VALUE, parcel.writeNativeHandleNoDup(handle));
    handle->version = sizeof(native_handle_t);
    handle->numFds = -1;
    EXPECT_EQ(BAD_VALUE, parcel.writeNativeHandleNoDup(handle));
    handle->numFds = 0;
    native_handle_delete(handle);
}

TEST(ParcelTest, ANullHandleIsReadOnlyByWhoAllowsIt) {
    Parcel parcel;
    parcel.writeNativeHandleNoDup(nullptr);
    const native_handle_t* handle;
    parcel.setDataPosition(0);
    EXPECT_EQ(OK, parcel.readNullableNativeHandleNoDup(&handle));
    EXPECT_EQ(nullptr, handle);
    parcel.setDataPosition(0);
    EXPECT_EQ(UNEXPECTED_NULL, parcel.readNativeHandleNoDup(&handle));
}

TEST(ParcelTest, TransactOnALocalObjectRewindsArgumentsAndReply) {
    class Adder : public BHwBinder {
        status_t onTransact(uint32_t, const Parcel& data, Parcel* reply, uint32_t,
                            TransactCallback callback) override {
            int32_t value;
            if (data.readInt32(&value) != OK) return BAD_VALUE;
            reply->writeInt32(value + 1);
            callback(*reply);
            return OK;
        }
    };
    sp<IBinder> adder = new Adder;
    Parcel data;
    Parcel reply;
    data.writeInt32(41);
    int32_t seen = 0;
    ASSERT_EQ(OK, adder->transact(1, data, &reply, 0, [&seen](Parcel& p) { p.readInt32(&seen); }));
    EXPECT_EQ(42, seen);
}

TEST(ParcelTest, ALocalObjectNeverDiesForItsOwnProcess) {
    class Recipient : public IBinder::DeathRecipient {
        void binderDied(const wp<IBinder>&) override {}
    };
    sp<IBinder> object = new Object;
    sp<Recipient> recipient = new Recipient;
    EXPECT_EQ(INVALID_OPERATION, object->linkToDeath(recipient));
    EXPECT_EQ(INVALID_OPERATION, object->unlinkToDeath(recipient));
    Parcel data;
    Parcel reply;
    EXPECT_EQ(UNKNOWN_TRANSACTION, object->transact(7, data, &reply));
    EXPECT_EQ(object.get(), object->localBinder());
    EXPECT_EQ(nullptr, object->remoteBinder());
}

}  // namespace
