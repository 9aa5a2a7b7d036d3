// SPDX-License-Identifier: Apache-2.0
// When a process dies, calls to it fail, and whoever asked to be told is told, once.

#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <future>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hidl/HidlBinderSupport.h>
#include <hwbinder/IPCThreadState.h>
#include <hwbinder/Parcel.h>
#include <hwbinder/ProcessState.h>

#include "tests/host/hwbinder/PeerProcess.h"
#include "tests/host/hwbinder/RecordingCallback.h"

namespace orvo::test {
namespace {

using namespace vendor::orvo::peer::V1_0;
using android::sp;
using android::wp;
using android::hardware::hidl_death_recipient;
using android::hardware::hidl_string;
using android::hardware::IBinder;
using android::hardware::Parcel;
using android::hidl::base::V1_0::IBase;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

/** Remembers the cookies of the deaths that it is told of. */
struct Mourner : hidl_death_recipient {
    void serviceDied(uint64_t cookie, const wp<IBase>& who) override {
        if (whenDied) whenDied(cookie, who);
        std::lock_guard<std::mutex> lock(mutex);
        cookies.push_back(cookie);
        onPool = android::hardware::IPCThreadState::self()->isLooperThread();
        told.notify_all();
    }
    /** Waits for that many, and then a little for one too many. */
    std::vector<uint64_t> waitFor(size_t count) {
        std::unique_lock<std::mutex> lock(mutex);
        told.wait_for(lock, std::chrono::seconds(20), [&] { return cookies.size() >= count; });
        told.wait_for(lock, std::chrono::milliseconds(50), [&] { return cookies.size() > count; });
        return cookies;
    }
    std::mutex mutex;
    std::condition_variable told;
    std::vector<uint64_t> cookies;
    bool onPool = false;
    std::function<void(uint64_t, const wp<IBase>&)> whenDied;
};

struct ProcessDeathTest : testing::Test {
    PeerProcess process;
    sp<IPeer> peer = PeerProcess::context();
    sp<Mourner> mourner = new Mourner;

