// SPDX-License-Identifier: Apache-2.0
// ParcelContents: the flat bytes and the objects of a parcel, written or received.

#pragma once

#include <stdint.h>

#include <memory>
#include <optional>
#include <vector>

#include <cutils/native_handle.h>
#include <hwbinder/IBinder.h>

namespace android {
namespace hardware {
namespace transport {

/** Closes the descriptors of a native handle and frees it. */
struct NativeHandleDeleter {
    void operator()(native_handle_t* handle) const;
};
using OwnedNativeHandle = std::unique_ptr<native_handle_t, NativeHandleDeleter>;

/** Where an embedded object hangs: eight bytes of an earlier buffer that point to it. */
struct Embedding {
    size_t parent = 0;  ///< number of the buffer, in the order of the objects
    size_t offset = 0;  ///< of the eight bytes, in that buffer

    bool operator==(const Embedding& other) const {
        return parent == other.parent && offset == other.offset;
    }
    bool operator!=(const Embedding& other) const { return !(*this == other); }
};

class ParcelContents;

/** Deletes contents on any thread, as EventLoop::release does what they hold of this process. */
struct ContentsDeleter {
    void operator()(ParcelContents* contents) const;
};
using OwnedContents = std::unique_ptr<ParcelContents, ContentsDeleter>;

/** One object of a parcel. Which fields count depends on the kind. */
struct ParcelObject {
    enum class Kind { NULL_BUFFER, BUFFER, HANDLE, BINDER };

    Kind kind = Kind::NULL_BUFFER;
    size_t position = 0;                 ///< of its place in the flat bytes
    std::optional<Embedding> embedding;  ///< of buffers and handles

    const void* buffer = nullptr;  ///< BUFFER: never null; borrowed unless `storage` is set
    size_t length = 0;
    std::unique_ptr<uint64_t[]> storage;  ///< 8-aligned, as every structure needs it

    const native_handle_t* handle = nullptr;  ///< HANDLE: may be null; borrowed unless owned
    OwnedNativeHandle ownedHandle;

    sp<IBinder> binder;  ///< BINDER: may be null
};

/**
 * The contents of one parcel. A parcel that is being written borrows buffers and handles from the
 * writer; a sealed or received one owns them. Not thread-safe, but may change threads.
 */
class ParcelContents {
  public:
    /** The most that one call can carry: flat bytes, buffers and 64 bytes for every object. */
    static constexpr size_t kMaxPayload = 16 * 1024 * 1024;
    /** As many descriptors as the kernel passes in one message. */
    static constexpr size_t kMaxDescriptors = 253;
    /** What an object counts beside its bytes, so that empty objects are not free. */
    static constexpr size_t kObjectOverhead = 64;
    static constexpr size_t kMaxObjects = kMaxPayload / kObjectOverhead;

    std::vector<uint8_t> flat;
    std::vector<ParcelObject> objects;

    /** Appends an object at the end of the flat bytes and gives its number to `number`. */
    status_t append(ParcelObject object, size_t* number);

    /** The object whose place is at `position`; null if there is none. */
    const ParcelObject* at(size_t position) const;
    size_t numberOf(const ParcelObject* object) const { return object - objects.data(); }

    /** Whether eight bytes of an earlier buffer are there for an object to hang from. */
    bool canEmbed(const Embedding& embedding) const;

    /**
     * A copy that borrows nothing: buffers copied, descriptors duplicated.
     *
     * @return null with FAILED_TRANSACTION if it is more than one call can carry, NO_MEMORY if a
     *         descriptor could not be duplicated.
     */
    OwnedContents seal(status_t* status) const;

    /**
     * For received contents, once all objects are in place: checks that every object has its own
     * place in the flat bytes and a parent that came before it, and makes the parents point to
     * this process's copies. False if anything does not fit; the contents are then of no use.
     */
    bool relocate();

    size_t descriptorCount() const;

    /** An 8-aligned copy, of at least one word so that an empty buffer has an address too. */
    static std::unique_ptr<uint64_t[]> copyOf(const void* buffer, size_t length);

  private:
    size_t payloadSize() const;
};

}  // namespace transport
}  // namespace hardware
}  // namespace android
