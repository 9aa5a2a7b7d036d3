// SPDX-License-Identifier: Apache-2.0
// The service manager's interface, called in its own process.

#include "HwServiceManager.h"

#include <unistd.h>

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/host/servicemanager/FakePeer.h"

namespace orvo {
namespace {

using android::sp;
using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using android::hidl::manager::V1_0::IServiceNotification;
using ::testing::ElementsAre;
using testing::FakePeer;
using ::testing::IsEmpty;
using InstanceDebugInfo = HwServiceManager::InstanceDebugInfo;
using Transport = HwServiceManager::Transport;

constexpr char kManifest[] = R"(<manifest version="1.0" type="device">
    <hal format="hidl"><name>a.b</name><transport>hwbinder</transport>
        <fqname>@1.1::IFoo/y</fqname><fqname>@1.0::IFoo/x</fqname></hal>
    <hal format="hidl"><name>a.c</name><transport>passthrough</transport>
        <fqname>@1.0::IBar/x</fqname></hal></manifest>)";

VintfManifest manifest() {
    VintfManifest read;
    EXPECT_TRUE(read.addText(kManifest, "m.xml").empty());
    return read;
}

/** A service whose process does not answer the question for its chain. */
class SilentPeer : public FakePeer {
  public:
    Return<void> interfaceChain(interfaceChain_cb) override {
        return Status::fromStatusT(android::DEAD_OBJECT);
    }
};

class HwServiceManagerTest : public ::testing::Test {
  protected:
    std::vector<std::string> list() {
        std::vector<std::string> names;
        EXPECT_TRUE(mManager->list([&](const hidl_vec<hidl_string>& listed) {
                                names.assign(listed.begin(), listed.end());
                            })
                            .isOk());
        return names;
    }
    std::vector<std::string> manifestInstances(const std::string& fqName) {
        std::vector<std::string> names;
        const auto take = [&](const hidl_vec<hidl_string>& listed) {
            names.assign(listed.begin(), listed.end());
        };
        EXPECT_TRUE(mManager->listManifestByInterface(fqName, take).isOk());
        return names;
    }

