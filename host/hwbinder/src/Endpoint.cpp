// SPDX-License-Identifier: Apache-2.0
// The endpoint's beginning, the calls that go out, and the service manager.

#define LOG_TAG "hwbinder"

#include "Endpoint.h"

#include <errno.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <future>

#include <log/log.h>

#include "Sockets.h"

namespace android {
namespace hardware {
namespace transport {

namespace {

status_t toStatus(const kj::Exception& exception) {
    return exception.getType() == kj::Exception::Type::DISCONNECTED ? DEAD_OBJECT
                                                                    : FAILED_TRANSACTION;
}

// No lock: set once, before there are other threads that end the process.
std::string gSocketToRemove;
pid_t gSocketOwner = 0;

/** A clean exit leaves no socket; what a killed process leaves goes with the device's directory. */
void removeSocket() {
    if (getpid() == gSocketOwner) unlink(gSocketToRemove.c_str());
}

}  // namespace

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

Endpoint::Endpoint(const std::string& directory, const std::string& address,
                   base::unique_fd listener)
    : mObjects(mLoop, mConnections),
      mConnections(mLoop, directory, address, std::move(listener), mObjects) {}

Reply Endpoint::call(const std::shared_ptr<RemoteObject>& target, uint32_t code, uint32_t flags,
                     OwnedContents data) {
    const std::shared_ptr<CallThread>& thread = CallThread::current();
    auto pending = std::make_shared<CallThread::Pending>(thread);
    const bool sent = mLoop.post(
            [this, target, code, flags, chain = thread->outgoingChain(mConnections.address()),
             data = std::move(data),
             pending]() mutable { request(target, code, flags, chain, std::move(data), pending); });
    if (!sent) pending->deliver({DEAD_OBJECT, nullptr});
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
    EventLoop::assertCurrent();
    // Whatever happens, somebody waits for the outcome.
    auto outcome = kj::evalNow([&]() -> kj::Promise<Reply> {
        EventLoop::assertCurrent();
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
        mObjects.encode(*data, *connection, request.initData());
        return request.send().then([this, connection, target](auto&& response) {
            return readReply(kj::mv(response), *connection);
        });
    });
    mConnections.watch(outcome.then(
            [pending](Reply&& reply) {
                if (pending != nullptr) pending->deliver(std::move(reply));
            },
            [pending](kj::Exception&& exception) {
                if (pending != nullptr) pending->deliver({toStatus(exception), nullptr});
            }));
}

kj::Promise<Reply> Endpoint::readReply(capnp::Response<wire::Binder::TransactResults>&& response,
                                       Connection& from) {
    EventLoop::assertCurrent();
    const status_t status = response.getStatus();
    if (status != OK) return Reply{status, nullptr};
    auto contents = mObjects.decode(response.getReply(), from);
    return contents.then([](OwnedContents&& reply) {
                       return Reply{OK, std::move(reply)};
                   })
            .attach(kj::mv(response));
}

std::string Endpoint::managerAddress() const {
    char target[64];
    const ssize_t length =
            readlink(mConnections.socketPath("manager").c_str(), target, sizeof(target));
    if (length <= 0 || length == sizeof(target)) return "";
    std::string address(target, length);
    return isAddress(address) ? address : "";
}

bool Endpoint::becomeContextManager() {
    const std::string& own = mConnections.address();
    const std::string current = managerAddress();
    bool isGone = current.empty();
    if (!isGone && current != own) connectTo(mConnections.socketPath(current), &isGone);
    if (!isGone && current != own) {
        ALOGE("There is a service manager in %s already", mConnections.directory().c_str());
        return false;
    }
    // A link that a dead service manager left is replaced in one step.
    const std::string temporary = mConnections.socketPath(own + ".manager");
    if (symlink(own.c_str(), temporary.c_str()) != 0 ||
        rename(temporary.c_str(), mConnections.socketPath("manager").c_str()) != 0) {
        ALOGE("Cannot become the service manager in %s: %s", mConnections.directory().c_str(),
              strerror(errno));
        return false;
    }
    return true;
}

sp<IBinder> Endpoint::contextObject() {
    if (sp<BHwBinder> own = mObjects.contextObject(); own != nullptr) return own;
    const std::string address = managerAddress();
    if (address.empty() || address == mConnections.address()) return nullptr;

    std::promise<sp<IBinder>> result;
    const bool asked = mLoop.post([this, &address, &result]() {
        auto answered = kj::evalNow([this, &address]() { return askForContextObject(address); });
        mConnections.watch(answered.then(
                [&result](sp<IBinder>&& binder) { result.set_value(std::move(binder)); },
                [&result](kj::Exception&& exception) {
                    ALOGW("No service manager: %s", exception.getDescription().cStr());
                    result.set_value(nullptr);
                }));
    });
    return asked ? result.get_future().get() : nullptr;
}

kj::Promise<sp<IBinder>> Endpoint::askForContextObject(const std::string& manager) {
    EventLoop::assertCurrent();
    Connection* connection = mConnections.to(manager);
    if (connection == nullptr) return sp<IBinder>();
    return connection->remoteProcess().contextObjectRequest().send().then(
            [this, connection = kj::addRef(*connection)](auto&& response) mutable {
                return mObjects.decode(response.getBinder(), *connection);
            });
}

}  // namespace transport
}  // namespace hardware
}  // namespace android
