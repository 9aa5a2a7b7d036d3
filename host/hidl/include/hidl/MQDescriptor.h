// SPDX-License-Identifier: Apache-2.0
// MQDescriptor: describes a fast message queue that two processes share.

#pragma once

#include <stddef.h>
#include <stdint.h>

#include <atomic>
#include <string>
#include <vector>

#include <cutils/native_handle.h>
#include <hidl/HidlInternal.h>
#include <hidl/HidlSupport.h>

namespace android {
namespace hardware {

/** Where one part of the queue lies in the memory of a descriptor of the handle. */
struct GrantorDescriptor {
    uint32_t flags __attribute__((aligned(4)));
    uint32_t fdIndex __attribute__((aligned(4)));
    /** Bytes. */
    uint32_t offset __attribute__((aligned(4)));
    /** Bytes. */
    uint64_t extent __attribute__((aligned(8)));
};

static_assert(offsetof(GrantorDescriptor, fdIndex) == 4, "wrong offset");
static_assert(offsetof(GrantorDescriptor, offset) == 8, "wrong offset");
static_assert(offsetof(GrantorDescriptor, extent) == 16, "wrong offset");
static_assert(sizeof(GrantorDescriptor) == 24, "wrong size");

enum MQFlavor : uint32_t {
    kSynchronizedReadWrite = 0x01,
    kUnsynchronizedWrite = 0x02,
};

/** Owns its handle. An empty one has no grantors, and getSize must not be asked of it. */
template <typename T, MQFlavor flavor>
struct MQDescriptor {
    /** Order of the grantors. */
    enum GrantorType : int {
        READPTRPOS = 0,
        WRITEPTRPOS,
        DATAPTRPOS,
        EVFLAGWORDPOS,
    };

    static constexpr int32_t kMinGrantorCount = DATAPTRPOS + 1;
    static constexpr int32_t kMinGrantorCountForEvFlagSupport = EVFLAGWORDPOS + 1;
    static constexpr size_t kOffsetOfGrantors = 0;
    static constexpr size_t kOffsetOfHandle = 16;

    MQDescriptor() : mQuantum(0), mFlags(0) {}

    /** Takes the handle. `size` is that of one element. */
    MQDescriptor(const std::vector<GrantorDescriptor>& grantors, native_handle_t* handle,
                 size_t size)
        : mGrantors(grantors),
          mHandle(handle),
          mQuantum(static_cast<uint32_t>(size)),
          mFlags(flavor) {}

    /** Takes the handle, whose first descriptor holds counters, data and, if asked, a flag word. */
    MQDescriptor(size_t bufferSize, native_handle_t* handle, size_t messageSize,
                 bool configureEventFlag = false)
        : mHandle(handle), mQuantum(static_cast<uint32_t>(messageSize)), mFlags(flavor) {
        const size_t extents[] = {sizeof(uint64_t), sizeof(uint64_t), bufferSize,
                                  sizeof(std::atomic<uint32_t>)};
        mGrantors.resize(configureEventFlag ? kMinGrantorCountForEvFlagSupport : kMinGrantorCount);
        size_t offset = 0;
        for (size_t i = 0; i < mGrantors.size(); i++) {
            mGrantors[i] = {0, 0, static_cast<uint32_t>(offset), extents[i]};
            offset = alignToWord(offset + extents[i]);
        }
    }

    /** Copies get duplicates of the handle's descriptors; failing to duplicate is fatal. */
    explicit MQDescriptor(const MQDescriptor& other) : MQDescriptor() { *this = other; }
    MQDescriptor& operator=(const MQDescriptor& other) {
        if (this == &other) return *this;
        native_handle_t* copy = cloneHandle(other.handle());
        closeHandle();
        mGrantors = other.mGrantors;
        mHandle = copy;
        mQuantum = other.mQuantum;
        mFlags = other.mFlags;
        return *this;
    }

    ~MQDescriptor() {
        static_assert(offsetof(MQDescriptor, mGrantors) == kOffsetOfGrantors, "wrong offset");
        static_assert(offsetof(MQDescriptor, mHandle) == kOffsetOfHandle, "wrong offset");
        closeHandle();
    }

    size_t getSize() const { return static_cast<size_t>(mGrantors[DATAPTRPOS].extent); }
    size_t getQuantum() const { return mQuantum; }
    int32_t getFlags() const { return static_cast<int32_t>(mFlags); }
    bool isHandleValid() const { return handle() != nullptr; }
    size_t countGrantors() const { return mGrantors.size(); }

    const hidl_vec<GrantorDescriptor>& grantors() const { return mGrantors; }
    hidl_vec<GrantorDescriptor>& grantors() { return mGrantors; }
    const native_handle_t* handle() const { return mHandle; }
    native_handle_t* handle() { return mHandle; }

  private:
    static constexpr size_t alignToWord(size_t length) {
        return (length + sizeof(uint64_t) - 1) & ~(sizeof(uint64_t) - 1);
    }

    static native_handle_t* cloneHandle(const native_handle_t* handle) {
        if (handle == nullptr) return nullptr;
        native_handle_t* copy = native_handle_clone(handle);
        if (copy == nullptr) details::logAlwaysFatal("Cannot duplicate the handle of a queue");
        return copy;
    }

    void closeHandle() {
        if (mHandle == nullptr) return;
        native_handle_close(mHandle);
        native_handle_delete(mHandle);
    }

    hidl_vec<GrantorDescriptor> mGrantors;
    details::hidl_pointer<native_handle_t> mHandle;
    uint32_t mQuantum;
    uint32_t mFlags;
};

template <typename T>
using MQDescriptorSync = MQDescriptor<T, kSynchronizedReadWrite>;
template <typename T>
using MQDescriptorUnsync = MQDescriptor<T, kUnsynchronizedWrite>;

inline std::string toString(const GrantorDescriptor& grantor) {
    return "GrantorDescriptor {.flags = " + details::toHexString(grantor.flags) +
           ", .fdIndex = " + toString(grantor.fdIndex) + ", .offset = " + toString(grantor.offset) +
           ", .extent = " + toString(grantor.extent) + "}";
}

template <typename T, MQFlavor flavor>
std::string toString(const MQDescriptor<T, flavor>& queue) {
    std::string handle = "null";
    if (queue.isHandleValid()) {
        handle = "{.fds = " + toString(queue.handle()->numFds) +
                 ", .ints = " + toString(queue.handle()->numInts) + "}";
    }
    return "MQDescriptor {.grantors = " + toString(queue.grantors()) + ", .handle = " + handle +
           ", .quantum = " + toString(queue.getQuantum()) +
           ", .flags = " + details::toHexString(queue.getFlags()) + "}";
}

}  // namespace hardware
}  // namespace android
