// SPDX-License-Identifier: Apache-2.0
// Writing and reading parcels.

#include <hwbinder/Parcel.h>

#include <string.h>

#include <algorithm>

#include "ParcelContents.h"

namespace android {
namespace hardware {

using transport::Embedding;
using transport::ParcelContents;
using transport::ParcelObject;

namespace {

constexpr size_t padded(size_t length) {
    return (length + 3) & ~size_t{3};
}

/** Whether an object that was found is the one that the reader expects at this point. */
bool hangsFrom(const ParcelObject& object, const std::optional<Embedding>& expected,
               const ParcelContents& contents, const void* address) {
    if (object.embedding != expected) return false;
    if (!expected) return true;
    // The parent must point to this very object: a peer decides what else the bytes hold, and
    // whoever uses the parent follows that pointer.
    if (!contents.canEmbed(*expected)) return false;
    const ParcelObject& parent = contents.objects[expected->parent];
    uint64_t pointer;
    memcpy(&pointer, static_cast<const uint8_t*>(parent.buffer) + expected->offset,
           sizeof(pointer));
    return pointer == reinterpret_cast<uintptr_t>(address);
}

/** The object at the reading position, which then moves past its place. */
const ParcelObject* nextObject(const ParcelContents& contents, size_t* position) {
    const ParcelObject* object = contents.at(*position);
    if (object != nullptr) *position += sizeof(uint32_t);
    return object;
}

status_t readBufferObject(const ParcelContents& contents, size_t* position, size_t size,
                          size_t* number, const std::optional<Embedding>& embedding, bool nullable,
                          const void** out) {
    *out = nullptr;
    const ParcelObject* object = nextObject(contents, position);
    if (object == nullptr) return BAD_VALUE;
    if (object->kind == ParcelObject::Kind::NULL_BUFFER) {
        if (!nullable) return UNEXPECTED_NULL;
        // Nobody may be told that there are `size` bytes behind a null pointer.
        if (size != 0 || !hangsFrom(*object, embedding, contents, nullptr)) return BAD_VALUE;
        return OK;
    }
    if (object->kind != ParcelObject::Kind::BUFFER || object->length != size) return BAD_VALUE;
    if (!hangsFrom(*object, embedding, contents, object->buffer)) return BAD_VALUE;
    if (number != nullptr) *number = contents.numberOf(object);
    *out = object->buffer;
    return OK;
}

status_t readHandleObject(const ParcelContents& contents, size_t* position,
                          const std::optional<Embedding>& embedding, bool nullable,
                          const native_handle_t** out) {
    *out = nullptr;
    const ParcelObject* object = nextObject(contents, position);
    if (object == nullptr || object->kind != ParcelObject::Kind::HANDLE) return BAD_VALUE;
    if (!hangsFrom(*object, embedding, contents, object->handle)) return BAD_VALUE;
    if (object->handle == nullptr && !nullable) return UNEXPECTED_NULL;
    *out = object->handle;
    return OK;
}

ParcelObject bufferObject(const void* buffer, size_t length, std::optional<Embedding> embedding) {
    ParcelObject object;
    object.kind = buffer == nullptr ? ParcelObject::Kind::NULL_BUFFER : ParcelObject::Kind::BUFFER;
    object.embedding = embedding;
    object.buffer = buffer;
    object.length = buffer == nullptr ? 0 : length;
    return object;
}

bool isUsable(const native_handle_t* handle) {
    return handle->version == sizeof(native_handle_t) && handle->numFds >= 0 &&
           handle->numFds <= NATIVE_HANDLE_MAX_FDS && handle->numInts >= 0 &&
           handle->numInts <= NATIVE_HANDLE_MAX_INTS;
}

}  // namespace

Parcel::Parcel() : mContents(std::make_unique<ParcelContents>()) {}

Parcel::~Parcel() = default;

const uint8_t* Parcel::data() const {
    return mContents->flat.data();
}

size_t Parcel::dataSize() const {
    return mContents->flat.size();
}

size_t Parcel::dataAvail() const {
    return dataSize() - dataPosition();
}

size_t Parcel::dataPosition() const {
    return mPosition;
}

size_t Parcel::dataCapacity() const {
    return mContents->flat.capacity();
}

status_t Parcel::setDataSize(size_t size) {
    // Objects go with their places.
    while (!mContents->objects.empty() && mContents->objects.back().position + 4 > size) {
        mContents->objects.pop_back();
    }
    mContents->flat.resize(size);
    mPosition = std::min(mPosition, size);
    return OK;
}

void Parcel::setDataPosition(size_t pos) const {
    mPosition = std::min(pos, dataSize());
}

status_t Parcel::setDataCapacity(size_t size) {
    mContents->flat.reserve(size);
    return OK;
}

status_t Parcel::setData(const uint8_t* buffer, size_t len) {
    freeData();
    mContents->flat.assign(buffer, buffer + len);
    return OK;
}

status_t Parcel::errorCheck() const {
    return mError;
}

void Parcel::setError(status_t err) {
    mError = err;
}

void Parcel::freeData() {
    mContents = std::make_unique<ParcelContents>();
    mPosition = 0;
    mError = OK;
}

void Parcel::adopt(std::unique_ptr<ParcelContents> contents) {
    mContents = std::move(contents);
    mPosition = 0;
    mError = OK;
}

status_t Parcel::write(const void* data, size_t len) {
    if (len > static_cast<size_t>(INT32_MAX)) return BAD_VALUE;
    std::vector<uint8_t>& flat = mContents->flat;
    const auto* bytes = static_cast<const uint8_t*>(data);
    flat.insert(flat.end(), bytes, bytes + len);
    flat.resize(padded(flat.size()), 0);
    mPosition = flat.size();
    return OK;
}

status_t Parcel::writeObject(ParcelObject object, size_t* number) {
    const status_t status = mContents->append(std::move(object), number);
    mPosition = dataSize();
    return status;
}

status_t Parcel::read(void* outData, size_t len) const {
    if (len > static_cast<size_t>(INT32_MAX)) return BAD_VALUE;
    if (padded(len) > dataAvail()) return NOT_ENOUGH_DATA;
    if (len == 0) return OK;
    memcpy(outData, data() + mPosition, len);
    mPosition += padded(len);
    return OK;
}

template <typename T>
status_t Parcel::writeScalar(T val) {
    return write(&val, sizeof(val));
}

template <typename T>
status_t Parcel::readScalar(T* out) const {
    return read(out, sizeof(*out));
}

status_t Parcel::writeInt8(int8_t val) {
    return writeScalar(val);
}
status_t Parcel::readInt8(int8_t* pArg) const {
    return readScalar(pArg);
}
status_t Parcel::writeUint8(uint8_t val) {
    return writeScalar(val);
}
status_t Parcel::readUint8(uint8_t* pArg) const {
    return readScalar(pArg);
}
status_t Parcel::writeInt16(int16_t val) {
    return writeScalar(val);
}
status_t Parcel::readInt16(int16_t* pArg) const {
    return readScalar(pArg);
}
status_t Parcel::writeUint16(uint16_t val) {
    return writeScalar(val);
}
status_t Parcel::readUint16(uint16_t* pArg) const {
    return readScalar(pArg);
}
status_t Parcel::writeInt32(int32_t val) {
    return writeScalar(val);
}
status_t Parcel::readInt32(int32_t* pArg) const {
    return readScalar(pArg);
}
status_t Parcel::writeUint32(uint32_t val) {
    return writeScalar(val);
}
status_t Parcel::readUint32(uint32_t* pArg) const {
    return readScalar(pArg);
}
status_t Parcel::writeInt64(int64_t val) {
    return writeScalar(val);
}
status_t Parcel::readInt64(int64_t* pArg) const {
    return readScalar(pArg);
}
status_t Parcel::writeUint64(uint64_t val) {
    return writeScalar(val);
}
status_t Parcel::readUint64(uint64_t* pArg) const {
    return readScalar(pArg);
}
status_t Parcel::writeFloat(float val) {
    return writeScalar(val);
}
status_t Parcel::readFloat(float* pArg) const {
    return readScalar(pArg);
}
status_t Parcel::writeDouble(double val) {
    return writeScalar(val);
}
status_t Parcel::readDouble(double* pArg) const {
    return readScalar(pArg);
}

status_t Parcel::writeBool(bool val) {
    return writeUint8(val ? 1 : 0);
}

status_t Parcel::readBool(bool* pArg) const {
    uint8_t byte = 0;
    const status_t status = readUint8(&byte);
    *pArg = byte != 0;
    return status;
}

status_t Parcel::writeCString(const char* str) {
    return write(str, strlen(str) + 1);
}

const char* Parcel::readCString() const {
    if (dataAvail() == 0) return nullptr;
    const auto* start = reinterpret_cast<const char*>(data() + mPosition);
    const auto* end = static_cast<const char*>(memchr(start, 0, dataAvail()));
    if (end == nullptr || padded(end - start + 1) > dataAvail()) return nullptr;
    mPosition += padded(end - start + 1);
    return start;
}

status_t Parcel::writeInterfaceToken(const char* interface) {
    return writeCString(interface);
}

bool Parcel::enforceInterface(const char* interface) const {
    const char* token = readCString();
    return token != nullptr && strcmp(token, interface) == 0;
}

status_t Parcel::writeString16(const String16& str) {
    const status_t status = writeUint32(str.size());
    if (status != OK) return status;
    return write(str.string(), str.size() * sizeof(char16_t));
}

status_t Parcel::readString16(String16* pArg) const {
    uint32_t length = 0;
    const status_t status = readUint32(&length);
    if (status != OK) return status;
    const size_t size = size_t{length} * sizeof(char16_t);
    if (size > dataAvail() || padded(size) > dataAvail()) return NOT_ENOUGH_DATA;
    pArg->setTo(reinterpret_cast<const char16_t*>(data() + mPosition), length);
    mPosition += padded(size);
    return OK;
}

status_t Parcel::writeBuffer(const void* buffer, size_t length, size_t* handle) {
    return writeObject(bufferObject(buffer, length, std::nullopt), handle);
}

status_t Parcel::writeEmbeddedBuffer(const void* buffer, size_t length, size_t* handle,
                                     size_t parent_buffer_handle, size_t parent_offset) {
    const Embedding embedding{parent_buffer_handle, parent_offset};
    return writeObject(bufferObject(buffer, length, embedding), handle);
}

status_t Parcel::readBuffer(size_t buffer_size, size_t* buffer_handle,
                            const void** buffer_out) const {
    return readBufferObject(*mContents, &mPosition, buffer_size, buffer_handle, std::nullopt, false,
                            buffer_out);
}

status_t Parcel::readNullableBuffer(size_t buffer_size, size_t* buffer_handle,
                                    const void** buffer_out) const {
    return readBufferObject(*mContents, &mPosition, buffer_size, buffer_handle, std::nullopt, true,
                            buffer_out);
}

status_t Parcel::readEmbeddedBuffer(size_t buffer_size, size_t* buffer_handle,
                                    size_t parent_buffer_handle, size_t parent_offset,
                                    const void** buffer_out) const {
    const Embedding embedding{parent_buffer_handle, parent_offset};
    return readBufferObject(*mContents, &mPosition, buffer_size, buffer_handle, embedding, false,
                            buffer_out);
}

status_t Parcel::readNullableEmbeddedBuffer(size_t buffer_size, size_t* buffer_handle,
                                            size_t parent_buffer_handle, size_t parent_offset,
                                            const void** buffer_out) const {
    const Embedding embedding{parent_buffer_handle, parent_offset};
    return readBufferObject(*mContents, &mPosition, buffer_size, buffer_handle, embedding, true,
                            buffer_out);
}

status_t Parcel::writeNativeHandleNoDup(const native_handle_t* handle) {
    if (handle != nullptr && !isUsable(handle)) return BAD_VALUE;
    ParcelObject object;
    object.kind = ParcelObject::Kind::HANDLE;
    object.handle = handle;
    return writeObject(std::move(object), nullptr);
}

status_t Parcel::writeEmbeddedNativeHandle(const native_handle_t* handle,
                                           size_t parent_buffer_handle, size_t parent_offset) {
    if (handle != nullptr && !isUsable(handle)) return BAD_VALUE;
    ParcelObject object;
    object.kind = ParcelObject::Kind::HANDLE;
    object.handle = handle;
    object.embedding = Embedding{parent_buffer_handle, parent_offset};
    return writeObject(std::move(object), nullptr);
}

status_t Parcel::readNativeHandleNoDup(const native_handle_t** handle) const {
    return readHandleObject(*mContents, &mPosition, std::nullopt, false, handle);
}

status_t Parcel::readNullableNativeHandleNoDup(const native_handle_t** handle) const {
    return readHandleObject(*mContents, &mPosition, std::nullopt, true, handle);
}

status_t Parcel::readEmbeddedNativeHandle(size_t parent_buffer_handle, size_t parent_offset,
                                          const native_handle_t** handle) const {
    const Embedding embedding{parent_buffer_handle, parent_offset};
    return readHandleObject(*mContents, &mPosition, embedding, false, handle);
}

status_t Parcel::readNullableEmbeddedNativeHandle(size_t parent_buffer_handle, size_t parent_offset,
                                                  const native_handle_t** handle) const {
    const Embedding embedding{parent_buffer_handle, parent_offset};
    return readHandleObject(*mContents, &mPosition, embedding, true, handle);
}

status_t Parcel::writeStrongBinder(const sp<IBinder>& val) {
    ParcelObject object;
    object.kind = ParcelObject::Kind::BINDER;
    object.binder = val;
    return writeObject(std::move(object), nullptr);
}

status_t Parcel::readStrongBinder(sp<IBinder>* val) const {
    const status_t status = readNullableStrongBinder(val);
    if (status == OK && *val == nullptr) return UNEXPECTED_NULL;
    return status;
}

status_t Parcel::readNullableStrongBinder(sp<IBinder>* val) const {
    *val = nullptr;
    const ParcelObject* object = nextObject(*mContents, &mPosition);
    if (object == nullptr || object->kind != ParcelObject::Kind::BINDER) return BAD_TYPE;
    *val = object->binder;
    return OK;
}

sp<IBinder> Parcel::readStrongBinder() const {
    sp<IBinder> binder;
    readNullableStrongBinder(&binder);
    return binder;
}

}  // namespace hardware
}  // namespace android
