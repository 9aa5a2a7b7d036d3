// SPDX-License-Identifier: Apache-2.0
// The registry: who is entered, who is dropped, and who hears of it.

#include "ServiceRegistry.h"

#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/host/servicemanager/FakePeer.h"

namespace orvo {
namespace {

using android::sp;
using android::wp;
using ::testing::ElementsAre;
using testing::FakePeer;
using ::testing::IsEmpty;

const std::vector<std::string> kChain10 = {"a@1.0::IFoo", "base::IBase"};
const std::vector<std::string> kChain11 = {"a@1.1::IFoo", "a@1.0::IFoo", "base::IBase"};
constexpr pid_t kPid = 4711;

class ServiceRegistryTest : public ::testing::Test {
  protected:
    const sp<ServiceRegistry> mRegistry = new ServiceRegistry;
    sp<FakePeer> mService = new FakePeer;
    sp<FakePeer> mOther = new FakePeer;
    sp<FakePeer> mListener = new FakePeer;
};

TEST_F(ServiceRegistryTest, AServiceIsFoundUnderEveryDescriptorOfItsChain) {
    EXPECT_TRUE(mRegistry->add("x", mService, kChain11, kPid));
    for (const std::string& fqName : kChain11) EXPECT_EQ(mService, mRegistry->get(fqName, "x"));
    EXPECT_THAT(mRegistry->list(), ElementsAre("a@1.0::IFoo/x", "a@1.1::IFoo/x", "base::IBase/x"));
}

TEST_F(ServiceRegistryTest, WhatIsNotThereIsNull) {
    EXPECT_TRUE(mRegistry->add("x", mService, kChain10, kPid));
    EXPECT_EQ(nullptr, mRegistry->get("a@1.0::IFoo", "y"));
    EXPECT_EQ(nullptr, mRegistry->get("a@1.1::IFoo", "x"));
    EXPECT_EQ(nullptr, mRegistry->get("", ""));
}

TEST_F(ServiceRegistryTest, ANullServiceAndAnEmptyChainAreRefused) {
    EXPECT_FALSE(mRegistry->add("x", nullptr, kChain10, kPid));
    EXPECT_FALSE(mRegistry->add("x", mService, {}, kPid));
    EXPECT_THAT(mRegistry->list(), IsEmpty());
}

TEST_F(ServiceRegistryTest, ADeadServiceIsRefusedAndTheOldOneStays) {
    EXPECT_TRUE(mRegistry->add("x", mService, kChain10, kPid));
    mOther->dead = true;
    EXPECT_FALSE(mRegistry->add("x", mOther, kChain10, kPid));
    mOther->dead = false;
    mOther->unreachable = true;
    EXPECT_FALSE(mRegistry->add("x", mOther, kChain10, kPid));
    EXPECT_EQ(mService, mRegistry->get("a@1.0::IFoo", "x"));
}

TEST_F(ServiceRegistryTest, AServiceThatDiesWhileItIsAddedIsRefused) {
    mService->onLink = [this] { mService->die(); };
    EXPECT_FALSE(mRegistry->add("x", mService, kChain10, kPid));
    EXPECT_THAT(mRegistry->list(), IsEmpty());
}

TEST_F(ServiceRegistryTest, InstancesAreListedSorted) {
    EXPECT_TRUE(mRegistry->add("b", mService, kChain10, kPid));
    EXPECT_TRUE(mRegistry->add("a", mOther, kChain11, kPid));
    EXPECT_TRUE(mRegistry->add("c", mService, {"z@1.0::IFoo"}, kPid));
    EXPECT_THAT(mRegistry->instancesOf("a@1.0::IFoo"), ElementsAre("a", "b"));
    EXPECT_THAT(mRegistry->instancesOf("a@1.1::IFoo"), ElementsAre("a"));
    EXPECT_THAT(mRegistry->instancesOf("a@1.0::IFo"), IsEmpty());
    EXPECT_THAT(mRegistry->instancesOf(""), IsEmpty());
}

TEST_F(ServiceRegistryTest, ALaterServiceReplacesAnEarlierOne) {
    EXPECT_TRUE(mRegistry->add("x", mService, kChain10, kPid));
    EXPECT_TRUE(mRegistry->add("x", mOther, kChain10, kPid));
    EXPECT_EQ(mOther, mRegistry->get("a@1.0::IFoo", "x"));
    mService->die();
    EXPECT_EQ(mOther, mRegistry->get("a@1.0::IFoo", "x"));
    mOther->die();
    EXPECT_EQ(nullptr, mRegistry->get("a@1.0::IFoo", "x"));
}

TEST_F(ServiceRegistryTest, AnOlderVersionThatTakesOverClearsTheNewerOnesEntries) {
    EXPECT_TRUE(mRegistry->add("x", mService, kChain11, kPid));
    EXPECT_TRUE(mRegistry->add("y", mService, kChain11, kPid));
    EXPECT_TRUE(mRegistry->add("x", mOther, kChain10, kPid));
    EXPECT_EQ(nullptr, mRegistry->get("a@1.1::IFoo", "x"));
    EXPECT_EQ(mOther, mRegistry->get("a@1.0::IFoo", "x"));
    EXPECT_EQ(mService, mRegistry->get("a@1.1::IFoo", "y"));
}

TEST_F(ServiceRegistryTest, AnotherInterfaceUnderTheSameNameTakesOnlyWhatBothAre) {
    EXPECT_TRUE(mRegistry->add("x", mService, kChain10, kPid));
    EXPECT_TRUE(mRegistry->add("x", mOther, {"z@1.0::IBar", "base::IBase"}, kPid));
    EXPECT_EQ(mService, mRegistry->get("a@1.0::IFoo", "x"));
    EXPECT_EQ(mOther, mRegistry->get("z@1.0::IBar", "x"));
    EXPECT_EQ(mOther, mRegistry->get("base::IBase", "x"));
}

TEST_F(ServiceRegistryTest, TheSameServiceMayBeAddedAgain) {
    EXPECT_TRUE(mRegistry->add("x", mService, kChain11, kPid));
    EXPECT_TRUE(mRegistry->add("x", mService, kChain11, kPid));
    EXPECT_EQ(mService, mRegistry->get("a@1.1::IFoo", "x"));
    mService->die();
    EXPECT_THAT(mRegistry->list(), IsEmpty());
}

TEST_F(ServiceRegistryTest, ADeadServiceIsDroppedFromEveryName) {
    EXPECT_TRUE(mRegistry->add("x", mService, kChain11, kPid));
    EXPECT_TRUE(mRegistry->add("y", mService, kChain10, kPid));
    EXPECT_TRUE(mRegistry->add("z", mOther, kChain10, kPid));
    mService->die();
    EXPECT_THAT(mRegistry->list(), ElementsAre("a@1.0::IFoo/z", "base::IBase/z"));
    EXPECT_THAT(mRegistry->instancesOf("a@1.1::IFoo"), IsEmpty());
    EXPECT_EQ(nullptr, mRegistry->get("a@1.0::IFoo", "x"));
}

TEST_F(ServiceRegistryTest, ADroppedServiceIsReleasedWithoutTheLock) {
    // The last reference goes in the registry; its destruction uses the registry.
    size_t destroyed = 0;
    mService->onDestruction = [&] {
        mRegistry->list();
        ++destroyed;
    };
    EXPECT_TRUE(mRegistry->add("x", mService, kChain10, kPid));
    FakePeer* const service = mService.get();
    mService.clear();
    EXPECT_EQ(0u, destroyed);
    EXPECT_TRUE(mRegistry->add("x", mOther, kChain10, kPid));
    EXPECT_EQ(1u, destroyed) << static_cast<void*>(service);
}

TEST_F(ServiceRegistryTest, AListenerHearsOfLaterRegistrations) {
    EXPECT_TRUE(mRegistry->addListener("a@1.0::IFoo", "x", mListener));
    EXPECT_THAT(mListener->told, IsEmpty());
    EXPECT_TRUE(mRegistry->add("x", mService, kChain10, kPid));
    EXPECT_TRUE(mRegistry->add("y", mService, kChain10, kPid));
    EXPECT_TRUE(mRegistry->add("x", mOther, kChain10, kPid));
    EXPECT_THAT(mListener->told, ElementsAre("new a@1.0::IFoo/x", "new a@1.0::IFoo/x"));
}

TEST_F(ServiceRegistryTest, AListenerHearsOfWhatExistsBeforeItsAdditionReturns) {
    EXPECT_TRUE(mRegistry->add("x", mService, kChain10, kPid));
    EXPECT_TRUE(mRegistry->add("xy", mService, kChain10, kPid));
    EXPECT_TRUE(mRegistry->addListener("a@1.0::IFoo", "x", mListener));
    EXPECT_THAT(mListener->told, ElementsAre("existing a@1.0::IFoo/x"));
}

TEST_F(ServiceRegistryTest, AnEmptyNameMeansEveryInstance) {
    EXPECT_TRUE(mRegistry->add("x", mService, kChain10, kPid));
    EXPECT_TRUE(mRegistry->add("y", mService, kChain10, kPid));
    EXPECT_TRUE(mRegistry->addListener("a@1.0::IFoo", "", mListener));
    EXPECT_TRUE(mRegistry->add("z", mOther, kChain10, kPid));
    EXPECT_THAT(mListener->told, ElementsAre("existing a@1.0::IFoo/x", "existing a@1.0::IFoo/y",
                                             "new a@1.0::IFoo/z"));
}

TEST_F(ServiceRegistryTest, AListenerHearsTheVersionThatItAskedFor) {
    EXPECT_TRUE(mRegistry->addListener("a@1.0::IFoo", "x", mListener));
    EXPECT_TRUE(mRegistry->addListener("a@1.1::IFoo", "x", mOther));
    EXPECT_TRUE(mRegistry->add("x", mService, kChain11, kPid));
    EXPECT_THAT(mListener->told, ElementsAre("new a@1.0::IFoo/x"));
    EXPECT_THAT(mOther->told, ElementsAre("new a@1.1::IFoo/x"));
}

TEST_F(ServiceRegistryTest, AListenerThatIsAddedTwiceIsToldTwice) {
    EXPECT_TRUE(mRegistry->addListener("a@1.0::IFoo", "x", mListener));
    EXPECT_TRUE(mRegistry->addListener("a@1.0::IFoo", "", mListener));
    EXPECT_TRUE(mRegistry->add("x", mService, kChain10, kPid));
    EXPECT_THAT(mListener->told, ElementsAre("new a@1.0::IFoo/x", "new a@1.0::IFoo/x"));
}

TEST_F(ServiceRegistryTest, NobodyHearsOfDeaths) {
    EXPECT_TRUE(mRegistry->add("x", mService, kChain10, kPid));
    EXPECT_TRUE(mRegistry->addListener("a@1.0::IFoo", "x", mListener));
    mListener->told.clear();
    mService->die();
    EXPECT_TRUE(mRegistry->addListener("a@1.0::IFoo", "x", mOther));
    EXPECT_THAT(mListener->told, IsEmpty());
    EXPECT_THAT(mOther->told, IsEmpty());
}

TEST_F(ServiceRegistryTest, NullAndDeadListenersAreRefused) {
    EXPECT_FALSE(mRegistry->addListener("a@1.0::IFoo", "x", nullptr));
    mListener->dead = true;
    EXPECT_FALSE(mRegistry->addListener("a@1.0::IFoo", "x", mListener));
    mOther->unreachable = true;
    EXPECT_FALSE(mRegistry->addListener("a@1.0::IFoo", "x", mOther));
    EXPECT_TRUE(mRegistry->add("x", mService, kChain10, kPid));
    EXPECT_THAT(mListener->told, IsEmpty());
}

TEST_F(ServiceRegistryTest, AListenerThatCannotBeToldOfWhatExistsIsSilentlyNotAdded) {
    EXPECT_TRUE(mRegistry->add("x", mService, kChain10, kPid));
    mListener->onLink = [this] { mListener->unreachable = true; };
    EXPECT_TRUE(mRegistry->addListener("a@1.0::IFoo", "x", mListener));
    mListener->unreachable = false;
    EXPECT_TRUE(mRegistry->add("x", mOther, kChain10, kPid));
    EXPECT_THAT(mListener->told, IsEmpty());
}

TEST_F(ServiceRegistryTest, AListenerThatCannotBeToldIsDropped) {
    EXPECT_TRUE(mRegistry->addListener("a@1.0::IFoo", "x", mListener));
    mListener->unreachable = true;
    EXPECT_TRUE(mRegistry->add("x", mService, kChain10, kPid));
    mListener->unreachable = false;
    EXPECT_TRUE(mRegistry->add("x", mOther, kChain10, kPid));
    EXPECT_THAT(mListener->told, IsEmpty());
}

TEST_F(ServiceRegistryTest, ADeadListenerIsDroppedAndReleased) {
    EXPECT_TRUE(mRegistry->addListener("a@1.0::IFoo", "x", mListener));
    const wp<FakePeer> listener = mListener;
    mListener->die();
    mListener.clear();
    EXPECT_EQ(nullptr, listener.promote());
    EXPECT_TRUE(mRegistry->add("x", mService, kChain10, kPid));
}

TEST_F(ServiceRegistryTest, RemovingAListenerRemovesAllOfItThatMatch) {
    EXPECT_TRUE(mRegistry->addListener("a@1.0::IFoo", "x", mListener));
    EXPECT_TRUE(mRegistry->addListener("a@1.0::IFoo", "x", mListener));
    EXPECT_TRUE(mRegistry->addListener("a@1.0::IFoo", "x", mOther));
    EXPECT_TRUE(mRegistry->addListener("a@1.0::IFoo", "y", mListener));
    EXPECT_TRUE(mRegistry->removeListeners("a@1.0::IFoo", "x", mListener));
    EXPECT_FALSE(mRegistry->removeListeners("a@1.0::IFoo", "x", mListener));
    EXPECT_TRUE(mRegistry->add("x", mService, kChain10, kPid));
    EXPECT_TRUE(mRegistry->add("y", mService, kChain10, kPid));
    EXPECT_THAT(mListener->told, ElementsAre("new a@1.0::IFoo/y"));
    EXPECT_THAT(mOther->told, ElementsAre("new a@1.0::IFoo/x"));
}

TEST_F(ServiceRegistryTest, RemovingWithEmptyNamesMeansEverywhere) {
    EXPECT_TRUE(mRegistry->addListener("a@1.0::IFoo", "x", mListener));
    EXPECT_TRUE(mRegistry->addListener("a@1.0::IFoo", "", mListener));
    EXPECT_TRUE(mRegistry->addListener("a@1.1::IFoo", "x", mListener));
    EXPECT_TRUE(mRegistry->removeListeners("a@1.0::IFoo", "", mListener));
    EXPECT_TRUE(mRegistry->add("x", mService, kChain11, kPid));
    EXPECT_THAT(mListener->told, ElementsAre("new a@1.1::IFoo/x"));
    EXPECT_TRUE(mRegistry->removeListeners("", "x", mListener));
    EXPECT_FALSE(mRegistry->removeListeners("", "", mListener));
    EXPECT_FALSE(mRegistry->removeListeners("", "", nullptr));
}

TEST_F(ServiceRegistryTest, TheStateTellsWhoServesAndWhoHasLoaded) {
    EXPECT_TRUE(mRegistry->add("x", mService, {"a@1.0::IFoo"}, 11));
    mRegistry->addPassthroughClient("a@1.0::IFoo", "x", 13);
    mRegistry->addPassthroughClient("a@1.0::IFoo", "x", 12);
    mRegistry->addPassthroughClient("a@1.0::IFoo", "x", 12);
    mRegistry->addPassthroughClient("b@1.0::IBar", "y", 14);
    const auto states = mRegistry->dump();
    ASSERT_EQ(2u, states.size());
    EXPECT_EQ("a@1.0::IFoo", states[0].fqName);
    EXPECT_EQ("x", states[0].instance);
    EXPECT_EQ(11, states[0].pid);
    EXPECT_THAT(states[0].passthroughClients, ElementsAre(12, 13));
    EXPECT_EQ("b@1.0::IBar", states[1].fqName);
    EXPECT_EQ(ServiceRegistry::kNoPid, states[1].pid);
    EXPECT_THAT(states[1].passthroughClients, ElementsAre(14));
    EXPECT_THAT(mRegistry->list(), ElementsAre("a@1.0::IFoo/x"));
}

TEST_F(ServiceRegistryTest, ARegistryThatIsGoneHearsOfNoDeath) {
    sp<ServiceRegistry> registry = new ServiceRegistry;
    EXPECT_TRUE(registry->add("x", mService, kChain10, kPid));
    registry.clear();
    mService->die();
    EXPECT_EQ(1, mService->getStrongCount());
}

TEST_F(ServiceRegistryTest, ManyThreadsMayUseItAtOnce) {
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([this, number] {
            const std::string instance = std::to_string(number % 2);
            for (int round = 0; round < 200; ++round) {
                const sp<FakePeer> service = new FakePeer;
                const sp<FakePeer> listener = new FakePeer;
                EXPECT_TRUE(mRegistry->addListener("b@1.0::IBar", instance, listener));
                EXPECT_TRUE(mRegistry->add(instance, service, kChain11, kPid));
                mRegistry->get("a@1.0::IFoo", instance);
                mRegistry->list();
                mRegistry->dump();
                EXPECT_TRUE(mRegistry->removeListeners("", "", listener));
                service->die();
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_THAT(mRegistry->list(), IsEmpty());
}

}  // namespace
}  // namespace orvo
