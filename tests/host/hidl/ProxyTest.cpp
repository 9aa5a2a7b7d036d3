// SPDX-License-Identifier: Apache-2.0
// Proxies: what generated client code sends, and what its callers get to see.

#include <fcntl.h>

#include <vector>

#include <gtest/gtest.h>
#include <hidl/HidlTransportSupport.h>
#include <orvo/test/kinds/1.1/BpHwKinds.h>

#include "tests/host/hidl/EchoingKinds.h"
#include "tests/host/hidl/LoopBackBinder.h"

namespace {

using namespace android;
using android::hardware::getOrCreateCachedBinder;
using android::hardware::hidl_handle;
using android::hardware::hidl_memory;
using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using android::hardware::IBinder;
using android::hardware::Return;
using android::hardware::Status;
using android::hidl::base::V1_0::DebugInfo;
using android::hidl::base::V1_0::IBase;
using orvo::test::EchoingKinds;
using orvo::test::LoopBackBinder;
using orvo::test::kinds::V1_0::Colour;
using orvo::test::kinds::V1_0::Leaf;
using orvo::test::kinds::V1_0::Parcelled;
using orvo::test::kinds::V1_0::Tree;
using orvo::test::kinds::V1_1::BpHwKinds;
using orvo::test::kinds::V1_1::IKinds;

class ProxyTest : public testing::Test {
  protected:
    const sp<EchoingKinds> mKinds = new EchoingKinds();
    const sp<LoopBackBinder> mBinder = new LoopBackBinder(getOrCreateCachedBinder(mKinds.get()));
    const sp<IKinds> mProxy = new BpHwKinds(mBinder);
};

/** A native handle with one descriptor, closed with it. */
hidl_handle openHandle() {
    native_handle_t* native = native_handle_create(1, 1);
    native->data[0] = open("/dev/null", O_RDONLY | O_CLOEXEC);
    native->data[1] = 42;
    hidl_handle handle;
    handle.setTo(native, true);
    return handle;
}

TEST_F(ProxyTest, AProxyIsRemoteAndItsImplementationIsNot) {
    EXPECT_TRUE(mProxy->isRemote());
    EXPECT_FALSE(mKinds->isRemote());
    EXPECT_EQ(mBinder, getOrCreateCachedBinder(mProxy.get()));
}

TEST_F(ProxyTest, StructuresOfAllTypesComeBackEqual) {
    Leaf leaf = {"leaf", Colour::BLUE, {}, 0.5};
    for (int i = 0; i < 6; i++) leaf.grid.data()[i] = i;
    Tree tree = {true, {leaf, leaf}, {"a", ""}, {{1, 2}, {}}};
    tree.leaves[1].name = "second";
    bool called = false;
    const Return<void> result = mProxy->echoTree(tree, [&](const Tree& same) {
        called = true;
        EXPECT_EQ(tree, same);
        EXPECT_NE(tree.leaves.data(), same.leaves.data());
    });
    EXPECT_TRUE(result.isOk());
    EXPECT_TRUE(called);
}

TEST_F(ProxyTest, HandlesArriveAsDuplicates) {
    const Parcelled sent = {"label", openHandle()};
    const Return<void> result = mProxy->echoParcelled(sent, [&](const Parcelled& same) {
        EXPECT_EQ("label", same.label);
        ASSERT_NE(nullptr, same.content.getNativeHandle());
        EXPECT_NE(sent.content->data[0], same.content->data[0]);
        EXPECT_EQ(42, same.content->data[1]);
    });
    EXPECT_TRUE(result.isOk());
    EXPECT_NE(-1, fcntl(sent.content->data[0], F_GETFD));
}

TEST_F(ProxyTest, NullHandlesStayNull) {
    bool called = false;
    EXPECT_TRUE(mProxy->echoHandle(nullptr, [&](const hidl_handle& same) {
                          called = same.getNativeHandle() == nullptr;
                      }).isOk());
    EXPECT_TRUE(called);
}

TEST_F(ProxyTest, AReceivedHandleIsKeptByCopyingIt) {
    const hidl_handle sent = openHandle();
    hidl_handle kept;
    EXPECT_TRUE(mProxy->echoHandle(sent, [&](const hidl_handle& same) { kept = same; }).isOk());
    EXPECT_NE(-1, fcntl(kept->data[0], F_GETFD));
}

TEST_F(ProxyTest, MemoryComesBackWithNameSizeAndHandle) {
    const hidl_memory sent("ashmem", openHandle(), 4096);
    const Return<void> result = mProxy->echoMemory(sent, [&](const hidl_memory& same) {
        EXPECT_EQ("ashmem", same.name());
        EXPECT_EQ(4096u, same.size());
        ASSERT_TRUE(same.valid());
        EXPECT_NE(sent.handle()->data[0], same.handle()->data[0]);
    });
    EXPECT_TRUE(result.isOk());
}

TEST_F(ProxyTest, QueueDescriptorsComeBackEqual) {
    const hidl_handle handle = openHandle();
    const EchoingKinds::Queue sent(64, native_handle_clone(handle), 1);
    const Return<void> result = mProxy->echoQueue(sent, [&](const EchoingKinds::Queue& same) {
        EXPECT_EQ(64u, same.getSize());
        EXPECT_EQ(3u, same.countGrantors());
        EXPECT_EQ(1u, same.getQuantum());
        EXPECT_TRUE(same.isHandleValid());
    });
    EXPECT_TRUE(result.isOk());
}

TEST_F(ProxyTest, AnObjectThatComesHomeIsItself) {
    const sp<EchoingKinds> argument = new EchoingKinds();
    const Return<sp<EchoingKinds::Kinds>> result = mProxy->echoKinds(argument);
    ASSERT_TRUE(result.isOk());
    EXPECT_EQ(argument.get(), sp<EchoingKinds::Kinds>(result).get());
    EXPECT_EQ(argument.get(), mKinds->lastKinds.get());
    const Return<sp<IBase>> any = mProxy->echoAny(argument);
    EXPECT_EQ(argument.get(), sp<IBase>(any).get());
}

TEST_F(ProxyTest, ARemoteObjectArrivesAsANewProxyEveryTime) {
    const Return<sp<EchoingKinds::Kinds>> result = mProxy->echoKinds(mProxy);
    ASSERT_TRUE(result.isOk());
    const sp<EchoingKinds::Kinds> back = result;
    EXPECT_NE(mProxy.get(), back.get());
    EXPECT_TRUE(back->isRemote());
    EXPECT_TRUE(android::hardware::interfacesEqual(mProxy, back));
}

TEST_F(ProxyTest, NullObjectsStayNull) {
    EXPECT_EQ(nullptr, sp<EchoingKinds::Kinds>(mProxy->echoKinds(nullptr)));
    EXPECT_EQ(nullptr, sp<IBase>(mProxy->echoAny(nullptr)));
}

TEST_F(ProxyTest, ANullResultCallbackIsRefusedWithoutACall) {
    const Return<void> result = mProxy->echoTree({}, nullptr);
    EXPECT_FALSE(result.isOk());
    EXPECT_EQ("Status(EX_ILLEGAL_ARGUMENT): 'Null synchronous callback passed.'",
              result.description());
    EXPECT_TRUE(mBinder->calls.empty());
}

TEST_F(ProxyTest, AFailedCallDoesNotInvokeTheResultCallback) {
    mBinder->errors[1] = FAILED_TRANSACTION;
    bool called = false;
    const Return<void> result = mProxy->echoTree({}, [&](const Tree&) { called = true; });
    EXPECT_FALSE(result.isOk());
    EXPECT_EQ("Status(EX_TRANSACTION_FAILED): 'FAILED_TRANSACTION: '", result.description());
    EXPECT_FALSE(called);
}

TEST_F(ProxyTest, AFailedSingleResultHasNoValue) {
    mBinder->errors[6] = BAD_VALUE;
    Return<Colour> result = mProxy->echoColour(Colour::RED);
    EXPECT_FALSE(result.isOk());
    EXPECT_EQ(Colour::GREEN, result.withDefault(Colour::GREEN));
}

TEST_F(ProxyTest, AProcessThatIsGoneIsADeadObjectForEveryCall) {
    const sp<IKinds> proxy = new BpHwKinds(new LoopBackBinder(nullptr));
    EXPECT_TRUE(proxy->nothing().isDeadObject());
    EXPECT_TRUE(proxy->ping().isDeadObject());
    EXPECT_TRUE(proxy->echoColour(Colour::RED).isDeadObject());
    EXPECT_TRUE(proxy->note("oneway").isDeadObject());
}

TEST_F(ProxyTest, OnewayMethodsSayThatNobodyWaits) {
    EXPECT_TRUE(mProxy->note("text").isOk());
    ASSERT_EQ(1u, mBinder->calls.size());
    EXPECT_EQ(10u, mBinder->calls[0].code);
    EXPECT_EQ(uint32_t{IBinder::FLAG_ONEWAY}, mBinder->calls[0].flags);
    EXPECT_TRUE(mProxy->nothing().isOk());
    EXPECT_EQ(0u, mBinder->calls[1].flags);
}

TEST_F(ProxyTest, TheTokenIsThatOfTheInterfaceThatDeclaresTheMethod) {
    EXPECT_TRUE(mProxy->nothing().isOk());
    EXPECT_EQ(1u, static_cast<uint32_t>(mProxy->version()));
    EXPECT_TRUE(mProxy->ping().isOk());
    ASSERT_EQ(3u, mBinder->calls.size());
    EXPECT_EQ("orvo.test.kinds@1.0::IKinds", mBinder->calls[0].token);
    EXPECT_EQ("orvo.test.kinds@1.1::IKinds", mBinder->calls[1].token);
    EXPECT_EQ(11u, mBinder->calls[1].code);
    EXPECT_EQ("android.hidl.base@1.0::IBase", mBinder->calls[2].token);
}

TEST_F(ProxyTest, ReservedMethodsHaveTheirCodes) {
    EXPECT_TRUE(mProxy->ping().isOk());
    EXPECT_TRUE(mProxy->interfaceChain([](const auto&) {}).isOk());
    EXPECT_TRUE(mProxy->interfaceDescriptor([](const auto&) {}).isOk());
    EXPECT_TRUE(mProxy->notifySyspropsChanged().isOk());
    EXPECT_TRUE(mProxy->setHALInstrumentation().isOk());
    EXPECT_TRUE(mProxy->getDebugInfo([](const auto&) {}).isOk());
    EXPECT_TRUE(mProxy->debug(nullptr, {}).isOk());
    EXPECT_TRUE(mProxy->getHashChain([](const auto&) {}).isOk());
    std::vector<uint32_t> codes;
    for (const LoopBackBinder::Call& call : mBinder->calls) codes.push_back(call.code);
    EXPECT_EQ((std::vector<uint32_t>{0x0f504e47, 0x0f43484e, 0x0f445343, 0x0f535953, 0x0f494e54,
                                     0x0f524546, 0x0f444247, 0x0f485348}),
              codes);
}

TEST_F(ProxyTest, TheIdentityOfTheObjectIsToldThroughTheProxy) {
    std::vector<std::string> chain;
    EXPECT_TRUE(mProxy->interfaceChain([&](const auto& descriptors) {
                          chain.assign(descriptors.begin(), descriptors.end());
                      }).isOk());
    EXPECT_EQ(
            (std::vector<std::string>{"orvo.test.kinds@1.1::IKinds", "orvo.test.kinds@1.0::IKinds",
                                      "android.hidl.base@1.0::IBase"}),
            chain);
    size_t hashes = 0;
    EXPECT_TRUE(mProxy->getHashChain([&](const auto& list) { hashes = list.size(); }).isOk());
    EXPECT_EQ(chain.size(), hashes);
    EXPECT_EQ(chain[0], android::hardware::details::getDescriptor(mProxy.get()));
}

TEST_F(ProxyTest, DebugInfoIsAnsweredByTheStub) {
    DebugInfo info = {};
    EXPECT_TRUE(mProxy->getDebugInfo([&](const DebugInfo& told) { info = told; }).isOk());
    EXPECT_EQ(-1, info.pid);
    EXPECT_EQ(0u, info.ptr);
    EXPECT_EQ(DebugInfo::Architecture::IS_64BIT, info.arch);
}

}  // namespace
