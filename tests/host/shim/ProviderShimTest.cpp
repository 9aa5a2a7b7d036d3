// SPDX-License-Identifier: Apache-2.0
// The shim factory: what a shim passes on, and which shims are kept alive.

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <android/hardware/camera/provider/2.4/ICameraProvider.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using android::sp;
using android::wp;
using android::hardware::hidl_death_recipient;
using android::hardware::hidl_handle;
using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using android::hardware::Return;
using android::hardware::Void;
using android::hardware::camera::common::V1_0::CameraDeviceStatus;
using android::hardware::camera::common::V1_0::Status;
using android::hardware::camera::common::V1_0::TorchModeStatus;
using android::hardware::camera::common::V1_0::VendorTagSection;
using android::hardware::camera::provider::V2_4::ICameraProvider;
using android::hardware::camera::provider::V2_4::ICameraProviderCallback;
using android::hidl::base::V1_0::DebugInfo;
using android::hidl::base::V1_0::IBase;
using ::testing::ElementsAre;
using IDevice1 = android::hardware::camera::device::V1_0::ICameraDevice;
using IDevice3 = android::hardware::camera::device::V3_2::ICameraDevice;
using TransportStatus = android::hardware::Status;

extern "C" ICameraProvider* HIDL_FETCH_ICameraProvider_shim(const char* name,
                                                            ICameraProvider* provider);

namespace {

/** Answers with what the test has put into it, and notes what it was asked. */
class ScriptedProvider : public ICameraProvider {
  public:
    ~ScriptedProvider() override {
        if (onDestruction) onDestruction();
    }

    Return<Status> setCallback(const sp<ICameraProviderCallback>& callback) override {
        calls.push_back("setCallback");
        givenCallback = callback;
        if (broken) return failure();
        return status;
    }
    Return<void> getVendorTags(getVendorTags_cb _hidl_cb) override {
        return answer("getVendorTags", [&] { _hidl_cb(status, tags); });
    }
    Return<void> getCameraIdList(getCameraIdList_cb _hidl_cb) override {
        return answer("getCameraIdList", [&] { _hidl_cb(status, {"device@3.2/a/0", "b"}); });
    }
    Return<void> isSetTorchModeSupported(isSetTorchModeSupported_cb _hidl_cb) override {
        return answer("isSetTorchModeSupported", [&] { _hidl_cb(status, true); });
    }
    Return<void> getCameraDeviceInterface_V1_x(const hidl_string& name,
                                               getCameraDeviceInterface_V1_x_cb _hidl_cb) override {
        return answer("V1_x " + std::string(name), [&] { _hidl_cb(status, nullptr); });
    }
    Return<void> getCameraDeviceInterface_V3_x(const hidl_string& name,
                                               getCameraDeviceInterface_V3_x_cb _hidl_cb) override {
        return answer("V3_x " + std::string(name), [&] { _hidl_cb(status, nullptr); });
    }
    Return<void> ping() override {
        return answer("ping", [] {});
    }
    Return<void> debug(const hidl_handle&, const hidl_vec<hidl_string>& options) override {
        return answer("debug " + std::string(options[0]), [] {});
    }
    Return<void> getDebugInfo(getDebugInfo_cb _hidl_cb) override {
        return answer("getDebugInfo", [&] {
            DebugInfo info = {};
            info.pid = 4711;
            _hidl_cb(info);
        });
    }
    Return<void> setHALInstrumentation() override {
        return answer("setHALInstrumentation", [] {});
    }
    Return<void> notifySyspropsChanged() override {
        return answer("notifySyspropsChanged", [] {});
    }
    Return<bool> linkToDeath(const sp<hidl_death_recipient>&, uint64_t cookie) override {
        calls.push_back("linkToDeath " + std::to_string(cookie));
        if (broken) return failure();
        return true;
    }
    Return<bool> unlinkToDeath(const sp<hidl_death_recipient>&) override {
        calls.push_back("unlinkToDeath");
        if (broken) return failure();
        return false;
    }

    static TransportStatus failure() { return TransportStatus::fromStatusT(android::DEAD_OBJECT); }

