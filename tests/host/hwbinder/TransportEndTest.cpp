// SPDX-License-Identifier: Apache-2.0
// A process that ends its transport: nothing of it is left, and nobody waits for ever. As that is
// once and for good, each of these tests runs in a process of its own.

#include <stdlib.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <iterator>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <hidl/HidlTransportSupport.h>
#include <hwbinder/IPCThreadState.h>
#include <hwbinder/ProcessState.h>

#include "host/TransportEnd.h"
#include "tests/host/hwbinder/PeerProcess.h"
#include "tests/host/hwbinder/RecordingCallback.h"

namespace orvo::test {
namespace {

using namespace std::chrono_literals;
using android::sp;
using android::wp;
using android::hardware::hidl_death_recipient;
using android::hardware::IPCThreadState;
using android::hardware::ProcessState;
using android::hidl::base::V1_0::IBase;

/** Runs it in a process of its own, which has to end by exit with status 0. */
void alone(const std::function<void()>& body) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
            {
                body();
                exit(testing::Test::HasFailure() ? 1 : 0);
            },
            testing::ExitedWithCode(0), "");
}

size_t threads() {
    const std::filesystem::directory_iterator all("/proc/self/task");
    return std::distance(begin(all), end(all));
}

void usePool() {
    android::hardware::configureRpcThreadpool(4, false);
    ProcessState::self()->startThreadPool();
}

TEST(TransportEndTest, LeavesNoThread) {
    alone([] {
        std::thread([] {}).join();  // with the first one, a sanitizer starts one of its own
        const size_t before = threads();
        usePool();
        PeerProcess process;
        sp<IPeer> peer = PeerProcess::context();
        EXPECT_EQ(1, peer->callBack(new RecordingCallback, 1).withDefault(0));
        EXPECT_GE(threads(), 3u) << "one of the pool and the event loop's";
        endTransport();
        // One that was joined is still seen for a moment.
        for (int looks = 0; looks < 1000 && threads() > before; looks++) {
            std::this_thread::sleep_for(1ms);
        }
        EXPECT_LE(threads(), before);
    });
}

TEST(TransportEndTest, OfAProcessThatHasMetNobodyIsOne) {
    alone([] { endTransport(); });
}

TEST(TransportEndTest, FailsACallThatWaitsAndThoseThatComeLater) {
    alone([] {
        usePool();
        PeerProcess process;
        sp<IPeer> peer = PeerProcess::context();
        std::thread waits([&peer] { EXPECT_TRUE(peer->block().isDeadObject()); });
        std::this_thread::sleep_for(20ms);  // so that it waits; if it comes later, it fails as well
        endTransport();
        waits.join();
        EXPECT_TRUE(peer->note(1).isDeadObject());
        EXPECT_EQ(nullptr, PeerProcess::context());
        EXPECT_EQ(nullptr, ProcessState::self()->getContextObject(nullptr));
    });
}

/** Counts the deaths that it is told of. */
struct Mourner : hidl_death_recipient {
    void serviceDied(uint64_t, const wp<IBase>&) override { deaths++; }
    std::atomic<int> deaths{0};
};

TEST(TransportEndTest, TellsOfNoDeath) {
    alone([] {
        usePool();
        PeerProcess process;
        sp<IPeer> peer = PeerProcess::context();
        const sp<Mourner> mourner = new Mourner;
        ASSERT_TRUE(peer->linkToDeath(mourner, 0).withDefault(false));
        endTransport();
        EXPECT_EQ(0, mourner->deaths);
    });
}

TEST(TransportEndTest, IsADeathForTheOthersAndFreesWhatTheyHeld) {
    alone([] {
        usePool();
        PeerProcess process;
        sp<IPeer> peer = PeerProcess::context();
        std::atomic<bool> destroyed{false};
        sp<RecordingCallback> callback = new RecordingCallback;
        callback->whenDestroyed = [&destroyed] { destroyed = true; };
        ASSERT_TRUE(peer->keepCallback(callback).isOk());
        callback = nullptr;
        EXPECT_FALSE(destroyed);
        endTransport();
        EXPECT_TRUE(destroyed);
    });
}

TEST(TransportEndTest, WaitsForACallThatIsBeingServedAndWhatThatCallsFails) {
    alone([] {
        usePool();
        PeerProcess process;
        sp<IPeer> peer = PeerProcess::context();
        Gate called;
        std::atomic<bool> served{false};
        sp<RecordingCallback> callback = new RecordingCallback;
        callback->whenCalled = [&](int32_t) {
            called.open();
            EXPECT_TRUE(peer->block().isDeadObject());
            std::this_thread::sleep_for(20ms);
            served = true;
        };
        ASSERT_TRUE(peer->callBackLater(callback, 1).isOk());
        ASSERT_TRUE(called.wait());
        EXPECT_FALSE(stopServing(1ms));
        endTransport();
        EXPECT_TRUE(served);
    });
}

TEST(TransportEndTest, LetsAThreadGoThatHasJoinedThePool) {
    alone([] {
        android::hardware::configureRpcThreadpool(1, true);
        PeerProcess process;
        sp<IPeer> peer = PeerProcess::context();
        std::thread joins([] { android::hardware::joinRpcThreadpool(); });
        Gate called;
        sp<RecordingCallback> callback = new RecordingCallback;
        callback->whenCalled = [&called](int32_t) { called.open(); };
        ASSERT_TRUE(peer->callBackLater(callback, 1).isOk());
        ASSERT_TRUE(called.wait());
        EXPECT_TRUE(stopServing(20s));
        joins.join();
        endTransport();
    });
}

TEST(TransportEndTest, MayComeAtAnyMomentOfAnyCallAndFromSeveralThreads) {
    alone([] {
        usePool();
        PeerProcess process;
        std::vector<std::thread> callers;
        std::atomic<bool> goOn{true};
        for (int i = 0; i < 4; i++) {
            callers.emplace_back([&goOn] {
                while (goOn) {
                    const sp<IPeer> peer = PeerProcess::context();
                    if (peer == nullptr) continue;
                    const sp<RecordingCallback> callback = new RecordingCallback;
                    (void)peer->callBackFromThreads(callback, 8, 5).isOk();
                    (void)peer->echoCallback(callback).isOk();
                    (void)peer->note(1).isOk();
                }
            });
        }
        std::this_thread::sleep_for(20ms);
        std::thread other([] { endTransport(); });
        endTransport();
        other.join();
        goOn = false;
        for (std::thread& caller : callers) caller.join();
    });
}

}  // namespace
}  // namespace orvo::test
