// SPDX-License-Identifier: Apache-2.0
// Tests of how `camerasim up` begins and ends, and of devices with something wrong.

#include <signal.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/simulator/control/UpFixture.h"

namespace orvo::simulator::testing {
namespace {

using nlohmann::json;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr char kManifest[] = "/vendor/etc/vintf/manifest.xml";
constexpr char kMap[] = "/vendor/etc/orvo_vendor_manifest.xml";

using UpLifeTest = UpFixture;

TEST_F(UpLifeTest, TheFirstLinesTellWhereItIsAndWhatCanBeDone) {
    const auto device = boot();
    const std::string& out = device->program().output();
    EXPECT_EQ(0u, out.find("The device \"headset\" in " + mTemporary.path() + "/camerasim."));
    EXPECT_THAT(out, HasSubstr("camerasim ps"));
    EXPECT_TRUE(device->program().awaitOutput("  camera    device@3.2/legacy/100  PRESENT\n"));
    EXPECT_THAT(device->program().output(), Not(HasSubstr("\033"))) << "colour is for terminals";
}

TEST_F(UpLifeTest, ColourIsForTerminalsWhoseUserWantsIt) {
    // script(1) gives the program a terminal, whose hanging up ends the program.
    const std::vector<std::string> command = {"/usr/bin/script", "-qec",
                                              programPath("camerasim") + " up", "/dev/null"};
    for (const bool plain : {false, true}) {
        std::map<std::string, std::string> environment = {{"TMPDIR", mTemporary.path()}};
        if (plain) environment["NO_COLOR"] = "1";
        ProgramRun run(command, environment);
        EXPECT_TRUE(run.awaitOutput(plain ? "  hwservicemanager  ready"
                                          : "  hwservicemanager  \033[32mready\033[0m"));
        run.signal(SIGTERM);
        EXPECT_TRUE(run.awaitEnd().inTime);
        expectNothingIsLeft();
    }
}

TEST_F(UpLifeTest, ASignalEndsItWell) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        const auto device = boot();
        device->program().signal(signal);
        const ProgramEnd end = device->awaitEnd();
        EXPECT_TRUE(end.inTime);
        EXPECT_EQ(0, end.status);
        EXPECT_EQ("", end.err);
        EXPECT_THAT(end.out, HasSubstr("hwservicemanager  ended with status 0"));
        expectNothingIsLeft();
    }
}

TEST_F(UpLifeTest, AKilledOneLeavesNothing) {
    const auto device = boot();
    EXPECT_GE(processesWithEnvironment("TMPDIR=" + mTemporary.path()).size(), 7u);
    device->program().signal(SIGKILL);
    const ProgramEnd end = device->awaitEnd();  // also waits for whom it has started
    EXPECT_TRUE(end.inTime);
    EXPECT_EQ(128 + SIGKILL, end.status);
    expectNothingIsLeft();
}

TEST_F(UpLifeTest, OneWhoseOwnProcessIsKilledSaysSo) {
    const auto device = boot();
    ASSERT_EQ(0, kill(device->state().pid, SIGKILL));
    const ProgramEnd end = device->awaitEnd();
    EXPECT_TRUE(end.inTime);
    EXPECT_EQ(1, end.status);
    EXPECT_EQ("camerasim: the device's own process was ended by signal 9 (Killed)\n", end.err);
    expectNothingIsLeft();
}

TEST_F(UpLifeTest, StopsAlsoWhileSomebodyIsHung) {
    const auto device = boot();
    device->request({{"command", "hang"}, {"provider", "external/0"}});
    device->request({{"command", "hang"}, {"provider", "service"}});
    ControlTalk stuck(device->socket());
    stuck.send("{\"command\":\"tags\"}\n");
    device->request({{"command", "stop"}});
    const ProgramEnd end = device->awaitEnd();
    EXPECT_TRUE(end.inTime);
    EXPECT_EQ(0, end.status);
    expectNothingIsLeft();
}

TEST_F(UpLifeTest, KeepLeavesTheDirectory) {
    const auto device = boot({"--keep"});
    device->request({{"command", "stop"}});
    const ProgramEnd end = device->awaitEnd();
    EXPECT_EQ(0, end.status);
    EXPECT_THAT(end.out, HasSubstr("Kept: " + device->root() + "\n"));
    EXPECT_TRUE(std::filesystem::exists(device->root() + "/run/log/camera_provider_service.log"));
}

