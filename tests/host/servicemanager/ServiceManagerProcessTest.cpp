// SPDX-License-Identifier: Apache-2.0
// Registration and look-up between processes, through the service manager program.

#include <chrono>
#include <condition_variable>
#include <fstream>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <android/hidl/manager/1.2/IServiceManager.h>
#include <cutils/properties.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hidl/HidlTransportSupport.h>

#include "tests/host/device/ChildProcess.h"
#include "tests/host/device/TemporaryDevice.h"
#include "tests/host/servicemanager/Greeter.h"

namespace {

using android::sp;
using android::wp;
using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using android::hardware::Return;
using android::hardware::Void;
using android::hidl::base::V1_0::IBase;
using android::hidl::manager::V1_0::IServiceNotification;
using IServiceManager = android::hidl::manager::V1_2::IServiceManager;
using orvo::testing::ChildProcess;
using orvo::testing::CountingGreeter;
using orvo::testing::Greeter;
using orvo::testing::greetingOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using IGreeter = orvo::test::greeter::V1_0::IGreeter;
using IGreeter11 = orvo::test::greeter::V1_1::IGreeter;

constexpr std::chrono::seconds kPatience(20);

constexpr char kManifest[] = R"(<manifest version="1.0" type="device">
    <hal format="hidl"><name>orvo.test.greeter</name><transport>hwbinder</transport>
        <fqname>@1.1::IGreeter/declared/1</fqname><fqname>@1.0::IGreeter/declared/0</fqname></hal>
    </manifest>)";

/** What a listener was told, to be waited for. */
class Told : public IServiceNotification {
  public:
    Return<void> onRegistration(const hidl_string& fqName, const hidl_string& name,
                                bool preexisting) override {
        std::lock_guard<std::mutex> lock(mMutex);
        mLines.push_back(std::string(preexisting ? "existing " : "new ") + std::string(fqName) +
                         "/" + std::string(name));
        mChanged.notify_all();
        return Void();
    }

    /** The first `count` lines; fewer if they do not come. */
    std::vector<std::string> wait(size_t count) {
        std::unique_lock<std::mutex> lock(mMutex);
        mChanged.wait_for(lock, kPatience, [&] { return mLines.size() >= count; });
        return mLines;
    }

  private:
    std::mutex mMutex;
    std::condition_variable mChanged;
    std::vector<std::string> mLines;  // guarded by mMutex
};

/** Every test of this file uses names of its own, for they share one service manager. */
class ServiceManagerProcessTest : public ::testing::Test {
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

    static std::string ask(ChildProcess* program, const std::string& command) {
        program->writeLine(command);
        return program->readLine().value_or("no answer");
    }
    static std::vector<std::string> instancesOf(const std::string& fqName) {
        std::vector<std::string> names;
        const auto take = [&](const hidl_vec<hidl_string>& listed) {
            names.assign(listed.begin(), listed.end());
        };
        EXPECT_TRUE(
                android::hardware::defaultServiceManager()->listByInterface(fqName, take).isOk());
        return names;
    }
    /** Waits until the service manager has noticed a death, of which it tells nobody. */
    static bool isDropped(const std::string& fqName, const std::string& name) {
        const auto end = std::chrono::steady_clock::now() + kPatience;
        while (std::chrono::steady_clock::now() < end) {
            const auto names = instancesOf(fqName);
            if (std::find(names.begin(), names.end(), name) == names.end()) return true;
            std::this_thread::yield();
        }
        return false;
    }

    static inline orvo::testing::TemporaryDevice* sDevice = nullptr;
    static inline ChildProcess* sServiceManager = nullptr;
};

TEST_F(ServiceManagerProcessTest, AServiceOfAnotherProcessIsFoundAndAnswers) {
    ChildProcess program(GREETER_PROGRAM, {});
    EXPECT_EQ("registered", ask(&program, "register found/0"));
    const sp<IGreeter> greeter = IGreeter::getService("found/0");
    ASSERT_NE(nullptr, greeter);
    EXPECT_TRUE(greeter->isRemote());
    EXPECT_EQ("found/0 greets you", greetingOf(greeter));
    EXPECT_EQ("found/0 greets you", greetingOf(IGreeter::tryGetService("found/0")));
}

TEST_F(ServiceManagerProcessTest, AServiceOfThisProcessIsTheObjectItself) {
    const sp<IGreeter> greeter = new Greeter("own/0");
    ASSERT_EQ(android::OK, greeter->registerAsService("own/0"));
    EXPECT_EQ(greeter, IGreeter::getService("own/0"));

    ChildProcess program(GREETER_PROGRAM, {});
    EXPECT_EQ("remote: own/0 greets you", ask(&program, "fetch own/0"));
    EXPECT_EQ("registered", ask(&program, "register own/1"));
    EXPECT_EQ("local: own/1 greets you", ask(&program, "fetch own/1"));
}

