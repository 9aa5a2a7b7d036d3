// SPDX-License-Identifier: Apache-2.0
// hidl_handle, hidl_memory and queue descriptors: who closes what.

#include <fcntl.h>
#include <sys/resource.h>

#include <utility>

#include <gtest/gtest.h>
#include <hidl/HidlSupport.h>
#include <hidl/MQDescriptor.h>

namespace {

using android::hardware::GrantorDescriptor;
using android::hardware::hidl_handle;
using android::hardware::hidl_memory;
using android::hardware::MQDescriptorSync;

/** A native handle with one open descriptor and one number. */
native_handle_t* openHandle() {
    native_handle_t* handle = native_handle_create(1, 1);
    handle->data[0] = open("/dev/null", O_RDONLY | O_CLOEXEC);
    handle->data[1] = 42;
    return handle;
}

bool isOpen(int fd) {
    return fcntl(fd, F_GETFD) != -1;
}

/** Closes and frees a handle that nobody else does. */
class HandleCloser {
  public:
    explicit HandleCloser(native_handle_t* handle) : mHandle(handle) {}
    ~HandleCloser() {
        native_handle_close(mHandle);
        native_handle_delete(mHandle);
    }
    int fd() const { return mHandle->data[0]; }

  private:
    native_handle_t* const mHandle;
};

TEST(HidlHandleTest, AnEmptyHandleIsNull) {
    const hidl_handle handle;
    EXPECT_EQ(nullptr, handle.getNativeHandle());
    const hidl_handle copy(handle);
    EXPECT_EQ(nullptr, copy.getNativeHandle());
}

TEST(HidlHandleTest, AGivenHandleStaysTheGivers) {
    native_handle_t* native = openHandle();
    const HandleCloser closer(native);
    {
        const hidl_handle constructed(native);
        hidl_handle assigned;
        assigned = native;
        hidl_handle set;
        set.setTo(native);
        EXPECT_EQ(native, constructed.getNativeHandle());
        EXPECT_EQ(native, static_cast<const native_handle_t*>(assigned));
        EXPECT_EQ(42, set->data[1]);
    }
    EXPECT_TRUE(isOpen(closer.fd()));
}

TEST(HidlHandleTest, AnOwnedHandleIsClosedWithItsOwner) {
    native_handle_t* native = openHandle();
    const int fd = native->data[0];
    {
        hidl_handle handle;
        handle.setTo(native, true);
        EXPECT_TRUE(isOpen(fd));
    }
    EXPECT_FALSE(isOpen(fd));
}

TEST(HidlHandleTest, AnOwnedHandleIsClosedWhenItIsReplaced) {
    hidl_handle handle;
    native_handle_t* first = openHandle();
    const int fd = first->data[0];
    handle.setTo(first, true);
    handle = static_cast<const native_handle_t*>(nullptr);
    EXPECT_FALSE(isOpen(fd));
}

TEST(HidlHandleTest, SettingTheSameHandleOnlyChangesItsOwner) {
    native_handle_t* native = openHandle();
    const HandleCloser closer(native);
    {
        hidl_handle handle;
        handle.setTo(native, true);
        handle.setTo(native, false);
    }
    EXPECT_TRUE(isOpen(closer.fd()));
}

TEST(HidlHandleTest, ACopyOwnsDuplicates) {
    native_handle_t* native = openHandle();
    const HandleCloser closer(native);
    int duplicate;
    {
        const hidl_handle original(native);
        const hidl_handle copy(original);
        hidl_handle assigned;
        assigned = original;
        duplicate = copy->data[0];
        EXPECT_NE(closer.fd(), duplicate);
        EXPECT_TRUE(isOpen(duplicate));
        EXPECT_EQ(42, copy->data[1]);
        EXPECT_NE(duplicate, assigned->data[0]);
        const hidl_handle& alias = assigned;
        assigned = alias;
        EXPECT_TRUE(isOpen(assigned->data[0]));
    }
    EXPECT_FALSE(isOpen(duplicate));
    EXPECT_TRUE(isOpen(closer.fd()));
}

TEST(HidlHandleTest, MovingHandsTheHandleOver) {
    native_handle_t* native = openHandle();
    const int fd = native->data[0];
    hidl_handle source;
    source.setTo(native, true);
    {
        hidl_handle target(std::move(source));
        EXPECT_EQ(nullptr, source.getNativeHandle());
        hidl_handle assigned;
        assigned = std::move(target);
        EXPECT_EQ(nullptr, target.getNativeHandle());
        EXPECT_EQ(native, assigned.getNativeHandle());
        EXPECT_TRUE(isOpen(fd));
    }
    EXPECT_FALSE(isOpen(fd));
}

TEST(HidlHandleDeathTest, FailingToCloneEndsTheProcess) {
    native_handle_t* native = openHandle();
    const HandleCloser closer(native);
    const hidl_handle handle(native);
    const struct rlimit noneLeft = {3, 3};
    EXPECT_DEATH(
            {
                setrlimit(RLIMIT_NOFILE, &noneLeft);
                hidl_handle copy(handle);
            },
            "Cannot clone");
}

TEST(HidlMemoryTest, MemoryHasANameASizeAndAHandle) {
    native_handle_t* native = openHandle();
    const HandleCloser closer(native);
    const hidl_memory memory("ashmem", native, 4096);
    EXPECT_EQ("ashmem", memory.name());
    EXPECT_EQ(4096u, memory.size());
    EXPECT_EQ(native, memory.handle());
    EXPECT_TRUE(memory.valid());
    EXPECT_FALSE(hidl_memory().valid());
    EXPECT_EQ(0u, hidl_memory().size());
}

TEST(HidlMemoryTest, CopiesOwnDuplicatesAndMovesHandOver) {
    native_handle_t* native = openHandle();
    const int fd = native->data[0];
    {
        hidl_handle handle;
        handle.setTo(native, true);
        hidl_memory memory("ashmem", std::move(handle), 1);
        const hidl_memory copy(memory);
        EXPECT_NE(fd, copy.handle()->data[0]);
        const hidl_memory moved(std::move(memory));
        EXPECT_EQ(native, moved.handle());
        EXPECT_FALSE(memory.valid());
    }
    EXPECT_FALSE(isOpen(fd));
}

TEST(MQDescriptorTest, AnEmptyDescriptorHasNothing) {
    const MQDescriptorSync<uint8_t> queue;
    EXPECT_EQ(0u, queue.countGrantors());
    EXPECT_FALSE(queue.isHandleValid());
    EXPECT_EQ(0u, queue.getQuantum());
    EXPECT_EQ(0, queue.getFlags());
}

TEST(MQDescriptorTest, ASizedQueueHasAPartForEachOfItsUses) {
    const MQDescriptorSync<uint16_t> plain(100, openHandle(), sizeof(uint16_t));
    EXPECT_EQ(3u, plain.countGrantors());
    EXPECT_EQ(100u, plain.getSize());
    EXPECT_EQ(2u, plain.getQuantum());
    EXPECT_EQ(1, plain.getFlags());
    EXPECT_EQ(16u, plain.grantors()[2].offset);

    const MQDescriptorSync<uint16_t> flagged(100, openHandle(), sizeof(uint16_t), true);
    ASSERT_EQ(4u, flagged.countGrantors());
    EXPECT_EQ(120u, flagged.grantors()[3].offset);
}

TEST(MQDescriptorTest, GrantorsMayBeGiven) {
    const std::vector<GrantorDescriptor> grantors = {{0, 0, 0, 8}, {0, 0, 8, 8}, {0, 0, 16, 64}};
    const MQDescriptorSync<uint8_t> queue(grantors, openHandle(), 1);
    EXPECT_EQ(64u, queue.getSize());
    EXPECT_TRUE(queue.isHandleValid());
}

TEST(MQDescriptorTest, DescriptorsOwnTheirHandlesAndCopiesDuplicates) {
    native_handle_t* native = openHandle();
    const int fd = native->data[0];
    int duplicate;
    {
        const MQDescriptorSync<uint8_t> queue(64, native, 1);
        const MQDescriptorSync<uint8_t> copy(queue);
        duplicate = copy.handle()->data[0];
        EXPECT_NE(fd, duplicate);
        EXPECT_EQ(64u, copy.getSize());
        EXPECT_TRUE(isOpen(duplicate));
    }
    EXPECT_FALSE(isOpen(fd));
    EXPECT_FALSE(isOpen(duplicate));
}

}  // namespace
