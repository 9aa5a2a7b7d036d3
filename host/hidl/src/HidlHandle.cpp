// SPDX-License-Identifier: Apache-2.0
// hidl_handle: ownership of its native handle.

#include <hidl/HidlSupport.h>

#include <utility>

namespace android {
namespace hardware {

namespace {

const native_handle_t* cloneOf(const native_handle_t* handle) {
    if (handle == nullptr) return nullptr;
    const native_handle_t* clone = native_handle_clone(handle);
    if (clone == nullptr)
        details::logAlwaysFatal("Cannot clone the native handle of a hidl_handle");
    return clone;
}

}  // namespace

hidl_handle::hidl_handle() : mOwnsHandle(false) {
    static_assert(offsetof(hidl_handle, mHandle) == kOffsetOfNativeHandle, "wrong offset");
    static_assert(sizeof(hidl_handle) == 16, "wrong size");
}

hidl_handle::hidl_handle(const native_handle_t* handle) : mHandle(handle), mOwnsHandle(false) {}

hidl_handle::hidl_handle(const hidl_handle& other)
    : mHandle(cloneOf(other.mHandle)), mOwnsHandle(mHandle != nullptr) {}

hidl_handle::hidl_handle(hidl_handle&& other) noexcept : hidl_handle() {
    *this = std::move(other);
}

hidl_handle::~hidl_handle() {
    replace(nullptr, false);
}

hidl_handle& hidl_handle::operator=(const hidl_handle& other) {
    if (this == &other) return *this;
    const native_handle_t* clone = cloneOf(other.mHandle);
    replace(clone, clone != nullptr);
    return *this;
}

hidl_handle& hidl_handle::operator=(const native_handle_t* handle) {
    replace(handle, false);
    return *this;
}

hidl_handle& hidl_handle::operator=(hidl_handle&& other) noexcept {
    if (this == &other) return *this;
    replace(other.mHandle, other.mOwnsHandle);
    other.mHandle = nullptr;
    other.mOwnsHandle = false;
    return *this;
}

void hidl_handle::setTo(native_handle_t* handle, bool shouldOwn) {
    replace(handle, shouldOwn);
}

void hidl_handle::replace(const native_handle_t* handle, bool owns) {
    if (mOwnsHandle && mHandle != nullptr && mHandle != handle) {
        native_handle_t* old = const_cast<native_handle_t*>(getNativeHandle());
        native_handle_close(old);
        native_handle_delete(old);
    }
    mHandle = handle;
    mOwnsHandle = owns;
}

}  // namespace hardware
}  // namespace android
