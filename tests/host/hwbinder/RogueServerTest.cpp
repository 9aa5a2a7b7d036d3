// SPDX-License-Identifier: Apache-2.0
// A server whose answers are nonsense: its clients get a transport error and live on.

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <functional>
#include <future>
#include <thread>

#include <capnp/rpc-twoparty.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kj/async-io.h>

#include "Transport.capnp.h"
#include "tests/host/hwbinder/PeerProcess.h"
#include "tests/host/hwbinder/RecordingCallback.h"

namespace orvo::test {
namespace {

namespace wire = android::hardware::transport::wire;
using android::sp;
using android::hardware::hidl_string;

using Answer = std::function<void(wire::Binder::TransactResults::Builder)>;

constexpr char kAddress[] = "1-0000000000000001";

class RogueBinder final : public wire::Binder::Server {
  public:
    explicit RogueBinder(const Answer& answer) : mAnswer(answer) {}
    kj::Promise<void> transact(TransactContext context) override {
        mAnswer(context.getResults());
        return kj::READY_NOW;
    }

  private:
    const Answer& mAnswer;
};

class RogueProcess final : public wire::Process::Server {
  public:
    explicit RogueProcess(const Answer& answer) : mAnswer(answer) {}
    kj::Promise<void> introduce(IntroduceContext) override { return kj::READY_NOW; }
    kj::Promise<void> contextObject(ContextObjectContext context) override {
        auto binder = context.getResults().initBinder();
        binder.setAddress(kAddress);
        binder.setId(1);
        binder.setBinder(kj::heap<RogueBinder>(mAnswer));
        return kj::READY_NOW;
    }

  private:
    const Answer& mAnswer;
};

/** Serves, as the device's context object, an object that answers every call with `answer`. */
class RogueServer {
  public:
    explicit RogueServer(Answer answer) : mAnswer(std::move(answer)) {
        std::promise<void> listening;
        mThread = std::thread([this, &listening] { serve(listening); });
        listening.get_future().wait();
    }
    ~RogueServer() {
        mStop->fulfill();
        mThread.join();
    }

  private:
    void serve(std::promise<void>& listening) {
        const std::string directory = deviceDirectory() + "/hwbinder";
        const std::string path = directory + "/" + kAddress;
        unlink(path.c_str());
        unlink((directory + "/manager").c_str());
        kj::AsyncIoContext io = kj::setupAsyncIo();
        auto stop = kj::newPromiseAndCrossThreadFulfiller<void>();
        mStop = kj::mv(stop.fulfiller);
        auto address = io.provider->getNetwork()
                               .parseAddress(kj::str("unix:", path.c_str()))
                               .wait(io.waitScope);
        auto receiver = address->listen();
        capnp::TwoPartyServer server(kj::heap<RogueProcess>(mAnswer));
        auto serving = server.listenCapStreamReceiver(*receiver, 16);
        ASSERT_EQ(0, symlink(kAddress, (directory + "/manager").c_str()));
        listening.set_value();
        serving.exclusiveJoin(kj::mv(stop.promise)).wait(io.waitScope);
    }

    const Answer mAnswer;
    kj::Own<kj::CrossThreadPromiseFulfiller<void>> mStop;
    std::thread mThread;
};

struct RogueServerTest : testing::Test {
    RogueServerTest() {
        // Makes this process's endpoint, and with it the directory of the sockets.
        PeerProcess honest;
        EXPECT_TRUE(PeerProcess::context()->ping().isOk());
    }

