// SPDX-License-Identifier: Apache-2.0
// Joins a device and connects to it.

#include "fuzz/transport/ThisProcess.h"

#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <hidl/HidlTransportSupport.h>
#include <hwbinder/IPCThreadState.h>
#include <hwbinder/ProcessState.h>

#include "fuzz/support/Require.h"
#include "fuzz/support/Surroundings.h"
#include "fuzz/transport/Interfaces.h"
#include "tests/support/OneProcessor.h"

namespace orvo::fuzz {

using android::sp;
using android::hardware::IBinder;
using android::hardware::IPCThreadState;
using android::hardware::ProcessState;

const std::string& joinFreshDevice() {
    static const FreshDirectory directory;
    static const std::string sockets = [] {
        silenceLog();
        orvo::test::runOnOneProcessor();
        setenv("ORVO_DEVICE_DIR", directory.path().c_str(), 1);
        android::hardware::configureRpcThreadpool(1, false);
        ProcessState::self()->startThreadPool();
        return directory.path() + "/hwbinder";
    }();
    return sockets;
}

const std::string& serveKinds() {
    static const std::string path = [] {
        const std::string manager = joinFreshDevice() + "/manager";
        const sp<IBinder> stub = interfaces().front().makeStub();
        require(ProcessState::self()->becomeContextManager(nullptr, nullptr), "a device is joined");
        IPCThreadState::self()->setTheContextObject(stub->localBinder());
        return manager;
    }();
    return path;
}

void pretendManager(const std::string& address) {
    const std::string link = joinFreshDevice() + "/manager";
    // The endpoint makes the directory as soon as somebody looks for the context object.
    require(ProcessState::self()->getContextObject(nullptr) == nullptr, "nobody serves yet");
    require(symlink(address.c_str(), link.c_str()) == 0, "a link can be made", link);
}

int connectAsStranger(const std::string& path) {
    const int stream = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    strncpy(address.sun_path, path.c_str(), sizeof(address.sun_path) - 1);
    require(connect(stream, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0,
            "the process accepts connections", strerror(errno));
    const timeval patience = {10, 0};
    setsockopt(stream, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof(patience));
    setsockopt(stream, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof(patience));
    return stream;
}

}  // namespace orvo::fuzz