TEST_F(UpLifeTest, TwoDevicesDoNotMeet) {
    const auto first = boot();
    const auto second = boot();
    EXPECT_NE(first->root(), second->root());
    first->request({{"command", "kill"}, {"provider", "external/0"}});
    EXPECT_TRUE(first->waitFor({"camera", kBackCamera, "NOT_PRESENT"}));
    EXPECT_EQ(0, second->provider("external/0").deaths);
    EXPECT_EQ(6u, second->state().cameras.size());
    first->request({{"command", "stop"}});
    EXPECT_EQ(0, first->awaitEnd().status);
    EXPECT_EQ("headset", second->state().name);
    second->request({{"command", "stop"}});
    EXPECT_EQ(0, second->awaitEnd().status);
    expectNothingIsLeft();
}

TEST_F(UpLifeTest, RestartStartsProvidersAgain) {
    const auto device = boot({"--restart"});
    device->request({{"command", "kill"}, {"provider", "external/0"}});
    EXPECT_TRUE(device->waitFor({"provider", "external/0", "connected"}));
    EXPECT_TRUE(device->waitFor({"camera", kBackCamera, "PRESENT"}));
    EXPECT_EQ(1, device->provider("external/0").deaths);
}

TEST_F(UpLifeTest, InitClearsWhatTheDeviceNamesBeforeItStartsTheServiceAgain) {
    const std::string directory = copiedDevice();
    edit(directory + "/device.yaml",
         "service:", "clearOnRestart: [camera.external.ids, camera..ids]\nservice:");
    const auto device = boot({directory});
    device->request({{"command", "kill"}, {"provider", "service"}});
    // What is not named is appended to; then all reports of the new service are in.
    EXPECT_TRUE(device->waitFor({"property", "camera.virtual.ids", "is", "8, 7, 8, 7"}));
    EXPECT_TRUE(device->waitFor({"cameras", "6"}));
    EXPECT_TRUE(device->waitFor({"property", "camera.external.ids", "is", "100, 101"}));
    const std::vector<std::string> history = device->history();
    EXPECT_THAT(history, Contains("service camera_provider_service init clears "
                                  "camera.external.ids"));
    EXPECT_THAT(history, Contains("service camera_provider_service init cannot clear camera..ids"));
}

TEST_F(UpLifeTest, ADeviceWithoutAServiceManagerEnds) {
    const auto device = boot();
    const auto& history = device->history();
    ASSERT_THAT(history, Contains("process hwservicemanager ready"));
    for (const pid_t pid : processesWithEnvironment("ORVO_DEVICE_DIR=" + device->root())) {
        std::error_code ignored;
        const auto program =
                std::filesystem::read_symlink("/proc/" + std::to_string(pid) + "/exe", ignored);
        if (program.filename() == "hwservicemanager") kill(pid, SIGKILL);
    }
    const ProgramEnd end = device->awaitEnd();
    EXPECT_EQ(1, end.status);
    EXPECT_EQ("camerasim: the service manager ended by signal 9 (Killed); boot the device again\n",
              end.err);
    expectNothingIsLeft();
}

TEST_F(UpLifeTest, AProviderThatIsNotDeclaredIsExplainedAndTheOthersServe) {
    const std::string directory = copiedDevice();
    edit(directory + kManifest, "<instance>virtual/0</instance>", "");
    const auto device = boot({directory}, 4);
    const ProviderState provider = device->provider("virtual/0");
    EXPECT_FALSE(provider.declared || provider.connected);
    EXPECT_TRUE(provider.running);
    EXPECT_EQ("named in the map but not declared in the manifest: nobody looks for it",
              provider.problem);
    EXPECT_TRUE(device->provider("external/0").connected);
}

TEST_F(UpLifeTest, AProviderThatOnlyTheMapNamesIsExplained) {
    const std::string directory = copiedDevice();
    edit(directory + kMap, "</providers>",
         "<instance replace=\"usb/0\">legacy/0</instance></providers>");
    const auto device = boot({directory});
    const ProviderState provider = device->provider("usb/0");
    EXPECT_EQ("named in the map but not declared in the manifest", provider.problem);
    EXPECT_EQ("legacy/0", provider.behind);
    EXPECT_EQ("usb/0 has no process: device.yaml describes none",
              device->refusal({{"command", "start"}, {"provider", "usb/0"}}));
}

