// SPDX-License-Identifier: Apache-2.0
// The provider object from construction to destruction.

#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <chrono>
#include <thread>
#include <type_traits>

#include "provider/naming/DeviceMap.h"
#include "tests/support/Departing.h"
#include "tests/support/Fault.h"
#include "tests/support/ProviderTest.h"
#include "tests/support/VirtualSlot.h"

namespace orvo::test {
namespace {

using android::sp;
using android::wp;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr char kAddedProperty[] = "service.cam_prvdr.external_0.added";

class LifecycleTest : public ProviderTest {
  protected:
    void construct(const char* name) { mObject = new Object(name, mProxy, mMapper); }

    bool isConnected(const std::string& name) { return descriptor(name)->mProvider != nullptr; }
};

TEST_F(LifecycleTest, TheObjectHasThreeFaces) {
    using android::hardware::hidl_death_recipient;
    using android::hardware::camera::provider::V2_4::ICameraProvider;
    using android::hardware::camera::provider::V2_4::ICameraProviderCallback;
    makeObject("legacy/0", {"external/0"});
    const sp<ICameraProvider> provider = mObject;
    EXPECT_EQ(static_cast<void*>(provider.get()), static_cast<void*>(mObject.get()))
            << "the provider face is the first";
    const sp<ICameraProviderCallback> callback = mObject;
    const sp<hidl_death_recipient> recipient = mObject;
    EXPECT_LT(static_cast<void*>(recipient.get()), static_cast<void*>(callback.get()));
    EXPECT_EQ(mObject->getStrongCount(), 4) << "the faces share one count";
}

// The generated classes put their destructors, which take two slots, behind IBase's operations.
TEST(VirtualSlotTest, TheProviderObjectsFunctionsFollowOneAnotherInTheirOrder) {
    using android::hardware::camera::provider::V2_4::implementation::
            OrvoCameraServiceImplementation;
    using Object = OrvoCameraServiceImplementation;
    using android::hardware::camera::provider::V2_4::ICameraProvider;
    const size_t lastOfBase = virtualSlot(&ICameraProvider::unlinkToDeath);
    const std::vector<size_t> slots = {
            virtualSlot(&Object::setCallback),
            virtualSlot(&Object::getVendorTags),
            virtualSlot(&Object::getCameraIdList),
            virtualSlot(&Object::isSetTorchModeSupported),
            virtualSlot(&Object::getCameraDeviceInterface_V1_x),
            virtualSlot(&Object::getCameraDeviceInterface_V3_x),
            virtualSlot(&Object::serviceDied),
            virtualSlot(&Object::cameraDeviceStatusChange),
            virtualSlot(&Object::torchModeStatusChange),
    };
    for (size_t i = 0; i < slots.size(); ++i) EXPECT_EQ(slots[i], lastOfBase + 3 + i) << i;
}

TEST(VirtualSlotTest, TheServiceSeamsFunctionsComeFirstAndItsDestructorLast) {
    using android::hardware::camera::provider::V2_4::implementation::ServiceInteractionProxy;
    EXPECT_EQ(virtualSlot(&ServiceInteractionProxy::registerForNotifications), 0u);
    EXPECT_EQ(virtualSlot(&ServiceInteractionProxy::getService), 1u);
    EXPECT_EQ(virtualSlot(&ServiceInteractionProxy::listServices), 2u);
}

TEST_F(LifecycleTest, TheMembersAreDeclaredInTheOrderInWhichTheyAreDestroyedBackwards) {
    makeObject("legacy/0", {"external/0"});
    const std::vector<const void*> addresses = {
            &mObject->mIsValid,      &mObject->mProviderMapper, &mObject->mServiceProxy,
            &mObject->mCallback,     &mObject->mHalDescriptors, &mObject->mProviderType,
            &mObject->mProviderName, &mObject->mActiveDevices,  &mObject->mActiveDevicesMutex,
    };
    EXPECT_TRUE(std::is_sorted(addresses.begin(), addresses.end()));
}

TEST_F(LifecycleTest, ConstructionReadsTheMapAndMakesTheDescriptorsButConnectsNothing) {
    mMapper->replacements["legacy/0"] = {"virtual/0", "external/0", "virtual/0"};
    construct("legacy/0");
    EXPECT_TRUE(mObject->mIsValid);
    EXPECT_EQ(mObject->mProviderType, "legacy");
    EXPECT_EQ(mObject->mProviderName, "legacy/0");
    EXPECT_EQ(mObject->mCallback, nullptr);
    EXPECT_THAT(activeDevices(), IsEmpty());
    EXPECT_EQ(mObject->mProviderMapper, mMapper);
    EXPECT_EQ(mObject->mServiceProxy, mProxy);
    EXPECT_THAT(mObject->mHalDescriptors, SizeIs(2));
    EXPECT_FALSE(isConnected("external/0"));
    EXPECT_FALSE(isConnected("virtual/0"));

    EXPECT_THAT(mMapper->loadedPaths, ElementsAre("/vendor/etc/orvo_vendor_manifest.xml"));
    EXPECT_THAT(mMapper->askedNames, ElementsAre("legacy/0"));
    EXPECT_EQ(mProxy->listings(), 0);
    EXPECT_EQ(mProxy->lookups("external/0"), 0);
    EXPECT_THAT(mLog.lines(), ElementsAre(infoLine("Get replacement provider for legacy/0"),
                                          infoLine("Replacement provider external/0 for legacy/0"),
                                          infoLine("Replacement provider virtual/0 for legacy/0")));
    EXPECT_THAT(mProperties.writes(), IsEmpty());
}

TEST_F(LifecycleTest, TheTypeIsTheTextBeforeTheFirstSlash) {
    mMapper->replacements["a/b/c"] = {"external/0"};
    construct("a/b/c");
    EXPECT_EQ(mObject->mProviderType, "a");
    mMapper->replacements["/0"] = {"external/0"};
    construct("/0");
    EXPECT_EQ(mObject->mProviderType, "");
    EXPECT_TRUE(mObject->mIsValid);
}

TEST_F(LifecycleTest, AMapThatCannotBeLoadedMakesTheObjectInvalid) {
    mMapper->loadSucceeds = false;
    mMapper->replacements["legacy/0"] = {"external/0"};
    construct("legacy/0");
    EXPECT_FALSE(mObject->mIsValid);
    EXPECT_EQ(mObject->mProviderType, "legacy");
    EXPECT_THAT(mObject->mHalDescriptors, IsEmpty());
    EXPECT_THAT(mMapper->askedNames, IsEmpty());
    EXPECT_THAT(mLog.lines(), ElementsAre(errorLine("FATAL (165): Failed to load provider map from "
                                                    "/vendor/etc/orvo_vendor_manifest.xml")));
}

TEST_F(LifecycleTest, AnInstanceWithoutReplacementsMakesTheObjectInvalid) {
    mMapper->replacements["virtual/0"] = {"external/0"};
    construct("legacy/0");
    EXPECT_FALSE(mObject->mIsValid);
    EXPECT_THAT(mLog.lines(), ElementsAre(infoLine("Get replacement provider for legacy/0"),
                                          infoLine("No replacement provider for legacy/0 mImpl")));
}

TEST_F(LifecycleTest, InitializeConnectsEveryDeclaredProviderThatHasADescriptor) {
    startService("virtual/0");
    startService("foreign/0");
    startService("external/0");
    makeObject("legacy/0", {"external/0", "virtual/0"});
    EXPECT_TRUE(mObject->initialize());
    EXPECT_TRUE(isConnected("external/0"));
    EXPECT_TRUE(isConnected("virtual/0"));
    EXPECT_EQ(mProxy->listings(), 1);
    EXPECT_EQ(mProxy->lookups("foreign/0"), 0);
    EXPECT_THAT(mLog.lines(),
                ElementsAre(infoLine("Loading service virtual/0"),
                            infoLine("Found replacement provider virtual/0 for legacy/0"),
                            infoLine("Loading service foreign/0"),
                            errorLine("FATAL(479): Invalid provider name foreign/0"),
                            infoLine("Loading service external/0"),
                            infoLine("Found replacement provider external/0 for legacy/0")));
}

TEST_F(LifecycleTest, InitializeHoldsNoLockWhileItCallsOut) {
    const sp<ScriptedProvider> service = startService("external/0");
    makeObject("legacy/0", {"external/0"});
    std::set<std::string> calls;
    const auto check = [&](const std::string& call) {
        calls.insert(call);
        EXPECT_TRUE(activeDevicesAreUnlocked()) << call;
    };
    mProxy->onListServices = [&] { check("listServices"); };
    mProxy->onGetService = [&](const std::string&) { check("getService"); };
    service->onCall = check;
    const sp<ScriptedProvider> shim = new ScriptedProvider;
    mShims.makeWith("external/0", [&] {
        check("shim");
        return shim.get();
    });
    mProperties.onWrite = [&] { check("property_set"); };
    mLog.onLine = [&](const LogLine&) { check("log"); };
    mObject->initialize();
    mLog.onLine = nullptr;
    EXPECT_THAT(calls, ElementsAre("getService", "linkToDeath", "listServices", "log",
                                   "property_set", "shim"));
}

TEST_F(LifecycleTest, AProviderThatIsDeclaredTwiceIsConnectedTwice) {
    const sp<ScriptedProvider> service = startService("external/0");
    startService("virtual/0");
    mProxy->declared.push_back("external/0");
    makeObject("legacy/0", {"external/0", "virtual/0"});
    EXPECT_TRUE(mObject->initialize());
    EXPECT_EQ(mProxy->lookups("external/0"), 2);
    EXPECT_THAT(service->links(), SizeIs(2));
    EXPECT_THAT(mShims.calls(), SizeIs(3));
    const PropertyWrite added = {kAddedProperty, "1"};
    EXPECT_THAT(mProperties.writes(), ElementsAre(added, added));
    EXPECT_THAT(mLog.lines(),
                ElementsAre(infoLine("Loading service external/0"),
                            infoLine("Found replacement provider external/0 for legacy/0"),
                            infoLine("Loading service virtual/0"),
                            infoLine("Found replacement provider virtual/0 for legacy/0"),
                            infoLine("Loading service external/0"),
                            infoLine("Found replacement provider external/0 for legacy/0")));
}

TEST_F(LifecycleTest, AProviderThatIsNotDeclaredStaysUnconnected) {
    mProxy->start("external/0", new ScriptedProvider);
    makeObject("legacy/0", {"external/0"});
    EXPECT_TRUE(mObject->initialize());
    EXPECT_FALSE(isConnected("external/0"));
    EXPECT_EQ(mProxy->lookups("external/0"), 0);
    EXPECT_THAT(mLog.lines(), IsEmpty());
    EXPECT_THAT(mProperties.writes(), IsEmpty());
}

TEST_F(LifecycleTest, AFailedConnectionIsLoggedAndTheNextOneIsMade) {
    recordFault("service look-up", "one of two providers is not running at start-up",
                "an error line, no retry; the other one is connected");
    mProxy->declared = {"external/0"};
    startService("virtual/0");
    makeObject("legacy/0", {"external/0", "virtual/0"});
    EXPECT_TRUE(mObject->initialize());
    EXPECT_FALSE(isConnected("external/0"));
    EXPECT_TRUE(isConnected("virtual/0"));
    EXPECT_EQ(mProxy->lookups("external/0"), 1) << "nothing is retried at start-up";
    EXPECT_THAT(mLog.lines(),
                ElementsAre(infoLine("Loading service external/0"),
                            infoLine("Found replacement provider external/0 for legacy/0"),
                            errorLine("Failed to get service external/0"),
                            infoLine("Loading service virtual/0"),
                            infoLine("Found replacement provider virtual/0 for legacy/0")));
}

TEST_F(LifecycleTest, ConnectingExternalZeroIsRecordedInAProperty) {
    startService("external/0");
    makeObject("legacy/0", {"external/0"});
    mObject->initialize();
    EXPECT_THAT(mProperties.writes(), ElementsAre(PropertyWrite{kAddedProperty, "1"}));
}

TEST_F(LifecycleTest, OnlyExternalZeroIsRecorded) {
    for (const char* name : {"external/1", "external/00", "legacy/0"}) startService(name);
    makeObject("legacy/0", {"external/1", "external/00", "legacy/0", "external/0"});
    mObject->initialize();
    EXPECT_THAT(mProperties.writes(), IsEmpty());
}

TEST_F(LifecycleTest, AFailedConnectionOfExternalZeroIsNotRecordedAndNothingIsCleared) {
    mProperties.preset(kAddedProperty, "1");
    mProxy->declared = {"external/0"};
    makeObject("legacy/0", {"external/0"});
    mObject->initialize();
    EXPECT_THAT(mProperties.writes(), IsEmpty());
    EXPECT_EQ(mProperties.value(kAddedProperty), "1");
}

TEST_F(LifecycleTest, AConnectionThatCannotBeRecordedStands) {
    recordFault("property", "the record of external/0 cannot be written",
                "ignored: the provider is connected");
    startService("external/0");
    makeObject("legacy/0", {"external/0"});
    mProperties.writesFail = true;
    EXPECT_TRUE(mObject->initialize());
    EXPECT_TRUE(isConnected("external/0"));
    EXPECT_EQ(mProperties.value(kAddedProperty), "");
}

TEST_F(LifecycleTest, AShimThatHasTheObjectAsItsCallbackKeepsItAlive) {
    startService("external/0");
    makeObject("legacy/0", {"external/0"});
    mObject->initialize();
    mObject->setCallback(mFramework);
    const wp<Object> object = mObject;
    mObject.clear();
    EXPECT_NE(object.promote(), nullptr);
    mShims.drop("external/0");
    EXPECT_EQ(object.promote(), nullptr);
}

TEST_F(LifecycleTest, DestructionReleasesTheMapperBeforeTheProxyAndLeavesTheProvidersAlone) {
    const sp<ScriptedProvider> service = startService("external/0");
    makeObject("legacy/0", {"external/0"});
    mObject->initialize();
    std::vector<std::string> released;
    mMapper->onDestroyed = [&] { released.push_back("mapper"); };
    mProxy->onDestroyed = [&] { released.push_back("proxy"); };
    mMapper.reset();
    mProxy.reset();
    EXPECT_THAT(released, IsEmpty()) << "the object owns both";
    mLog.take();

    mObject.clear();
    EXPECT_THAT(released, ElementsAre("mapper", "proxy"));
    EXPECT_EQ(service->unlinkCalls(), 0) << "no link is undone";
    EXPECT_THAT(service->links(), SizeIs(1));
    EXPECT_EQ(service->links()[0].recipient.promote(), nullptr);
    EXPECT_THAT(mShims.shim("external/0")->callbacks(), IsEmpty()) << "no callback is cleared";
    EXPECT_THAT(mLog.lines(), IsEmpty());
    mProxy = std::make_shared<FakeServiceInteractionProxy>();
    mMapper = std::make_shared<FakeProviderMapper>();
}

TEST_F(LifecycleTest, DestructionReleasesTheProxyBeforeTheServicesAndTheCallbackLast) {
    std::vector<std::string> released;
    const auto note = [&released](const char* what) {
        return [&released, what] { released.push_back(what); };
    };
    mProxy->declared = {"external/0"};
    mProxy->start("external/0", new Departing<ScriptedProvider>(note("service")));
    makeObject("legacy/0", {"external/0"});
    mObject->initialize();
    mProxy->stop("external/0");
    mObject->setCallback(new Departing<RecordingCallback>(note("callback")));
    mShims.drop("external/0");  // It holds the object.
    mMapper->onDestroyed = note("mapper");
    mProxy->onDestroyed = note("proxy");
    mMapper.reset();
    mProxy.reset();
    EXPECT_THAT(released, IsEmpty()) << "the object owns all of them";

    mObject.clear();
    EXPECT_THAT(released, ElementsAre("mapper", "proxy", "service", "callback"));
}

TEST_F(LifecycleTest, AHundredObjectsComeAndGo) {
    startService("external/0");
    mMapper->replacements["legacy/0"] = {"external/0"};
    for (int i = 0; i < 100; ++i) {
        construct("legacy/0");
        ASSERT_TRUE(mObject->mIsValid);
        ASSERT_TRUE(mObject->initialize());
        reportPresent({"device@3.2/external/1"});
    }
}

TEST_F(LifecycleTest, TheExportedTablesStayUntouched) {
    namespace implementation = android::hardware::camera::provider::V2_4::implementation;
    makeConnectedObject({"external/0"});
    mObject->setCallback(mFramework);
    reportPresent({"device@3.2/external/1", "device@3.2/external/2"});
    mObject->removeAndNotifyDevicesByProviderName("external/0");
    EXPECT_THAT(implementation::gDeviceMap, IsEmpty());
    EXPECT_FALSE(implementation::gParseFlag);
}

using LifecycleDeathTest = LifecycleTest;

TEST_F(LifecycleDeathTest, AnInstanceNameWithoutASlashEndsTheProcess) {
    EXPECT_EXIT(
            {
                const MirroredLog mirror;
                construct("legacy");
            },
            ::testing::ExitedWithCode(1),
            ::testing::EndsWith(shutdownText({errorLine("FATAL: Invalid provider name legacy")})));
}

TEST_F(LifecycleDeathTest, AReplacementWithoutASlashEndsTheProcess) {
    mMapper->replacements["legacy/0"] = {"external/0", "virtual"};
    EXPECT_EXIT(
            {
                const MirroredLog mirror;
                construct("legacy/0");
            },
            ::testing::ExitedWithCode(1),
            ::testing::EndsWith(shutdownText({infoLine("Get replacement provider for legacy/0"),
                                              errorLine("FATAL: Invalid provider name virtual")})));
}

TEST_F(LifecycleDeathTest, ShutdownWaitsASecondBetweenItsLinesAndRunsTheExitHandlers) {
    EXPECT_EXIT(
            {
                const MirroredLog mirror;
                atexit([] { fputs("exit handlers ran\n", stderr); });
                mSleep.onSleep = [](std::chrono::nanoseconds duration) {
                    fprintf(stderr, "waited %lld ns\n", static_cast<long long>(duration.count()));
                };
                Object::shutdown();
            },
            ::testing::ExitedWithCode(1),
            ::testing::EndsWith(MirroredLog::text({shutdownLines()[0]}) + "waited 1000000000 ns\n" +
                                MirroredLog::text({shutdownLines()[1]}) + "exit handlers ran\n"));
}

TEST_F(LifecycleDeathTest, ShutdownEndsTheProcessFromAnyThread) {
    EXPECT_EXIT(
            {
                const MirroredLog mirror;
                std::thread([] { Object::shutdown(); }).join();
            },
            ::testing::ExitedWithCode(1), ::testing::EndsWith(shutdownText({})));
}

}  // namespace
}  // namespace orvo::test