    /** Whether every call fails in transport. */
    bool broken = false;
    Status status = Status::OK;
    hidl_vec<VendorTagSection> tags;
    std::vector<std::string> calls;
    sp<ICameraProviderCallback> givenCallback;
    std::function<void()> onDestruction;

  private:
    Return<void> answer(const std::string& call, const std::function<void()>& respond) {
        calls.push_back(call);
        if (broken) return failure();
        respond();
        return Void();
    }
};

class SilentCallback : public ICameraProviderCallback {
  public:
    Return<void> cameraDeviceStatusChange(const hidl_string&, CameraDeviceStatus) override {
        return Void();
    }
    Return<void> torchModeStatusChange(const hidl_string&, TorchModeStatus) override {
        return Void();
    }
};

class SilentRecipient : public hidl_death_recipient {
    void serviceDied(uint64_t, const wp<IBase>&) override {}
};

class ProviderShimTest : public ::testing::Test {
  protected:
    const sp<ScriptedProvider> mProvider = new ScriptedProvider;
    const sp<ICameraProvider> mShim = HIDL_FETCH_ICameraProvider_shim("legacy/0", mProvider.get());
};

TEST_F(ProviderShimTest, IsAnObjectOfItsOwn) {
    ASSERT_NE(nullptr, mShim);
    EXPECT_NE(static_cast<ICameraProvider*>(mProvider.get()), mShim.get());
    EXPECT_FALSE(mShim->isRemote());
    EXPECT_TRUE(mProvider->calls.empty());
}

TEST_F(ProviderShimTest, ForwardsSetCallbackWithItsArgument) {
    const sp<ICameraProviderCallback> callback = new SilentCallback;
    mProvider->status = Status::INTERNAL_ERROR;
    EXPECT_EQ(Status::INTERNAL_ERROR, Status(mShim->setCallback(callback)));
    EXPECT_EQ(callback, mProvider->givenCallback);
    EXPECT_EQ(Status::INTERNAL_ERROR, Status(mShim->setCallback(nullptr)));
    EXPECT_EQ(nullptr, mProvider->givenCallback);
}

TEST_F(ProviderShimTest, ForwardsVendorTags) {
    mProvider->tags.resize(1);
    mProvider->tags[0].sectionName = "orvo.test";
    int answers = 0;
    EXPECT_TRUE(mShim->getVendorTags([&](Status status, const hidl_vec<VendorTagSection>& tags) {
                         ++answers;
                         EXPECT_EQ(Status::OK, status);
                         EXPECT_EQ(mProvider->tags.data(), tags.data());
                     }).isOk());
    EXPECT_EQ(1, answers);
}

TEST_F(ProviderShimTest, ForwardsCameraIdList) {
    mProvider->status = Status::INTERNAL_ERROR;
    std::vector<std::string> names;
    EXPECT_TRUE(mShim->getCameraIdList([&](Status status, const hidl_vec<hidl_string>& listed) {
                         EXPECT_EQ(Status::INTERNAL_ERROR, status);
                         names.assign(listed.begin(), listed.end());
                     }).isOk());
    EXPECT_THAT(names, ElementsAre("device@3.2/a/0", "b"));
}

TEST_F(ProviderShimTest, ForwardsTorchSupport) {
    int answers = 0;
    EXPECT_TRUE(mShim->isSetTorchModeSupported([&](Status status, bool support) {
                         ++answers;
                         EXPECT_EQ(Status::OK, status);
                         EXPECT_TRUE(support);
                     }).isOk());
    EXPECT_EQ(1, answers);
}

TEST_F(ProviderShimTest, ForwardsBothDeviceInterfaces) {
    mProvider->status = Status::ILLEGAL_ARGUMENT;
    int answers = 0;
    EXPECT_TRUE(mShim->getCameraDeviceInterface_V1_x("one", [&](Status status,
                                                                const sp<IDevice1>& device) {
                         ++answers;
                         EXPECT_EQ(Status::ILLEGAL_ARGUMENT, status);
                         EXPECT_EQ(nullptr, device);
                     }).isOk());
    EXPECT_TRUE(mShim->getCameraDeviceInterface_V3_x("three", [&](Status status,
                                                                  const sp<IDevice3>& device) {
                         ++answers;
                         EXPECT_EQ(Status::ILLEGAL_ARGUMENT, status);
                         EXPECT_EQ(nullptr, device);
                     }).isOk());
    EXPECT_EQ(2, answers);
    EXPECT_THAT(mProvider->calls, ElementsAre("V1_x one", "V3_x three"));
}

TEST_F(ProviderShimTest, ForwardsWhatEveryInterfaceHas) {
    const sp<hidl_death_recipient> recipient = new SilentRecipient;
    EXPECT_TRUE(mShim->ping().isOk());
    EXPECT_TRUE(mShim->debug(hidl_handle(), {"--all"}).isOk());
    int32_t pid = 0;
    EXPECT_TRUE(mShim->getDebugInfo([&](const DebugInfo& info) { pid = info.pid; }).isOk());
    EXPECT_EQ(4711, pid);
    EXPECT_TRUE(mShim->setHALInstrumentation().isOk());
    EXPECT_TRUE(mShim->notifySyspropsChanged().isOk());
    EXPECT_TRUE(mShim->linkToDeath(recipient, 7));
    EXPECT_FALSE(mShim->unlinkToDeath(recipient));
    EXPECT_THAT(mProvider->calls,
                ElementsAre("ping", "debug --all", "getDebugInfo", "setHALInstrumentation",
                            "notifySyspropsChanged", "linkToDeath 7", "unlinkToDeath"));
}

TEST_F(ProviderShimTest, PassesTransportFailuresOnWithoutAnAnswer) {
    mProvider->broken = true;
    const sp<hidl_death_recipient> recipient = new SilentRecipient;
    EXPECT_TRUE(mShim->setCallback(nullptr).isDeadObject());
    EXPECT_TRUE(mShim->getVendorTags([](Status, const auto&) { FAIL(); }).isDeadObject());
    EXPECT_TRUE(mShim->getCameraIdList([](Status, const auto&) { FAIL(); }).isDeadObject());
    EXPECT_TRUE(mShim->isSetTorchModeSupported([](Status, bool) { FAIL(); }).isDeadObject());
    EXPECT_TRUE(mShim->getCameraDeviceInterface_V1_x("x", [](Status, const auto&) {
                         FAIL();
                     }).isDeadObject());
    EXPECT_TRUE(mShim->getCameraDeviceInterface_V3_x("x", [](Status, const auto&) {
                         FAIL();
                     }).isDeadObject());
    EXPECT_TRUE(mShim->ping().isDeadObject());
    EXPECT_TRUE(mShim->debug(hidl_handle(), {"x"}).isDeadObject());
    EXPECT_TRUE(mShim->getDebugInfo([](const auto&) { FAIL(); }).isDeadObject());
    EXPECT_TRUE(mShim->linkToDeath(recipient, 0).isDeadObject());
    EXPECT_TRUE(mShim->unlinkToDeath(recipient).isDeadObject());
    EXPECT_EQ(11u, mProvider->calls.size());
}

TEST_F(ProviderShimTest, IsACameraProviderOfThisVersion) {
    EXPECT_TRUE(mShim->interfaceDescriptor([](const hidl_string& descriptor) {
                         EXPECT_EQ(ICameraProvider::descriptor, std::string(descriptor));
                     }).isOk());
    EXPECT_EQ(mShim, sp<ICameraProvider>(ICameraProvider::castFrom(sp<IBase>(mShim))));
    EXPECT_TRUE(mProvider->calls.empty());
}

/** A shim of which nobody but its library has a strong reference. */
wp<ICameraProvider> shimOf(const char* name, const sp<ICameraProvider>& provider) {
    return HIDL_FETCH_ICameraProvider_shim(name, provider.get());
}

TEST(ShimFactoryTest, NoProviderGivesNoShim) {
    EXPECT_EQ(nullptr, HIDL_FETCH_ICameraProvider_shim("null/0", nullptr));
    EXPECT_EQ(nullptr, HIDL_FETCH_ICameraProvider_shim(nullptr, nullptr));
}

TEST(ShimFactoryTest, TheNewestShimOfEachNameIsKeptAlive) {
    const sp<ICameraProvider> provider = new ScriptedProvider;
    const wp<ICameraProvider> first = shimOf("kept/0", provider);
    const wp<ICameraProvider> other = shimOf("kept/1", provider);
    EXPECT_NE(nullptr, first.promote());
    EXPECT_NE(nullptr, other.promote());

    const wp<ICameraProvider> second = shimOf("kept/0", provider);
    EXPECT_EQ(nullptr, first.promote());
    EXPECT_NE(nullptr, second.promote());
    EXPECT_NE(nullptr, other.promote());
}

TEST(ShimFactoryTest, ANullProviderLeavesTheShimThatThereIs) {
    const wp<ICameraProvider> shim = shimOf("stays/0", new ScriptedProvider);
    EXPECT_EQ(nullptr, HIDL_FETCH_ICameraProvider_shim("stays/0", nullptr));
    EXPECT_NE(nullptr, shim.promote());
}

TEST(ShimFactoryTest, AReplacedShimLivesForAsLongAsItIsUsed) {
    const sp<ICameraProvider> used = shimOf("used/0", new ScriptedProvider).promote();
    const wp<ICameraProvider> newest = shimOf("used/0", new ScriptedProvider);
    EXPECT_TRUE(used->ping().isOk());
    EXPECT_NE(nullptr, newest.promote());
}

TEST(ShimFactoryTest, AShimKeepsItsProviderAndLetsItGo) {
    const wp<ICameraProvider> shim = shimOf("owned/0", new ScriptedProvider);
    EXPECT_TRUE(shim.promote()->ping().isOk());
    bool gone = false;
    {
        const sp<ScriptedProvider> provider = new ScriptedProvider;
        provider->onDestruction = [&] { gone = true; };
        shimOf("owned/0", provider);
    }
    EXPECT_FALSE(gone);
    shimOf("owned/0", new ScriptedProvider);
    EXPECT_TRUE(gone);
}

TEST(ShimFactoryTest, AProviderThatGoesMayAskForAnotherShim) {
    wp<ICameraProvider> asked;
    {
        const sp<ScriptedProvider> provider = new ScriptedProvider;
        provider->onDestruction = [&] { asked = shimOf("asks/1", new ScriptedProvider); };
        shimOf("asks/0", provider);
    }
    const wp<ICameraProvider> newest = shimOf("asks/0", new ScriptedProvider);
    EXPECT_NE(nullptr, newest.promote());
    EXPECT_NE(nullptr, asked.promote());
}

TEST(ShimFactoryTest, ANullNameIsTheEmptyName) {
    const wp<ICameraProvider> first = shimOf(nullptr, new ScriptedProvider);
    EXPECT_NE(nullptr, first.promote());
    shimOf("", new ScriptedProvider);
    EXPECT_EQ(nullptr, first.promote());
}

TEST(ShimFactoryTest, TheNameIsCopied) {
    char name[] = "copied/0";
    const wp<ICameraProvider> shim = shimOf(name, new ScriptedProvider);
    name[0] = 'X';
    EXPECT_NE(nullptr, shim.promote());
    shimOf("copied/0", new ScriptedProvider);
    EXPECT_EQ(nullptr, shim.promote());
}

TEST(ShimFactoryTest, ManyThreadsMayAskAtOnce) {
    std::atomic<int> living{0};
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([&living] {
            for (int round = 0; round < 500; ++round) {
                const sp<ScriptedProvider> provider = new ScriptedProvider;
                ++living;
                provider->onDestruction = [&living] { --living; };
                EXPECT_NE(nullptr, HIDL_FETCH_ICameraProvider_shim("shared/0", provider.get()));
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(1, living);
    shimOf("shared/0", new ScriptedProvider);  // the counter above is about to go
    EXPECT_EQ(0, living);
}

}  // namespace
