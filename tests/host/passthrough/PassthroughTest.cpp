// SPDX-License-Identifier: Apache-2.0
// The search for implementations in libraries, and how getService comes to it.

#include <dlfcn.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <android/hidl/manager/1.2/IServiceManager.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hidl/HidlTransportSupport.h>
#include <hidl/LegacySupport.h>
#include <orvo/test/greeter/1.1/BsGreeter.h>

#include "tests/host/device/ChildProcess.h"
#include "tests/host/device/TemporaryDevice.h"
#include "tests/host/servicemanager/Greeter.h"

namespace {

using android::sp;
using android::wp;
using android::hardware::defaultServiceManager;
using android::hardware::getPassthroughServiceManager;
using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using android::hidl::base::V1_0::IBase;
using orvo::test::greeter::V1_1::BsGreeter;
using orvo::testing::ChildProcess;
using orvo::testing::Greeter;
using orvo::testing::greetingOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using IGreeter = orvo::test::greeter::V1_0::IGreeter;
using IGreeter11 = orvo::test::greeter::V1_1::IGreeter;
using IServiceManager = android::hidl::manager::V1_0::IServiceManager;

constexpr char kManifest[] = R"(<manifest version="1.0" type="device">
    <hal format="hidl"><name>orvo.test.greeter</name><transport>passthrough</transport>
        <fqname>@1.0::IGreeter/loaded</fqname></hal>
    <hal format="hidl"><name>orvo.test.greeter</name><transport>hwbinder</transport>
        <fqname>@1.0::IGreeter/served</fqname></hal></manifest>)";

constexpr char kImplementation[] = "orvo.test.greeter@1.0-impl.so";

/** All tests of a process share its service manager; each has libraries of its own. */
class PassthroughTest : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        sDevice = new orvo::testing::TemporaryDevice;
        const std::string manifest = sDevice->path() / "manifest.xml";
        std::ofstream(manifest) << kManifest;
        sServiceManager = new ChildProcess(SERVICE_MANAGER, {"--manifest", manifest});
        ASSERT_EQ("ready", sServiceManager->readLine());
    }
    static void TearDownTestSuite() {
        delete sServiceManager;
        delete sDevice;
    }
    void SetUp() override {
        mLibraries = sDevice->path() / "libraries";
        std::filesystem::create_directory(mLibraries);
        setenv("ORVO_PASSTHROUGH_DIR", mLibraries.c_str(), 1);
    }
    void TearDown() override {
        unsetenv("ORVO_PASSTHROUGH_DIR");
        unsetenv("TREBLE_TESTING_OVERRIDE");
        std::filesystem::remove_all(mLibraries);
    }
    void install(const std::string& library, const std::string& name) {
        std::filesystem::create_symlink(library, mLibraries / name);
    }
    static bool isLoaded(const char* library) {
        void* const handle = dlopen(library, RTLD_LAZY | RTLD_NOLOAD);
        if (handle != nullptr) dlclose(handle);
        return handle != nullptr;
    }
    static bool isWrapped(const sp<IGreeter>& greeter) {
        // The wrapper is that of the version that the library gives.
        return dynamic_cast<BsGreeter*>(greeter.get()) != nullptr;
    }

    static inline orvo::testing::TemporaryDevice* sDevice = nullptr;
    static inline ChildProcess* sServiceManager = nullptr;
    std::filesystem::path mLibraries;
};

TEST_F(PassthroughTest, TheImplementationItselfIsGivenToWhoAsksForIt) {
    install(GREETER_GOOD, kImplementation);
    const sp<IGreeter> greeter = IGreeter::getService("any/0", true /* getStub */);
    ASSERT_NE(nullptr, greeter);
    EXPECT_FALSE(greeter->isRemote());
    EXPECT_FALSE(isWrapped(greeter));
    EXPECT_EQ("library's any/0 greets you", greetingOf(greeter));
    EXPECT_NE(nullptr, sp<IGreeter11>(IGreeter11::castFrom(greeter)));
}

TEST_F(PassthroughTest, TheCallerHasTheOnlyReference) {
    install(GREETER_GOOD, kImplementation);
    sp<IGreeter> greeter = IGreeter::getService("any/0", true);
    EXPECT_EQ(1, greeter->getStrongCount());
    const wp<IGreeter> watched = greeter;
    greeter.clear();
    EXPECT_EQ(nullptr, watched.promote());
}

TEST_F(PassthroughTest, EveryCallAsksForANewObject) {
    install(GREETER_GOOD, kImplementation);
    EXPECT_NE(IGreeter::getService("any/0", true), IGreeter::getService("any/0", true));
}

TEST_F(PassthroughTest, TheNameBeginsWithThePackageAndEndsAsALibrarys) {
    install(GREETER_GOOD, "orvo.test.greeter@1.0-impl-special.v2.so");
    EXPECT_NE(nullptr, IGreeter::getService("x", true));
}

