// SPDX-License-Identifier: Apache-2.0
// FakeDevice: one thread accepts and answers; who follows is kept until the end.

#include "tests/simulator/commands/FakeDevice.h"

#include <stdlib.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <utility>

namespace orvo::simulator::testing {

namespace fs = std::filesystem;
using android::base::unique_fd;
using Json = nlohmann::json;

namespace {

void sendAll(int connection, const std::string& text) {
    // The other end may have gone; that is its own business.
    (void)!::send(connection, text.data(), text.size(), MSG_NOSIGNAL);
}

std::string lineOf(const Json& message) {
    return message.dump() + "\n";
}

std::string readLine(int connection) {
    std::string line;
    char c;
    while (TEMP_FAILURE_RETRY(read(connection, &c, 1)) == 1 && c != '\n') line += c;
    return line;
}

ProviderState provider(const std::string& instance, int pid) {
    ProviderState state{};
    state.instance = instance;
    state.behind = "legacy/0";
    state.declared = state.described = true;
    state.running = state.connected = pid != 0;
    state.pid = pid;
    return state;
}

}  // namespace

HeadsetState sampleState() {
    HeadsetState state{};
    state.name = "headset";
    state.directory = "/devices/headset";
    state.pid = 4000;
    state.uptimeSeconds = 75.5;
    state.service = {true, 4010, 0, "", {"legacy/0", "default/0"}};
    ProviderState external = provider("external/0", 4001);
    external.deaths = 2;
    external.lastEnd = "ended by signal 9 (Killed)";
    external.devices = {{"device@3.2/external/100", "PRESENT"},
                        {"device@3.2/external/usb-7C21", "NOT_PRESENT"}};
    ProviderState dead = provider("virtual/0", 0);
    dead.deaths = 1;
    dead.lastEnd = "ended with status 0";
    dead.problem = "declared but not running";
    ProviderState named = provider("ghost/0", 0);
    named.declared = named.described = false;
    named.problem = "named in the map but not declared in the manifest";
    ProviderState served = provider("default/0", 4010);
    served.behind = "";
    served.inProcess = true;
    state.providers = {external, dead, named, served};
    state.cameras = {
            {"device@3.2/legacy/100", "legacy/0", "PRESENT", "AVAILABLE_ON", true},
            {"device@3.2/legacy/7", "legacy/0", "NOT_PRESENT", "", false},
            {"device@3.2/default/0", "default/0", "PRESENT", "", false},
    };
    return state;
}

std::vector<TimelineEvent> sampleEvents() {
    return {{1, "14:03:07.000001", 0.5, "process", "external/0", "started, process 4001"},
            {2, "14:03:07.250000", 0.75, "camera", "device@3.2/legacy/100", "PRESENT"},
            {3, "14:03:09.000000", 2.5, "camera", "device@3.2/legacy/7", "NOT_PRESENT"}};
}

FakeDevice::FakeDevice(const std::string& temporary, const std::string& suffix, HeadsetState state)
    : mState(std::move(state)) {
    mState.root = fs::canonical(temporary).string() + "/camerasim." + suffix;
    fs::create_directories(root() + "/run/log");
    fs::create_directories(root() + "/vendor/etc");
    answer("state", mState);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = root() + "/run/control";
    if (path.size() >= sizeof(address.sun_path)) abort();
    memcpy(address.sun_path, path.c_str(), path.size());
    mSocket.reset(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (bind(mSocket.get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0 ||
        listen(mSocket.get(), SOMAXCONN) != 0) {
        abort();
    }
    mThread = std::thread([this] { serve(); });
}

FakeDevice::~FakeDevice() {
    if (mThread.joinable()) end();
}

void FakeDevice::end() {
    shutdown(mSocket.get(), SHUT_RDWR);
    mThread.join();
    mSocket.reset();
    std::lock_guard lock(mLock);
    mFollowers.clear();
}

std::string FakeDevice::write(const std::string& file, const std::string& content) const {
    const fs::path path = fs::path(root()) / file;
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::app) << content << std::flush;
    return path;
}

void FakeDevice::answer(const std::string& command, const Json& result) {
    answerRaw(command, lineOf({{"result", result}}));
}

void FakeDevice::refuse(const std::string& command, const std::string& text, int status) {
    answerRaw(command, lineOf({{"error", text}, {"status", status}}));
}

void FakeDevice::answerRaw(const std::string& command, const std::string& bytes) {
    std::lock_guard lock(mLock);
    mAnswers[command] = bytes;
}

void FakeDevice::haveEvents(std::vector<TimelineEvent> events) {
    std::lock_guard lock(mLock);
    mEvents = std::move(events);
}

void FakeDevice::happen(const TimelineEvent& event) {
    std::lock_guard lock(mLock);
    mEvents.push_back(event);
    for (const unique_fd& follower : mFollowers) {
        sendAll(follower.get(), lineOf({{"event", event}}));
    }
}

void FakeDevice::beSilent() {
    std::lock_guard lock(mLock);
    mSilent = true;
}

std::vector<Json> FakeDevice::requests(const std::string& command, size_t count) {
    std::unique_lock lock(mLock);
    std::vector<Json> found;
    mChanged.wait_for(lock, std::chrono::seconds(30), [&] {
        found.clear();
        for (const Json& request : mRequests) {
            if (request["command"] == command) found.push_back(request);
        }
        return found.size() >= count;
    });
    return found;
}

void FakeDevice::serve() {
    for (;;) {
        unique_fd connection(accept4(mSocket.get(), nullptr, nullptr, SOCK_CLOEXEC));
        if (!connection.ok()) return;
        handle(std::move(connection));
    }
}

void FakeDevice::handle(unique_fd connection) {
    const std::string line = readLine(connection.get());
    if (line.empty()) return;  // who only looks whether somebody accepts
    const Json request = Json::parse(line);
    std::lock_guard lock(mLock);
    const std::string command = request["command"];
    const auto answer = mAnswers.find(command);
    if (mSilent) {
        mFollowers.push_back(std::move(connection));
    } else if (answer != mAnswers.end()) {
        sendAll(connection.get(), answer->second);
    } else if (command == "events") {
        sendEvents(std::move(connection), request);
    } else {
        sendAll(connection.get(), lineOf({{"error", "the test has no answer for " + command}}));
    }
    mRequests.push_back(request);
    mChanged.notify_all();
}

void FakeDevice::sendEvents(unique_fd connection, const Json& request) {
    for (const TimelineEvent& event : mEvents) {
        if (event.number >= request["from"].get<int64_t>()) {
            sendAll(connection.get(), lineOf({{"event", event}}));
        }
    }
    if (request["follow"] == true) {
        mFollowers.push_back(std::move(connection));
        return;
    }
    sendAll(connection.get(), lineOf({{"result", {{"next", mEvents.size() + 1}}}}));
}

}  // namespace orvo::simulator::testing
