// SPDX-License-Identifier: Apache-2.0
// ControlTalk: a socket and the lines on it.

#include "tests/simulator/control/ControlTalk.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>

namespace orvo::simulator::testing {

ControlTalk::ControlTalk(const std::string& socket)
    : mConnection(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    strncpy(address.sun_path, socket.c_str(), sizeof(address.sun_path) - 1);
    if (connect(mConnection.get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0) {
        mConnection.reset();
    }
}

void ControlTalk::send(const std::string& text) {
    (void)::send(mConnection.get(), text.data(), text.size(), MSG_NOSIGNAL);
}

std::optional<nlohmann::json> ControlTalk::next(std::chrono::seconds patience) {
    const timeval limit{patience.count(), 0};
    setsockopt(mConnection.get(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit));
    for (;;) {
        const size_t end = mRead.find('\n');
        if (end != std::string::npos) {
            const std::string line = mRead.substr(0, end);
            mRead.erase(0, end + 1);
            return nlohmann::json::parse(line, nullptr, false);
        }
        char bytes[4096];
        const ssize_t count = TEMP_FAILURE_RETRY(recv(mConnection.get(), bytes, sizeof(bytes), 0));
        if (count <= 0) return std::nullopt;
        mRead.append(bytes, count);
    }
}

nlohmann::json ask(const std::string& socket, const nlohmann::json& request) {
    ControlTalk talk(socket);
    if (!talk.ok()) return nullptr;
    talk.send(request.dump() + "\n");
    nlohmann::json last = nullptr;
    while (const auto line = talk.next()) last = *line;
    return last;
}

}  // namespace orvo::simulator::testing
