// SPDX-License-Identifier: Apache-2.0
// Parcels: what was written is read back, and whatever arrived is read without leaving it.

#include <string.h>

#include <memory>
#include <string>
#include <vector>

#include <hwbinder/Parcel.h>

#include "fuzz/support/ByteSource.h"
#include "fuzz/support/Require.h"
#include "fuzz/transport/Spoiling.h"

namespace {

using android::OK;
using android::sp;
using android::status_t;
using android::String16;
using android::hardware::IBinder;
using android::hardware::Parcel;
using android::hardware::transport::OwnedContents;
using android::hardware::transport::ParcelContents;
using orvo::fuzz::ByteSource;
using orvo::fuzz::require;

/** Makes sure that all bytes are there: a read outside is what the sanitizer looks for. */
void touch(const void* bytes, size_t length) {
    static volatile uint8_t sum = 0;
    for (size_t i = 0; i < length; i++) sum = sum + static_cast<const uint8_t*>(bytes)[i];
}

void readValue(const Parcel& parcel, size_t what) {
    uint64_t wide;
    double real;
    bool flag;
    String16 text;
    std::string bytes(what, '\0');
    switch (what % 8) {
        case 0:
            (void)parcel.readUint64(&wide);
            break;
        case 1:
            (void)parcel.readDouble(&real);
            break;
        case 2:
            (void)parcel.readBool(&flag);
            break;
        case 3:
            (void)parcel.readString16(&text);
            touch(text.string(), text.size() * sizeof(char16_t));
            break;
        case 4:
            if (const char* string = parcel.readCString(); string != nullptr) {
                touch(string, strlen(string) + 1);
            }
            break;
        case 5:
            (void)parcel.enforceInterface("android.hidl.base@1.0::IBase");
            break;
        case 6:
            (void)parcel.read(bytes.data(), bytes.size());
            break;
        default:
            parcel.setDataPosition(what);
    }
}

void readObject(const Parcel& parcel, ByteSource& source) {
    const size_t length = source.number<uint8_t>();
    const size_t parent = source.number<uint8_t>();
    const size_t offset = source.number<uint8_t>();
    const size_t kind = source.below(8);
    size_t number = 0;
    const void* buffer = nullptr;
    const native_handle_t* handle = nullptr;
    status_t status = OK;
    sp<IBinder> binder;
    if (kind == 0) status = parcel.readBuffer(length, &number, &buffer);
    if (kind == 1) status = parcel.readNullableBuffer(length, &number, &buffer);
    if (kind == 2) status = parcel.readEmbeddedBuffer(length, &number, parent, offset, &buffer);
    if (kind == 3) {
        status = parcel.readNullableEmbeddedBuffer(length, &number, parent, offset, &buffer);
    }
    if (kind == 4) status = parcel.readNullableNativeHandleNoDup(&handle);
    if (kind == 5) status = parcel.readEmbeddedNativeHandle(parent, offset, &handle);
    if (kind == 6) status = parcel.readNullableEmbeddedNativeHandle(parent, offset, &handle);
    if (kind == 7) status = parcel.readNullableStrongBinder(&binder);
    require(status == OK || (buffer == nullptr && handle == nullptr), "an error gives no pointer");
    if (buffer != nullptr) touch(buffer, length);
    if (handle != nullptr) touch(handle->data, (handle->numFds + handle->numInts) * sizeof(int));
}

/** Arbitrary contents; if they fit together, arbitrary reads. */
void readWhatArrived(ByteSource& source) {
    OwnedContents contents = orvo::fuzz::spoil(ParcelContents(), source);
    if (!contents->relocate()) return;
    Parcel parcel;
    parcel.adopt(std::unique_ptr<ParcelContents>(contents.release()));
    while (!source.empty()) {
        const size_t what = source.number<uint8_t>();
        const size_t before = parcel.dataPosition();
        if ((what & 1) != 0) {
            readObject(parcel, source);
        } else {
            readValue(parcel, what / 2);
        }
        require(parcel.dataPosition() <= parcel.dataSize(), "reading stays inside",
                std::to_string(before) + " -> " + std::to_string(parcel.dataPosition()));
    }
}

/** A value that was written: of which kind, and how it looks. */
struct Written {
    enum class Kind { NUMBER, STRING, STRING16, BUFFER, CHILD, HANDLE } kind;
    std::unique_ptr<std::string> bytes;  ///< keeps its place: the parcel refers to buffers
    size_t number = 0;                   ///< of a buffer
    size_t parent = 0;                   ///< of a child
};

class RoundTrip {
  public:
    void write(ByteSource& source) {
        Written next{static_cast<Written::Kind>(source.below(6)),
                     std::make_unique<std::string>(source.text()), 0, 0};
        status_t status = OK;
        switch (next.kind) {
            case Written::Kind::NUMBER:
                next.bytes->resize(sizeof(uint64_t));
                status = mParcel.write(next.bytes->data(), next.bytes->size());
                break;
            case Written::Kind::STRING:
                next.bytes->resize(strlen(next.bytes->c_str()));
                status = mParcel.writeCString(next.bytes->c_str());
                break;
            case Written::Kind::STRING16:
                next.bytes->resize(next.bytes->size() / 2 * 2);
                status = mParcel.writeString16(text16(*next.bytes));
                break;
            case Written::Kind::BUFFER:
                next.bytes->resize(next.bytes->size() + sizeof(uint64_t));
                status = mParcel.writeBuffer(next.bytes->data(), next.bytes->size(), &next.number);
                mLastBuffer = next.number;
                mHasBuffer = true;
                break;
            case Written::Kind::CHILD:
                if (!mHasBuffer) return;
                next.parent = mLastBuffer;
                mHasBuffer = false;
                status = mParcel.writeEmbeddedBuffer(next.bytes->data(), next.bytes->size(),
                                                     &next.number, next.parent, 0);
                break;
            case Written::Kind::HANDLE:
                status = mParcel.writeNativeHandleNoDup(nullptr);
        }
        require(status == OK, "everything can be written");
        mWritten.push_back(std::move(next));
    }

