// SPDX-License-Identifier: Apache-2.0
// Makes honest calls and records what crosses.

#include "fuzz/transport/Interfaces.h"

#include <fcntl.h>
#include <string.h>

#include <utility>
#include <vector>

#include <android/hardware/camera/provider/2.4/BnHwCameraProvider.h>
#include <android/hardware/camera/provider/2.4/BnHwCameraProviderCallback.h>
#include <android/hardware/camera/provider/2.4/BpHwCameraProvider.h>
#include <android/hardware/camera/provider/2.4/BpHwCameraProviderCallback.h>
#include <hidl/HidlBinderSupport.h>
#include <hidl/HidlTransportSupport.h>
#include <orvo/test/kinds/1.1/BpHwKinds.h>

#include "fuzz/support/Require.h"
#include "tests/host/hidl/EchoingKinds.h"
#include "tests/host/hidl/LoopBackBinder.h"
#include "tests/support/RecordingCallback.h"
#include "tests/support/ScriptedProvider.h"

namespace orvo::fuzz {

namespace {

using android::sp;
using android::status_t;
using android::hardware::getOrCreateCachedBinder;
using android::hardware::hidl_handle;
using android::hardware::hidl_memory;
using android::hardware::IBinder;
using android::hardware::Parcel;
using android::hardware::camera::common::V1_0::CameraDeviceStatus;
using android::hardware::camera::common::V1_0::CameraMetadataType;
using android::hardware::camera::common::V1_0::TorchModeStatus;
using android::hardware::camera::common::V1_0::VendorTagSection;
using android::hardware::camera::provider::V2_4::BpHwCameraProvider;
using android::hardware::camera::provider::V2_4::BpHwCameraProviderCallback;
using android::hardware::camera::provider::V2_4::ICameraProvider;
using android::hardware::camera::provider::V2_4::ICameraProviderCallback;
using orvo::test::EchoingKinds;
using orvo::test::kinds::V1_0::Colour;
using orvo::test::kinds::V1_0::Leaf;
using orvo::test::kinds::V1_0::Tree;
using orvo::test::kinds::V1_1::BpHwKinds;
using orvo::test::kinds::V1_1::IKinds;

/** Hands calls to the stub, and keeps a copy of each and of its answer. */
class Recorder final : public orvo::test::LoopBackBinder {
  public:
    Recorder(const sp<IBinder>& stub, std::vector<HonestCall>* calls)
        : LoopBackBinder(stub), mCalls(calls) {}

    status_t transact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags,
                      TransactCallback callback) override {
        status_t sealing = android::OK;
        HonestCall recorded{code, flags, data.contents().seal(&sealing), nullptr};
        require(sealing == android::OK, "an honest call can be copied");
        const status_t status = LoopBackBinder::transact(code, data, reply, flags, nullptr);
        require(status == android::OK, "an honest call is answered", std::to_string(code));
        if ((flags & FLAG_ONEWAY) == 0) {
            recorded.reply = reply->contents().seal(&sealing);
            require(sealing == android::OK, "an honest answer can be copied");
            if (callback) callback(*reply);
        }
        mCalls->push_back(std::move(recorded));
        return android::OK;
    }