TEST_F(PassthroughTest, LibrariesOfOtherNamesAreNotAsked) {
    for (const char* name : {"orvo.test.greeter@1.0-imp.so", "orvo.test.greeter@1.1-impl.so",
                             "orvo.test.greeter@1.0-impl.so.1", "orvo.test.greeter@1.0.so",
                             "lib-orvo.test.greeter@1.0-impl.so", "orvo.test.greeter@1.0-impl"}) {
        install(GREETER_GOOD, name);
    }
    EXPECT_EQ(nullptr, IGreeter::getService("x", true));
}

TEST_F(PassthroughTest, LibrariesThatHaveNothingAreClosedAndTheSearchGoesOn) {
    // Whatever order the directory has, all but the last are passed over.
    install(GREETER_NULL, "orvo.test.greeter@1.0-impl-null.so");
    install(GREETER_NOSYMBOL, "orvo.test.greeter@1.0-impl-nosymbol.so");
    std::ofstream(mLibraries / "orvo.test.greeter@1.0-impl-text.so") << "no library";
    std::filesystem::create_directory(mLibraries / "orvo.test.greeter@1.0-impl-directory.so");
    EXPECT_EQ(nullptr, IGreeter::getService("x", true));
    EXPECT_FALSE(isLoaded(GREETER_NULL));
    EXPECT_FALSE(isLoaded(GREETER_NOSYMBOL));

    install(GREETER_GOOD, "orvo.test.greeter@1.0-impl-good.so");
    EXPECT_EQ("library's x greets you", greetingOf(IGreeter::getService("x", true)));
    EXPECT_FALSE(isLoaded(GREETER_NULL));
    EXPECT_FALSE(isLoaded(GREETER_NOSYMBOL));
}

TEST_F(PassthroughTest, ALibraryThatGaveAnObjectStaysLoaded) {
    install(GREETER_GOOD, kImplementation);
    EXPECT_NE(nullptr, IGreeter::getService("x", true));
    EXPECT_TRUE(isLoaded(GREETER_GOOD));
}

TEST_F(PassthroughTest, WithoutLibrariesThereIsNothing) {
    EXPECT_EQ(nullptr, IGreeter::getService("x", true));
    unsetenv("ORVO_PASSTHROUGH_DIR");
    EXPECT_EQ(nullptr, IGreeter::getService("x", true));
    setenv("ORVO_PASSTHROUGH_DIR", "/nonexistent", 1);
    EXPECT_EQ(nullptr, IGreeter::getService("x", true));
}

TEST_F(PassthroughTest, NamesThatAreNoDescriptorsFindNothing) {
    install(GREETER_GOOD, kImplementation);
    const auto manager = getPassthroughServiceManager();
    for (const char* name : {"", "orvo.test.greeter@1.0", "::", "x/../y@1.0::IGreeter"}) {
        EXPECT_EQ(nullptr, sp<IBase>(manager->get(name, "x"))) << name;
    }
}

TEST_F(PassthroughTest, WhatTheManifestDeclaresAsPassthroughIsLoadedAndWrapped) {
    install(GREETER_GOOD, kImplementation);
    const sp<IGreeter> greeter = IGreeter::getService("loaded");
    ASSERT_NE(nullptr, greeter);
    EXPECT_TRUE(isWrapped(greeter));
    EXPECT_FALSE(greeter->isRemote());
    EXPECT_EQ("library's loaded greets you", greetingOf(greeter));
}

TEST_F(PassthroughTest, APassthroughInstanceIsNotLookedForAmongRegisteredOnes) {
    ASSERT_EQ(android::OK, (new Greeter("registered"))->registerAsService("loaded"));
    EXPECT_EQ(nullptr, IGreeter::getService("loaded"));
}

TEST_F(PassthroughTest, WhatTheManifestDeclaresAsServedIsNotLoaded) {
    install(GREETER_GOOD, kImplementation);
    EXPECT_EQ(nullptr, IGreeter::getService("served"));
    EXPECT_NE(nullptr, IGreeter::getService("served", true /* getStub */));
}

TEST_F(PassthroughTest, WhatTheManifestDoesNotDeclareIsLookedForInBothPlaces) {
    install(GREETER_GOOD, kImplementation);
    const sp<IGreeter> loaded = IGreeter::getService("undeclared");
    ASSERT_NE(nullptr, loaded);
    EXPECT_TRUE(isWrapped(loaded));
    const sp<IGreeter> greeter = new Greeter("registered");
    ASSERT_EQ(android::OK, greeter->registerAsService("undeclared"));
    EXPECT_EQ(greeter, IGreeter::getService("undeclared"));
}

