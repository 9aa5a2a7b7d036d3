// SPDX-License-Identifier: Apache-2.0
// What the provider object tells a person who looks at it, and the descriptors that it survives.

#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <future>
#include <memory>
#include <thread>

#include <android-base/unique_fd.h>

#include "tests/support/Fault.h"
#include "tests/support/RecoveryTest.h"

namespace orvo::test {
namespace {

using android::base::unique_fd;
using android::hardware::hidl_handle;
using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

// An empty file, which takes everything.
class File {
  public:
    File() : mFile(tmpfile(), fclose) { EXPECT_NE(mFile, nullptr) << strerror(errno); }
    int fd() const { return fileno(mFile.get()); }
    std::string content() const {
        std::string content(1 << 20, '\0');
        content.resize(std::max<ssize_t>(pread(fd(), content.data(), content.size(), 0), 0));
        return content;
    }

  private:
    const std::unique_ptr<FILE, int (*)(FILE*)> mFile;
};

class DebugTest : public RecoveryTest {
  protected:
    // Proves that the call works and leaves the thread's signals alone.
    void debugInto(const hidl_handle& handle) {
        const std::vector<int> before = blockedSignals();
        EXPECT_TRUE(mObject->debug(handle, {"--all"}).isOk());
        EXPECT_EQ(blockedSignals(), before);
        sigset_t pending;
        sigpending(&pending);
        EXPECT_EQ(sigismember(&pending, SIGPIPE), 0);
    }

    static std::vector<int> blockedSignals() {
        sigset_t set;
        pthread_sigmask(SIG_SETMASK, nullptr, &set);
        std::vector<int> signals;
        for (int signal = 1; signal < NSIG; ++signal) {
            if (sigismember(&set, signal) == 1) signals.push_back(signal);
        }
        return signals;
    }

    void debugInto(int fd) {
        native_handle_t* const handle = native_handle_create(1, 0);
        handle->data[0] = fd;
        debugInto(hidl_handle(handle));
        native_handle_delete(handle);
    }