  private:
    std::vector<HonestCall>* const mCalls;
};

/** With one descriptor and one number. */
hidl_handle openHandle() {
    native_handle_t* native = native_handle_create(1, 1);
    native->data[0] = open("/dev/null", O_RDONLY | O_CLOEXEC);
    native->data[1] = 42;
    hidl_handle handle;
    handle.setTo(native, true);
    return handle;
}

/** A failure is an answer too; unexamined, it would end the process. */
template <typename Result>
void examine(const Result& result) {
    (void)result.isOk();
}

/** For results that are handed over: looked at, so that all of it must be in place. */
constexpr auto look = [](const auto&... values) {
    using android::hardware::toString;
    ((void)toString(values), ...);
};

/**
 * A struct's bytes are the peer's, and one that is neither 0 nor 1 makes no bool; so that member is
 * looked at as a number before it is taken for one.
 */
void lookAtTree(const Tree& tree) {
    uint8_t flag;
    memcpy(&flag, &tree.flag, sizeof(flag));
    if (flag <= 1) look(tree.flag);
    look(tree.leaves, tree.words, tree.rows);
}

template <typename Type>
using Calls = std::vector<void (*)(Type& object)>;

/** With those that every interface has; each as a call through a proxy for any object. */
template <typename Proxy, typename Type>
Interface makeInterface(const char* name, sp<IBinder> (*makeStub)(), Calls<Type> calls) {
    const Calls<Type> base = {
            [](Type& object) { examine(object.ping()); },
            [](Type& object) { examine(object.interfaceChain(look)); },
            [](Type& object) { examine(object.interfaceDescriptor(look)); },
            [](Type& object) {
                examine(object.getHashChain(
                        [](const auto& hashes) { require(hashes.size() < 1 << 20, ""); }));
            },
            [](Type& object) {
                examine(object.getDebugInfo([](const auto& info) { (void)toString(info); }));
            },
            [](Type& object) { examine(object.debug(openHandle(), {"an option"})); },
            [](Type& object) { examine(object.setHALInstrumentation()); },
    };
    calls.insert(calls.end(), base.begin(), base.end());
    Interface interface {
        name, makeStub, {}, {}
    };
    for (const auto call : calls) {
        interface.methods.push_back([call](const sp<IBinder>& binder) {
            const sp<Type> proxy = new Proxy(binder);
            call(*proxy);
        });
    }
    interface.callAll(new Recorder(makeStub(), &interface.calls));
    require(interface.calls.size() == interface.methods.size(), "each makes one call", name);
    return interface;
}

Tree honestTree() {
    const Leaf leaf{"leaf", Colour::GREEN, {}, 0.5};
    return {true, {leaf, leaf}, {"one", "", "three"}, {{1, 2, 3}, {}}};
}

const Calls<IKinds> kKindsCalls = {
        [](IKinds& kinds) { examine(kinds.echoTree(honestTree(), lookAtTree)); },
        [](IKinds& kinds) { examine(kinds.echoTree(Tree{}, lookAtTree)); },
        [](IKinds& kinds) {
            examine(kinds.echoParcelled({"label", openHandle()},
                                        [](const auto& same) { (void)toString(same); }));
        },
        [](IKinds& kinds) { examine(kinds.echoHandle(openHandle(), look)); },
        [](IKinds& kinds) { examine(kinds.echoHandle(nullptr, look)); },
        [](IKinds& kinds) {
            examine(kinds.echoMemory(hidl_memory("ashmem", openHandle(), 64), look));
        },
        [](IKinds& kinds) {
            const EchoingKinds::Queue queue(64, native_handle_clone(openHandle()), 1);
            examine(kinds.echoQueue(queue, look));
        },
        [](IKinds& kinds) { examine(kinds.echoColour(Colour::BLUE)); },
        [](IKinds& kinds) { examine(kinds.echoKinds(new EchoingKinds)); },
        [](IKinds& kinds) { examine(kinds.echoKinds(nullptr)); },
        [](IKinds& kinds) { examine(kinds.echoAny(new EchoingKinds)); },
        [](IKinds& kinds) { examine(kinds.nothing()); },
        [](IKinds& kinds) { examine(kinds.note("a note")); },
        [](IKinds& kinds) { examine(kinds.version()); },
};

sp<IBinder> makeKinds() {
    return getOrCreateCachedBinder(new EchoingKinds);
}

constexpr auto lookAtDevice = [](auto, const auto& device) { (void)(device != nullptr); };

const Calls<ICameraProvider> kCameraProviderCalls = {
        [](ICameraProvider& provider) {
            examine(provider.setCallback(new orvo::test::RecordingCallback));
        },
        [](ICameraProvider& provider) {
            examine(provider.getVendorTags([](auto, const auto& sections) { look(sections); }));
        },
        [](ICameraProvider& provider) {
            examine(provider.getCameraIdList([](auto, const auto& names) { look(names); }));
        },
        [](ICameraProvider& provider) {
            examine(provider.isSetTorchModeSupported([](auto, bool) {}));
        },
        [](ICameraProvider& provider) {
            examine(provider.getCameraDeviceInterface_V1_x("device@1.0/virtual/8", lookAtDevice));
        },
        [](ICameraProvider& provider) {
            examine(provider.getCameraDeviceInterface_V3_x("device@3.2/external/100",
                                                           lookAtDevice));
        },
};

sp<IBinder> makeCameraProvider() {
    const sp<orvo::test::ScriptedProvider> provider = new orvo::test::ScriptedProvider;
    provider->cameraIds.value = {"device@3.2/external/100", "device@3.2/external/101"};
    VendorTagSection section;
    section.sectionName = "com.orvo.usb";
    section.tags = {{0x80020000, "busAddress", CameraMetadataType::INT32}};
    provider->vendorTags.value = {section, section};
    return getOrCreateCachedBinder(provider.get());
}

const Calls<ICameraProviderCallback> kCameraProviderCallbackCalls = {
        [](ICameraProviderCallback& callback) {
            examine(callback.cameraDeviceStatusChange("device@3.2/external/100",
                                                      CameraDeviceStatus::PRESENT));
        },
        [](ICameraProviderCallback& callback) {
            examine(callback.torchModeStatusChange("device@3.2/external/100",
                                                   TorchModeStatus::AVAILABLE_ON));
        },
};

sp<IBinder> makeCameraProviderCallback() {
    return getOrCreateCachedBinder(new orvo::test::RecordingCallback);
}

std::vector<Interface> makeInterfaces() {
    std::vector<Interface> all;
    all.push_back(makeInterface<BpHwKinds>("IKinds", makeKinds, kKindsCalls));
    all.push_back(makeInterface<BpHwCameraProvider>("ICameraProvider", makeCameraProvider,
                                                    kCameraProviderCalls));
    all.push_back(makeInterface<BpHwCameraProviderCallback>(
            "ICameraProviderCallback", makeCameraProviderCallback, kCameraProviderCallbackCalls));
    return all;
}

}  // namespace

const std::vector<Interface>& interfaces() {
    // Never destroyed: what runs on other threads may still hold objects of it.
    static const std::vector<Interface>& all = *new std::vector<Interface>(makeInterfaces());
    return all;
}

}  // namespace orvo::fuzz
