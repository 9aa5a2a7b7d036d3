// SPDX-License-Identifier: Apache-2.0
// The library's entry point: the aggregating provider and the MR provider.

#include <dlfcn.h>
#include <stdio.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <future>

#include <android/log.h>

#include "tests/provider/FakePlatform.h"
#include "tests/support/Allocations.h"
#include "tests/support/Fault.h"
#include "tests/support/Gate.h"
#include "tests/support/OlderGoogleTest.h"
#include "tests/support/ProviderTest.h"

namespace orvo::test {
namespace {

using android::sp;
using android::wp;
using android::hardware::camera::provider::V2_4::ICameraProvider;
using android::hardware::camera::provider::V2_4::implementation::HIDL_FETCH_ICameraProvider;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr char kMap[] = R"(<map>
    <instance replace="external/0">legacy/0</instance>
    <instance replace="virtual/0">legacy/0</instance>
    <instance replace="external/0">default/1</instance>
    <instance replace="odd">odd/0</instance>
</map>)";

LogLine mapperLine(int priority, const std::string& text) {
    return {priority, "ProviderMapper", text};
}

LogLine calledLine(const std::string& name) {
    return errorLine("HIDL_FETCH_ICameraProvider " + name);
}

std::vector<LogLine> mapLoadedLines() {
    const std::pair<const char*, const char*> entries[] = {{"default/1", "external/0"},
                                                           {"legacy/0", "external/0"},
                                                           {"legacy/0", "virtual/0"},
                                                           {"odd/0", "odd"}};
    std::vector<LogLine> lines;
    for (const auto& [instance, replacement] : entries) {
        lines.push_back(mapperLine(ANDROID_LOG_INFO, std::string("** ORVO Provider map loaded: '") +
                                                             instance + "' -> '" + replacement +
                                                             "'"));
    }
    return lines;
}

std::vector<LogLine> join(std::vector<std::vector<LogLine>> parts) {
    std::vector<LogLine> all;
    for (const std::vector<LogLine>& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

class EntryPointTest : public ProviderTest {
  protected:
    using Implementation = Object;

    EntryPointTest() { mPlatform.mapText = kMap; }

    void TearDown() override {
        mPlatform.services.clear();
        mPlatform.registrations.clear();
        ProviderTest::TearDown();
    }

    sp<ScriptedProvider> run(const std::string& name) {
        const sp<ScriptedProvider> service = new ScriptedProvider;
        mPlatform.declared.push_back(name);
        mPlatform.services[name] = service;
        return service;
    }

    // Takes over the reference that the entry point gave its caller.
    static sp<ICameraProvider> adopt(ICameraProvider* provider) {
        const sp<ICameraProvider> held = provider;
        if (provider != nullptr) provider->decStrong(nullptr);
        return held;
    }

    FakePlatform mPlatform;
};

TEST_F(EntryPointTest, MakesAndConnectsAProviderForAnInstanceOfTheMap) {
    run("external/0");
    run("foreign/0");
    run("virtual/0");
    ICameraProvider* const provider = HIDL_FETCH_ICameraProvider("legacy/0");
    ASSERT_NE(provider, nullptr);
    char address[32];
    snprintf(address, sizeof address, "%p", static_cast<void*>(provider));
    const std::vector<LogLine> own = {
            infoLine("Get replacement provider for legacy/0"),
            infoLine("Replacement provider external/0 for legacy/0"),
            infoLine("Replacement provider virtual/0 for legacy/0"),
            infoLine("Loading service external/0"),
            infoLine("Found replacement provider external/0 for legacy/0"),
            infoLine("Loading service foreign/0"),
            errorLine("FATAL(479): Invalid provider name foreign/0"),
            infoLine("Loading service virtual/0"),
            infoLine("Found replacement provider virtual/0 for legacy/0"),
            infoLine(std::string("Returning implementation ") + address + " for legacy/0\n"),
    };
    EXPECT_EQ(mLog.lines(), join({{calledLine("legacy/0")}, mapLoadedLines(), own}));
    EXPECT_THAT(mProperties.writes(),
                ElementsAre(PropertyWrite{"service.cam_prvdr.external_0.added", "1"}));
    EXPECT_THAT(mPlatform.opens, 0);
    adopt(provider);
}

TEST_F(EntryPointTest, TheCallerHasOneStrongReferenceAndReleasingItDestroysTheObject) {
    run("external/0");
    ICameraProvider* const provider = HIDL_FETCH_ICameraProvider("legacy/0");
    ASSERT_NE(provider, nullptr);
    EXPECT_EQ(provider->getStrongCount(), 1);
    const wp<ICameraProvider> object = provider;
    provider->decStrong(nullptr);
    EXPECT_EQ(object.promote(), nullptr);
}

TEST_F(EntryPointTest, TheCallersReferenceIsTakenBeforeTheObjectIsLogged) {
    void* address = nullptr;
    int references = 0;
    mLog.onLine = [&](const LogLine& line) {
        if (sscanf(line.text.c_str(), "Returning implementation %p", &address) != 1) return;
        references = static_cast<ICameraProvider*>(address)->getStrongCount();
    };
    const sp<ICameraProvider> provider = adopt(HIDL_FETCH_ICameraProvider("legacy/0"));
    EXPECT_EQ(address, provider.get());
    EXPECT_EQ(references, 2) << "the entry point's own, and the caller's";
}

TEST_F(EntryPointTest, TheObjectIsTheAggregatingProviderOfThatName) {
    const sp<ICameraProvider> provider = adopt(HIDL_FETCH_ICameraProvider("legacy/0"));
    const auto* object = static_cast<Implementation*>(provider.get());
    EXPECT_TRUE(object->mIsValid);
    EXPECT_EQ(object->mProviderName, "legacy/0");
    EXPECT_EQ(object->mProviderType, "legacy");
    EXPECT_EQ(object->mProviderMapper.use_count(), 1);
    EXPECT_EQ(object->mServiceProxy.use_count(), 1);
}

TEST_F(EntryPointTest, WhenNoneOfTheProvidersIsDeclaredTheObjectIsStillReturned) {
    run("foreign/0");
    const sp<ICameraProvider> provider = adopt(HIDL_FETCH_ICameraProvider("legacy/0"));
    ASSERT_NE(provider, nullptr);
    const auto* object = static_cast<Implementation*>(provider.get());
    EXPECT_THAT(object->mHalDescriptors, SizeIs(2));
    for (const Descriptor& descriptor : object->mHalDescriptors) {
        EXPECT_EQ(descriptor.mProvider, nullptr);
    }
    EXPECT_THAT(mProperties.writes(), IsEmpty()) << "external/0 is only named in the map";
}

TEST_F(EntryPointTest, WithoutAServiceManagerNothingIsConnected) {
    recordFault("service look-up", "there is no service manager",
                "the provider object is made, with no provider connected");
    run("external/0");
    mPlatform.hasServiceManager = false;
    const sp<ICameraProvider> provider = adopt(HIDL_FETCH_ICameraProvider("legacy/0"));
    ASSERT_NE(provider, nullptr);
    EXPECT_THAT(mPlatform.lookups, IsEmpty());
}

TEST_F(EntryPointTest, ADeclaredProviderThatDoesNotRunStaysUnconnected) {
    mPlatform.declared = {"external/0"};
    const sp<ICameraProvider> provider = adopt(HIDL_FETCH_ICameraProvider("legacy/0"));
    ASSERT_NE(provider, nullptr);
    EXPECT_EQ(mLog.count(errorLine("Failed to get service external/0")), 1u);
    EXPECT_THAT(mProperties.writes(), IsEmpty());
}

TEST_F(EntryPointTest, AMissingMapFileGivesNullAndTheProcessGoesOn) {
    recordFault("map file", "the file is missing",
                "error lines; the entry point returns null, the process goes on");
    mPlatform.mapText.clear();
    EXPECT_EQ(HIDL_FETCH_ICameraProvider("legacy/0"), nullptr);
    EXPECT_THAT(
            mLog.lines(),
            ElementsAre(calledLine("legacy/0"),
                        mapperLine(ANDROID_LOG_ERROR,
                                   "Failed to open /vendor/etc/orvo_vendor_manifest.xml"),
                        errorLine("FATAL (165): Failed to load provider map from "
                                  "/vendor/etc/orvo_vendor_manifest.xml"),
                        infoLine("Could not create OrvoCameraServiceImplementation for legacy/0")));
    EXPECT_THAT(mPlatform.queries, IsEmpty()) << "an invalid object is not initialised";
}

TEST_F(EntryPointTest, AnInstanceThatTheMapDoesNotMentionGivesNull) {
    EXPECT_EQ(HIDL_FETCH_ICameraProvider("remote/0"), nullptr);
    const std::vector<LogLine> own = {
            infoLine("Get replacement provider for remote/0"),
            mapperLine(ANDROID_LOG_ERROR, "Failed to find replacement provider for 'remote/0'"),
            infoLine("No replacement provider for remote/0 mImpl"),
            infoLine("Could not create OrvoCameraServiceImplementation for remote/0"),
    };
    EXPECT_EQ(mLog.lines(), join({{calledLine("remote/0")}, mapLoadedLines(), own}));
    EXPECT_THAT(mPlatform.queries, IsEmpty());
}

// The object, the mapper with its map, and the proxy are most of what the calls allocate.
TEST_F(EntryPointTest, AnObjectThatIsRejectedIsDestroyedWithItsMapperAndItsProxy) {
    if (!Allocations::kWatched) GTEST_SKIP() << "the sanitizer finds what is left over";
    HIDL_FETCH_ICameraProvider("remote/0");  // The first one fills caches of the platform's.
    mLog.take();
    for (const char* map : {kMap, ""}) {
        SCOPED_TRACE(map);
        mPlatform.mapText = map;
        const Allocations allocations;
        EXPECT_EQ(HIDL_FETCH_ICameraProvider("remote/0"), nullptr);
        mLog.take();
        EXPECT_GT(allocations.largest(), sizeof(Object) - 1) << "it was made";
        EXPECT_EQ(allocations.left(), 0);
    }
}

TEST_F(EntryPointTest, DefaultOneIsAnAggregatingProvider) {
    const sp<ICameraProvider> provider = adopt(HIDL_FETCH_ICameraProvider("default/1"));
    ASSERT_NE(provider, nullptr);
    EXPECT_EQ(static_cast<Implementation*>(provider.get())->mProviderName, "default/1");
    EXPECT_EQ(mPlatform.opens, 0);
}

TEST_F(EntryPointTest, ANameShorterThanThePrefixIsNotTheMRProvider) {
    EXPECT_EQ(HIDL_FETCH_ICameraProvider("default/"), nullptr);
    EXPECT_EQ(HIDL_FETCH_ICameraProvider("Default/0"), nullptr);
    EXPECT_EQ(HIDL_FETCH_ICameraProvider(" default/0"), nullptr);
    EXPECT_EQ(mPlatform.opens, 0);
}

TEST_F(EntryPointTest, EachCallMakesAnObjectOfItsOwn) {
    run("external/0");
    std::vector<std::future<ICameraProvider*>> calls;
    for (int i = 0; i < 8; ++i) {
        calls.push_back(std::async(std::launch::async,
                                   [] { return HIDL_FETCH_ICameraProvider("legacy/0"); }));
    }
    std::set<sp<ICameraProvider>> objects;
    for (auto& call : calls) objects.insert(adopt(call.get()));
    EXPECT_THAT(objects, SizeIs(8));
    EXPECT_EQ(objects.count(nullptr), 0u);
}

using EntryPointDeathTest = EntryPointTest;

TEST_F(EntryPointDeathTest, ANameWithoutASlashEndsTheProcess) {
    EXPECT_EXIT(
            {
                const MirroredLog mirror;
                HIDL_FETCH_ICameraProvider("legacy");
            },
            ::testing::ExitedWithCode(1),
            ::testing::EndsWith(shutdownText(
                    {calledLine("legacy"), errorLine("FATAL: Invalid provider name legacy")})));
}

TEST_F(EntryPointDeathTest, AReplacementWithoutASlashEndsTheProcess) {
    EXPECT_EXIT(
            {
                const MirroredLog mirror;
                HIDL_FETCH_ICameraProvider("odd/0");
            },
            ::testing::ExitedWithCode(1),
            ::testing::EndsWith(shutdownText({infoLine("Get replacement provider for odd/0"),
                                              errorLine("FATAL: Invalid provider name odd")})));
}

// The MR provider. A library that has been opened stays open for the process, so each test needs a
// process of its own, as CTest gives it.
class MRProviderTest : public EntryPointTest {
  protected:
    MRProviderTest() : mProvider(new ScriptedProvider) {
        mPlatform.mrEntry = [this](const char*) { return mProvider.get(); };
    }

    void SetUp() override {
        if (FakePlatform::libraryWasOpened()) {
            GTEST_SKIP() << "an earlier test opened the MR library: run this one on its own";
        }
    }

    void TearDown() override {
        mProvider.clear();
        EntryPointTest::TearDown();
    }

    // Two calls fail in the loader. The first one is inside `step`, with the lock, when the second
    // one comes, and logs `failure` before it lets that one have it, and the rest afterwards.
    void expectLocked(std::function<void()> FakePlatform::*step, const LogLine& failure) {
        Gate inside;
        std::promise<void> entered;
        std::atomic<int> steps = 0;
        mPlatform.*step = [&] {
            if (++steps == 1) {
                inside.pass();
            } else {
                entered.set_value();
            }
        };
        const std::future<void> second = entered.get_future();
        mLog.onLine = [&](const LogLine& line) {
            if (line == failure && steps == 1) {
                EXPECT_EQ(second.wait_for(std::chrono::milliseconds(100)),
                          std::future_status::timeout);
            } else if (line == mFailed) {
                EXPECT_EQ(second.wait_for(kPatience), std::future_status::ready);
            }
        };

        const auto call = [] { return HIDL_FETCH_ICameraProvider("default/0"); };
        auto firstCall = std::async(std::launch::async, call);
        ASSERT_TRUE(inside.waitForArrivals(1));
        EXPECT_THAT(mLog.take(), ElementsAre(calledLine("default/0"), mCreating));
        auto secondCall = std::async(std::launch::async, call);
        EXPECT_TRUE(mLog.waitFor(mCreating)) << "it needs no lock for that";
        inside.open();
        EXPECT_EQ(firstCall.get(), nullptr);
        EXPECT_EQ(secondCall.get(), nullptr);
        EXPECT_THAT(mLog.take(),
                    ::testing::UnorderedElementsAre(calledLine("default/0"), mCreating, failure,
                                                    mFailed, failure, mFailed));
    }

    const LogLine mCreating = infoLine("Creating MR provider");
    const LogLine mFailed = errorLine("Could not create MR provider");
    const LogLine mNotOpened = errorLine(
            "LoadMRProviderInterface: DLOPEN failed for "
            "/vendor/lib64/vendor.quill.mrprovider.provider@2.4-impl.so: no such library here");
    const LogLine mNoEntry = errorLine(
            "LoadMRProviderInterface: /vendor/lib64/vendor.quill.mrprovider.provider@2.4-impl.so "
            "does not have func: HIDL_FETCH_ICameraProvider /n");
    sp<ScriptedProvider> mProvider;
};

TEST_F(MRProviderTest, TheLibrarysOwnObjectIsReturnedUntouched) {
    EXPECT_EQ(HIDL_FETCH_ICameraProvider("default/0"), mProvider.get());
    EXPECT_EQ(mProvider->getStrongCount(), 1) << "no reference is added";
    EXPECT_EQ(mPlatform.openMode, RTLD_NOW);
    EXPECT_EQ(mPlatform.symbol, "HIDL_FETCH_ICameraProvider");
    EXPECT_THAT(mPlatform.mrNames, ElementsAre("default/0"));
    EXPECT_THAT(mLog.lines(), ElementsAre(calledLine("default/0"), mCreating));
    EXPECT_THAT(mPlatform.queries, IsEmpty());
}

TEST_F(MRProviderTest, AnyNameThatBeginsWithDefaultZeroIsTheMRProvider) {
    for (const std::string name : {"default/0x", "default/01", "default/0/1", "default/0 "}) {
        EXPECT_EQ(HIDL_FETCH_ICameraProvider(name.c_str()), mProvider.get());
        EXPECT_THAT(mLog.take(), ElementsAre(calledLine(name), mCreating));
    }
    EXPECT_THAT(mPlatform.mrNames, ElementsAre("default/0", "default/0", "default/0", "default/0"));
}

TEST_F(MRProviderTest, TheLibraryIsOpenedOnceAndItsEntryLookedUpEachTime) {
    for (int i = 0; i < 3; ++i) EXPECT_EQ(HIDL_FETCH_ICameraProvider("default/0"), mProvider.get());
    EXPECT_EQ(mPlatform.opens, 1);
    EXPECT_EQ(mPlatform.symbolLookups, 3);
    EXPECT_THAT(mPlatform.mrNames, SizeIs(3));
}

TEST_F(MRProviderTest, ALibraryThatCannotBeOpenedIsTriedAgainByTheNextCall) {
    recordFault("dynamic loader", "the MR library cannot be opened",
                "error lines; null, and the next call tries again");
    mPlatform.libraryOpens = false;
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(HIDL_FETCH_ICameraProvider("default/0"), nullptr);
        EXPECT_THAT(mLog.take(),
                    ElementsAre(calledLine("default/0"), mCreating, mNotOpened, mFailed));
    }
    EXPECT_EQ(mPlatform.opens, 2);
    EXPECT_EQ(mPlatform.symbolLookups, 0);

    mPlatform.libraryOpens = true;
    EXPECT_EQ(HIDL_FETCH_ICameraProvider("default/0"), mProvider.get());
    EXPECT_EQ(HIDL_FETCH_ICameraProvider("default/0"), mProvider.get());
    EXPECT_EQ(mPlatform.opens, 3) << "and never again after it was opened";
}

TEST_F(MRProviderTest, ALibraryWithoutTheEntryStaysOpen) {
    recordFault("dynamic loader", "the MR library lacks its entry",
                "error lines; null, and the library stays open");
    mPlatform.libraryHasEntry = false;
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(HIDL_FETCH_ICameraProvider("default/0"), nullptr);
        EXPECT_THAT(mLog.take(),
                    ElementsAre(calledLine("default/0"), mCreating, mNoEntry, mFailed));
    }
    EXPECT_EQ(mPlatform.opens, 1);
}

TEST_F(MRProviderTest, ThatTheLibraryCannotBeOpenedIsLoggedUnderTheLock) {
    mPlatform.libraryOpens = false;
    expectLocked(&FakePlatform::onOpen, mNotOpened);
}

TEST_F(MRProviderTest, ThatTheLibraryLacksTheEntryIsLoggedUnderTheLock) {
    mPlatform.libraryHasEntry = false;
    expectLocked(&FakePlatform::onLookUp, mNoEntry);
}

TEST_F(MRProviderTest, AnEntryThatReturnsNullGivesNull) {
    recordFault("dynamic loader", "the MR library's entry returns null", "an error line; null");
    mPlatform.mrEntry = [](const char*) { return nullptr; };
    EXPECT_EQ(HIDL_FETCH_ICameraProvider("default/0"), nullptr);
    EXPECT_THAT(mLog.lines(), ElementsAre(calledLine("default/0"), mCreating, mFailed));
}

TEST_F(MRProviderTest, SeveralThreadsLoadTheLibraryOnce) {
    std::vector<std::future<ICameraProvider*>> calls;
    for (int i = 0; i < 8; ++i) {
        calls.push_back(std::async(std::launch::async,
                                   [] { return HIDL_FETCH_ICameraProvider("default/0"); }));
    }
    for (auto& call : calls) EXPECT_EQ(call.get(), mProvider.get());
    EXPECT_EQ(mPlatform.opens, 1);
}

TEST_F(MRProviderTest, TheEntryRunsWithoutTheLock) {
    Gate firstCall;
    std::atomic<int> calls = 0;
    std::atomic<bool> firstIsInside = false;
    mPlatform.mrEntry = [&](const char*) {
        if (++calls == 1) {
            firstIsInside = true;
            firstCall.pass();
            firstIsInside = false;
        } else {
            EXPECT_TRUE(firstIsInside) << "the second call had to wait for the first one";
        }
        return mProvider.get();
    };
    auto first =
            std::async(std::launch::async, [] { return HIDL_FETCH_ICameraProvider("default/0"); });
    ASSERT_TRUE(firstCall.waitForArrivals(1));
    EXPECT_EQ(HIDL_FETCH_ICameraProvider("default/0"), mProvider.get());
    firstCall.open();
    EXPECT_EQ(first.get(), mProvider.get());
    EXPECT_EQ(calls, 2);
}

// A second caller comes while the first one looks the entry up, in a library that is open already.
TEST_F(MRProviderTest, ACallerDuringTheLookUpOfTheEntryWaitsForIt) {
    EXPECT_EQ(HIDL_FETCH_ICameraProvider("default/0"), mProvider.get());
    Gate lookingUp;
    std::atomic<int> lookUps = 0;
    mPlatform.onLookUp = [&] {
        if (++lookUps == 1) lookingUp.pass();
    };
    const auto call = [] { return HIDL_FETCH_ICameraProvider("default/0"); };
    auto first = std::async(std::launch::async, call);
    ASSERT_TRUE(lookingUp.waitForArrivals(1));
    mLog.take();
    auto second = std::async(std::launch::async, call);
    ASSERT_TRUE(mLog.waitFor(mCreating));
    EXPECT_EQ(second.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
    EXPECT_EQ(lookUps, 1);
    lookingUp.open();
    EXPECT_EQ(first.get(), mProvider.get());
    EXPECT_EQ(second.get(), mProvider.get());
}

TEST_F(MRProviderTest, AnAggregatingProviderIsMadeWhileTheLibraryIsBeingLoaded) {
    Gate loading;
    mPlatform.onOpen = [&] { loading.pass(); };
    auto mr =
            std::async(std::launch::async, [] { return HIDL_FETCH_ICameraProvider("default/0"); });
    ASSERT_TRUE(loading.waitForArrivals(1));
    auto aggregating =
            std::async(std::launch::async, [] { return HIDL_FETCH_ICameraProvider("legacy/0"); });
    EXPECT_EQ(aggregating.wait_for(kPatience / 2), std::future_status::ready);
    loading.open();
    EXPECT_NE(adopt(aggregating.get()), nullptr);
    EXPECT_EQ(mr.get(), mProvider.get());
}

// A second caller comes while the first one is inside the load: it waits, and loads nothing.
TEST_F(MRProviderTest, ACallerDuringTheLoadWaitsForIt) {
    Gate loading;
    mPlatform.onOpen = [&] { loading.pass(); };
    auto first =
            std::async(std::launch::async, [] { return HIDL_FETCH_ICameraProvider("default/0"); });
    ASSERT_TRUE(loading.waitForArrivals(1));
    auto second = std::async(std::launch::async,
                             [] { return HIDL_FETCH_ICameraProvider("default/0/2"); });
    ASSERT_TRUE(mLog.waitFor(calledLine("default/0/2")));
    EXPECT_EQ(second.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
    EXPECT_EQ(mPlatform.symbolLookups, 0);
    loading.open();
    EXPECT_EQ(first.get(), mProvider.get());
    EXPECT_EQ(second.get(), mProvider.get());
    EXPECT_EQ(mPlatform.opens, 1);
}

}  // namespace
}  // namespace orvo::test