    const sp<HwServiceManager> mManager = new HwServiceManager(manifest());
    const sp<FakePeer> mService = new FakePeer;
    const std::string mFqName = IServiceNotification::descriptor;
    const std::string mBase = android::hidl::base::V1_0::IBase::descriptor;
};

TEST_F(HwServiceManagerTest, AServiceIsAddedWithTheChainThatIsGiven) {
    EXPECT_TRUE(mManager->addWithChain("x", mService, {"a.b@1.0::IFoo", mBase}));
    EXPECT_THAT(list(), ElementsAre("a.b@1.0::IFoo/x", mBase + "/x"));
    EXPECT_EQ(mService, sp<HwServiceManager::IBase>(mManager->get("a.b@1.0::IFoo", "x")));
    EXPECT_EQ(nullptr, sp<HwServiceManager::IBase>(mManager->get("a.b@1.0::IFoo", "y")));
}

TEST_F(HwServiceManagerTest, AServiceIsAddedWithTheChainThatItTells) {
    EXPECT_TRUE(mManager->add("x", mService));
    EXPECT_THAT(list(), ElementsAre(mBase + "/x", mFqName + "/x"));
}

TEST_F(HwServiceManagerTest, NullAndSilentServicesAreRefused) {
    EXPECT_FALSE(mManager->add("x", nullptr));
    EXPECT_FALSE(mManager->add("x", new SilentPeer));
    EXPECT_FALSE(mManager->addWithChain("x", nullptr, {"a.b@1.0::IFoo"}));
    EXPECT_FALSE(mManager->addWithChain("x", mService, {}));
    EXPECT_THAT(list(), IsEmpty());
}

TEST_F(HwServiceManagerTest, InstancesOfAnInterfaceAreListed) {
    EXPECT_TRUE(mManager->add("y", mService));
    EXPECT_TRUE(mManager->add("x", mService));
    std::vector<std::string> names;
    const auto take = [&](const hidl_vec<hidl_string>& listed) {
        names.assign(listed.begin(), listed.end());
    };
    EXPECT_TRUE(mManager->listByInterface(mFqName, take).isOk());
    EXPECT_THAT(names, ElementsAre("x", "y"));
    EXPECT_TRUE(mManager->listByInterface("a.b@1.0::IFoo", take).isOk());
    EXPECT_THAT(names, IsEmpty());
}

TEST_F(HwServiceManagerTest, TheTransportIsThatOfTheManifest) {
    EXPECT_EQ(Transport::HWBINDER, Transport(mManager->getTransport("a.b@1.0::IFoo", "x")));
    EXPECT_EQ(Transport::HWBINDER, Transport(mManager->getTransport("a.b@1.0::IFoo", "y")));
    EXPECT_EQ(Transport::PASSTHROUGH, Transport(mManager->getTransport("a.c@1.0::IBar", "x")));
    EXPECT_EQ(Transport::EMPTY, Transport(mManager->getTransport("a.b@1.1::IFoo", "x")));
    EXPECT_EQ(Transport::EMPTY, Transport(mManager->getTransport("nonsense", "")));
}

TEST_F(HwServiceManagerTest, TheManifestIsListedWhateverRuns) {
    EXPECT_THAT(manifestInstances("a.b@1.0::IFoo"), ElementsAre("x", "y"));
    EXPECT_THAT(manifestInstances("a.b@1.1::IFoo"), ElementsAre("y"));
    EXPECT_THAT(manifestInstances("a.b@2.0::IFoo"), IsEmpty());
    EXPECT_THAT(list(), IsEmpty());
}

TEST_F(HwServiceManagerTest, ListenersComeAndGo) {
    const sp<FakePeer> listener = new FakePeer;
    EXPECT_FALSE(mManager->registerForNotifications(mFqName, "", nullptr));
    EXPECT_TRUE(mManager->add("x", mService));
    EXPECT_TRUE(mManager->registerForNotifications(mFqName, "", listener));
    EXPECT_TRUE(mManager->add("y", mService));
    EXPECT_TRUE(mManager->unregisterForNotifications(mFqName, "", listener));
    EXPECT_FALSE(mManager->unregisterForNotifications(mFqName, "", listener));
    EXPECT_TRUE(mManager->add("z", mService));
    EXPECT_THAT(listener->told, ElementsAre("existing " + mFqName + "/x", "new " + mFqName + "/y"));
}

TEST_F(HwServiceManagerTest, TheDumpNamesProcesses) {
    EXPECT_TRUE(mManager->addWithChain("x", mService, {"a.b@1.0::IFoo"}));
    EXPECT_TRUE(mManager->registerPassthroughClient("a.c@1.0::IBar", "x").isOk());
    std::vector<InstanceDebugInfo> infos;
    EXPECT_TRUE(mManager->debugDump([&](const hidl_vec<InstanceDebugInfo>& dumped) {
                            infos.assign(dumped.begin(), dumped.end());
                        })
                        .isOk());
    ASSERT_EQ(2u, infos.size());
    EXPECT_EQ("a.b@1.0::IFoo", std::string(infos[0].interfaceName));
    EXPECT_EQ("x", std::string(infos[0].instanceName));
    EXPECT_EQ(getpid(), infos[0].pid);
    EXPECT_EQ(0u, infos[0].clientPids.size());
    EXPECT_EQ("a.c@1.0::IBar", std::string(infos[1].interfaceName));
    EXPECT_EQ(static_cast<int32_t>(HwServiceManager::PidConstant::NO_PID), infos[1].pid);
    ASSERT_EQ(1u, infos[1].clientPids.size());
    EXPECT_EQ(getpid(), infos[1].clientPids[0]);
}

TEST_F(HwServiceManagerTest, ServicesThatStopWhenUnusedAreNotOffered) {
    EXPECT_TRUE(mManager->add("x", mService));
    EXPECT_FALSE(mManager->registerClientCallback(mFqName, "x", mService, nullptr));
    EXPECT_FALSE(mManager->unregisterClientCallback(mService, nullptr));
    EXPECT_FALSE(mManager->tryUnregister(mFqName, "x", mService));
    EXPECT_EQ(2u, list().size());
}

}  // namespace
}  // namespace orvo
