// SPDX-License-Identifier: Apache-2.0
// Tests of Supervisor and Janitor with real processes.

#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include <android-base/file.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "simulator/camerasim/inside/Supervisor.h"
#include "simulator/camerasim/outside/Janitor.h"
#include "tests/simulator/support/FreshDirectory.h"

namespace orvo::simulator::testing {
namespace {

using android::base::unique_fd;
using ::testing::HasSubstr;

constexpr std::chrono::seconds kPatience{10};

class SupervisorTest : public ::testing::Test {
  protected:
    android::base::Result<pid_t> start(const std::string& name, const std::string& script) {
        return mSupervisor.start({name, {"/bin/sh", "-c", script}, mDirectory.path() + "/log"});
    }

    /** A program that has done what it does first and has said so. */
    pid_t startReady(const std::string& name, const std::string& first, const std::string& script) {
        unique_fd readEnd, writeEnd;
        EXPECT_TRUE(android::base::Pipe(&readEnd, &writeEnd));
        const auto pid =
                mSupervisor.start({name,
                                   {"/bin/sh", "-c", first + "; echo; exec >&2; " + script},
                                   mDirectory.path() + "/log",
                                   writeEnd.get()});
        EXPECT_TRUE(pid.has_value());
        char byte;
        EXPECT_EQ(1, read(readEnd.get(), &byte, 1));
        return *pid;
    }

    FreshDirectory mDirectory;
    Supervisor mSupervisor;
};

TEST_F(SupervisorTest, KnowsHowAProgramEnded) {
    ASSERT_TRUE(start("seven", "exit 7"));
    EXPECT_TRUE(mSupervisor.awaitEnd("seven", kPatience));
    EXPECT_EQ("ended with status 7", mSupervisor.endOf("seven"));
    ASSERT_TRUE(start("killed", "kill -9 $$"));
    EXPECT_TRUE(mSupervisor.awaitEnd("killed", kPatience));
    EXPECT_EQ("ended by signal 9 (Killed)", mSupervisor.endOf("killed"));
    EXPECT_EQ("", mSupervisor.endOf("stranger"));
    EXPECT_FALSE(mSupervisor.isRunning("killed"));
    EXPECT_FALSE(mSupervisor.signal("killed", SIGTERM));
}

TEST_F(SupervisorTest, WritesTheLog) {
    ASSERT_TRUE(start("talker", "echo to stdout; echo to stderr >&2"));
    EXPECT_TRUE(mSupervisor.awaitEnd("talker", kPatience));
    std::string log;
    ASSERT_TRUE(android::base::ReadFileToString(mDirectory.path() + "/log", &log));
    EXPECT_EQ("to stdout\nto stderr\n", log);
}

TEST_F(SupervisorTest, OneNameRunsOnceAndCanBeStartedAgain) {
    startReady("sleeper", ":", "exec sleep 600");
    const auto second = start("sleeper", "true");
    ASSERT_FALSE(second.has_value());
    EXPECT_EQ("sleeper runs already", second.error().message());
    EXPECT_TRUE(mSupervisor.signal("sleeper", SIGKILL));
    EXPECT_TRUE(mSupervisor.awaitEnd("sleeper", kPatience));
    EXPECT_TRUE(start("sleeper", "true"));
}

TEST_F(SupervisorTest, AProgramThatIsNotThereIsNamed) {
    const auto none = mSupervisor.start({"none", {"/no/such/program"}, mDirectory.path() + "/log"});
    ASSERT_FALSE(none.has_value());
    EXPECT_THAT(none.error().message(), HasSubstr("cannot run '/no/such/program'"));
}

TEST_F(SupervisorTest, StopsEverythingAlsoWhatWillNotListenAndWhatIsStopped) {
    startReady("good", "trap 'exit 0' TERM", "while :; do sleep 0.01; done");
    startReady("deaf", "trap '' TERM", "while :; do sleep 0.01; done");
    const pid_t frozen = startReady("frozen", ":", "exec sleep 600");
    ASSERT_EQ(0, kill(frozen, SIGSTOP));
    mSupervisor.stopAll(std::chrono::seconds(2));
    EXPECT_EQ("ended with status 0", mSupervisor.endOf("good"));
    EXPECT_EQ("ended by signal 9 (Killed)", mSupervisor.endOf("deaf"));
    EXPECT_EQ("ended by signal 15 (Terminated)", mSupervisor.endOf("frozen"));
    const auto late = start("late", "true");
    ASSERT_FALSE(late.has_value());
    EXPECT_EQ("the device is being stopped", late.error().message());
}

TEST_F(SupervisorTest, ChildrenEndWithTheirSupervisorHoweverItEnds) {
    unique_fd readEnd, writeEnd;
    ASSERT_TRUE(android::base::Pipe(&readEnd, &writeEnd));
    const pid_t parent = fork();
    if (parent == 0) {
        // Alive as long as somebody holds the pipe; the child gets it as its stdout.
        Supervisor supervisor;
        if (!supervisor.start({"child",
                               {"/bin/sh", "-c", "echo; exec sleep 600"},
                               mDirectory.path() + "/log",
                               writeEnd.get()})) {
            _exit(1);
        }
        pause();
    }
    writeEnd.reset();
    char byte;
    ASSERT_EQ(1, read(readEnd.get(), &byte, 1));
    kill(parent, SIGKILL);
    waitpid(parent, nullptr, 0);
    EXPECT_EQ(0, read(readEnd.get(), &byte, 1)) << "the end of the pipe is the end of the child";
}

class JanitorTest : public ::testing::Test {
  protected:
    JanitorTest() { setenv("TMPDIR", mDirectory.path().c_str(), 1); }
    ~JanitorTest() override { unsetenv("TMPDIR"); }

