// SPDX-License-Identifier: Apache-2.0
// Connecting one underlying provider: service, death link, shim, and every way to fail.

#include <functional>

#include "tests/support/Fault.h"
#include "tests/support/OlderGoogleTest.h"
#include "tests/support/ProviderTest.h"

namespace orvo::test {
namespace {

using android::sp;
using android::wp;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr char kName[] = "external/0";

class ConnectionTest : public ProviderTest {
  protected:
    ConnectionTest() : mService(startService(kName)) {
        makeObject("legacy/0", {kName, "virtual/0"});
        mDescriptor = descriptor(kName);
    }

    void TearDown() override {
        mService.clear();
        ProviderTest::TearDown();
    }

    bool connect() { return mObject->initializeProviderService(mDescriptor, kName); }

    sp<ScriptedProvider> mService;
    Descriptor* mDescriptor;
};

TEST_F(ConnectionTest, AConnectedDescriptorHasItsServiceAndItsShim) {
    EXPECT_TRUE(connect());
    EXPECT_EQ(mDescriptor->mProvider, mService);
    EXPECT_NE(mDescriptor->mShim.promote(), nullptr);
    EXPECT_EQ(mDescriptor->mShim.promote(), mShims.shim(kName));
    EXPECT_EQ(mProxy->lookups(kName), 1);
    EXPECT_EQ(mService->unlinkCalls(), 0);
    EXPECT_THAT(mLog.lines(), IsEmpty());
    EXPECT_THAT(mProperties.writes(), IsEmpty());
}

TEST_F(ConnectionTest, OtherDescriptorsAreLeftAlone) {
    EXPECT_TRUE(connect());
    EXPECT_EQ(descriptor("virtual/0")->mProvider, nullptr);
    EXPECT_EQ(descriptor("virtual/0")->mShim.promote(), nullptr);
}

TEST_F(ConnectionTest, TheDeathLinkNamesTheObjectAndTheDescriptorsAddress) {
    EXPECT_TRUE(connect());
    ASSERT_THAT(mService->links(), SizeIs(1));
    const ScriptedProvider::Link link = mService->links()[0];
    EXPECT_EQ(link.cookie, reinterpret_cast<uintptr_t>(mDescriptor));
    const sp<android::hardware::hidl_death_recipient> object = mObject;
    EXPECT_EQ(link.recipient.promote(), object);
}

TEST_F(ConnectionTest, TheShimIsMadeForTheDescriptorsNameAndTheService) {
    EXPECT_TRUE(connect());
    ASSERT_THAT(mShims.calls(), SizeIs(1));
    EXPECT_EQ(mShims.calls()[0].name, kName);
    EXPECT_EQ(mShims.calls()[0].provider, mService.get());
}

TEST_F(ConnectionTest, TheGivenNameIsLookedUpAndTheDescriptorsNameGoesToTheShim) {
    mProxy->start("other name", mService);
    EXPECT_TRUE(mObject->initializeProviderService(mDescriptor, "other name"));
    EXPECT_EQ(mProxy->lookups("other name"), 1);
    EXPECT_EQ(mProxy->lookups(kName), 0);
    EXPECT_EQ(mShims.calls()[0].name, kName);

    mShims.refuse(kName);
    EXPECT_FALSE(mObject->initializeProviderService(mDescriptor, "other name"));
    EXPECT_THAT(mLog.take(),
                ElementsAre(errorLine("Failed to create QuillCameraProviderShim for other name")));
}

TEST_F(ConnectionTest, TheLinesOfAFailureNameTheGivenName) {
    EXPECT_FALSE(mObject->initializeProviderService(mDescriptor, "other name"));
    EXPECT_THAT(mLog.take(), ElementsAre(errorLine("Failed to get service other name")));

    mService->linkRefused = true;
    mProxy->start("other name", mService);
    EXPECT_FALSE(mObject->initializeProviderService(mDescriptor, "other name"));
    EXPECT_THAT(mLog.take(), ElementsAre(errorLine("Could not link to death for other name")));
}

TEST_F(ConnectionTest, TheShimIsHeldWeakly) {
    EXPECT_TRUE(connect());
    mShims.drop(kName);
    EXPECT_EQ(mDescriptor->mShim.promote(), nullptr);
}

TEST_F(ConnectionTest, NoCallbackIsSetAndNothingElseIsAsked) {
    EXPECT_TRUE(connect());
    EXPECT_THAT(mService->callbacks(), IsEmpty());
    EXPECT_THAT(mShims.shim(kName)->callbacks(), IsEmpty());
    EXPECT_EQ(mShims.shim(kName)->cameraIds.calls, 0);
    EXPECT_EQ(mService->vendorTags.calls, 0);
}

TEST_F(ConnectionTest, NoLockIsHeldWhileItCallsOut) {
    mProxy->onGetService = [this](const std::string&) { EXPECT_TRUE(activeDevicesAreUnlocked()); };
    mService->onLinked = [this] { EXPECT_TRUE(activeDevicesAreUnlocked()); };
    EXPECT_TRUE(connect());
}

TEST_F(ConnectionTest, ANullDescriptorFails) {
    EXPECT_FALSE(mObject->initializeProviderService(nullptr, kName));
    EXPECT_EQ(mProxy->lookups(kName), 0);
    EXPECT_THAT(mLog.lines(), ElementsAre(errorLine("Cannot initialize null HALDescriptor")));
}

TEST_F(ConnectionTest, AServiceThatCannotBeHadFails) {
    recordFault("service look-up", "a declared provider is not running",
                "an error line; it stays unconnected");
    mProxy->stop(kName);
    EXPECT_FALSE(connect());
    EXPECT_EQ(mDescriptor->mProvider, nullptr);
    EXPECT_EQ(mDescriptor->mShim.promote(), nullptr);
    EXPECT_THAT(mShims.calls(), IsEmpty());
    EXPECT_THAT(mLog.lines(), ElementsAre(errorLine("Failed to get service external/0")));
}

TEST_F(ConnectionTest, AFailedLookUpDropsTheServiceAndKeepsTheShim) {
    recordFault("service look-up", "a provider that was connected is not found any more",
                "an error line; its earlier service is released, its shim stays");
    ASSERT_TRUE(connect());
    mProxy->stop(kName);
    EXPECT_FALSE(connect());
    EXPECT_EQ(mDescriptor->mProvider, nullptr);
    EXPECT_EQ(mDescriptor->mShim.promote(), mShims.shim(kName));
    EXPECT_EQ(mService->unlinkCalls(), 0);
    const wp<ScriptedProvider> service = mService;
    mService.clear();
    EXPECT_EQ(service.promote(), nullptr) << "the earlier service is released";
}

class FailedLinkTest : public ConnectionTest, public ::testing::WithParamInterface<bool> {};

TEST_P(FailedLinkTest, DropsTheServiceAndKeepsTheShim) {
    recordFault("death link", GetParam() ? "fails in transport" : "answers false",
                "an error line; the service is dropped, no shim is made");
    const sp<ScriptedProvider> next = new ScriptedProvider;
    next->linkFails = GetParam();
    next->linkRefused = !GetParam();
    ASSERT_TRUE(connect());
    mProxy->start(kName, next);

    EXPECT_FALSE(connect());
    EXPECT_EQ(mDescriptor->mProvider, nullptr);
    EXPECT_EQ(mDescriptor->mShim.promote(), mShims.shim(kName));
    EXPECT_THAT(mShims.calls(), SizeIs(1)) << "no shim is made for an unlinked service";
    EXPECT_EQ(next->unlinkCalls(), 0);
    EXPECT_THAT(mLog.lines(), ElementsAre(errorLine("Could not link to death for external/0")));
}

INSTANTIATE_TEST_SUITE_P(InTransportOrByAnswer, FailedLinkTest, ::testing::Bool());

TEST_F(ConnectionTest, AShimThatCannotBeMadeUndoesTheLinkAndReleasesTheService) {
    recordFault("shim creation", "the factory returns null",
                "an error line; the service is unlinked and released");
    mShims.refuse(kName);
    EXPECT_FALSE(connect());
    EXPECT_EQ(mDescriptor->mProvider, nullptr);
    EXPECT_EQ(mDescriptor->mShim.promote(), nullptr);
    EXPECT_EQ(mService->unlinkCalls(), 1);
    EXPECT_THAT(mService->links(), IsEmpty()) << "no death will be reported";
    EXPECT_THAT(mLog.lines(),
                ElementsAre(errorLine("Failed to create QuillCameraProviderShim for external/0")));

    mProxy->stop(kName);
    const wp<ScriptedProvider> service = mService;
    mService.clear();
    EXPECT_EQ(service.promote(), nullptr) << "the service is released";
}

TEST_F(ConnectionTest, AfterAFailedShimTheServiceIsUnlinkedBeforeItIsDropped) {
    mShims.refuse(kName);
    std::vector<std::string> calls;
    mService->onCall = [&](const std::string& operation) {
        calls.push_back(operation);
        EXPECT_EQ(mDescriptor->mProvider, mService);
    };
    EXPECT_FALSE(connect());
    EXPECT_THAT(calls, ElementsAre("linkToDeath", "unlinkToDeath"));
    EXPECT_EQ(mDescriptor->mProvider, nullptr);
}

// What a connection that fails looks like at the moment when its error is logged.
class FailureLineTest : public ConnectionTest {
  protected:
    void expectAtTheLine(const std::string& text, const std::function<void()>& check) {
        mLog.onLine = [this, text, check](const LogLine& line) {
            EXPECT_EQ(line, errorLine(text));
            ++mChecks;
            check();
        };
    }

