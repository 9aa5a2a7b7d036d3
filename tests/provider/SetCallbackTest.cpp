// SPDX-License-Identifier: Apache-2.0
// The framework's callback is stored, and the provider object registers itself with its providers.

#include <future>

#include "tests/support/Fault.h"
#include "tests/support/ProviderTest.h"

namespace orvo::test {
namespace {

using android::sp;
using android::wp;
using android::hardware::camera::provider::V2_4::ICameraProviderCallback;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SetCallbackTest : public ProviderTest {
  protected:
    Status setCallback() { return mObject->setCallback(mFramework); }

    size_t registrations(const std::string& name) { return mShims.shim(name)->callbacks().size(); }
};

TEST_F(SetCallbackTest, TheObjectItselfIsRegisteredWithEveryShim) {
    makeConnectedObject({"a/0", "b/0"});
    EXPECT_EQ(setCallback(), Status::OK);
    EXPECT_EQ(mObject->mCallback, mFramework);
    const sp<ICameraProviderCallback> object = mObject;
    EXPECT_THAT(mShims.shim("a/0")->callbacks(), ElementsAre(object));
    EXPECT_THAT(mShims.shim("b/0")->callbacks(), ElementsAre(object));
    EXPECT_THAT(mLog.lines(), IsEmpty());
    EXPECT_THAT(mFramework->notifications(), IsEmpty());
}

TEST_F(SetCallbackTest, TheServicesThemselvesGetNoCallback) {
    const sp<ScriptedProvider> service = startService("a/0");
    makeObject("legacy/0", {"a/0"});
    mObject->initialize();
    EXPECT_EQ(setCallback(), Status::OK);
    EXPECT_THAT(service->callbacks(), IsEmpty());
}

TEST_F(SetCallbackTest, ShimsAreRegisteredInSetOrderAfterTheCallbackIsStored) {
    makeConnectedObject({"c/0", "a/0", "b/0"});
    std::vector<std::string> order;
    for (const char* name : {"a/0", "b/0", "c/0"}) {
        mShims.shim(name)->onCall = [&, name](const std::string&) {
            order.push_back(name);
            EXPECT_EQ(mObject->mCallback, mFramework);
            EXPECT_TRUE(activeDevicesAreUnlocked());
        };
    }
    EXPECT_EQ(setCallback(), Status::OK);
    EXPECT_THAT(order, ElementsAre("a/0", "b/0", "c/0"));
}

TEST_F(SetCallbackTest, ALaterCallbackReplacesAndReleasesTheEarlierOne) {
    makeConnectedObject({"a/0"});
    setCallback();
    const wp<RecordingCallback> earlier = mFramework;
    mFramework = new RecordingCallback;
    EXPECT_EQ(setCallback(), Status::OK);
    EXPECT_EQ(earlier.promote(), nullptr);
    EXPECT_EQ(mObject->mCallback, mFramework);
    EXPECT_EQ(registrations("a/0"), 2u);
}

TEST_F(SetCallbackTest, AnEmptyCallbackIsStoredLikeAnyOther) {
    makeConnectedObject({"a/0", "b/0"});
    setCallback();
    EXPECT_EQ(mObject->setCallback(nullptr), Status::OK);
    EXPECT_EQ(mObject->mCallback, nullptr);
    EXPECT_EQ(registrations("a/0"), 2u);
    EXPECT_EQ(registrations("b/0"), 2u);
}

TEST_F(SetCallbackTest, WithoutDescriptorsOnlyTheCallbackIsStored) {
    mMapper->loadSucceeds = false;
    makeObject("legacy/0", {});
    EXPECT_EQ(setCallback(), Status::OK);
    EXPECT_EQ(mObject->mCallback, mFramework);
    EXPECT_THAT(mLog.lines(), IsEmpty());
}

TEST_F(SetCallbackTest, TheLockIsNeitherTakenNorNeeded) {
    makeConnectedObject({"a/0"});
    mObject->mActiveDevicesMutex.lock();
    std::future<Status> answer = std::async(std::launch::async, [this] { return setCallback(); });
    EXPECT_EQ(answer.wait_for(kPatience), std::future_status::ready);
    mObject->mActiveDevicesMutex.unlock();
    EXPECT_EQ(answer.get(), Status::OK);
    EXPECT_EQ(mObject->mCallback, mFramework);
}

TEST_F(SetCallbackTest, AShimIsRegisteredEvenIfTheServiceBehindItIsGone) {
    makeConnectedObject({"a/0"});
    descriptor("a/0")->mProvider = nullptr;
    EXPECT_EQ(setCallback(), Status::OK);
    EXPECT_EQ(registrations("a/0"), 1u);
    EXPECT_THAT(mLog.lines(), IsEmpty());
}

TEST_F(SetCallbackTest, ATransportFailureEndsTheRegistration) {
    recordFault("underlying `setCallback`", "fails in transport",
                "an error line; answers INTERNAL_ERROR, the later providers are not registered");
    makeConnectedObject({"a/0", "b/0", "c/0"});
    mShims.shim("b/0")->setCallbackFails = true;
    EXPECT_EQ(setCallback(), Status::INTERNAL_ERROR);
    EXPECT_EQ(mObject->mCallback, mFramework);
    EXPECT_EQ(registrations("a/0"), 1u);
    EXPECT_EQ(registrations("b/0"), 1u) << "the failing one was asked";
    EXPECT_EQ(registrations("c/0"), 0u);
    EXPECT_THAT(mLog.lines(), ElementsAre(errorLine("Failed to set callback")));
}

TEST_F(SetCallbackTest, AProviderThatAnswersWithAnErrorStatusCountsAsRegistered) {
    recordFault("underlying `setCallback`", "answers an error status",
                "ignored: the provider counts as registered");
    makeConnectedObject({"a/0", "b/0"});
    mShims.shim("a/0")->setCallbackStatus = Status::INTERNAL_ERROR;
    mShims.shim("b/0")->setCallbackStatus = Status::ILLEGAL_ARGUMENT;
    EXPECT_EQ(setCallback(), Status::OK);
    EXPECT_EQ(registrations("b/0"), 1u);
    EXPECT_THAT(mLog.lines(), IsEmpty());
}

TEST_F(SetCallbackTest, AProviderWithoutAShimIsSkippedWithAWarning) {
    recordFault("shim creation", "a shim is gone when the callback is set",
                "a warning; the others are registered, the answer is OK");
    makeConnectedObject({"a/0", "b/0", "c/0"});
    mShims.drop("b/0");
    EXPECT_EQ(setCallback(), Status::OK);
    EXPECT_EQ(registrations("a/0"), 1u);
    EXPECT_EQ(registrations("c/0"), 1u);
    EXPECT_THAT(mLog.lines(),
                ElementsAre(warningLine("No shim to set the callback on for b/0, skipping it")));
}

}  // namespace
}  // namespace orvo::test
