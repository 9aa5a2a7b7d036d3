// SPDX-License-Identifier: Apache-2.0
// Fills messages.

#include "fuzz/transport/WireMessages.h"

#include <fcntl.h>

#include <android-base/unique_fd.h>

#include "ParcelMessage.h"

namespace orvo::fuzz {

using android::hardware::transport::ParcelContents;
using android::hardware::transport::ParcelObject;

namespace {

class OpenFile final : public wire::Descriptor::Server {
  public:
    kj::Maybe<int> getFd() override { return mFd.get(); }

  private:
    const android::base::unique_fd mFd{open("/dev/null", O_RDWR | O_CLOEXEC)};
};

class NoFile final : public wire::Descriptor::Server {};

void fillHandle(const native_handle_t* handle, ByteSource& source, wire::Handle::Builder builder) {
    builder.setPresent(handle != nullptr);
    if (handle == nullptr) return;
    auto descriptors = builder.initDescriptors(handle->numFds);
    for (int i = 0; i < handle->numFds; i++) {
        switch (source.below(8)) {
            case 6:
                descriptors.set(i, kj::heap<NoFile>());
                break;
            case 7:
                break;
            default:
                descriptors.set(i, kj::heap<OpenFile>());
        }
    }
    auto ints = builder.initInts(handle->numInts);
    for (int i = 0; i < handle->numInts; i++) ints.set(i, handle->data[handle->numFds + i]);
}

}  // namespace

void fillBinder(const KnownObject& known, ByteSource& source, wire::BinderRef::Builder ref) {
    switch (source.below(6)) {
        case 0:
            return;
        case 1:
            ref.setAddress(source.text());
            break;
        case 2:
            ref.setAddress("1-00000000000000ff");
            break;
        default:
            ref.setAddress(known.address);
    }
    ref.setId(source.flag() ? known.id : source.number<uint64_t>());
}

void fillParcel(const ParcelContents& contents, const KnownObject& known, ByteSource& source,
                wire::Parcel::Builder parcel) {
    android::hardware::transport::encodeParcel(
            contents, parcel,
            [&source](const native_handle_t* handle, wire::Handle::Builder builder) {
                fillHandle(handle, source, builder);
            },
            [&](const ParcelObject&, wire::BinderRef::Builder ref) {
                fillBinder(known, source, ref);
            });
}

}  // namespace orvo::fuzz
