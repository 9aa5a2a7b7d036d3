// SPDX-License-Identifier: Apache-2.0
// A server that accepts connections and writes any bytes: its clients get errors, and soon.

#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <mutex>
#include <string>
#include <thread>

#include <hwbinder/ProcessState.h>

#include "fuzz/support/Require.h"
#include "fuzz/transport/Interfaces.h"
#include "fuzz/transport/ThisProcess.h"

namespace {

using android::sp;
using android::hardware::IBinder;
using android::hardware::ProcessState;
using orvo::fuzz::require;

constexpr char kAddress[] = "1-0000000000000002";

/** Listens as the context object's process. Lives as long as this process. */
class Babbler {
  public:
    Babbler() : mListener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        orvo::fuzz::pretendManager(kAddress);
        const std::string path = orvo::fuzz::joinFreshDevice() + "/" + kAddress;
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        strncpy(address.sun_path, path.c_str(), sizeof(address.sun_path) - 1);
        require(bind(mListener, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0 &&
                        listen(mListener, 16) == 0,
                "a socket can be made", path);
        std::thread([this] { serve(); }).detach();
    }

    /** What it says from now on to whoever connects. */
    void say(const std::string& bytes) {
        const std::lock_guard<std::mutex> lock(mMutex);
        mBytes = bytes;
    }

  private:
    [[noreturn]] void serve() {
        while (true) {
            const int stream =
                    TEMP_FAILURE_RETRY(accept4(mListener, nullptr, nullptr, SOCK_CLOEXEC));
            std::string bytes;
            {
                const std::lock_guard<std::mutex> lock(mMutex);
                bytes = mBytes;
            }
            (void)!send(stream, bytes.data(), bytes.size(), MSG_NOSIGNAL);
            shutdown(stream, SHUT_WR);
            char buffer[4096];
            while (TEMP_FAILURE_RETRY(read(stream, buffer, sizeof(buffer))) > 0) continue;
            close(stream);
        }
    }

    const int mListener;
    std::mutex mMutex;
    std::string mBytes;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static Babbler& babbler = *new Babbler;
    babbler.say(std::string(reinterpret_cast<const char*>(data), size));
    const sp<IBinder> context = ProcessState::self()->getContextObject(nullptr);
    if (context != nullptr && context->remoteBinder() != nullptr) {
        orvo::fuzz::interfaces().front().callAll(context);
    }
    return 0;
}
