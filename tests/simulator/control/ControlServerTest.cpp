// SPDX-License-Identifier: Apache-2.0
// Tests of ControlServer with clients that behave, leave early, say too much or say nothing.

#include <sys/socket.h>

#include <condition_variable>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "simulator/control/Complaint.h"
#include "simulator/control/ControlServer.h"
#include "tests/simulator/control/ControlTalk.h"
#include "tests/simulator/support/FreshDirectory.h"

namespace orvo::simulator::testing {
namespace {

using nlohmann::json;
using ::testing::HasSubstr;

class ControlServerTest : public ::testing::Test {
  protected:
    ControlServerTest() { std::filesystem::create_directory(mDirectory.path() + "/run"); }

    void serve(ControlServer::Handler handler) {
        auto socket = ControlServer::listen(mDirectory.path());
        ASSERT_TRUE(socket) << socket.error().message();
        mServer = std::make_unique<ControlServer>(std::move(*socket), std::move(handler));
        mServer->serve();
    }

    std::string path() const { return mDirectory.path() + "/run/control"; }

    FreshDirectory mDirectory;
    std::unique_ptr<ControlServer> mServer;
};

TEST_F(ControlServerTest, AnswersOneLineWithOneLineAndHangsUp) {
    serve([](const std::string& line, Reply& reply) { reply.result({{"heard", line}}); });
    ControlTalk talk(path());
    talk.send("hel");
    talk.send("lo\nmore");
    EXPECT_EQ(json({{"result", {{"heard", "hello"}}}}), talk.next());
    EXPECT_EQ(std::nullopt, talk.next());
}

TEST_F(ControlServerTest, AClientThatConnectsEarlyIsServedLater) {
    auto socket = ControlServer::listen(mDirectory.path());
    ASSERT_TRUE(socket);
    ControlTalk early(path());
    ASSERT_TRUE(early.ok());
    early.send("hello\n");
    ControlServer server(std::move(*socket), [](const std::string&, Reply& reply) {
        reply.error(didNotHappen("not now"));
    });
    server.serve();
    EXPECT_EQ(json({{"error", "not now"}, {"status", 1}}), early.next());
}

TEST_F(ControlServerTest, EventsComeBeforeTheResult) {
    serve([](const std::string&, Reply& reply) {
        EXPECT_TRUE(reply.event({1, "14:03:07.123456", 0.5, "camera", "a", "PRESENT"}));
        reply.result({{"next", 2}});
    });
    ControlTalk talk(path());
    talk.send("events\n");
    EXPECT_EQ(1, (*talk.next())["event"]["number"]);
    EXPECT_EQ(2, (*talk.next())["result"]["next"]);
}

TEST_F(ControlServerTest, OneThatIsBeingServedDoesNotKeepOthersWaiting) {
    std::mutex lock;
    std::condition_variable changed;
    bool open = false;
    serve([&](const std::string& line, Reply& reply) {
        std::unique_lock held(lock);
        if (line == "open") open = true;
        changed.notify_all();
        changed.wait(held, [&] { return open; });
        held.unlock();  // whoever hears the answer may take the lock away with it
        reply.result(line);
    });
    ControlTalk slow(path());
    slow.send("wait\n");
    ControlTalk opener(path());
    opener.send("open\n");
    EXPECT_EQ(json({{"result", "open"}}), opener.next());
    EXPECT_EQ(json({{"result", "wait"}}), slow.next());
}

TEST_F(ControlServerTest, TheHandlerSeesThatTheClientHasLeft) {
    std::mutex lock;
    std::condition_variable changed;
    int failed = 0;
    serve([&](const std::string&, Reply& reply) {
        // What is sent just after the client has left may still find its place in the socket.
        while (reply.event({})) {
        }
        std::lock_guard held(lock);
        failed++;
        changed.notify_all();
    });
    ControlTalk talk(path());
    talk.send("events\n");
    ASSERT_TRUE(talk.next().has_value());
    talk.hangUp();
    std::unique_lock held(lock);
    EXPECT_TRUE(changed.wait_for(held, std::chrono::seconds(30), [&] { return failed == 1; }));
}

TEST_F(ControlServerTest, AClientThatLeavesWithoutAWordHarmsNobody) {
    serve([](const std::string&, Reply& reply) { reply.result("fine"); });
    for (int i = 0; i < 100; i++) ControlTalk(path()).hangUp();
    ControlTalk talk(path());
    talk.send("x\n");
    EXPECT_EQ(json({{"result", "fine"}}), talk.next());
}

TEST_F(ControlServerTest, AnEndlessRequestIsRefused) {
    serve([](const std::string&, Reply&) { FAIL() << "there was no line"; });
    ControlTalk talk(path());
    talk.send(std::string(70000, 'x'));
    EXPECT_THAT((*talk.next())["error"], HasSubstr("no request came"));
}

TEST_F(ControlServerTest, AnEmptyLineIsRefused) {
    serve([](const std::string&, Reply&) { FAIL() << "there was no request"; });
    ControlTalk talk(path());
    talk.send("\n");
    EXPECT_THAT((*talk.next())["error"], HasSubstr("no request came"));
}

TEST_F(ControlServerTest, BytesThatAreNoTextAreSentAllTheSame) {
    serve([](const std::string& line, Reply& reply) {
        reply.error(badUse("what is '" + line + "'?"));
    });
    ControlTalk talk(path());
    talk.send("\xff\n");
    EXPECT_EQ(json({{"error", "what is '\xef\xbf\xbd'?"}, {"status", 2}}), talk.next());
}

TEST_F(ControlServerTest, EndsWhileClientsAreConnected) {
    serve([](const std::string&, Reply& reply) {
        while (reply.event({})) {
        }
    });
    ControlTalk silent(path()), following(path());
    following.send("events\n");
    ASSERT_TRUE(following.next().has_value());
    mServer.reset();
    while (following.next()) {
    }
    while (silent.next()) {
    }
    EXPECT_FALSE(ControlTalk(path()).ok());
}

TEST_F(ControlServerTest, ASocketThatCannotBeMadeIsExplained) {
    const auto tooLong = ControlServer::listen("/tmp/" + std::string(120, 'x'));
    ASSERT_FALSE(tooLong);
    EXPECT_THAT(tooLong.error().message(), HasSubstr("is too long a name for a socket"));
    const auto nowhere = ControlServer::listen("/no/such/directory");
    ASSERT_FALSE(nowhere);
    EXPECT_THAT(nowhere.error().message(),
                HasSubstr("cannot make the socket '/no/such/directory/run/control'"));
}

}  // namespace
}  // namespace orvo::simulator::testing