    void killAndWaitUntilKnown() {
        sp<Mourner> witness = new Mourner;
        ASSERT_TRUE(static_cast<bool>(peer->linkToDeath(witness, 0)));
        process.kill();
        ASSERT_EQ(1u, witness->waitFor(1).size());
    }
};

TEST_F(ProcessDeathTest, EachLinkIsToldOnceWithItsOwnCookieInLinkOrder) {
    ASSERT_TRUE(static_cast<bool>(peer->linkToDeath(mourner, 11)));
    ASSERT_TRUE(static_cast<bool>(peer->linkToDeath(mourner, 22)));
    sp<Mourner> other = new Mourner;
    ASSERT_TRUE(static_cast<bool>(peer->linkToDeath(other, 33)));
    process.kill();
    EXPECT_THAT(mourner->waitFor(2), ElementsAre(11, 22));
    EXPECT_THAT(other->waitFor(1), ElementsAre(33));
    EXPECT_TRUE(mourner->onPool);
}

TEST_F(ProcessDeathTest, EveryProxyOfOneObjectHasItsOwnLinks) {
    sp<IPeer> second = PeerProcess::context();
    ASSERT_TRUE(static_cast<bool>(peer->linkToDeath(mourner, 1)));
    ASSERT_TRUE(static_cast<bool>(second->linkToDeath(mourner, 2)));
    EXPECT_TRUE(static_cast<bool>(second->unlinkToDeath(mourner)));
    EXPECT_FALSE(static_cast<bool>(second->unlinkToDeath(mourner)));
    process.kill();
    EXPECT_THAT(mourner->waitFor(1), ElementsAre(1));
}

TEST_F(ProcessDeathTest, AnUnlinkedRecipientIsNotTold) {
    ASSERT_TRUE(static_cast<bool>(peer->linkToDeath(mourner, 1)));
    ASSERT_TRUE(static_cast<bool>(peer->unlinkToDeath(mourner)));
    EXPECT_FALSE(static_cast<bool>(peer->unlinkToDeath(mourner))) << "nothing is left to unlink";
    killAndWaitUntilKnown();
    EXPECT_THAT(mourner->waitFor(0), ElementsAre());
}

TEST_F(ProcessDeathTest, UnlinkingTakesTheNewestLink) {
    ASSERT_TRUE(static_cast<bool>(peer->linkToDeath(mourner, 1)));
    ASSERT_TRUE(static_cast<bool>(peer->linkToDeath(mourner, 2)));
    ASSERT_TRUE(static_cast<bool>(peer->unlinkToDeath(mourner)));
    process.kill();
    EXPECT_THAT(mourner->waitFor(1), ElementsAre(1));
}

TEST_F(ProcessDeathTest, ARecipientThatIsGoneIsNotTold) {
    ASSERT_TRUE(static_cast<bool>(peer->linkToDeath(mourner, 1)));
    wp<Mourner> watched = mourner;
    mourner = nullptr;
    EXPECT_EQ(nullptr, watched.promote()) << "a link does not keep its recipient";
    killAndWaitUntilKnown();
}

/** Tells on which thread it was destroyed. */
struct Leaver : IBinder::DeathRecipient {
    explicit Leaver(std::promise<std::string>* left) : leftOn(left) {}
    ~Leaver() override {
        char name[16];
        pthread_getname_np(pthread_self(), name, sizeof(name));
        leftOn->set_value(name);
    }
    void binderDied(const wp<IBinder>&) override {}
    std::promise<std::string>* const leftOn;
};

TEST_F(ProcessDeathTest, ARecipientIsNotDestroyedOnTheTransportsThread) {
    // A code that the peer does not know: what counts is what this process does with the parcel.
    constexpr uint32_t kNothing = 9999;
    std::promise<std::string> leftOn;
    android::hardware::ProcessState::self()->startThreadPool();
    sp<IBinder> binder = android::hardware::toBinder(peer);
    ASSERT_EQ(android::OK, binder->linkToDeath(new Leaver(&leftOn)));
    {
        // Large enough to keep the transport busy until the other references to the proxy are gone.
        const std::vector<uint8_t> bytes(8 * 1024 * 1024);
        size_t ignored;
        Parcel large;
        ASSERT_EQ(android::OK, large.writeBuffer(bytes.data(), bytes.size(), &ignored));
        Parcel last;
        ASSERT_EQ(android::OK, last.writeStrongBinder(binder));
        ASSERT_EQ(android::OK, binder->transact(kNothing, large, nullptr, IBinder::FLAG_ONEWAY));
        ASSERT_EQ(android::OK, binder->transact(kNothing, last, nullptr, IBinder::FLAG_ONEWAY));
    }
    peer = nullptr;
    binder = nullptr;
    EXPECT_NE("HwBinder:io", leftOn.get_future().get());
}

TEST_F(ProcessDeathTest, LinkingToWhatIsKnownToBeDeadSaysSo) {
    killAndWaitUntilKnown();
    EXPECT_FALSE(static_cast<bool>(peer->linkToDeath(mourner, 1)));
    EXPECT_FALSE(static_cast<bool>(peer->unlinkToDeath(mourner)));
    EXPECT_THAT(mourner->waitFor(0), ElementsAre());
}

TEST_F(ProcessDeathTest, LinkingBetweenDeathAndObituaryIsToldOrSaysSo) {
    process.kill();
    const bool linked = peer->linkToDeath(mourner, 5);
    EXPECT_EQ(linked ? 1u : 0u, mourner->waitFor(linked ? 1 : 0).size());
}

TEST_F(ProcessDeathTest, UnlinkingInsideServiceDiedIsAllowedAndFindsNothing) {
    bool unlinked = true;
    mourner->whenDied = [&](uint64_t, const wp<IBase>& who) {
        sp<IBase> dead = who.promote();
        unlinked = dead != nullptr && static_cast<bool>(dead->unlinkToDeath(mourner));
    };
    ASSERT_TRUE(static_cast<bool>(peer->linkToDeath(mourner, 1)));
    process.kill();
    EXPECT_EQ(1u, mourner->waitFor(1).size());
    EXPECT_FALSE(unlinked);
}

TEST_F(ProcessDeathTest, ACallToADeadProcessFailsAsDeadAtOnceAndEveryTime) {
    process.kill();
    for (int i = 0; i < 3; i++) {
        auto result = peer->ping();
        EXPECT_FALSE(result.isOk());
        EXPECT_TRUE(result.isDeadObject());
    }
    bool called = false;
    auto result = peer->echoString("?", [&](const hidl_string&) { called = true; });
    EXPECT_TRUE(result.isDeadObject());
    EXPECT_FALSE(called);
    EXPECT_TRUE(peer->note(1).isDeadObject()) << "oneway calls too";
}

TEST_F(ProcessDeathTest, ACallWhoseServerDiesInTheMiddleFailsAsDead) {
    auto exited = peer->exitNow();
    EXPECT_TRUE(exited.isDeadObject()) << exited.description();
}

TEST_F(ProcessDeathTest, ACallThatBlocksInAServerThatIsKilledFailsAsDead) {
    Gate started;
    bool dead = false;
    sp<RecordingCallback> callback = new RecordingCallback;
    callback->whenCalled = [&](int32_t) {
        started.open();
        // Our caller waits for us; it will not get an answer.
        process.kill();
    };
    auto result = peer->callBack(callback, 1);
    dead = result.isDeadObject();
    EXPECT_TRUE(dead) << result.description();
    EXPECT_TRUE(started.wait());
}

TEST_F(ProcessDeathTest, AServerIsToldThatItsClientsObjectIsGone) {
    PeerProcess client = PeerProcess::joining();
    sp<IPeer> clientPeer = peer->keptPeer();
    sp<ICallback> foreign;
    client.kill();
    EXPECT_TRUE(clientPeer->ping().isDeadObject());
    // The peer that still holds a reference of its own to it is told the same.
    sp<IPeer> again = peer->keptPeer();
    ASSERT_NE(nullptr, again);
    EXPECT_TRUE(again->ping().isDeadObject());
}

TEST_F(ProcessDeathTest, AReferenceThatArrivesAfterTheDeathIsDeadFromTheStart) {
    PeerProcess client = PeerProcess::joining();
    client.kill();
    sp<IPeer> dead = peer->keptPeer();
    ASSERT_NE(nullptr, dead);
    auto result = dead->ping();
    EXPECT_TRUE(result.isDeadObject()) << result.description();
    const bool linked = dead->linkToDeath(mourner, 3);
    EXPECT_EQ(linked ? 1u : 0u, mourner->waitFor(linked ? 1 : 0).size());
}

TEST_F(ProcessDeathTest, AKillIsNoticedWithinAHundredMillisecondsOnAnIdleMachine) {
    // A busy machine proves nothing either way; each attempt starts from a fresh pair. The bound
    // is the transport's own promise, so the best of a few attempts is what counts.
    auto best = std::chrono::milliseconds::max();
    for (int attempt = 0; attempt < 5 && best > std::chrono::milliseconds(100); attempt++) {
        process.kill();
        process = PeerProcess();
        sp<IPeer> victim = PeerProcess::context();
        sp<Mourner> witness = new Mourner;
        ASSERT_TRUE(static_cast<bool>(victim->linkToDeath(witness, 1)));
        const auto killed = std::chrono::steady_clock::now();
        process.kill();
        std::unique_lock<std::mutex> lock(witness->mutex);
        ASSERT_TRUE(witness->told.wait_for(lock, std::chrono::seconds(20),
                                           [&] { return !witness->cookies.empty(); }));
        best = std::min(best, std::chrono::duration_cast<std::chrono::milliseconds>(
                                      std::chrono::steady_clock::now() - killed));
    }
    EXPECT_LE(best.count(), 100);
}

TEST_F(ProcessDeathTest, AStoppedProcessIsNotADeadOne) {
    ASSERT_TRUE(static_cast<bool>(peer->linkToDeath(mourner, 1)));
    kill(process.pid(), SIGSTOP);
    EXPECT_TRUE(peer->note(1).isOk()) << "a oneway call does not wait for it";
    EXPECT_THAT(mourner->waitFor(0), ElementsAre());
    kill(process.pid(), SIGCONT);
    EXPECT_TRUE(peer->ping().isOk());
}

TEST_F(ProcessDeathTest, DeadProcessesLeaveNoDescriptorBehind) {
    auto count = [] {
        const std::filesystem::directory_iterator all("/proc/self/fd");
        return std::distance(begin(all), end(all));
    };
    const auto before = count();
    for (int i = 0; i < 30; i++) {
        process.kill();
        process = PeerProcess();
        peer = PeerProcess::context();
        ASSERT_TRUE(peer->ping().isOk());
    }
    killAndWaitUntilKnown();
    peer = nullptr;
    // The last connection is closed by the transport's own thread.
    for (int i = 0; i < 1000 && count() > before; i++) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_LE(count(), before);
}

}  // namespace
}  // namespace orvo::test
