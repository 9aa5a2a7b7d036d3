// SPDX-License-Identifier: Apache-2.0
// ControlServer: one thread accepts, one for each connection reads a line and answers it.

#include "simulator/control/ControlServer.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include <nlohmann/json.hpp>

#include "simulator/control/Complaint.h"
#include "simulator/control/ControlSocket.h"

namespace orvo::simulator {

using android::base::ErrnoError;
using android::base::Result;
using android::base::ResultError;
using android::base::unexpected;
using android::base::unique_fd;
using nlohmann::json;

namespace {

/** Far more than any request needs. */
constexpr size_t kLongestRequest = 64 * 1024;
/** A client says what it wants at once. */
constexpr timeval kPatience{10, 0};
/** Followers stay; more of them than this are a mistake of some script. */
constexpr size_t kMostConnections = 128;

/** Reads up to the line's end. Empty if it did not come. */
std::string readLine(int connection) {
    setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &kPatience, sizeof(kPatience));
    std::string line;
    char bytes[4096];
    while (line.size() <= kLongestRequest) {
        const ssize_t count = TEMP_FAILURE_RETRY(recv(connection, bytes, sizeof(bytes), 0));
        if (count <= 0) return "";
        line.append(bytes, count);
        const size_t end = line.find('\n');
        if (end != std::string::npos) return line.substr(0, end);
    }
    return "";
}

}  // namespace

bool Reply::send(const json& line) {
    // Names and log lines may hold any bytes; what is no UTF-8 is replaced, never thrown over.
    const std::string text = line.dump(-1, ' ', false, json::error_handler_t::replace) + "\n";
    size_t sent = 0;
    while (sent < text.size()) {
        const ssize_t count = TEMP_FAILURE_RETRY(
                ::send(mConnection, text.data() + sent, text.size() - sent, MSG_NOSIGNAL));
        if (count <= 0) return false;
        sent += count;
    }
    return true;
}

bool Reply::event(const TimelineEvent& event) {
    return send({{"event", event}});
}

void Reply::result(const json& result) {
    (void)send({{"result", result}});
}

void Reply::error(const ResultError& error) {
    const int status = error.code() == kBadUse ? kBadUse : kNotAsExpected;
    (void)send({{"error", error.message()}, {"status", status}});
}

Result<unique_fd> ControlServer::listen(const std::string& root) {
    const auto address = controlAddress(root);
    if (!address) return unexpected(address.error());
    unique_fd socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!socket.ok() ||
        bind(socket.get(), reinterpret_cast<const sockaddr*>(&*address), sizeof(*address)) != 0 ||
        ::listen(socket.get(), SOMAXCONN) != 0) {
        return ErrnoError() << "cannot make the socket '" << address->sun_path << "'";
    }
    return socket;
}

ControlServer::ControlServer(unique_fd socket, Handler handler)
    : mSocket(std::move(socket)), mHandler(std::move(handler)) {}

ControlServer::~ControlServer() {
    shutdown(mSocket.get(), SHUT_RDWR);
    if (mAcceptor.joinable()) mAcceptor.join();
    MutexLock lock(mLock);
    for (const int connection : mConnections) shutdown(connection, SHUT_RDWR);
}

void ControlServer::serve() {
    mAcceptor = std::thread([this] { acceptUntilClosed(); });
}

void ControlServer::acceptUntilClosed() {
    for (;;) {
        const int connection = accept4(mSocket.get(), nullptr, nullptr, SOCK_CLOEXEC);
        if (connection < 0 && errno == EINVAL) return;  // shut down
        if (connection < 0) {
            // Out of descriptors, most likely: one that is given back helps, waiting does too.
            MutexLock lock(mLock);
            mChanged.wait_for(lock, std::chrono::milliseconds(100));
            continue;
        }
        MutexLock lock(mLock);
        mConnections.insert(connection);
        const bool tooMany = mConnections.size() > kMostConnections;
        lock.unlock();
        if (tooMany) {
            Reply(connection)
                    .error(didNotHappen(
                            "too many requests at once; end some of the commands that run"));
            finish(connection);
            continue;
        }
        mThreads.start([this, connection] { answer(connection); });
    }
}

void ControlServer::answer(int connection) {
    Reply reply(connection);
    const std::string line = readLine(connection);
    if (line.empty()) {
        reply.error(badUse("no request came; send one JSON object on one line"));
    } else {
        mHandler(line, reply);
    }
    finish(connection);
}

void ControlServer::finish(int connection) {
    MutexLock lock(mLock);
    mConnections.erase(connection);
    close(connection);
    mChanged.notify_all();
}

}  // namespace orvo::simulator
