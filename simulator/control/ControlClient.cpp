// SPDX-License-Identifier: Apache-2.0
// ControlClient: lines of JSON over a Unix socket.

#include "simulator/control/ControlClient.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "simulator/control/ControlSocket.h"

namespace orvo::simulator {

using android::base::Result;
using android::base::unexpected;
using android::base::unique_fd;
using nlohmann::json;

namespace {

Result<ControlMessage> parseLine(const std::string& line) {
    json message = json::parse(line, nullptr, false);
    if (!message.is_object()) return didNotHappen(kOtherBuild);
    if (message.contains("event")) {
        return ControlMessage{ControlMessage::Kind::EVENT, std::move(message["event"])};
    }
    if (message.contains("result")) {
        return ControlMessage{ControlMessage::Kind::RESULT, std::move(message["result"])};
    }
    const auto error = message.find("error");
    if (error == message.end() || !error->is_string()) return didNotHappen(kOtherBuild);
    return message.value("status", json()) == kBadUse ? badUse(*error) : didNotHappen(*error);
}

/** Whether the socket can be read; false after the patience. */
bool awaitBytes(int socket, std::chrono::steady_clock::time_point deadline, bool forEver) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
    if (!forEver && left.count() < 0) return false;
    pollfd ready{socket, POLLIN, 0};
    return TEMP_FAILURE_RETRY(poll(&ready, 1, forEver ? -1 : static_cast<int>(left.count()))) > 0;
}

}  // namespace

Result<ControlClient> ControlClient::connect(const std::string& root) {
    const auto address = controlAddress(root);
    if (!address) return unexpected(badUse(address.error().message()));
    // It must not wait for a headset that is stopped and has many waiting already.
    unique_fd socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!socket.ok() || ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&*address),
                                  sizeof(*address)) != 0) {
        return didNotHappen("the device in '" + root + "' cannot be reached (" + strerror(errno) +
                            ")");
    }
    return ControlClient(std::move(socket));
}

Result<ControlClient> ControlClient::begin(const std::string& root, const Request& request) {
    auto client = connect(root);
    if (!client) return client;
    // Far smaller than the socket's buffer.
    const std::string line = lineOf(request) + "\n";
    const ssize_t sent = TEMP_FAILURE_RETRY(
            ::send(client->descriptor(), line.data(), line.size(), MSG_NOSIGNAL));
    if (sent == static_cast<ssize_t>(line.size())) return client;
    return didNotHappen("the device does not take the request");
}

Result<ControlMessage> ControlClient::next(std::chrono::milliseconds patience) {
    const bool forEver = patience == kForEver;
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (!hasLine()) {
        if (!awaitBytes(mSocket.get(), deadline, forEver)) {
            return didNotHappen("the device does not answer");
        }
        char bytes[4096];
        const ssize_t count = TEMP_FAILURE_RETRY(read(mSocket.get(), bytes, sizeof(bytes)));
        if (count < 0 && errno == EAGAIN) continue;
        if (count <= 0) return ControlMessage{ControlMessage::Kind::END, nullptr};
        mUnread.append(bytes, count);
    }
    const size_t end = mUnread.find('\n');
    const std::string line = mUnread.substr(0, end);
    mUnread.erase(0, end + 1);
    return parseLine(line);
}

Result<json> exchange(const std::string& root, const Request& request,
                      std::chrono::milliseconds patience) {
    auto client = ControlClient::begin(root, request);
    if (!client) return unexpected(client.error());
    for (;;) {
        auto message = client->next(patience);
        if (!message) return unexpected(message.error());
        if (message->kind == ControlMessage::Kind::RESULT) return std::move(message->body);
        if (message->kind == ControlMessage::Kind::END) {
            return didNotHappen("the device has ended before it answered");
        }
    }
}

Result<bool> askForEvents(const std::string& root, const EventsRequest& request,
                          const std::function<void(const TimelineEvent&)>& onEvent) {
    auto client = ControlClient::begin(root, request);
    if (!client) return unexpected(client.error());
    for (;;) {
        const auto message = client->next(kForEver);
        if (!message) return unexpected(message.error());
        if (message->kind == ControlMessage::Kind::END) return false;
        if (message->kind == ControlMessage::Kind::RESULT) return true;
        const auto event = messageIn<TimelineEvent>(message->body);
        if (!event) return unexpected(event.error());
        onEvent(*event);
    }
}

}  // namespace orvo::simulator
