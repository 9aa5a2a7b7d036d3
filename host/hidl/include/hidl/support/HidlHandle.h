// SPDX-License-Identifier: Apache-2.0
// hidl_handle and hidl_memory: descriptors as they travel in calls. Part of hidl/HidlSupport.h.

#pragma once

#include <stddef.h>
#include <stdint.h>

#include <utility>

#include <cutils/native_handle.h>
#include <hidl/HidlInternal.h>
#include <hidl/support/HidlString.h>

namespace android {
namespace hardware {

/**
 * A native handle, sixteen bytes. It may own the handle; an owned one is closed and deleted when it
 * is replaced or with the hidl_handle. Copies own a clone, whose descriptors are duplicates;
 * failing to clone is fatal. One that was moved from is null.
 */
class hidl_handle {
  public:
    hidl_handle();
    /** Not owned. */
    hidl_handle(const native_handle_t* handle);
    hidl_handle(const hidl_handle& other);
    hidl_handle(hidl_handle&& other) noexcept;
    ~hidl_handle();

    hidl_handle& operator=(const hidl_handle& other);
    /** Not owned. */
    hidl_handle& operator=(const native_handle_t* handle);
    hidl_handle& operator=(hidl_handle&& other) noexcept;

    /** Setting the handle that is already there only changes who owns it. */
    void setTo(native_handle_t* handle, bool shouldOwn = false);

    const native_handle_t* operator->() const { return mHandle; }
    operator const native_handle_t*() const { return mHandle; }
    const native_handle_t* getNativeHandle() const { return mHandle; }

    static constexpr size_t kOffsetOfNativeHandle = 0;

  private:
    void replace(const native_handle_t* handle, bool owns);

    details::hidl_pointer<const native_handle_t> mHandle;
    bool mOwnsHandle;
    // Sent to other processes as it is in memory: without a name, these would be what was there.
    [[maybe_unused]] uint8_t mPad[7] = {};
};

/** A piece of shared memory that a mapper of that name knows how to map. */
class hidl_memory {
  public:
    hidl_memory() = default;
    /** Takes the handle over. */
    hidl_memory(const hidl_string& name, hidl_handle&& handle, size_t size)
        : mHandle(std::move(handle)), mSize(size), mName(name) {}
    /** The handle stays the caller's. */
    hidl_memory(const hidl_string& name, const native_handle_t* handle, size_t size)
        : mHandle(handle), mSize(size), mName(name) {}

    const native_handle_t* handle() const { return mHandle; }
    const hidl_string& name() const { return mName; }
    /** Bytes. */
    uint64_t size() const { return mSize; }
    bool valid() const { return handle() != nullptr; }

    static constexpr size_t kOffsetOfHandle = 0;
    static constexpr size_t kOffsetOfName = 24;

  private:
    static constexpr void assertLayout() {
        static_assert(offsetof(hidl_memory, mHandle) == kOffsetOfHandle, "wrong offset");
        static_assert(offsetof(hidl_memory, mSize) == 16, "wrong offset");
        static_assert(offsetof(hidl_memory, mName) == kOffsetOfName, "wrong offset");
        static_assert(sizeof(hidl_memory) == 40, "wrong size");
    }

    hidl_handle mHandle __attribute__((aligned(8)));
    uint64_t mSize __attribute__((aligned(8))) = 0;
    hidl_string mName __attribute__((aligned(8)));
};

}  // namespace hardware
}  // namespace android