    int mChecks = 0;
};

TEST_F(FailureLineTest, AServiceThatCannotBeHadHasReplacedTheEarlierOne) {
    ASSERT_TRUE(connect());
    mProxy->stop(kName);
    expectAtTheLine("Failed to get service external/0",
                    [this] { EXPECT_EQ(mDescriptor->mProvider, nullptr); });
    EXPECT_FALSE(connect());
    EXPECT_EQ(mChecks, 1);
}

TEST_F(FailureLineTest, AServiceThatCannotBeLinkedIsStillThere) {
    mService->linkRefused = true;
    expectAtTheLine("Could not link to death for external/0",
                    [this] { EXPECT_EQ(mDescriptor->mProvider, mService); });
    EXPECT_FALSE(connect());
    EXPECT_EQ(mChecks, 1);
}

TEST_F(FailureLineTest, AShimThatCannotBeMadeHasReplacedTheEarlierOneAndTheLinkIsStillThere) {
    ASSERT_TRUE(connect());
    const sp<ScriptedProvider> earlier = mShims.shim(kName);
    mShims.refuse(kName);
    expectAtTheLine("Failed to create QuillCameraProviderShim for external/0", [this] {
        EXPECT_EQ(mDescriptor->mShim.promote(), nullptr);
        EXPECT_EQ(mDescriptor->mProvider, mService);
        EXPECT_EQ(mService->unlinkCalls(), 0);
    });
    EXPECT_FALSE(connect());
    EXPECT_EQ(mChecks, 1);
}

TEST_F(ConnectionTest, AnEarlierShimStaysUntilTheNextOneIsMade) {
    ASSERT_TRUE(connect());
    const sp<ScriptedProvider> earlier = mShims.shim(kName);
    const sp<ScriptedProvider> next = new ScriptedProvider;
    mShims.makeWith(kName, [&] {
        EXPECT_EQ(mDescriptor->mShim.promote(), earlier);
        return next.get();
    });
    EXPECT_TRUE(connect());
    EXPECT_EQ(mDescriptor->mShim.promote(), next);
}

TEST_F(ConnectionTest, AShimThatCannotBeMadeReplacesAnEarlierOneByNull) {
    ASSERT_TRUE(connect());
    const sp<ScriptedProvider> earlier = mShims.shim(kName);
    mShims.refuse(kName);
    EXPECT_FALSE(connect());
    EXPECT_EQ(mDescriptor->mShim.promote(), nullptr) << "although the earlier one still lives";
}

TEST_F(ConnectionTest, AFailedUnlinkIsIgnored) {
    recordFault("death link", "a service without a shim cannot be unlinked",
                "ignored: it is dropped");
    mShims.refuse(kName);
    mService->unlinkFails = true;
    EXPECT_FALSE(connect());
    EXPECT_EQ(mService->unlinkCalls(), 1);
    EXPECT_EQ(mDescriptor->mProvider, nullptr);
}

TEST_F(ConnectionTest, ConnectingAgainReplacesBothReferencesAndTellsTheOldShimNothing) {
    ASSERT_TRUE(connect());
    const sp<ScriptedProvider> oldShim = mShims.shim(kName);
    const sp<ScriptedProvider> next = new ScriptedProvider;
    mProxy->start(kName, next);

    EXPECT_TRUE(connect());
    EXPECT_EQ(mDescriptor->mProvider, next);
    EXPECT_EQ(mDescriptor->mShim.promote(), mShims.shim(kName));
    EXPECT_NE(mDescriptor->mShim.promote(), oldShim);
    EXPECT_THAT(oldShim->callbacks(), IsEmpty());
    EXPECT_EQ(mService->unlinkCalls(), 0);
    EXPECT_EQ(next->links()[0].cookie, reinterpret_cast<uintptr_t>(mDescriptor));
}

// The service dies right after the link: the notification clears the descriptor before the shim is
// made. The service itself must last until the connection attempt is over.
TEST_F(ConnectionTest, ADeathRightAfterTheLinkDoesNotPullTheServiceAway) {
    recordFault("death link", "the service dies right after the link",
                "it is held until the attempt is over");
    mService->onLinked = [this] { mDescriptor->mProvider = nullptr; };
    EXPECT_TRUE(connect());
    EXPECT_EQ(mShims.calls()[0].provider, mService.get());
    EXPECT_EQ(mDescriptor->mProvider, nullptr);
}

}  // namespace
}  // namespace orvo::test
