// SPDX-License-Identifier: Apache-2.0
// What arrives from a peer is used only if all of it fits together.

#include "ParcelContents.h"

#include <string.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace {

using namespace android;
using namespace android::hardware::transport;

ParcelObject received(size_t position, const std::string& bytes) {
    ParcelObject object;
    object.kind = ParcelObject::Kind::BUFFER;
    object.position = position;
    object.length = bytes.size();
    object.storage = ParcelContents::copyOf(bytes.data(), bytes.size());
    object.buffer = object.storage.get();
    return object;
}

ParcelObject embedded(size_t position, const std::string& bytes, size_t parent, size_t offset) {
    ParcelObject object = received(position, bytes);
    object.embedding = Embedding{parent, offset};
    return object;
}

uint64_t wordAt(const ParcelObject& object, size_t offset) {
    uint64_t word;
    memcpy(&word, static_cast<const uint8_t*>(object.buffer) + offset, sizeof(word));
    return word;
}

struct ReceivedParcelTest : testing::Test {
    ParcelContents contents;

    ReceivedParcelTest() { contents.flat.resize(16); }
    void add(ParcelObject object) { contents.objects.push_back(std::move(object)); }
};

TEST_F(ReceivedParcelTest, ParentsPointToTheCopiesOfTheirChildren) {
    add(received(0, std::string(16, '\xff')));
    add(embedded(4, "child", 0, 8));
    ASSERT_TRUE(contents.relocate());
    EXPECT_EQ(reinterpret_cast<uintptr_t>(contents.objects[1].buffer),
              wordAt(contents.objects[0], 8));
    EXPECT_EQ(UINT64_MAX, wordAt(contents.objects[0], 0)) << "the rest is untouched";
}

TEST_F(ReceivedParcelTest, ANullChildMakesItsParentPointNowhere) {
    add(received(0, std::string(8, '\xff')));
    ParcelObject null;
    null.position = 4;
    null.embedding = Embedding{0, 0};
    add(std::move(null));
    ASSERT_TRUE(contents.relocate());
    EXPECT_EQ(0u, wordAt(contents.objects[0], 0));
}

TEST_F(ReceivedParcelTest, AParentThatComesLaterIsRefused) {
    add(embedded(0, "child", 1, 0));
    add(received(4, std::string(8, 'p')));
    EXPECT_FALSE(contents.relocate());
}

TEST_F(ReceivedParcelTest, AnObjectThatIsItsOwnParentIsRefused) {
    add(embedded(0, std::string(8, 'p'), 0, 0));
    EXPECT_FALSE(contents.relocate());
}

TEST_F(ReceivedParcelTest, AnOffsetOutsideTheParentIsRefused) {
    for (size_t offset : {size_t{1}, size_t{8}, SIZE_MAX, SIZE_MAX - 7}) {
        contents.objects.clear();
        add(received(0, std::string(8, 'p')));
        add(embedded(4, "child", 0, offset));
        EXPECT_FALSE(contents.relocate()) << offset;
    }
}

TEST_F(ReceivedParcelTest, AParentTooShortForAPointerIsRefused) {
    add(received(0, "short"));
    add(embedded(4, "child", 0, 0));
    EXPECT_FALSE(contents.relocate());
}

TEST_F(ReceivedParcelTest, AParentThatIsNoBufferIsRefused) {
    ParcelObject handle;
    handle.kind = ParcelObject::Kind::HANDLE;
    add(std::move(handle));
    add(embedded(4, "child", 0, 0));
    EXPECT_FALSE(contents.relocate());
}

TEST_F(ReceivedParcelTest, AnEmbeddedBinderIsRefused) {
    add(received(0, std::string(8, 'p')));
    ParcelObject binder;
    binder.kind = ParcelObject::Kind::BINDER;
    binder.position = 4;
    binder.embedding = Embedding{0, 0};
    add(std::move(binder));
    EXPECT_FALSE(contents.relocate());
}