TEST_F(UpLifeTest, AProviderThatTheMapDoesNotMentionIsExplained) {
    const std::string directory = copiedDevice();
    edit(directory + kMap, "<instance replace=\"virtual/0\">legacy/0</instance>", "");
    const auto device = boot({directory}, 4);
    EXPECT_EQ("running, but not mentioned by the map: no service fronts it",
              device->provider("virtual/0").problem);
}

TEST_F(UpLifeTest, AServedInstanceThatCannotBeHadIsExplained) {
    const std::string directory = copiedDevice();
    edit(directory + "/vendor/etc/mrprovider.yaml", "instance: default/0", "instance: default/1");
    const auto device = boot({directory}, 4);
    const ProviderState provider = device->provider("default/0");
    EXPECT_FALSE(provider.running);
    EXPECT_EQ("the service does not serve it; camerasim log says why", provider.problem);
}

TEST_F(UpLifeTest, AHalfWrittenMapIsBootedWithAWarningAsADeviceBootsIt) {
    const std::string directory = copiedDevice();
    edit(directory + kMap, "</providers>", "");
    const auto device = boot({directory}, 2);
    EXPECT_FALSE(device->provider("legacy/0").running);
    device->request({{"command", "stop"}});
    const ProgramEnd end = device->awaitEnd();
    EXPECT_EQ(0, end.status);
    EXPECT_EQ(0u, end.err.find("camerasim: warning: ")) << end.err;
    EXPECT_THAT(end.err, HasSubstr("orvo_vendor_manifest.xml"));
    expectNothingIsLeft();
}

TEST_F(UpLifeTest, WhatPsWouldComplainOfIsAWarning) {
    const std::string directory = copiedDevice();
    edit(directory + kMap, "</providers>",
         "<instance replace=\"usb/0\">legacy/0</instance></providers>");
    const auto device = boot({directory});
    EXPECT_TRUE(device->program().awaitOutput(
            "  warning   usb/0  named in the map but not declared in the manifest\n"));
}

class UpRefusalTest : public UpFixture {
  protected:
    void expectRefused(const std::string& directory, const std::string& text) {
        const ProgramEnd end = runProgram({programPath("camerasim"), "up", directory},
                                          {{"TMPDIR", mTemporary.path()}});
        EXPECT_EQ(2, end.status);
        EXPECT_EQ("", end.out);
        EXPECT_EQ(1, std::count(end.err.begin(), end.err.end(), '\n')) << end.err;
        EXPECT_EQ(0u, end.err.find("camerasim: ")) << end.err;
        EXPECT_THAT(end.err, HasSubstr(text));
        expectNothingIsLeft();
    }
};

TEST_F(UpRefusalTest, ADeviceThatIsNotThere) {
    expectRefused("/no/such/device", "there is no device directory '/no/such/device'");
}

TEST_F(UpRefusalTest, AHalfWrittenDescription) {
    const std::string directory = copiedDevice();
    edit(directory + "/device.yaml", "service:", "service: [");
    expectRefused(directory, "device.yaml:");
}

TEST_F(UpRefusalTest, AHalfWrittenProviderDescription) {
    const std::string directory = copiedDevice();
    edit(directory + "/providers/external.yaml", "resourceCost: 45", "resourceCost: 450");
    expectRefused(directory, "external.yaml:22: ");
}

TEST_F(UpRefusalTest, AHalfWrittenManifest) {
    const std::string directory = copiedDevice();
    edit(directory + kManifest, "</manifest>", "");
    expectRefused(directory, "manifest.xml");
}

TEST_F(UpLifeTest, AServiceThatServesNothingEndsTheBootWithItsLog) {
    const std::string directory = copiedDevice();
    edit(directory + "/device.yaml", "- legacy/0", "- other/0");
    edit(directory + "/device.yaml", "- default/0", "- another/0");
    const ProgramEnd end = runProgram({programPath("camerasim"), "up", directory},
                                      {{"TMPDIR", mTemporary.path()}});
    EXPECT_EQ(1, end.status) << end.out;
    EXPECT_THAT(end.err, HasSubstr("the end of camera_provider_service.log:"));
    EXPECT_THAT(end.err, HasSubstr("\ncamerasim: camera_provider_service did not become ready: it"
                                   " ended with status 1; its log says why\n"));
    expectNothingIsLeft();
}

}  // namespace
}  // namespace orvo::simulator::testing
