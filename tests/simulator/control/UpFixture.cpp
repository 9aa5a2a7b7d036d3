// SPDX-License-Identifier: Apache-2.0
// UpFixture: programs and sockets of devices that are up.

#include "tests/simulator/control/UpFixture.h"

#include <signal.h>

namespace orvo::simulator::testing {

using nlohmann::json;
using ::testing::IsEmpty;

namespace {

std::vector<std::string> upCommand(const std::vector<std::string>& arguments) {
    std::vector<std::string> command = {programPath("camerasim"), "up"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return command;
}

}  // namespace

DeviceRun::DeviceRun(const std::string& temporary, const std::vector<std::string>& arguments)
    : mProgram(upCommand(arguments), {{"TMPDIR", temporary}}) {}

DeviceRun::~DeviceRun() {
    if (mEnded) return;
    mProgram.signal(SIGKILL);
    // Its janitor goes on for a moment, in a directory that the test is about to remove.
    awaitEnd();
}

ProgramEnd DeviceRun::awaitEnd() {
    mEnded = true;
    return mProgram.awaitEnd();
}

void DeviceRun::awaitReady(int cameras) {
    ASSERT_TRUE(mProgram.awaitOutput("ends it.\n")) << mProgram.output();
    const std::string& out = mProgram.output();
    const size_t from = out.find("\" in ") + 5;
    mRoot = out.substr(from, out.find('\n') - from);
    ASSERT_TRUE(waitFor({"cameras", std::to_string(cameras)})) << mProgram.output();
}

json DeviceRun::request(const json& request) const {
    const json answer = ask(socket(), request);
    EXPECT_TRUE(answer.contains("result")) << request << " was answered with " << answer;
    return answer.contains("result") ? answer["result"] : json::object();
}

std::string DeviceRun::refusal(const json& request) const {
    const json answer = ask(socket(), request);
    EXPECT_TRUE(answer.contains("error")) << request << " was answered with " << answer;
    return answer.value("error", "");
}

HeadsetState DeviceRun::state() const {
    const json answer = request({{"command", "state"}});
    return answer.empty() ? HeadsetState{} : answer.get<HeadsetState>();
}

ProviderState DeviceRun::provider(const std::string& instance) const {
    for (const ProviderState& provider : state().providers) {
        if (provider.instance == instance) return provider;
    }
    ADD_FAILURE() << "there is no provider " << instance;
    return {};
}

bool DeviceRun::waitFor(const std::vector<std::string>& condition) const {
    return request({{"command", "wait"}, {"condition", condition}, {"timeout", 30}})
            .value("met", false);
}

std::vector<std::string> DeviceRun::history() const {
    ControlTalk talk(socket());
    talk.send(json({{"command", "events"}}).dump() + "\n");
    std::vector<std::string> lines;
    while (const auto line = talk.next()) {
        if (!line->contains("event")) break;
        const auto event = (*line)["event"].get<TimelineEvent>();
        lines.push_back(event.kind + " " + event.who + " " + event.what);
    }
    return lines;
}

std::unique_ptr<DeviceRun> UpFixture::boot(const std::vector<std::string>& arguments, int cameras) {
    auto device = std::make_unique<DeviceRun>(mTemporary.path(), arguments);
    device->awaitReady(cameras);
    return device;
}

std::string UpFixture::copiedDevice() {
    const std::string directory = mDevices.path() + "/device";
    copyHeadset(directory);
    return directory;
}

void UpFixture::expectNothingIsLeft() const {
    EXPECT_TRUE(mTemporary.isEmpty());
    EXPECT_THAT(processesWithEnvironment("TMPDIR=" + mTemporary.path()), IsEmpty());
}

}  // namespace orvo::simulator::testing
