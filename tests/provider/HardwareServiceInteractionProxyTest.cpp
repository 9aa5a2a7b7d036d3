// SPDX-License-Identifier: Apache-2.0
// What the service seam asks of the platform.

#include "provider/service/HardwareServiceInteractionProxy.h"

#include <type_traits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/provider/FakePlatform.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/Fault.h"
#include "tests/support/ScriptedProvider.h"

namespace orvo::test {
namespace {

using android::sp;
using android::hardware::camera::provider::V2_4::ICameraProvider;
using android::hardware::camera::provider::V2_4::implementation::HardwareServiceInteractionProxy;
using android::hardware::camera::provider::V2_4::implementation::ServiceInteractionProxy;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr char kInterface[] = "android.hardware.camera.provider@2.4::ICameraProvider";

class IgnoredNotification : public android::hidl::manager::V1_0::IServiceNotification,
                            public CountedInstance {
  public:
    android::hardware::Return<void> onRegistration(const android::hardware::hidl_string&,
                                                   const android::hardware::hidl_string&,
                                                   bool) override {
        ADD_FAILURE() << "nothing is registered in this test";
        return android::hardware::Void();
    }
};

class HardwareServiceInteractionProxyTest : public ::testing::Test {
  protected:
    void TearDown() override {
        mPlatform.services.clear();
        mPlatform.registrations.clear();
        EXPECT_TRUE(CountedInstance::waitUntilNoneIsAlive());
        EXPECT_THAT(mLog.lines(), IsEmpty()) << "the seam never logs";
    }

    std::vector<std::string> list() {
        const auto names = mProxy->listServices();
        return {names.begin(), names.end()};
    }

    CapturedLog mLog;
    FakePlatform mPlatform;
    const std::unique_ptr<ServiceInteractionProxy> mProxy =
            std::make_unique<HardwareServiceInteractionProxy>();
};

TEST_F(HardwareServiceInteractionProxyTest, ListsWhatTheManifestDeclares) {
    mPlatform.declared = {"legacy/0", "external/0"};
    EXPECT_THAT(list(), ElementsAre("legacy/0", "external/0"));
    EXPECT_THAT(mPlatform.queries, ElementsAre(kInterface));
    EXPECT_THAT(mPlatform.lookups, IsEmpty()) << "whether they run is not asked";
}

TEST_F(HardwareServiceInteractionProxyTest, AnEmptyManifestListsNothing) {
    EXPECT_THAT(list(), IsEmpty());
}

TEST_F(HardwareServiceInteractionProxyTest, WithoutAServiceManagerNothingIsListed) {
    mPlatform.declared = {"legacy/0"};
    mPlatform.hasServiceManager = false;
    EXPECT_THAT(list(), IsEmpty());
    EXPECT_THAT(mPlatform.queries, IsEmpty());
}

TEST_F(HardwareServiceInteractionProxyTest, AFailedQueryListsNothing) {
    recordFault("service look-up", "the manifest query fails in transport",
                "no provider counts as declared; nothing is logged");
    mPlatform.declared = {"legacy/0"};
    mPlatform.queriesFail = true;
    EXPECT_THAT(list(), IsEmpty());
    EXPECT_THAT(mPlatform.queries, SizeIs(1));
    mPlatform.queriesFail = false;
    EXPECT_THAT(list(), ElementsAre("legacy/0")) << "nothing is kept between calls";
}

TEST_F(HardwareServiceInteractionProxyTest, TheServiceItselfIsFetchedAndNeverAStub) {
    const sp<ScriptedProvider> service = new ScriptedProvider;
    mPlatform.services["legacy/0"] = service;
    EXPECT_EQ(mProxy->getService("legacy/0"), service);
    ASSERT_THAT(mPlatform.lookups, SizeIs(1));
    EXPECT_EQ(mPlatform.lookups[0].descriptor, kInterface);
    EXPECT_EQ(mPlatform.lookups[0].instance, "legacy/0");
    EXPECT_TRUE(mPlatform.lookups[0].retry);
    EXPECT_FALSE(mPlatform.lookups[0].getStub);
}

TEST_F(HardwareServiceInteractionProxyTest, AServiceThatDoesNotRunIsNull) {
    EXPECT_EQ(mProxy->getService("legacy/0"), nullptr);
    EXPECT_THAT(mPlatform.lookups, SizeIs(1));
}

TEST_F(HardwareServiceInteractionProxyTest, ANotificationIsRegisteredAndTheAnswerPassedOn) {
    const sp<IgnoredNotification> notification = new IgnoredNotification;
    EXPECT_TRUE(mProxy->registerForNotifications("legacy/0", notification));
    mPlatform.acceptsNotifications = false;
    EXPECT_FALSE(mProxy->registerForNotifications("external/0", notification));
    ASSERT_THAT(mPlatform.registrations, SizeIs(2));
    EXPECT_EQ(mPlatform.registrations[0].descriptor, kInterface);
    EXPECT_EQ(mPlatform.registrations[0].instance, "legacy/0");
    EXPECT_EQ(mPlatform.registrations[0].notification, notification);
    EXPECT_EQ(mPlatform.registrations[1].instance, "external/0");
}

TEST_F(HardwareServiceInteractionProxyTest, WithoutAServiceManagerNoNotificationIsRegistered) {
    mPlatform.hasServiceManager = false;
    EXPECT_FALSE(mProxy->registerForNotifications("legacy/0", new IgnoredNotification));
}

TEST(ServiceInteractionProxyTypeTest, CanBeReplacedAndDestroyedThroughTheInterface) {
    static_assert(std::has_virtual_destructor_v<ServiceInteractionProxy>);
    EXPECT_EQ(sizeof(HardwareServiceInteractionProxy), sizeof(void*)) << "no data members";
}

}  // namespace
}  // namespace orvo::test
