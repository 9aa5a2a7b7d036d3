// SPDX-License-Identifier: Apache-2.0
// The endpoint's life: its socket, its connections, and the calls that go out.

#define LOG_TAG "hwbinder"

#include "Endpoint.h"

#include <errno.h>
#include <poll.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <future>

#include <log/log.h>

#include "Connection.h"
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
    // Never destroyed: the event loop runs until the process has ended.
    static LogFailures& handler = *new LogFailures();
    return handler;
}

constexpr kj::Duration kAcceptPause = 100 * kj::MILLISECONDS;

status_t toStatus(const kj::Exception& exception) {
    return exception.getType() == kj::Exception::Type::DISCONNECTED ? DEAD_OBJECT
                                                                    : FAILED_TRANSACTION;
}

void readCredentials(kj::AsyncIoStream& stream, Peer* peer) {
    ucred credentials = {};
    kj::uint length = sizeof(credentials);
    stream.getsockopt(SOL_SOCKET, SO_PEERCRED, &credentials, &length);
    peer->pid = credentials.pid;
    peer->uid = credentials.uid;
}

std::string gSocketToRemove;
pid_t gSocketOwner = 0;

/** A clean exit leaves no socket; what a killed process leaves goes with the device's directory. */
void removeSocket() {
    if (getpid() == gSocketOwner) unlink(gSocketToRemove.c_str());
}

}  // namespace

bool Peer::isGone() const {
    if (mClosed) return true;
    // The kernel knows of a death before the event loop has read of it.
    pollfd query = {mSocket.get(), 0, 0};
    return poll(&query, 1, 0) == 1 && (query.revents & (POLLHUP | POLLERR)) != 0;
}

void Peer::close() {
    mClosed = true;
    // The duplicate would keep the connection open for the other end.
    shutdown(mSocket.get(), SHUT_RDWR);
}

Endpoint* Endpoint::instance() {
    // Never destroyed: other threads use it until the process has ended.
    static Endpoint* endpoint = create();
    return endpoint;
}

Endpoint* Endpoint::create() {
    const char* deviceDirectory = getenv("ORVO_DEVICE_DIR");
    if (deviceDirectory == nullptr || deviceDirectory[0] == '\0') {
        ALOGE("No other process can be reached: ORVO_DEVICE_DIR does not name a device's "
              "directory");
        return nullptr;
    }
    const std::string directory = std::string(deviceDirectory) + "/hwbinder";
    if (mkdir(directory.c_str(), 0700) != 0 && errno != EEXIST) {
        ALOGE("Cannot make %s: %s; check ORVO_DEVICE_DIR", directory.c_str(), strerror(errno));
        return nullptr;
    }
    const std::string address = newAddress();
    base::unique_fd listener = listenAt(directory + "/" + address);
    if (listener < 0) return nullptr;
    gSocketToRemove = directory + "/" + address;
    gSocketOwner = getpid();
    atexit(removeSocket);
    return new Endpoint(directory, address, std::move(listener));
}

Endpoint::Endpoint(std::string directory, std::string address, base::unique_fd listener)
    : mDirectory(std::move(directory)), mAddress(std::move(address)) {
    std::promise<void> listening;
    mLoop.post([this, &listening, fd = listener.release()]() {
        mTasks = kj::heap<kj::TaskSet>(logFailures());
        mListener = mLoop.io().wrapListenSocketFd(
                fd, kj::LowLevelAsyncIoProvider::TAKE_OWNERSHIP |
                            kj::LowLevelAsyncIoProvider::ALREADY_NONBLOCK |
                            kj::LowLevelAsyncIoProvider::ALREADY_CLOEXEC);
        watch(acceptLoop());
        listening.set_value();
    });
    listening.get_future().wait();
}