    void readBack() const {
        status_t status = OK;
        OwnedContents sealed = mParcel.contents().seal(&status);
        require(status == OK && sealed->relocate(), "what was written can be sent");
        Parcel parcel;
        parcel.adopt(std::unique_ptr<ParcelContents>(sealed.release()));
        for (const Written& value : mWritten) readBack(parcel, value);
        require(parcel.dataAvail() == 0, "nothing else is there");
    }

  private:
    static String16 text16(const std::string& bytes) {
        std::u16string text(bytes.size() / 2, u'\0');
        memcpy(text.data(), bytes.data(), text.size() * sizeof(char16_t));
        return String16(text.data(), text.size());
    }

    static void readBack(const Parcel& parcel, const Written& value) {
        const std::string& bytes = *value.bytes;
        std::string read(bytes.size(), '\0');
        const void* buffer = nullptr;
        size_t number = 0;
        String16 text;
        const char* string;
        const native_handle_t* handle;
        switch (value.kind) {
            case Written::Kind::NUMBER:
                require(parcel.read(read.data(), read.size()) == OK && read == bytes, "numbers");
                break;
            case Written::Kind::STRING:
                string = parcel.readCString();
                require(string != nullptr && string == bytes, "strings are read back");
                break;
            case Written::Kind::STRING16:
                require(parcel.readString16(&text) == OK && text == text16(bytes), "wide strings");
                break;
            case Written::Kind::BUFFER:
                require(parcel.readBuffer(bytes.size(), &number, &buffer) == OK &&
                                number == value.number && buffer != bytes.data(),
                        "buffers are read back as copies");
                // Its first word may point to a child by now.
                require(memcmp(static_cast<const char*>(buffer) + sizeof(uint64_t),
                               bytes.data() + sizeof(uint64_t),
                               bytes.size() - sizeof(uint64_t)) == 0,
                        "buffers keep their bytes");
                break;
            case Written::Kind::CHILD:
                require(parcel.readEmbeddedBuffer(bytes.size(), &number, value.parent, 0,
                                                  &buffer) == OK &&
                                memcmp(buffer, bytes.data(), bytes.size()) == 0,
                        "embedded buffers are read back");
                break;
            case Written::Kind::HANDLE:
                require(parcel.readNullableNativeHandleNoDup(&handle) == OK && handle == nullptr,
                        "null handles are read back");
        }
    }

    Parcel mParcel;
    std::vector<Written> mWritten;
    size_t mLastBuffer = 0;
    bool mHasBuffer = false;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ByteSource source(data, size);
    if (source.flag()) {
        readWhatArrived(source);
        return 0;
    }
    RoundTrip trip;
    while (!source.empty()) trip.write(source);
    trip.readBack();
    return 0;
}
