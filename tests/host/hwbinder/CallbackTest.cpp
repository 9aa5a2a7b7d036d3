// SPDX-License-Identifier: Apache-2.0
// A client's objects are called back in the client's process, also while its own call still runs.

#include <gtest/gtest.h>
#include <hidl/HidlTransportSupport.h>
#include <hwbinder/IPCThreadState.h>

#include "tests/host/hwbinder/PeerProcess.h"
#include "tests/host/hwbinder/RecordingCallback.h"

namespace orvo::test {
namespace {

using namespace vendor::orvo::peer::V1_0;
using android::sp;
using android::hardware::hidl_string;
using android::hardware::IPCThreadState;
using android::hardware::Return;

struct CallbackTest : testing::Test {
    PeerProcess process;
    sp<IPeer> peer = PeerProcess::context();
    sp<RecordingCallback> callback = new RecordingCallback;
};

TEST_F(CallbackTest, ACallbackDuringACallRunsOnTheThreadThatWaitsForThatCall) {
    EXPECT_EQ(0 + 1 + 2 + 3, static_cast<int32_t>(peer->callBack(callback, 3)));
    EXPECT_EQ(std::set<std::thread::id>{std::this_thread::get_id()}, callback->threads());
}

TEST_F(CallbackTest, ACallbackKnowsItsCallerAndTheIdentityIsRestored) {
    pid_t seen = 0;
    bool serving = false;
    callback->whenCalled = [&](int32_t) {
        seen = IPCThreadState::self()->getCallingPid();
        serving = IPCThreadState::self()->isServingCall();
    };
    ASSERT_TRUE(peer->callBack(callback, 1).isOk());
    EXPECT_EQ(process.pid(), seen);
    EXPECT_TRUE(serving);
    EXPECT_EQ(getpid(), IPCThreadState::self()->getCallingPid());
    EXPECT_FALSE(IPCThreadState::self()->isServingCall());
}

TEST_F(CallbackTest, CallbacksFromSeveralThreadsAtOnceAllArrive) {
    // Sum of 0..49 plus one each, from each of six threads.
    const int32_t expected = 6 * (49 * 50 / 2 + 50);
    EXPECT_EQ(expected, static_cast<int32_t>(peer->callBackFromThreads(callback, 6, 50)));
    EXPECT_EQ(300u, callback->values().size());
    EXPECT_EQ(0u, callback->threads().count(std::this_thread::get_id()))
            << "they were not made on behalf of our call";
}

TEST_F(CallbackTest, CallbacksAfterTheCallHasReturnedRunOnThePool) {
    Gate called;
    bool onPool = false;
    callback->whenCalled = [&](int32_t value) {
        EXPECT_EQ(12, value);
        onPool = IPCThreadState::self()->isLooperThread();
        called.open();
    };
    ASSERT_TRUE(peer->callBackLater(callback, 12).isOk());
    ASSERT_TRUE(called.wait());
    EXPECT_TRUE(onPool);
    EXPECT_FALSE(IPCThreadState::self()->isLooperThread());
}

TEST_F(CallbackTest, AHandlerMayCallTheProcessThatCallsIt) {
    int32_t pid = 0;
    callback->whenCalled = [&](int32_t) { pid = peer->processId(); };
    ASSERT_TRUE(peer->callBack(callback, 1).isOk());
    EXPECT_EQ(process.pid(), pid);
}

TEST_F(CallbackTest, CallsBackAndForthNeedOnlyTheThreadsThatWait) {
    // Each process has one thread for all of them: without nesting this would hang.
    process.kill();
    process = PeerProcess(1);
    peer = PeerProcess::context();
    struct Partner : IPeer {
        // Only descend is called.
        Return<void> echoString(const hidl_string&, echoString_cb) override { abort(); }
        Return<void> echoTree(const Tree&, echoTree_cb) override { abort(); }
        Return<void> echoBytes(const android::hardware::hidl_vec<uint8_t>&, echoBytes_cb) override {
            abort();
        }
        Return<Colour> echoColour(Colour) override { abort(); }
        Return<sp<IPeer>> echoPeer(const sp<IPeer>&) override { abort(); }
        Return<sp<ICallback>> echoCallback(const sp<ICallback>&) override { abort(); }
        Return<void> readAll(const android::hardware::hidl_handle&, readAll_cb) override {
            abort();
        }
        Return<void> openPipes(const android::hardware::hidl_vec<hidl_string>&,
                               openPipes_cb) override {
            abort();
        }
        Return<void> describe(const Parcelled&, describe_cb) override { abort(); }
        Return<int32_t> countDescriptors() override { abort(); }
        Return<int32_t> callBack(const sp<ICallback>&, int32_t) override { abort(); }
        Return<int32_t> callBackFromThreads(const sp<ICallback>&, int32_t, int32_t) override {
            abort();
        }
        Return<void> callBackLater(const sp<ICallback>&, int32_t) override { abort(); }
        Return<int32_t> descend(const sp<IPeer>& other, int32_t levels) override {
            threads.insert(std::this_thread::get_id());
            if (levels == 0) return 1;
            return 1 + other->descend(this, levels - 1).withDefault(-1000000);
        }
        Return<void> keepPeer(const sp<IPeer>&) override { abort(); }
        Return<sp<IPeer>> keptPeer() override { abort(); }
        Return<void> keepCallback(const sp<ICallback>&) override { abort(); }
        Return<void> passCallback(const sp<IPeer>&) override { abort(); }
        Return<void> tryKeptCallback(int32_t, tryKeptCallback_cb) override { abort(); }
        Return<int32_t> processId() override { abort(); }
        Return<int32_t> callerId() override { abort(); }
        Return<void> exitNow() override { abort(); }
        Return<void> block() override { abort(); }
        Return<void> release() override { abort(); }
        Return<void> note(int32_t) override { abort(); }
        Return<void> noteWithFile(int32_t, const android::hardware::hidl_handle&) override {
            abort();
        }
        Return<void> notes(notes_cb) override { abort(); }

        std::set<std::thread::id> threads;
    };
    sp<Partner> partner = new Partner;
    EXPECT_EQ(11, static_cast<int32_t>(peer->descend(partner, 10)));
    EXPECT_EQ(std::set<std::thread::id>{std::this_thread::get_id()}, partner->threads);
}

TEST_F(CallbackTest, ACallIsAnsweredWhileAnotherOneBlocks) {
    std::thread blocked([this] { EXPECT_TRUE(peer->block().isOk()); });
    for (int i = 0; i < 20; i++) EXPECT_TRUE(peer->ping().isOk());
    // Until block() has begun, release() has nothing to release.
    std::atomic<bool> done{false};
    std::thread releasing([&] {
        while (!done) ASSERT_TRUE(peer->release().isOk());
    });
    blocked.join();
    done = true;
    releasing.join();
}

}  // namespace
}  // namespace orvo::test