    std::string dump() {
        const File file;
        debugInto(file.fd());
        return file.content();
    }
};

TEST_F(DebugTest, TheWholeOfItIsOneScreen) {
    connect({"external/0", "virtual/0"});
    mObject->setCallback(mFramework);
    reportPresent({"device@3.2/external/100", "device@3.2/virtual/7", "device@3.2/external/101"});
    EXPECT_EQ(dump(),
              "Camera provider legacy/0 of type legacy\n"
              "Framework: registered\n"
              "Providers:\n"
              "  external/0 of type external: connected, shim alive\n"
              "  virtual/0 of type virtual: connected, shim alive\n"
              "Active devices:\n"
              "  device@3.2/legacy/100 <- device@3.2/external/100\n"
              "  device@3.2/legacy/101 <- device@3.2/external/101\n"
              "  device@3.2/legacy/7 <- device@3.2/virtual/7\n"
              "Properties:\n"
              "  camera.external.ids = \"100, 101\"\n"
              "  camera.virtual.ids = \"7\"\n"
              "  service.cam_prvdr.external_0.added = \"1\"\n");
}

TEST_F(DebugTest, AnObjectThatNothingHasHappenedToYet) {
    makeObject("glasses/3", {"external/0"});
    EXPECT_EQ(dump(),
              "Camera provider glasses/3 of type glasses\n"
              "Framework: not registered\n"
              "Providers:\n"
              "  external/0 of type external: not connected, no shim\n"
              "Active devices: none\n"
              "Properties:\n"
              "  camera.external.ids = \"\"\n"
              "  service.cam_prvdr.external_0.added = \"\"\n");
}

TEST_F(DebugTest, AProviderWhoseShimIsGoneIsStillConnected) {
    connect({"external/0"});
    mShims.drop("external/0");
    EXPECT_THAT(dump(), HasSubstr("  external/0 of type external: connected, no shim\n"));
}

TEST_F(DebugTest, AFrameworkThatHasTakenItsCallbackAwayIsNotRegistered) {
    connect({"external/0"});
    mObject->setCallback(mFramework);
    EXPECT_THAT(dump(), HasSubstr("\nFramework: registered\n"));
    mObject->setCallback(nullptr);
    EXPECT_THAT(dump(), HasSubstr("\nFramework: not registered\n"));
}

TEST_F(DebugTest, PropertiesAreThoseOfTheStoreWhateverThisObjectHasReported) {
    connect({"external/0"});
    mProperties.preset("camera.external.ids", "100, 100, 4 ");
    EXPECT_THAT(dump(), AllOf(HasSubstr("Active devices: none\n"),
                              HasSubstr("  camera.external.ids = \"100, 100, 4 \"\n")));
}

TEST_F(DebugTest, ATypeThatOnlyDevicesHaveHasItsPropertyToo) {
    connect({"external/0"});
    reportPresent({"device@3.2/internal/4", "no name"});
    EXPECT_THAT(dump(), EndsWith("  @/legacy/ <- no name\n"
                                 "  device@3.2/legacy/4 <- device@3.2/internal/4\n"
                                 "Properties:\n"
                                 "  camera.external.ids = \"\"\n"
                                 "  camera.internal.ids = \"4\"\n"
                                 "  service.cam_prvdr.external_0.added = \"1\"\n"));
}

TEST_F(DebugTest, ItCallsNobodyAndLogsNothingAndChangesNothing) {
    connect({"external/0"});
    mObject->setCallback(mFramework);
    reportPresent({"device@3.2/external/1"});
    const auto devices = activeDevices();
    const auto writes = mProperties.writes();
    const auto refuse = [](const std::string& operation) { ADD_FAILURE() << operation; };
    service("external/0").onCall = refuse;
    mShims.shim("external/0")->onCall = refuse;
    mFramework->onNotification = [](const Notification&) { ADD_FAILURE() << "notification"; };
    EXPECT_THAT(dump(), Not(IsEmpty()));
    EXPECT_THAT(mLog.lines(), IsEmpty());
    EXPECT_EQ(activeDevices(), devices);
    EXPECT_EQ(mProperties.writes(), writes);
    EXPECT_EQ(mProxy->lookups("external/0"), 1);
    service("external/0").onCall = nullptr;
    mShims.shim("external/0")->onCall = nullptr;
}

TEST_F(DebugTest, TheLockIsNotHeldWhilePropertiesAreRead) {
    connect({"external/0"});
    int reads = 0;
    mProperties.onRead = [&] {
        ++reads;
        EXPECT_TRUE(activeDevicesAreUnlocked());
    };
    dump();
    mProperties.onRead = nullptr;
    EXPECT_EQ(reads, 2);
}

// The callback face is what a provider is given; its process may be looked at, too.
TEST_F(DebugTest, BothFacesOfTheObjectTellTheSame) {
    connect({"external/0"});
    const File file;
    native_handle_t* const handle = native_handle_create(1, 0);
    handle->data[0] = file.fd();
    ScriptedProvider::Callback& face = *mObject;
    EXPECT_TRUE(face.debug(handle, {}).isOk());
    native_handle_delete(handle);
    EXPECT_EQ(file.content(), dump());
}

class DebugDescriptorTest : public DebugTest {
  protected:
    DebugDescriptorTest() {
        connect({"external/0"});
        signal(SIGPIPE, SIG_DFL);
    }

    // A name that is longer than a pipe takes at once, and more of them than it takes at all.
    void reportMuch() {
        for (int i = 0; i < 20; ++i) {
            reportPresent({"device@3.2/external/" + std::to_string(i) + std::string(5000, 'x')});
        }
    }