TEST_F(ReceivedParcelTest, TwoObjectsInOnePlaceAreRefused) {
    add(received(4, "one"));
    add(received(4, "two"));
    EXPECT_FALSE(contents.relocate());
}

TEST_F(ReceivedParcelTest, PlacesOutsideTheFlatBytesAreRefused) {
    for (size_t position : {size_t{2}, size_t{13}, size_t{16}, SIZE_MAX, SIZE_MAX - 3}) {
        contents.objects.clear();
        add(received(position, "bytes"));
        EXPECT_FALSE(contents.relocate()) << position;
    }
    contents.flat.clear();
    contents.objects.clear();
    add(received(0, "bytes"));
    EXPECT_FALSE(contents.relocate()) << "there are no flat bytes at all";
}

TEST_F(ReceivedParcelTest, SealingCopiesBuffersAndDuplicatesDescriptors) {
    std::string bytes = "before";
    int ends[2];
    ASSERT_EQ(0, pipe(ends));
    native_handle_t* handle = native_handle_create(1, 1);
    handle->data[0] = ends[0];
    handle->data[1] = 77;
    ParcelContents borrowed;
    ParcelObject buffer;
    buffer.kind = ParcelObject::Kind::BUFFER;
    buffer.buffer = bytes.data();
    buffer.length = bytes.size();
    ASSERT_EQ(OK, borrowed.append(std::move(buffer), nullptr));
    ParcelObject borrowedHandle;
    borrowedHandle.kind = ParcelObject::Kind::HANDLE;
    borrowedHandle.handle = handle;
    ASSERT_EQ(OK, borrowed.append(std::move(borrowedHandle), nullptr));

    status_t status = UNKNOWN_ERROR;
    OwnedContents sealed = borrowed.seal(&status);
    ASSERT_EQ(OK, status);
    bytes = "after!";
    close(ends[0]);
    EXPECT_EQ("before", std::string(static_cast<const char*>(sealed->objects[0].buffer), 6));
    const native_handle_t* copy = sealed->objects[1].handle;
    EXPECT_EQ(77, copy->data[1]);
    ASSERT_EQ(3, write(ends[1], "abc", 3));
    char read3[3];
    EXPECT_EQ(3, read(copy->data[0], read3, 3)) << "the duplicate still works";
    const int duplicate = copy->data[0];
    sealed = nullptr;
    EXPECT_EQ(-1, write(duplicate, "x", 1)) << "and is closed with the copy";
    close(ends[1]);
    native_handle_delete(handle);
}

TEST_F(ReceivedParcelTest, MoreThanOneCallCanCarryIsNotSealed) {
    std::string large(ParcelContents::kMaxPayload, 'x');
    ParcelContents borrowed;
    ParcelObject buffer;
    buffer.kind = ParcelObject::Kind::BUFFER;
    buffer.buffer = large.data();
    buffer.length = large.size();
    ASSERT_EQ(OK, borrowed.append(std::move(buffer), nullptr));
    status_t status = OK;
    EXPECT_EQ(nullptr, borrowed.seal(&status));
    EXPECT_EQ(FAILED_TRANSACTION, status);
}

TEST_F(ReceivedParcelTest, MoreDescriptorsThanTheKernelPassesAreNotSealed) {
    native_handle_t* handle = native_handle_create(ParcelContents::kMaxDescriptors + 1, 0);
    for (int i = 0; i < handle->numFds; i++) handle->data[i] = STDIN_FILENO;
    ParcelContents borrowed;
    ParcelObject object;
    object.kind = ParcelObject::Kind::HANDLE;
    object.handle = handle;
    ASSERT_EQ(OK, borrowed.append(std::move(object), nullptr));
    status_t status = OK;
    EXPECT_EQ(nullptr, borrowed.seal(&status));
    EXPECT_EQ(FAILED_TRANSACTION, status);
    native_handle_delete(handle);
}

}  // namespace
