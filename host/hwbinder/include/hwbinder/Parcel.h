// SPDX-License-Identifier: Apache-2.0
// Parcel: the arguments or the results of one call.

#pragma once

#include <stddef.h>
#include <stdint.h>

#include <memory>
#include <string>
#include <vector>

#include <cutils/native_handle.h>
#include <utils/Errors.h>
#include <utils/RefBase.h>
#include <utils/String16.h>

#include <hwbinder/IInterface.h>

namespace android {
namespace hardware {

namespace transport {
class ParcelContents;
struct ParcelObject;
}  // namespace transport

/**
 * A sequence of flat values and of objects (buffers, native handles, binders), read back in the
 * order in which it was written. Not thread-safe; not copyable.
 *
 * Buffers and handles are written by reference: what they point to must stay valid and unchanged
 * until the call that the parcel is given to has returned. What is read points into the parcel and
 * is valid as long as it. Every read checks what it finds; content that does not fit gives an
 * error, never a pointer outside the parcel.
 */
class Parcel {
  public:
    Parcel();
    ~Parcel();
    Parcel(const Parcel&) = delete;
    Parcel& operator=(const Parcel&) = delete;

    const uint8_t* data() const;
    /** Sizes and positions are those of the flat part, in bytes. */
    size_t dataSize() const;
    size_t dataAvail() const;
    size_t dataPosition() const;
    size_t dataCapacity() const;
    status_t setDataSize(size_t size);
    /** Moves the position for reading, to the end if it is past it. Writing always appends. */
    void setDataPosition(size_t pos) const;
    status_t setDataCapacity(size_t size);

    status_t setData(const uint8_t* buffer, size_t len);

    /** The first error of a failed step, kept for the transport. */
    status_t errorCheck() const;
    void setError(status_t err);

    /** The token names the interface that declares the method that is called. */
    status_t writeInterfaceToken(const char* interface);
    bool enforceInterface(const char* interface) const;

    /** Flat values are padded to four bytes. Reading past the end gives NOT_ENOUGH_DATA. */
    status_t write(const void* data, size_t len);
    status_t read(void* outData, size_t len) const;
    status_t writeInt8(int8_t val);
    status_t readInt8(int8_t* pArg) const;
    status_t writeUint8(uint8_t val);
    status_t readUint8(uint8_t* pArg) const;
    status_t writeInt16(int16_t val);
    status_t readInt16(int16_t* pArg) const;
    status_t writeUint16(uint16_t val);
    status_t readUint16(uint16_t* pArg) const;
    status_t writeInt32(int32_t val);
    status_t readInt32(int32_t* pArg) const;
    status_t writeUint32(uint32_t val);
    status_t readUint32(uint32_t* pArg) const;
    status_t writeInt64(int64_t val);
    status_t readInt64(int64_t* pArg) const;
    status_t writeUint64(uint64_t val);
    status_t readUint64(uint64_t* pArg) const;
    status_t writeFloat(float val);
    status_t readFloat(float* pArg) const;
    status_t writeDouble(double val);
    status_t readDouble(double* pArg) const;
    status_t writeBool(bool val);
    status_t readBool(bool* pArg) const;
    status_t writeString16(const String16& str);
    status_t readString16(String16* pArg) const;
    status_t writeCString(const char* str);
    /** Null if there is no NUL before the end. */
    const char* readCString() const;

    /**
     * Adds a buffer. `handle` receives its number in the parcel, by which later buffers name it as
     * their parent. A null buffer takes its place among the values but has no number.
     */
    status_t writeBuffer(const void* buffer, size_t length, size_t* handle);
    /**
     * Adds a buffer to which the eight bytes at `parent_offset` of buffer `parent_buffer_handle`
     * point; the receiver finds them pointing to its copy. BAD_VALUE if there are no such bytes.
     */
    status_t writeEmbeddedBuffer(const void* buffer, size_t length, size_t* handle,
                                 size_t parent_buffer_handle, size_t parent_offset);

    /** Reads what the matching write wrote. Any difference in length or parent is BAD_VALUE. */
    status_t readBuffer(size_t buffer_size, size_t* buffer_handle, const void** buffer_out) const;
    status_t readNullableBuffer(size_t buffer_size, size_t* buffer_handle,
                                const void** buffer_out) const;
    status_t readEmbeddedBuffer(size_t buffer_size, size_t* buffer_handle,
                                size_t parent_buffer_handle, size_t parent_offset,
                                const void** buffer_out) const;
    status_t readNullableEmbeddedBuffer(size_t buffer_size, size_t* buffer_handle,
                                        size_t parent_buffer_handle, size_t parent_offset,
                                        const void** buffer_out) const;

    /** Native handles travel with duplicates of their descriptors; the writer keeps its own. */
    status_t writeNativeHandleNoDup(const native_handle_t* handle);
    status_t writeEmbeddedNativeHandle(const native_handle_t* handle, size_t parent_buffer_handle,
                                       size_t parent_offset);
    /** The handle belongs to the parcel, which closes its descriptors with itself. */
    status_t readNativeHandleNoDup(const native_handle_t** handle) const;
    status_t readNullableNativeHandleNoDup(const native_handle_t** handle) const;
    status_t readEmbeddedNativeHandle(size_t parent_buffer_handle, size_t parent_offset,
                                      const native_handle_t** handle) const;
    status_t readNullableEmbeddedNativeHandle(size_t parent_buffer_handle, size_t parent_offset,
                                              const native_handle_t** handle) const;

    /** The parcel keeps the binder alive. Null is allowed, and is read back as null. */
    status_t writeStrongBinder(const sp<IBinder>& val);
    /** UNEXPECTED_NULL for null. */
    status_t readStrongBinder(sp<IBinder>* val) const;
    status_t readNullableStrongBinder(sp<IBinder>* val) const;
    /** Null for null and for anything that is not a binder. */
    sp<IBinder> readStrongBinder() const;

    void freeData();

    /** For the transport: what the parcel holds. */
    transport::ParcelContents& contents() { return *mContents; }
    const transport::ParcelContents& contents() const { return *mContents; }
    /** For the transport: a parcel that holds what came from another process. */
    void adopt(std::unique_ptr<transport::ParcelContents> contents);

  private:
    status_t writeObject(transport::ParcelObject object, size_t* number);
    template <typename T>
    status_t writeScalar(T val);
    template <typename T>
    status_t readScalar(T* out) const;

    std::unique_ptr<transport::ParcelContents> mContents;
    mutable size_t mPosition = 0;
    status_t mError = OK;
};

}  // namespace hardware
}  // namespace android