    FreshDirectory mDirectory;
};

TEST_F(JanitorTest, RemovesTheDirectoryWithWhatIsInIt) {
    auto janitor = Janitor::start(false);
    ASSERT_TRUE(janitor.has_value()) << janitor.error().message();
    EXPECT_EQ(0u, janitor->directory().find(mDirectory.path() + "/camerasim."));
    std::filesystem::create_directories(janitor->directory() + "/a/b");
    std::ofstream(janitor->directory() + "/a/b/file") << "text";
    janitor->finish();
    EXPECT_TRUE(mDirectory.isEmpty());
}

TEST_F(JanitorTest, WaitsForTheLastHolderOfTheLifeline) {
    auto janitor = Janitor::start(false);
    ASSERT_TRUE(janitor.has_value()) << janitor.error().message();
    const std::string directory = janitor->directory();
    unique_fd goRead, goWrite;
    ASSERT_TRUE(android::base::Pipe(&goRead, &goWrite));
    const pid_t holder = fork();
    if (holder == 0) {
        goWrite.reset();
        char byte;
        while (read(goRead.get(), &byte, 1) > 0) {
        }
        _exit(std::filesystem::exists(directory) ? 0 : 1);
    }
    goRead.reset();
    // The janitor cannot go before the holder; only now may the holder go.
    goWrite.reset();
    janitor->finish();
    int status = 0;
    waitpid(holder, &status, 0);
    EXPECT_EQ(0, WEXITSTATUS(status)) << "the directory went while it was in use";
    EXPECT_TRUE(mDirectory.isEmpty());
}

TEST_F(JanitorTest, CleansUpAfterAKilledOwner) {
    unique_fd readEnd, writeEnd;
    ASSERT_TRUE(android::base::Pipe(&readEnd, &writeEnd));
    const pid_t owner = fork();
    if (owner == 0) {
        readEnd.reset();
        auto janitor = Janitor::start(false);
        std::filesystem::create_directory(janitor->directory() + "/inside");
        (void)!write(writeEnd.get(), "x", 1);
        pause();
    }
    writeEnd.reset();
    char byte;
    ASSERT_EQ(1, read(readEnd.get(), &byte, 1));
    EXPECT_FALSE(mDirectory.isEmpty());
    kill(owner, SIGKILL);
    waitpid(owner, nullptr, 0);
    // The janitor holds the pipe too, as it was forked with it.
    EXPECT_EQ(0, read(readEnd.get(), &byte, 1));
    EXPECT_TRUE(mDirectory.isEmpty());
}

TEST_F(JanitorTest, KeepsTheDirectoryWhenTold) {
    auto janitor = Janitor::start(true);
    ASSERT_TRUE(janitor.has_value()) << janitor.error().message();
    janitor->finish();
    EXPECT_FALSE(mDirectory.isEmpty());
}

TEST_F(JanitorTest, AMovedFromJanitorFinishesNothing) {
    auto first = Janitor::start(false);
    ASSERT_TRUE(first.has_value()) << first.error().message();
    const std::string directory = first->directory();
    {
        Janitor second(std::move(*first));
        first->finish();
        EXPECT_TRUE(std::filesystem::exists(directory));
    }
    EXPECT_FALSE(std::filesystem::exists(directory));
}

}  // namespace
}  // namespace orvo::simulator::testing
