// SPDX-License-Identifier: Apache-2.0
// How connections are accepted and made, and how they end.

#define LOG_TAG "hwbinder"

#include "Connections.h"

#include <sys/socket.h>

#include <log/log.h>

#include "Sockets.h"

namespace android {
namespace hardware {
namespace transport {

namespace {

/** Background work ends here when it fails; a broken connection is told in its own way. */
class LogFailures final : public kj::TaskSet::ErrorHandler {
    void taskFailed(kj::Exception&& exception) override {
        if (exception.getType() == kj::Exception::Type::DISCONNECTED) return;
        ALOGW("Transport: %s", exception.getDescription().cStr());
    }
};

LogFailures& logFailures() {
    // Never destroyed: the event loop may run until the process has ended.
    static LogFailures& handler = *new LogFailures();
    return handler;
}

constexpr kj::Duration kAcceptPause = 100 * kj::MILLISECONDS;

constexpr kj::uint kOwnedAndPrepared = kj::LowLevelAsyncIoProvider::TAKE_OWNERSHIP |
                                       kj::LowLevelAsyncIoProvider::ALREADY_NONBLOCK |
                                       kj::LowLevelAsyncIoProvider::ALREADY_CLOEXEC;

void readCredentials(kj::AsyncIoStream& stream, Peer* peer) {
    ucred credentials = {};
    kj::uint length = sizeof(credentials);
    stream.getsockopt(SOL_SOCKET, SO_PEERCRED, &credentials, &length);
    peer->pid = credentials.pid;
    peer->uid = credentials.uid;
}

}  // namespace

Connections::Connections(EventLoop& loop, std::string directory, std::string address,
                         base::unique_fd listener, ConnectionUser& user)
    : mLoop(loop), mDirectory(std::move(directory)), mAddress(std::move(address)), mUser(user) {
    std::promise<void> listening;
    mLoop.post([this, &listening, fd = listener.release()]() {
        EventLoop::assertCurrent();
        mTasks = kj::heap<kj::TaskSet>(logFailures());
        mListener = mLoop.io().wrapListenSocketFd(fd, kOwnedAndPrepared);
        mAccepting = acceptLoop().eagerlyEvaluate(nullptr);
        listening.set_value();
    });
    listening.get_future().wait();
}

kj::Promise<void> Connections::acceptLoop() {
    EventLoop::assertCurrent();
    auto accepted = mListener->accept().then([this](kj::Own<kj::AsyncIoStream>&& stream) {
        // The stream of a Unix socket can pass descriptors; its static type does not say so.
        auto capabilityStream = stream.downcast<kj::AsyncCapabilityStream>();
        KJ_IF_MAYBE (fd, capabilityStream->getFd()) {
            auto peer = std::make_shared<Peer>(duplicate(*fd));
            readCredentials(*capabilityStream, peer.get());
            open(kj::mv(capabilityStream), true, std::move(peer));
        }
    });
    return accepted
            .catch_([this](kj::Exception&& exception) {
                // Such as no descriptor being left: one will be free again, and whoever connects
                // waits in the backlog until then.
                ALOGW("Cannot accept a connection: %s", exception.getDescription().cStr());
                return mLoop.io().getTimer().afterDelay(kAcceptPause);
            })
            .then([this]() { return acceptLoop(); });
}

Connection* Connections::to(const std::string& address) {
    EventLoop::assertCurrent();
    if (mBreaksAll) return nullptr;
    auto found = mConnections.find(address);
    if (found != mConnections.end()) return found->second;

    bool isGone = false;
    base::unique_fd socket = connectTo(socketPath(address), &isGone);
    if (isGone) return nullptr;
    // The process may well be there; to call it dead would be a lie that lasts.
    KJ_REQUIRE(socket >= 0, "cannot connect now", address.c_str());
    auto peer = std::make_shared<Peer>(duplicate(socket.get()));
    auto stream = mLoop.io().wrapUnixSocketFd(socket.release(), kOwnedAndPrepared);
    readCredentials(*stream, peer.get());
    Connection& connection = open(kj::mv(stream), false, std::move(peer));
    introduced(connection, address);

    auto request = connection.remoteProcess().introduceRequest();
    request.setAddress(mAddress);
    watch(request.send().ignoreResult());
    return &connection;
}

void Connections::introduced(Connection& connection, const std::string& address) {
    EventLoop::assertCurrent();
    connection.address = address;
    // Two processes that connect to each other at the same moment have two; either serves.
    mConnections.emplace(address, &connection);
}

void Connections::watch(kj::Promise<void> promise) {
    EventLoop::assertCurrent();
    mTasks->add(kj::mv(promise));
}

Connection& Connections::open(kj::Own<kj::AsyncCapabilityStream> stream, bool accepted,
                              std::shared_ptr<Peer> peer) {
    EventLoop::assertCurrent();
    auto owned = kj::refcounted<Connection>(mUser, kj::mv(stream), accepted, std::move(peer));
    Connection& connection = *owned;
    mUnbroken.insert(&connection);
    auto whenBroken = connection.onDisconnect().then([this, owned = kj::mv(owned)]() mutable {
        disconnected(*owned);
        // It may be the last reference, and what brought us here belongs to it: go up first.
        watch(kj::evalLater([last = kj::mv(owned)]() {}));
    });
    watch(kj::mv(whenBroken));
    return connection;
}

void Connections::disconnected(Connection& connection) {
    EventLoop::assertCurrent();
    connection.peer->close();
    auto found = mConnections.find(connection.address);
    if (found != mConnections.end() && found->second == &connection) mConnections.erase(found);
    mUnbroken.erase(&connection);
    if (!mBreaksAll) return mUser.disconnected(connection);
    if (mUnbroken.empty()) mAllBroken.set_value();
}

void Connections::breakAll() {
    mLoop.post([this]() {
        EventLoop::assertCurrent();
        mBreaksAll = true;
        mAccepting = nullptr;
        mListener = nullptr;
        for (Connection* connection : mUnbroken) connection->peer->close();
        if (mUnbroken.empty()) mAllBroken.set_value();
    });
    mAllBroken.get_future().wait();
}

}  // namespace transport
}  // namespace hardware
}  // namespace android
