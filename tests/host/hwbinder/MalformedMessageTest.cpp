// SPDX-License-Identifier: Apache-2.0
// A peer that sends nonsense is refused, and the process that it sent it to serves on.

#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <functional>
#include <random>

#include <capnp/rpc-twoparty.h>
#include <gtest/gtest.h>
#include <hwbinder/Binder.h>
#include <hwbinder/Parcel.h>
#include <kj/async-io.h>

#include "Transport.capnp.h"
#include "tests/host/hwbinder/PeerProcess.h"

namespace orvo::test {
namespace {

namespace wire = android::hardware::transport::wire;
using android::sp;
using android::status_t;
using android::hardware::IBinder;
using android::hardware::Parcel;

struct MalformedMessageTest : testing::Test {
    PeerProcess process;

    std::string socketPath() const { return deviceDirectory() + "/hwbinder/manager"; }

    void expectServing() {
        EXPECT_TRUE(process.isRunning());
        sp<IPeer> peer = PeerProcess::context();
        ASSERT_NE(nullptr, peer);
        EXPECT_TRUE(peer->ping().isOk());
    }
};

/** A stranger on the peer's socket, who may write any bytes. */
class RawConnection {
  public:
    explicit RawConnection(const std::string& path) : mFd(socket(AF_UNIX, SOCK_STREAM, 0)) {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        strncpy(address.sun_path, path.c_str(), sizeof(address.sun_path) - 1);
        EXPECT_EQ(0, connect(mFd, reinterpret_cast<sockaddr*>(&address), sizeof(address)));
    }
    ~RawConnection() { close(mFd); }
    void write(const std::string& bytes) {
        // The peer may hang up before it has read everything.
        (void)!send(mFd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    }
    /** Until the peer hangs up. */
    void readToEnd() {
        char buffer[4096];
        while (read(mFd, buffer, sizeof(buffer)) > 0) continue;
    }
    void finishWriting() { shutdown(mFd, SHUT_WR); }

  private:
    const int mFd;
};

TEST_F(MalformedMessageTest, BytesThatAreNoMessageEndTheConnectionOnly) {
    for (const std::string& bytes :
         {std::string("GET / HTTP/1.0\r\n\r\n"), std::string(64, '\xff'), std::string(64, '\0'),
          std::string("\0\0\0\0\xff\xff\xff\x7f", 8), std::string("\xff\xff\xff\xff", 4)}) {
        RawConnection stranger(socketPath());
        stranger.write(bytes);
        stranger.finishWriting();
        stranger.readToEnd();
        expectServing();
    }
}

TEST_F(MalformedMessageTest, RandomBytesEndTheConnectionOnly) {
    std::mt19937 random(20260101);
    for (int round = 0; round < 50; round++) {
        std::string bytes(8 + random() % 256, '\0');
        for (char& byte : bytes) byte = random();
        // A plausible segment table, so that the rest is parsed at all.
        const uint32_t header[2] = {0, static_cast<uint32_t>((bytes.size() - 8) / 8)};
        memcpy(bytes.data(), header, sizeof(header));
        RawConnection stranger(socketPath());
        stranger.write(bytes);
        stranger.finishWriting();
        stranger.readToEnd();
    }
    expectServing();
}

TEST_F(MalformedMessageTest, AMessageThatStopsInTheMiddleEndsTheConnectionOnly) {
    RawConnection stranger(socketPath());
    const uint32_t header[2] = {0, 1000};
    stranger.write(std::string(reinterpret_cast<const char*>(header), sizeof(header)));
    stranger.write("only a few of the eight thousand bytes");
    stranger.finishWriting();
    stranger.readToEnd();
    expectServing();
}

/** Speaks the transport's own protocol, but fills the messages by hand. */
struct CraftedCallTest : MalformedMessageTest {
    /** What the peer's object answers to a call with a parcel that `fill` has made. */
    status_t statusOf(std::function<void(wire::Binder::TransactParams::Builder)> fill) {
        kj::AsyncIoContext io = kj::setupAsyncIo();
        auto address = io.provider->getNetwork()
                               .parseAddress(kj::str("unix:", socketPath().c_str()))
                               .wait(io.waitScope);
        auto stream = address->connect().wait(io.waitScope);
        capnp::TwoPartyClient client(*stream);
        auto process = client.bootstrap().castAs<wire::Process>();
        auto object = process.contextObjectRequest().send().wait(io.waitScope);
        auto request = object.getBinder().getBinder().transactRequest();
        request.setCode(256921159);
        fill(request);
        return request.send().wait(io.waitScope).getStatus();
    }