    /** What a call that wants a string back comes to. */
    static void expectRefused(Answer answer) {
        RogueServer rogue(std::move(answer));
        sp<IPeer> peer = PeerProcess::context();
        ASSERT_NE(nullptr, peer);
        bool called = false;
        auto result = peer->echoString("text", [&](const hidl_string&) { called = true; });
        EXPECT_FALSE(result.isOk());
        EXPECT_FALSE(called);
    }
};

TEST_F(RogueServerTest, AnAnswerWithoutContentIsRefused) {
    expectRefused([](auto results) { results.setStatus(0); });
}

TEST_F(RogueServerTest, AnAnswerThatEndsTooEarlyIsRefused) {
    expectRefused([](auto results) {
        const kj::byte status[] = {0, 0, 0, 0};
        results.initReply().setFlat(kj::arrayPtr(status, sizeof(status)));
    });
}

TEST_F(RogueServerTest, AStringWhoseLengthIsALieIsRefused) {
    expectRefused([](auto results) {
        const kj::byte flat[12] = {};
        auto reply = results.initReply();
        reply.setFlat(kj::arrayPtr(flat, sizeof(flat)));
        auto objects = reply.initObjects(2);
        // A string structure that claims four gigabytes, and five bytes of text.
        const kj::byte string[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0xfe, 0xff, 0xff, 0xff, 0, 0, 0, 0};
        objects[0].setPosition(4);
        objects[0].setBuffer(kj::arrayPtr(string, sizeof(string)));
        const kj::byte text[] = {'t', 'e', 'x', 't', 0};
        objects[1].setPosition(8);
        objects[1].setEmbedded(true);
        objects[1].setBuffer(kj::arrayPtr(text, sizeof(text)));
    });
}

TEST_F(RogueServerTest, AStringWithoutItsEndIsRefused) {
    expectRefused([](auto results) {
        const kj::byte flat[12] = {};
        auto reply = results.initReply();
        reply.setFlat(kj::arrayPtr(flat, sizeof(flat)));
        auto objects = reply.initObjects(2);
        const kj::byte string[16] = {0, 0, 0, 0, 0, 0, 0, 0, 3, 0, 0, 0, 0, 0, 0, 0};
        objects[0].setPosition(4);
        objects[0].setBuffer(kj::arrayPtr(string, sizeof(string)));
        const kj::byte text[] = {'t', 'e', 'x', 't'};
        objects[1].setPosition(8);
        objects[1].setEmbedded(true);
        objects[1].setBuffer(kj::arrayPtr(text, sizeof(text)));
    });
}

TEST_F(RogueServerTest, APointerThatNoObjectBacksIsRefused) {
    expectRefused([](auto results) {
        const kj::byte flat[12] = {};
        auto reply = results.initReply();
        reply.setFlat(kj::arrayPtr(flat, sizeof(flat)));
        const kj::byte string[16] = {0x41, 0x41, 0x41, 0x41, 0x41, 0x41, 0, 0,
                                     4,    0,    0,    0,    0,    0,    0, 0};
        auto objects = reply.initObjects(1);
        objects[0].setPosition(4);
        objects[0].setBuffer(kj::arrayPtr(string, sizeof(string)));
    });
}

TEST_F(RogueServerTest, ObjectsThatDoNotFitTogetherAreRefused) {
    expectRefused(
            [](auto results) { results.initReply().initObjects(1)[0].setPosition(4000000000u); });
}

TEST_F(RogueServerTest, ThisProcessStillTalksToOthers) {
    expectRefused([](auto results) { results.initReply(); });
    PeerProcess honest;
    bool called = false;
    EXPECT_TRUE(PeerProcess::context()
                        ->echoString("text", [&](const hidl_string&) { called = true; })
                        .isOk());
    EXPECT_TRUE(called);
}

/** A server that is not even that: it accepts, and writes what it likes. */
TEST_F(RogueServerTest, BytesThatAreNoMessageAreADeadOrFailedLookUp) {
    const std::string directory = deviceDirectory() + "/hwbinder";
    const std::string path = directory + "/" + kAddress;
    unlink(path.c_str());
    unlink((directory + "/manager").c_str());
    const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    strncpy(address.sun_path, path.c_str(), sizeof(address.sun_path) - 1);
    ASSERT_EQ(0, bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof(address)));
    ASSERT_EQ(0, listen(listener, 1));
    ASSERT_EQ(0, symlink(kAddress, (directory + "/manager").c_str()));
    std::thread server([listener] {
        const int connection = accept(listener, nullptr, nullptr);
        const std::string nonsense(256, '\xaa');
        EXPECT_LT(0, send(connection, nonsense.data(), nonsense.size(), MSG_NOSIGNAL));
        close(connection);
    });
    EXPECT_EQ(nullptr, PeerProcess::context());
    server.join();
    close(listener);
}

}  // namespace
}  // namespace orvo::test
