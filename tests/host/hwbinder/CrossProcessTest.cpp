// SPDX-License-Identifier: Apache-2.0
// Values and references cross between two processes, in both directions.

#include <unistd.h>

#include <atomic>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hidl/HidlTransportSupport.h>
#include <hwbinder/BpHwBinder.h>
#include <hwbinder/IPCThreadState.h>

#include "tests/host/hwbinder/PeerProcess.h"
#include "tests/host/hwbinder/RecordingCallback.h"

namespace orvo::test {
namespace {

using namespace vendor::orvo::peer::V1_0;
using android::sp;
using android::wp;
using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using android::hardware::interfacesEqual;
using android::hardware::IPCThreadState;
using testing::ElementsAre;

struct CrossProcessTest : testing::Test {
    PeerProcess process;
    sp<IPeer> peer = PeerProcess::context();
};

Leaf leaf(const std::string& name, std::vector<int32_t> numbers, Colour colour) {
    Leaf leaf;
    leaf.name = name;
    leaf.numbers = numbers;
    leaf.colour = colour;
    leaf.fixed = std::array<int32_t, 3>{7, 8, 9};
    return leaf;
}

TEST_F(CrossProcessTest, ThePeerIsRemoteAndInAnotherProcess) {
    ASSERT_NE(nullptr, peer);
    EXPECT_TRUE(peer->isRemote());
    EXPECT_EQ(process.pid(), static_cast<int32_t>(peer->processId()));
    EXPECT_NE(getpid(), process.pid());
}

TEST_F(CrossProcessTest, StringsCrossAlsoEmptyAndWithBytesOfAllKinds) {
    for (const std::string& text : {std::string(), std::string("camera"), std::string("\xff\x80 ü"),
                                    std::string("a\0b", 3), std::string(100000, 'x')}) {
        bool called = false;
        auto result = peer->echoString(text, [&](const hidl_string& same) {
            called = true;
            EXPECT_EQ(text, std::string(same));
        });
        EXPECT_TRUE(result.isOk()) << result.description();
        EXPECT_TRUE(called);
    }
}

TEST_F(CrossProcessTest, NestedStructuresCrossWhole) {
    Tree tree = {};
    tree.id = UINT64_MAX - 1;
    tree.flag = true;
    tree.leaves = {leaf("one", {1, 2, 3}, Colour::RED), leaf("", {}, Colour::BLUE)};
    tree.single = leaf("single", {-1}, Colour::GREEN);
    tree.words = {"external/0", "", "virtual/0"};
    tree.rows = {hidl_vec<uint8_t>{1, 2}, hidl_vec<uint8_t>{}, hidl_vec<uint8_t>{3}};
    Tree same = {};
    ASSERT_TRUE(peer->echoTree(tree, [&](const Tree& echoed) { same = echoed; }).isOk());
    EXPECT_EQ(tree, same);
}

TEST_F(CrossProcessTest, AnEmptyStructureCrosses) {
    Tree tree = {};
    tree.single.colour = Colour::RED;
    tree.single.fixed = std::array<int32_t, 3>{};
    Tree same = {};
    same.id = 5;
    ASSERT_TRUE(peer->echoTree(tree, [&](const Tree& echoed) { same = echoed; }).isOk());
    EXPECT_EQ(tree, same);
}

TEST_F(CrossProcessTest, EnumsCross) {
    EXPECT_EQ(Colour::BLUE, static_cast<Colour>(peer->echoColour(Colour::BLUE)));
}

TEST_F(CrossProcessTest, FourMebibytesCrossInOneCallAndBack) {
    hidl_vec<uint8_t> bytes(4 * 1024 * 1024);
    for (size_t i = 0; i < bytes.size(); i++) bytes[i] = i * 31 + i / 4096;
    bool same = false;
    ASSERT_TRUE(peer->echoBytes(bytes, [&](const hidl_vec<uint8_t>& echoed) {
                        same = echoed == bytes;
                    }).isOk());
    EXPECT_TRUE(same);
}

TEST_F(CrossProcessTest, MoreThanOneCallCanCarryIsRefusedAndTheNextCallWorks) {
    const hidl_vec<uint8_t> bytes(17 * 1024 * 1024);
    bool called = false;
    auto result = peer->echoBytes(bytes, [&](const hidl_vec<uint8_t>&) { called = true; });
    EXPECT_FALSE(result.isOk());
    EXPECT_FALSE(result.isDeadObject());
    EXPECT_THAT(result.description(), testing::HasSubstr("FAILED_TRANSACTION"));
    EXPECT_FALSE(called);
    EXPECT_TRUE(peer->ping().isOk());
}

TEST_F(CrossProcessTest, NullReferencesCrossBothWays) {
    sp<IPeer> echoed = peer->echoPeer(nullptr);
    EXPECT_EQ(nullptr, echoed);
    sp<ICallback> callback = peer->echoCallback(nullptr);
    EXPECT_EQ(nullptr, callback);
}

TEST_F(CrossProcessTest, AnObjectComesHomeAsItself) {
    sp<RecordingCallback> callback = new RecordingCallback;
    sp<ICallback> echoed = peer->echoCallback(callback);
    EXPECT_EQ(callback.get(), echoed.get());
}

TEST_F(CrossProcessTest, TwoReferencesToOneRemoteObjectAreEqual) {
    sp<IPeer> other = PeerProcess::context();
    ASSERT_NE(peer.get(), other.get()) << "two proxies";
    EXPECT_TRUE(interfacesEqual(peer, other));
    sp<IPeer> echoed = peer->echoPeer(peer);
    EXPECT_TRUE(interfacesEqual(peer, echoed));
    EXPECT_FALSE(interfacesEqual(peer, sp<ICallback>(new RecordingCallback)));
}

TEST_F(CrossProcessTest, TheHandlerKnowsWhoCalls) {
    EXPECT_EQ(getpid(), static_cast<int32_t>(peer->callerId()));
    EXPECT_EQ(getpid(), IPCThreadState::self()->getCallingPid()) << "outside a call, ourselves";
    EXPECT_FALSE(IPCThreadState::self()->isServingCall());
}

TEST_F(CrossProcessTest, AnObjectOutlivesItsOwnerWhileThePeerHoldsIt) {
    sp<RecordingCallback> callback = new RecordingCallback;
    wp<RecordingCallback> watched = callback;
    ASSERT_TRUE(peer->keepCallback(callback).isOk());
    callback = nullptr;
    std::string outcome;
    ASSERT_TRUE(peer->tryKeptCallback(4, [&](const hidl_string& text) { outcome = text; }).isOk());
    EXPECT_EQ("answer 5", outcome);
    EXPECT_NE(nullptr, watched.promote());
}

TEST_F(CrossProcessTest, AnObjectGoesOnceThePeerHasLetGo) {
    Gate destroyed;
    sp<RecordingCallback> callback = new RecordingCallback;
    callback->whenDestroyed = [&] { destroyed.open(); };
    ASSERT_TRUE(peer->keepCallback(callback).isOk());
    callback = nullptr;
    ASSERT_TRUE(peer->keepCallback(nullptr).isOk());
    EXPECT_TRUE(destroyed.wait());
}

TEST_F(CrossProcessTest, OnewayCallsToOneObjectRunInTheOrderInWhichTheyWereSent) {
    std::vector<int32_t> expected;
    for (int32_t i = 0; i < 500; i++) {
        expected.push_back(i);
        // Every third carries a descriptor, which takes longer to arrive.
        if (i % 3 == 0) {
            native_handle_t* handle = native_handle_create(1, 0);
            handle->data[0] = dup(STDIN_FILENO);
            android::hardware::hidl_handle file;
            file.setTo(handle, true);
            ASSERT_TRUE(peer->noteWithFile(i, file).isOk());
        } else {
            ASSERT_TRUE(peer->note(i).isOk());
        }
    }
    // Two-way calls are not ordered with oneway ones, so ask until all have arrived.
    std::vector<int32_t> notes;
    while (notes.size() < expected.size()) {
        ASSERT_TRUE(peer->notes([&](const hidl_vec<int32_t>& all) { notes = all; }).isOk());
    }
    EXPECT_EQ(expected, notes);
}

TEST_F(CrossProcessTest, ReferencesToAThirdProcessAreUsedWithoutTheOneWhoPassedThem) {
    PeerProcess third = PeerProcess::joining();
    sp<IPeer> direct = peer->keptPeer();
    ASSERT_NE(nullptr, direct);
    EXPECT_EQ(third.pid(), static_cast<int32_t>(direct->processId()));
    process.kill();
    EXPECT_EQ(third.pid(), static_cast<int32_t>(direct->processId()));
    bool called = false;
    EXPECT_TRUE(direct->echoString("still here", [&](const auto&) { called = true; }).isOk());
    EXPECT_TRUE(called);
}

TEST_F(CrossProcessTest, AThirdProcessesObjectIsTheSameWhicheverWayItCame) {
    PeerProcess third = PeerProcess::joining();
    sp<IPeer> viaContext = peer->keptPeer();
    sp<IPeer> viaItself = viaContext->echoPeer(viaContext);
    EXPECT_TRUE(interfacesEqual(viaContext, viaItself));
}

TEST_F(CrossProcessTest, AnObjectPassedOnByAnotherProcessIsCalledBackInOurs) {
    PeerProcess third = PeerProcess::joining();
    sp<IPeer> direct = peer->keptPeer();
    sp<RecordingCallback> callback = new RecordingCallback;
    ASSERT_TRUE(direct->keepCallback(callback).isOk());
    // The context peer, which we are connected to already, hears of our object from the third.
    ASSERT_TRUE(direct->passCallback(peer).isOk());
    third.kill();
    std::string outcome;
    ASSERT_TRUE(peer->tryKeptCallback(8, [&](const hidl_string& text) { outcome = text; }).isOk());
    EXPECT_EQ("answer 9", outcome);
    EXPECT_EQ(std::vector<int32_t>{8}, callback->values());
}

TEST_F(CrossProcessTest, ManyThreadsCallAtOnce) {
    std::vector<std::thread> callers;
    std::atomic<int> right{0};
    for (int t = 0; t < 8; t++) {
        callers.emplace_back([&, t] {
            for (int i = 0; i < 50; i++) {
                const std::string text = std::to_string(t) + "/" + std::to_string(i);
                (void)
                        peer->echoString(text, [&](const hidl_string& same) {
                                if (std::string(same) == text) right++;
                            }).isOk();
            }
        });
    }
    for (std::thread& caller : callers) caller.join();
    EXPECT_EQ(400, right);
}

}  // namespace
}  // namespace orvo::test