    /** A well-formed ping, for others to spoil. */
    static void fillPing(wire::Binder::TransactParams::Builder params) {
        Parcel parcel;
        parcel.writeInterfaceToken("android.hidl.base@1.0::IBase");
        params.initData().setFlat(kj::arrayPtr(parcel.data(), parcel.dataSize()));
    }
};

TEST_F(CraftedCallTest, AWellFormedCallIsAnswered) {
    EXPECT_EQ(android::OK, statusOf(fillPing));
}

TEST_F(CraftedCallTest, AWrongInterfaceTokenIsRefusedByTheStub) {
    EXPECT_EQ(android::BAD_TYPE, statusOf([](auto params) {
                  const kj::byte token[] = {'x', 0, 0, 0};
                  params.initData().setFlat(kj::arrayPtr(token, 4));
              }));
    EXPECT_EQ(android::BAD_TYPE, statusOf([](auto params) { params.initData(); }));
    expectServing();
}

TEST_F(CraftedCallTest, AnUnknownCodeIsRefusedByTheStub) {
    EXPECT_EQ(android::UNKNOWN_TRANSACTION, statusOf([](auto params) {
                  fillPing(params);
                  params.setCode(0x0fffffff);
              }));
}

TEST_F(CraftedCallTest, ObjectsThatDoNotFitTogetherAreRefused) {
    using Spoiler = std::function<void(wire::Object::Builder)>;
    const std::vector<Spoiler> spoilers = {
            [](wire::Object::Builder object) { object.setPosition(1000000); },
            [](wire::Object::Builder object) { object.setPosition(2); },
            [](wire::Object::Builder object) {
                constexpr kj::byte kNoPointer[8] = {};
                object.setBuffer(kj::arrayPtr(kNoPointer, sizeof(kNoPointer)));
                object.setEmbedded(true);
                object.setParent(0);
            },
            [](wire::Object::Builder object) {
                object.setNull();
                object.setEmbedded(true);
                object.setParent(4000000000u);
                object.setParentOffset(UINT64_MAX);
            },
            [](wire::Object::Builder object) {
                auto handle = object.initHandle();
                handle.setPresent(true);
                handle.initInts(100000);
            },
            [](wire::Object::Builder object) {
                // A descriptor that no descriptor came with.
                auto handle = object.initHandle();
                handle.setPresent(true);
                handle.initDescriptors(1);
            },
    };
    for (size_t i = 0; i < spoilers.size(); i++) {
        EXPECT_EQ(android::FAILED_TRANSACTION, statusOf([&](auto params) {
                      fillPing(params);
                      spoilers[i](params.getData().initObjects(1)[0]);
                  }))
                << "spoiler " << i;
    }
    expectServing();
}

TEST_F(CraftedCallTest, MoreObjectsThanThereArePlacesForAreRefusedBeforeAnyIsMade) {
    EXPECT_EQ(android::FAILED_TRANSACTION, statusOf([](auto params) {
                  fillPing(params);
                  params.getData().initObjects(100000);
              }));
    expectServing();
}

TEST_F(CraftedCallTest, MoreDescriptorsThanOneMessageBringsAreRefusedBeforeAnyIsFetched) {
    EXPECT_EQ(android::FAILED_TRANSACTION, statusOf([](auto params) {
                  const std::vector<kj::byte> flat(8);
                  params.initData().setFlat(kj::arrayPtr(flat.data(), flat.size()));
                  auto objects = params.getData().initObjects(2);
                  for (int i = 0; i < 2; i++) {
                      objects[i].setPosition(4 * i);
                      auto handle = objects[i].initHandle();
                      handle.setPresent(true);
                      handle.initDescriptors(200);
                  }
              }));
    expectServing();
}

TEST_F(CraftedCallTest, AChainOfCallsWithoutEndIsRefused) {
    EXPECT_THROW(statusOf([](auto params) {
                     fillPing(params);
                     params.initChain(100000);
                 }),
                 kj::Exception);
    expectServing();
}

TEST_F(CraftedCallTest, AChainThatNamesAThreadThatDoesNotExistIsServedByThePool) {
    EXPECT_EQ(android::OK, statusOf([this](auto params) {
                  fillPing(params);
                  char target[64] = {};
                  ASSERT_LT(0, readlink(socketPath().c_str(), target, sizeof(target) - 1));
                  auto frame = params.initChain(1)[0];
                  frame.setAddress(target);
                  frame.setThread(UINT64_MAX);
              }));
}

TEST_F(CraftedCallTest, AReferenceThatWeNeverGaveAwayIsRefused) {
    EXPECT_EQ(android::FAILED_TRANSACTION, statusOf([this](auto params) {
                  fillPing(params);
                  char target[64] = {};
                  ASSERT_LT(0, readlink(socketPath().c_str(), target, sizeof(target) - 1));
                  auto binder = params.getData().initObjects(1)[0].initBinder();
                  binder.setAddress(target);
                  binder.setId(987654321);
              }));
    expectServing();
}

TEST_F(CraftedCallTest, NobodyCanIntroduceItselfAsAnotherProcess) {
    kj::AsyncIoContext io = kj::setupAsyncIo();
    auto address = io.provider->getNetwork()
                           .parseAddress(kj::str("unix:", socketPath().c_str()))
                           .wait(io.waitScope);
    auto stream = address->connect().wait(io.waitScope);
    capnp::TwoPartyClient client(*stream);
    auto process = client.bootstrap().castAs<wire::Process>();
    for (const char* name : {"1-0123456789abcdef", "", "../manager"}) {
        auto request = process.introduceRequest();
        request.setAddress(name);
        EXPECT_THROW(request.send().wait(io.waitScope), kj::Exception) << name;
    }
    expectServing();
}

TEST_F(CraftedCallTest, ADescriptorThatIsOnlyPromisedHoldsUpNoOtherCaller) {
    kj::AsyncIoContext io = kj::setupAsyncIo();
    auto address = io.provider->getNetwork()
                           .parseAddress(kj::str("unix:", socketPath().c_str()))
                           .wait(io.waitScope);
    auto stream = address->connect().wait(io.waitScope);
    capnp::TwoPartyClient client(*stream);
    auto object = client.bootstrap().castAs<wire::Process>().contextObjectRequest().send().wait(
            io.waitScope);
    auto request = object.getBinder().getBinder().transactRequest();
    request.setCode(1);
    request.setFlags(IBinder::FLAG_ONEWAY);
    const kj::byte place[4] = {};
    auto data = request.initData();
    data.setFlat(kj::arrayPtr(place, sizeof(place)));
    auto handle = data.initObjects(1)[0].initHandle();
    handle.setPresent(true);
    auto never = kj::newPromiseAndFulfiller<wire::Descriptor::Client>();
    handle.initDescriptors(1).set(0, wire::Descriptor::Client(kj::mv(never.promise)));
    auto sent = request.send();
    sent.wait(io.waitScope);

    // It was refused; what comes after it on the same object runs.
    sp<IPeer> peer = PeerProcess::context();
    ASSERT_TRUE(peer->note(7).isOk());
    std::vector<int32_t> notes;
    while (notes.empty()) {
        ASSERT_TRUE(peer->notes([&](const auto& all) { notes = all; }).isOk());
    }
    EXPECT_EQ(std::vector<int32_t>{7}, notes);
}

TEST_F(CraftedCallTest, AReferenceWhoseAddressLeavesTheDirectoryIsRefused) {
    for (const char* address : {"../../etc/passwd", "/tmp/x", "no such name", "."}) {
        EXPECT_EQ(android::FAILED_TRANSACTION, statusOf([address](auto params) {
                      fillPing(params);
                      params.getData().initObjects(1)[0].initBinder().setAddress(address);
                  }))
                << address;
    }
    expectServing();
}

}  // namespace
}  // namespace orvo::test