TEST_F(PassthroughTest, TestsMayHaveEverythingWrapped) {
    install(GREETER_GOOD, kImplementation);
    setenv("TREBLE_TESTING_OVERRIDE", "true", 1);
    const sp<IGreeter> greeter = IGreeter::getService("x", true /* getStub */);
    ASSERT_NE(nullptr, greeter);
    EXPECT_TRUE(isWrapped(greeter));
}

TEST_F(PassthroughTest, TheServiceManagerIsToldWhoLoadedWhat) {
    install(GREETER_GOOD, kImplementation);
    EXPECT_NE(nullptr, IGreeter::getService("told/0", true));
    std::vector<int32_t> clients;
    const auto take = [&](const hidl_vec<IServiceManager::InstanceDebugInfo>& infos) {
        for (const auto& info : infos) {
            // The object's own descriptor, not the one that was asked for.
            const bool wanted =
                    info.instanceName == "told/0" && info.interfaceName == IGreeter11::descriptor;
            if (wanted) clients.assign(info.clientPids.begin(), info.clientPids.end());
        }
    };
    EXPECT_TRUE(defaultServiceManager()->debugDump(take).isOk());
    EXPECT_THAT(clients, ElementsAre(getpid()));
}

TEST_F(PassthroughTest, TheDumpNamesLibraries) {
    install(GREETER_GOOD, "orvo.test.greeter@1.0-impl-good.so");
    install(GREETER_GOOD, "orvo.test.other@3.7-impl.so");
    install(GREETER_GOOD, "unrelated.so");
    std::vector<std::string> names;
    const auto take = [&](const hidl_vec<IServiceManager::InstanceDebugInfo>& infos) {
        for (const auto& info : infos) {
            names.push_back(std::string(info.interfaceName) + "/" + std::string(info.instanceName));
        }
    };
    EXPECT_TRUE(getPassthroughServiceManager()->debugDump(take).isOk());
    EXPECT_THAT(names, Contains("orvo.test.greeter@1.0::I*/*"));
    EXPECT_THAT(names, Contains("orvo.test.other@3.7::I*/*"));
    EXPECT_THAT(names, Not(Contains("unrelated::I*/*")));
}

TEST_F(PassthroughTest, AnImplementationIsRegisteredUnderItsName) {
    install(GREETER_GOOD, kImplementation);
    EXPECT_EQ(android::OK,
              android::hardware::registerPassthroughServiceImplementation<IGreeter>("served"));
    EXPECT_EQ("library's served greets you", greetingOf(IGreeter::getService("served")));
    EXPECT_EQ(EXIT_FAILURE,
              android::hardware::registerPassthroughServiceImplementation<IGreeter>("nobody"));
}

TEST_F(PassthroughTest, ALazyRegistrarKeepsItsServices) {
    android::hardware::LazyServiceRegistrar registrar;
    wp<IGreeter> watched;
    {
        const sp<IGreeter> greeter = new Greeter("lazy");
        watched = greeter;
        EXPECT_EQ(android::OK, registrar.registerService(greeter, "lazy/0"));
    }
    EXPECT_EQ(watched.promote(), IGreeter::getService("lazy/0"));
    EXPECT_EQ(android::UNEXPECTED_NULL, registrar.registerService(nullptr, "lazy/1"));
}

TEST_F(PassthroughTest, PreloadingLoadsWithoutAsking) {
    // A name of its own: the loader knows the other one as the other library.
    install(GREETER_NULL, "orvo.test.greeter@1.0-impl-preloaded.so");
    ASSERT_FALSE(isLoaded(GREETER_NULL));
    android::hardware::preloadPassthroughService<IGreeter>();
    EXPECT_TRUE(isLoaded(GREETER_NULL));
    void* const library = dlopen(GREETER_NULL, RTLD_LAZY);
    dlclose(library);
    dlclose(library);  // what preloading had opened, for the other tests of this process
    EXPECT_FALSE(isLoaded(GREETER_NULL));
}

TEST(PassthroughServiceManagerDeathTest, OtherQuestionsEndTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto manager = android::hardware::getPassthroughServiceManager1_1();
    EXPECT_DEATH(manager->add("x", nullptr).isOk(), "add is not a question");
    EXPECT_DEATH(manager->getTransport("x", "y").isOk(), "getTransport is not a question");
    EXPECT_DEATH(manager->list([](const auto&) {}).isOk(), "list is not a question");
    EXPECT_DEATH(manager->listByInterface("x", [](const auto&) {}).isOk(), "listByInterface");
    EXPECT_DEATH(manager->registerForNotifications("x", "y", nullptr).isOk(),
                 "registerForNotifications");
    EXPECT_DEATH(manager->unregisterForNotifications("x", "y", nullptr).isOk(),
                 "unregisterForNotifications");
    EXPECT_DEATH(manager->registerPassthroughClient("x", "y").isOk(), "registerPassthroughClient");
}

}  // namespace
