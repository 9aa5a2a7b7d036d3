// SPDX-License-Identifier: Apache-2.0
// Starting and ending peers.

#include "tests/host/hwbinder/PeerProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <utility>

#include <gtest/gtest.h>
#include <hidl/HidlBinderSupport.h>
#include <hwbinder/ProcessState.h>
#include <vendor/orvo/peer/1.0/BnHwPeer.h>
#include <vendor/orvo/peer/1.0/BpHwPeer.h>

extern char** environ;

namespace orvo::test {

using android::sp;
using vendor::orvo::peer::V1_0::BnHwPeer;
using vendor::orvo::peer::V1_0::BpHwPeer;

namespace {

struct Directory {
    Directory() {
        char name[] = "/tmp/orvo-test-XXXXXX";
        path = mkdtemp(name);
        setenv("ORVO_DEVICE_DIR", path.c_str(), 1);
    }
    ~Directory() { std::filesystem::remove_all(path); }
    std::string path;
};

}  // namespace

const std::string& deviceDirectory() {
    static Directory directory;
    return directory.path;
}

PeerProcess::PeerProcess(int threads) : PeerProcess("context", threads) {}

PeerProcess PeerProcess::joining(int threads) {
    return PeerProcess("joining", threads);
}

PeerProcess::PeerProcess(const std::string& role, int threads) {
    deviceDirectory();
    int ready[2];
    EXPECT_EQ(0, pipe2(ready, O_CLOEXEC));
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ready[1], STDOUT_FILENO);
    const std::string count = std::to_string(threads);
    const char* arguments[] = {PEER_PROGRAM, role.c_str(), count.c_str(), nullptr};
    EXPECT_EQ(0, posix_spawn(&mPid, PEER_PROGRAM, &actions, nullptr, const_cast<char**>(arguments),
                             environ));
    posix_spawn_file_actions_destroy(&actions);
    close(ready[1]);
    char byte;
    EXPECT_EQ(1, read(ready[0], &byte, 1)) << "the peer ended before it served";
    close(ready[0]);
}

PeerProcess::PeerProcess(PeerProcess&& other) noexcept : mPid(std::exchange(other.mPid, -1)) {}

PeerProcess& PeerProcess::operator=(PeerProcess&& other) noexcept {
    std::swap(mPid, other.mPid);
    return *this;
}

PeerProcess::~PeerProcess() {
    kill();
}

void PeerProcess::kill() {
    if (mPid < 0) return;
    ::kill(mPid, SIGKILL);
    waitpid(mPid, nullptr, 0);
    mPid = -1;
}

bool PeerProcess::isRunning() const {
    return mPid > 0 && waitpid(mPid, nullptr, WNOHANG) == 0;
}

sp<IPeer> PeerProcess::context() {
    auto binder = android::hardware::ProcessState::self()->getContextObject(nullptr);
    return android::hardware::fromBinder<IPeer, BpHwPeer, BnHwPeer>(binder);
}

}  // namespace orvo::test