TEST_F(ServiceManagerProcessTest, AServiceThatIsNotRegisteredIsNullAtOnce) {
    EXPECT_EQ(nullptr, IGreeter::getService("nobody/0"));
    EXPECT_EQ(nullptr, IGreeter::getService("declared/0"));
    EXPECT_EQ(nullptr, IGreeter::tryGetService("nobody/0"));
}

TEST_F(ServiceManagerProcessTest, ALaterVersionIsFoundUnderEveryVersion) {
    ChildProcess program(GREETER_PROGRAM, {});
    EXPECT_EQ("registered", ask(&program, "register1.1 versions/1"));
    EXPECT_EQ("registered", ask(&program, "register versions/0"));
    EXPECT_EQ("versions/1 greets you", greetingOf(IGreeter::getService("versions/1")));
    const sp<IGreeter11> greeter = IGreeter11::getService("versions/1");
    ASSERT_NE(nullptr, greeter);
    EXPECT_EQ(1u, uint32_t(greeter->guests()));
    EXPECT_EQ(nullptr, IGreeter11::getService("versions/0"));
    EXPECT_THAT(instancesOf(IGreeter11::descriptor), Contains("versions/1"));
    EXPECT_THAT(instancesOf(IGreeter::descriptor), Contains("versions/1"));
    EXPECT_THAT(instancesOf(IBase::descriptor), Contains("versions/1"));
}

TEST_F(ServiceManagerProcessTest, AKilledServiceIsDropped) {
    ChildProcess program(GREETER_PROGRAM, {});
    EXPECT_EQ("registered", ask(&program, "register1.1 killed/0"));
    EXPECT_EQ("registered", ask(&program, "register killed/1"));
    ASSERT_THAT(instancesOf(IGreeter::descriptor), Contains("killed/0"));
    const sp<IGreeter> greeter = IGreeter::getService("killed/0");
    program.kill();
    EXPECT_TRUE(isDropped(IGreeter::descriptor, "killed/0"));
    EXPECT_TRUE(isDropped(IGreeter::descriptor, "killed/1"));
    EXPECT_THAT(instancesOf(IGreeter11::descriptor), Not(Contains("killed/0")));
    EXPECT_EQ(nullptr, IGreeter::getService("killed/0"));
    EXPECT_TRUE(greeter->ping().isDeadObject());
}

TEST_F(ServiceManagerProcessTest, AKilledServiceMayComeBackUnderItsName) {
    for (int round = 0; round < 20; ++round) {
        ChildProcess program(GREETER_PROGRAM, {});
        ASSERT_EQ("registered", ask(&program, "register back/0"));
        const sp<IGreeter> greeter = IGreeter::getService("back/0");
        ASSERT_NE(nullptr, greeter);
        ASSERT_EQ("back/0 greets you", greetingOf(greeter));
        program.kill();
    }
    EXPECT_TRUE(isDropped(IGreeter::descriptor, "back/0"));
}

TEST_F(ServiceManagerProcessTest, AServiceThatEndsByItselfIsDroppedToo) {
    ChildProcess program(GREETER_PROGRAM, {});
    EXPECT_EQ("registered", ask(&program, "register ends/0"));
    program.closeInput();
    EXPECT_EQ(0, program.wait());
    EXPECT_TRUE(isDropped(IGreeter::descriptor, "ends/0"));
}

TEST_F(ServiceManagerProcessTest, AListenerHearsOfOtherProcessesServices) {
    ChildProcess program(GREETER_PROGRAM, {});
    EXPECT_EQ("registered", ask(&program, "register heard/0"));
    const sp<Told> one = new Told;
    const sp<Told> two = new Told;
    ASSERT_TRUE(IGreeter::registerForNotifications("heard/0", one));
    ASSERT_TRUE(IGreeter::registerForNotifications("heard/1", two));
    const std::string name = IGreeter::descriptor;
    EXPECT_THAT(one->wait(1), ElementsAre("existing " + name + "/heard/0"));
    EXPECT_EQ("registered", ask(&program, "register1.1 heard/1"));
    EXPECT_THAT(two->wait(1), ElementsAre("new " + name + "/heard/1"));
    EXPECT_EQ("registered", ask(&program, "register heard/0"));
    EXPECT_THAT(one->wait(2),
                ElementsAre("existing " + name + "/heard/0", "new " + name + "/heard/0"));
}