    struct Pipe {
        Pipe() { EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0); }
        ~Pipe() {
            close(ends[0]);
            close(ends[1]);
        }
        std::string read(size_t size) {
            std::string content(size, '\0');
            content.resize(std::max<ssize_t>(::read(ends[0], content.data(), size), 0));
            return content;
        }
        // Makes a write of even one byte wait.
        void fill() {
            const int flags = fcntl(ends[1], F_GETFL);
            fcntl(ends[1], F_SETFL, flags | O_NONBLOCK);
            while (write(ends[1], "x", 1) == 1) {
            }
            fcntl(ends[1], F_SETFL, flags);
        }
        int ends[2] = {-1, -1};
    };
};

TEST_F(DebugDescriptorTest, ANullHandleIsNotWrittenTo) {
    mProperties.onRead = [] { ADD_FAILURE() << "read for nobody"; };
    debugInto(hidl_handle());
    mProperties.onRead = nullptr;
}

TEST_F(DebugDescriptorTest, AHandleWithoutDescriptorsIsNotWrittenTo) {
    mProperties.onRead = [] { ADD_FAILURE() << "read for nobody"; };
    const File file;
    native_handle_t* const handle = native_handle_create(0, 1);
    handle->data[0] = file.fd();  // A number, which is not meant as a descriptor.
    debugInto(hidl_handle(handle));
    native_handle_delete(handle);
    mProperties.onRead = nullptr;
    EXPECT_EQ(file.content(), "");
}

TEST_F(DebugDescriptorTest, OnlyTheFirstDescriptorIsWrittenTo) {
    const File first;
    const File second;
    native_handle_t* const handle = native_handle_create(2, 0);
    handle->data[0] = first.fd();
    handle->data[1] = second.fd();
    debugInto(hidl_handle(handle));
    native_handle_delete(handle);
    EXPECT_THAT(first.content(), StartsWith("Camera provider legacy/0"));
    EXPECT_EQ(second.content(), "");
}

TEST_F(DebugDescriptorTest, AClosedDescriptorIsSurvived) {
    recordFault("the descriptor of `debug`", "it is closed", "nothing is written");
    Pipe closed;
    close(closed.ends[1]);
    debugInto(closed.ends[1]);
    debugInto(-1);
    closed.ends[1] = -1;
    EXPECT_EQ(closed.read(1), "");
}

TEST_F(DebugDescriptorTest, ADescriptorThatCannotBeWrittenToIsSurvived) {
    recordFault("the descriptor of `debug`", "it is open for reading only", "nothing is written");
    const unique_fd null(open("/dev/null", O_RDONLY | O_CLOEXEC));
    debugInto(null.get());
    const Pipe pipe;
    debugInto(pipe.ends[0]);
}

TEST_F(DebugDescriptorTest, ATerminalThatNobodyReadsIsNotWaitedFor) {
    recordFault("the descriptor of `debug`", "it is a terminal", "nothing is written");
    const unique_fd screen(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
    ASSERT_EQ(unlockpt(screen.get()), 0);
    const unique_fd terminal(open(ptsname(screen.get()), O_RDWR | O_NOCTTY | O_CLOEXEC));
    ASSERT_GE(terminal.get(), 0);
    // More than a terminal keeps for its reader.
    for (int i = 0; i < 200; ++i) debugInto(terminal.get());
}

TEST_F(DebugDescriptorTest, TwoThatFillOnePipeWaitForNobody) {
    reportMuch();
    Pipe pipe;
    ASSERT_EQ(fcntl(pipe.ends[1], F_SETPIPE_SZ, 4096), 4096);
    const auto lookOften = [&] {
        for (int i = 0; i < 50; ++i) debugInto(pipe.ends[1]);
    };
    std::thread other(lookOften);
    lookOften();
    other.join();
    EXPECT_THAT(pipe.read(1 << 20), StartsWith("Camera provider legacy/0"));
}

TEST_F(DebugDescriptorTest, AFullPipeIsNotWaitedFor) {
    recordFault("the descriptor of `debug`", "it is a full pipe that nobody reads",
                "nothing is written, and nobody is waited for");
    Pipe pipe;
    pipe.fill();
    debugInto(pipe.ends[1]);
    EXPECT_EQ(pipe.read(1 << 20).find_first_not_of('x'), std::string::npos);
}

TEST_F(DebugDescriptorTest, APipeTakesWhatFitsInAndNobodyWaitsForTheRest) {
    recordFault("the descriptor of `debug`", "it is a pipe that becomes full",
                "the rest is dropped");
    reportMuch();
    Pipe pipe;
    ASSERT_EQ(fcntl(pipe.ends[1], F_SETPIPE_SZ, 4 * 4096), 4 * 4096);
    debugInto(pipe.ends[1]);
    EXPECT_EQ(pipe.read(1 << 20), dump().substr(0, 4 * 4096));
}

TEST_F(DebugDescriptorTest, ASocketTakesWhatFitsInAndNobodyWaitsForTheRest) {
    reportMuch();
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
    const unique_fd reader(ends[0]);
    const unique_fd writer(ends[1]);
    const int size = 20000;
    ASSERT_EQ(setsockopt(writer.get(), SOL_SOCKET, SO_SNDBUF, &size, sizeof(size)), 0);
    debugInto(writer.get());
    std::string seen(1 << 20, '\0');
    seen.resize(std::max<ssize_t>(recv(reader.get(), seen.data(), seen.size(), MSG_DONTWAIT), 0));
    EXPECT_THAT(seen, StartsWith("Camera provider legacy/0"));
    const std::string whole = dump();
    EXPECT_LT(seen.size(), whole.size());
    EXPECT_EQ(seen, whole.substr(0, seen.size()));
}

TEST_F(DebugDescriptorTest, TheFlagsOfAnotherProcesssDescriptorStayAsTheyAre) {
    const Pipe pipe;
    const int flags = fcntl(pipe.ends[1], F_GETFL);
    // In a moment when others would see it, too.
    mProperties.onRead = [&] { EXPECT_EQ(fcntl(pipe.ends[1], F_GETFL), flags); };
    debugInto(pipe.ends[1]);
    mProperties.onRead = nullptr;
    EXPECT_EQ(fcntl(pipe.ends[1], F_GETFL), flags);
}

TEST_F(DebugDescriptorTest, APipeWhoseReaderHasGoneDoesNotEndTheProcess) {
    recordFault("the descriptor of `debug`", "it is a pipe whose reader has gone",
                "the process lives on");
    Pipe pipe;
    close(pipe.ends[0]);
    debugInto(pipe.ends[1]);
    pipe.ends[0] = -1;
}

// As if the reader had gone between the look at the descriptor and the write.
TEST_F(DebugDescriptorTest, AReaderThatLeavesInTheMiddleDoesNotEndTheProcess) {
    recordFault("the descriptor of `debug`", "its reader goes while it is written to",
                "the process lives on");
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
    const unique_fd reader(ends[0]);
    const unique_fd writer(ends[1]);
    // It is writable, says poll, and every write raises the signal.
    ASSERT_EQ(shutdown(writer.get(), SHUT_WR), 0);
    debugInto(writer.get());
}

class DebugDuringDeathTest : public DebugTest {
  protected:
    DebugDuringDeathTest() {
        connect({"external/0", "virtual/0"});
        mObject->setCallback(mFramework);
        reportPresent({"device@3.2/external/1", "device@3.2/external/2", "device@3.2/virtual/7"});
    }

    const std::string kBefore =
            "Camera provider legacy/0 of type legacy\n"
            "Framework: registered\n"
            "Providers:\n"
            "  external/0 of type external: connected, shim alive\n"
            "  virtual/0 of type virtual: connected, shim alive\n"
            "Active devices:\n"
            "  device@3.2/legacy/1 <- device@3.2/external/1\n"
            "  device@3.2/legacy/2 <- device@3.2/external/2\n"
            "  device@3.2/legacy/7 <- device@3.2/virtual/7\n"
            "Properties:\n"
            "  camera.external.ids = \"1, 2\"\n"
            "  camera.virtual.ids = \"7\"\n"
            "  service.cam_prvdr.external_0.added = \"1\"\n";
    const std::string kWithdrawn =
            "Camera provider legacy/0 of type legacy\n"
            "Framework: registered\n"
            "Providers:\n"
            "  external/0 of type external: not connected, shim alive\n"
            "  virtual/0 of type virtual: connected, shim alive\n"
            "Active devices:\n"
            "  device@3.2/legacy/7 <- device@3.2/virtual/7\n"
            "Properties:\n"
            "  camera.external.ids = \"\"\n"
            "  camera.virtual.ids = \"7\"\n"
            "  service.cam_prvdr.external_0.added = \"1\"\n";
};

TEST_F(DebugDuringDeathTest, BeforeTheConnectionIsDropped) {
    std::string seen;
    service("external/0").onCall = [&](const std::string& operation) {
        if (operation == "unlinkToDeath") seen = dump();
    };
    die("external/0");
    EXPECT_EQ(seen, kBefore);
}

TEST_F(DebugDuringDeathTest, WhileTheFrameworkIsToldAndDoesNotAnswer) {
    Gate framework;
    mFramework->onNotification = [&](const Notification&) { framework.pass(); };
    const auto death = std::async(std::launch::async, [this] { die("external/0"); });
    ASSERT_TRUE(framework.waitForArrivals(1));
    EXPECT_EQ(dump(), kWithdrawn);
    framework.open();
    death.wait();
}

TEST_F(DebugDuringDeathTest, NoHalfOfAWithdrawalIsSeen) {
    std::future<std::string> seen;
    mProperties.onWrite = [&] {
        if (seen.valid()) return;
        // Asked for while the first of two devices goes, under the lock.
        seen = std::async(std::launch::async, [this] { return dump(); });
        EXPECT_EQ(seen.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
    };
    die("external/0");
    mProperties.onWrite = nullptr;
    EXPECT_EQ(seen.get(), kWithdrawn);
}

TEST_F(DebugDuringDeathTest, WhileTheReconnectionWaitsAndAfterIt) {
    die("external/0");
    ASSERT_TRUE(mReconnection.waitForArrivals(1));
    EXPECT_EQ(dump(), kWithdrawn);
    finishReconnections();
    EXPECT_THAT(dump(), HasSubstr("  external/0 of type external: connected, shim alive\n"));
}

TEST_F(DebugDuringDeathTest, AfterTheReconnectionHasGivenUp) {
    mProxy->stop("external/0");
    die("external/0");
    finishReconnections();
    EXPECT_EQ(mLog.lines().back(), gaveUpLine("external/0"));
    EXPECT_EQ(dump(), kWithdrawn);
}

TEST_F(DebugDuringDeathTest, AgainAndAgainWhileDevicesComeAndGo) {
    auto storm = std::async(std::launch::async, [this] {
        for (int i = 0; i < 200; ++i) {
            mObject->removeAndNotifyDevicesByProviderName("external/0");
            mObject->cameraDeviceStatusChange("device@3.2/external/1", CameraDeviceStatus::PRESENT);
        }
    });
    int dumps = 0;
    while (storm.wait_for(std::chrono::seconds(0)) != std::future_status::ready || dumps == 0) {
        const std::string seen = dump();
        ++dumps;
        EXPECT_THAT(seen, AllOf(StartsWith("Camera provider legacy/0 of type legacy\n"),
                                HasSubstr("  device@3.2/legacy/7 <- device@3.2/virtual/7\n"),
                                HasSubstr("  camera.virtual.ids = \"7\"\n"),
                                EndsWith("service.cam_prvdr.external_0.added = \"1\"\n")));
    }
}

}  // namespace
}  // namespace orvo::test