kj::Promise<void> Endpoint::acceptLoop() {
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

Connection* Endpoint::connectionTo(const std::string& address) {
    auto found = mConnections.find(address);
    if (found != mConnections.end()) return found->second;

    bool isGone = false;
    base::unique_fd socket = connectTo(socketPath(address), &isGone);
    if (isGone) return nullptr;
    // The process may well be there; to call it dead would be a lie that lasts.
    KJ_REQUIRE(socket >= 0, "cannot connect now", address.c_str());
    auto peer = std::make_shared<Peer>(duplicate(socket.get()));
    auto stream = mLoop.io().wrapUnixSocketFd(
            socket.release(), kj::LowLevelAsyncIoProvider::TAKE_OWNERSHIP |
                                      kj::LowLevelAsyncIoProvider::ALREADY_NONBLOCK |
                                      kj::LowLevelAsyncIoProvider::ALREADY_CLOEXEC);
    readCredentials(*stream, peer.get());
    Connection& connection = open(kj::mv(stream), false, std::move(peer));
    introduced(connection, address);

    auto request = connection.remoteProcess().introduceRequest();
    request.setAddress(mAddress);
    watch(request.send().ignoreResult());
    return &connection;
}

Connection& Endpoint::open(kj::Own<kj::AsyncCapabilityStream> stream, bool accepted,
                           std::shared_ptr<Peer> peer) {
    auto owned = kj::refcounted<Connection>(*this, kj::mv(stream), accepted, std::move(peer));
    Connection& connection = *owned;
    auto whenBroken = connection.onDisconnect().then([this, owned = kj::mv(owned)]() mutable {
        disconnected(*owned);
        // It may be the last reference, and what brought us here belongs to it: go up first.
        watch(kj::evalLater([last = kj::mv(owned)]() {}));
    });
    watch(kj::mv(whenBroken));
    return connection;
}

void Endpoint::introduced(Connection& connection, const std::string& address) {
    connection.address = address;
    // Two processes that connect to each other at the same moment have two; either serves.
    mConnections.emplace(address, &connection);
}

void Endpoint::disconnected(Connection& connection) {
    connection.peer->close();
    auto found = mConnections.find(connection.address);
    if (found != mConnections.end() && found->second == &connection) mConnections.erase(found);

    for (RemoteObject* object : connection.objects) {
        sp<BpHwBinder> proxy = object->proxy.promote();
        if (proxy == nullptr) continue;
        // The job has the only reference: a proxy's links must not go on the event loop either.
        ThreadPool::instance().submit([proxy = std::move(proxy)] { proxy->sendObituary(); });
    }
}

Reply Endpoint::call(const std::shared_ptr<RemoteObject>& target, uint32_t code, uint32_t flags,
                     OwnedContents data) {
    const std::shared_ptr<CallThread>& thread = CallThread::current();
    auto pending = std::make_shared<CallThread::Pending>(thread);
    mLoop.post([this, target, code, flags, chain = thread->outgoingChain(mAddress),
                data = std::move(data), pending]() mutable {
        request(target, code, flags, chain, std::move(data), pending);
    });
    return thread->await(*pending);
}

void Endpoint::send(const std::shared_ptr<RemoteObject>& target, uint32_t code, uint32_t flags,
                    OwnedContents data) {
    mLoop.post([this, target, code, flags, data = std::move(data)]() mutable {
        request(target, code, flags, CallChain(), std::move(data), nullptr);
    });
}

void Endpoint::request(const std::shared_ptr<RemoteObject>& target, uint32_t code, uint32_t flags,
                       const CallChain& chain, OwnedContents data,
                       std::shared_ptr<CallThread::Pending> pending) {
    // Whatever happens, somebody waits for the outcome.
    auto outcome = kj::evalNow([&]() -> kj::Promise<Reply> {
        Connection* connection = nullptr;
        KJ_IF_MAYBE (open, target->connection) {
            connection = open->get();
        }
        if (connection == nullptr) return Reply{DEAD_OBJECT, nullptr};

        auto request = target->binder.transactRequest();
        request.setCode(code);
        request.setFlags(flags);
        auto frames = request.initChain(chain.size());
        for (size_t i = 0; i < chain.size(); i++) {
            frames[i].setAddress(chain[i].address);
            frames[i].setThread(chain[i].thread);
        }
        encode(*data, *connection, request.initData());
        return request.send().then([this, connection, target](auto&& response) {
            return readReply(kj::mv(response), *connection);
        });
    });
    watch(outcome.then(
            [pending](Reply&& reply) {
                if (pending != nullptr) pending->deliver(std::move(reply));
            },
            [pending](kj::Exception&& exception) {
                if (pending != nullptr) pending->deliver({toStatus(exception), nullptr});
            }));
}

kj::Promise<Reply> Endpoint::readReply(capnp::Response<wire::Binder::TransactResults>&& response,
                                       Connection& from) {
    const status_t status = response.getStatus();
    if (status != OK) return Reply{status, nullptr};
    auto contents = decode(response.getReply(), from);
    return contents.then([](OwnedContents&& reply) {
                       return Reply{OK, std::move(reply)};
                   })
            .attach(kj::mv(response));
}

std::string Endpoint::managerAddress() const {
    char target[64];
    const ssize_t length = readlink(socketPath("manager").c_str(), target, sizeof(target));
    if (length <= 0 || length == sizeof(target)) return "";
    std::string address(target, length);
    return isAddress(address) ? address : "";
}

bool Endpoint::becomeContextManager() {
    const std::string current = managerAddress();
    bool isGone = current.empty();
    if (!isGone && current != mAddress) connectTo(socketPath(current), &isGone);
    if (!isGone && current != mAddress) {
        ALOGE("There is a service manager in %s already", mDirectory.c_str());
        return false;
    }
    // A link that a dead service manager left is replaced in one step.
    const std::string temporary = socketPath(mAddress + ".manager");
    if (symlink(mAddress.c_str(), temporary.c_str()) != 0 ||
        rename(temporary.c_str(), socketPath("manager").c_str()) != 0) {
        ALOGE("Cannot become the service manager in %s: %s", mDirectory.c_str(), strerror(errno));
        return false;
    }
    return true;
}

void Endpoint::setContextObject(const sp<BHwBinder>& object) {
    orvo::MutexLock lock(mContextMutex);
    mContextObject = object;
}

sp<BHwBinder> Endpoint::localContextObject() {
    orvo::MutexLock lock(mContextMutex);
    return mContextObject;
}

sp<IBinder> Endpoint::contextObject() {
    if (sp<BHwBinder> own = localContextObject(); own != nullptr) return own;
    const std::string address = managerAddress();
    if (address.empty() || address == mAddress) return nullptr;

    std::promise<sp<IBinder>> result;
    mLoop.post([this, address, &result]() {
        auto answered = kj::evalNow([this, &address]() -> kj::Promise<sp<IBinder>> {
            Connection* connection = connectionTo(address);
            if (connection == nullptr) return sp<IBinder>();
            return connection->remoteProcess().contextObjectRequest().send().then(
                    [this, connection = kj::addRef(*connection)](auto&& response) mutable {
                        return decode(response.getBinder(), *connection);
                    });
        });
        watch(answered.then([&result](sp<IBinder>&& binder) { result.set_value(binder); },
                            [&result](kj::Exception&& exception) {
                                ALOGW("No service manager: %s", exception.getDescription().cStr());
                                result.set_value(nullptr);
                            }));
    });
    return result.get_future().get();
}

}  // namespace transport
}  // namespace hardware
}  // namespace android