TEST_F(ServiceManagerProcessTest, AListenerThatLeftHearsNothing) {
    ChildProcess program(GREETER_PROGRAM, {});
    const sp<IServiceManager> manager = android::hardware::defaultServiceManager1_2();
    const sp<Told> left = new Told;
    const sp<Told> stayed = new Told;
    ASSERT_TRUE(manager->registerForNotifications(IGreeter::descriptor, "left/0", left));
    ASSERT_TRUE(manager->registerForNotifications(IGreeter::descriptor, "left/0", stayed));
    EXPECT_TRUE(manager->unregisterForNotifications(IGreeter::descriptor, "left/0", left));
    EXPECT_FALSE(manager->unregisterForNotifications(IGreeter::descriptor, "left/0", left));
    EXPECT_EQ("registered", ask(&program, "register left/0"));
    EXPECT_EQ(1u, stayed->wait(1).size());
    EXPECT_THAT(left->wait(0), IsEmpty());
}

TEST_F(ServiceManagerProcessTest, WaitingEndsWhenTheServiceIsRegistered) {
    ChildProcess program(GREETER_PROGRAM, {});
    std::thread waiter([] {
        android::hardware::details::waitForHwService(IGreeter::descriptor, "awaited/0");
    });
    EXPECT_EQ("registered", ask(&program, "register awaited/0"));
    waiter.join();
    EXPECT_NE(nullptr, IGreeter::getService("awaited/0"));
}

TEST_F(ServiceManagerProcessTest, TheManifestIsListedWhateverRuns) {
    std::vector<std::string> names;
    const auto take = [&](const hidl_vec<hidl_string>& listed) {
        names.assign(listed.begin(), listed.end());
    };
    const sp<IServiceManager> manager = android::hardware::defaultServiceManager1_2();
    EXPECT_TRUE(manager->listManifestByInterface(IGreeter::descriptor, take).isOk());
    EXPECT_THAT(names, ElementsAre("declared/0", "declared/1"));
    EXPECT_TRUE(manager->listManifestByInterface(IGreeter11::descriptor, take).isOk());
    EXPECT_THAT(names, ElementsAre("declared/1"));
}

TEST_F(ServiceManagerProcessTest, AnObjectOfAnotherInterfaceIsNotGivenOut) {
    const sp<IServiceManager> manager = android::hardware::defaultServiceManager1_2();
    const sp<IBase> impostor = new Told;
    ASSERT_TRUE(manager->addWithChain("impostor/0", impostor, {IGreeter::descriptor}));
    EXPECT_EQ(nullptr, IGreeter::getService("impostor/0"));
}

TEST_F(ServiceManagerProcessTest, TheChainIsAskedForWhereItIsNotGiven) {
    const sp<IServiceManager> manager = android::hardware::defaultServiceManager1_2();
    const sp<IGreeter> greeter = new CountingGreeter("asked/0");
    EXPECT_TRUE(manager->add("asked/0", greeter));
    EXPECT_EQ(greeter, IGreeter::getService("asked/0"));
    EXPECT_NE(nullptr, IGreeter11::getService("asked/0"));
}

TEST_F(ServiceManagerProcessTest, TheDumpNamesTheServingProcess) {
    ChildProcess program(GREETER_PROGRAM, {});
    EXPECT_EQ("registered", ask(&program, "register dumped/0"));
    std::vector<int32_t> pids;
    const auto take = [&](const hidl_vec<IServiceManager::InstanceDebugInfo>& infos) {
        for (const auto& info : infos) {
            const bool wanted =
                    info.instanceName == "dumped/0" && info.interfaceName == IGreeter::descriptor;
            if (wanted) pids.push_back(info.pid);
        }
    };
    EXPECT_TRUE(android::hardware::defaultServiceManager()->debugDump(take).isOk());
    EXPECT_THAT(pids, ElementsAre(program.pid()));
}

TEST_F(ServiceManagerProcessTest, AllServiceManagersAreOneObject) {
    const sp<IServiceManager> manager = android::hardware::defaultServiceManager1_2();
    ASSERT_NE(nullptr, manager);
    EXPECT_EQ(manager.get(), android::hardware::defaultServiceManager().get());
    EXPECT_EQ(manager.get(), android::hardware::defaultServiceManager1_1().get());
    EXPECT_TRUE(manager->isRemote());
}

TEST_F(ServiceManagerProcessTest, TheReadyPropertySaysTrue) {
    char value[PROPERTY_VALUE_MAX];
    property_get("hwservicemanager.ready", value, "");
    EXPECT_STREQ("true", value);
}

}  // namespace
