// SPDX-License-Identifier: Apache-2.0
// OpenCommand: `camerasim open` and `camerasim close`.

#include <cstdio>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "simulator/camerasim/Colour.h"
#include "simulator/camerasim/ExitStatus.h"
#include "simulator/camerasim/commands/Commands.h"
#include "simulator/camerasim/commands/Complaint.h"
#include "simulator/camerasim/commands/HeadsetFinder.h"
#include "simulator/camerasim/commands/NamedRequest.h"
#include "simulator/camerasim/commands/Output.h"
#include "simulator/camerasim/tour/Narrator.h"
#include "simulator/control/ControlClient.h"

namespace orvo::simulator {

using Json = nlohmann::json;

namespace {

struct OpenOptions : DeviceOptions {
    std::string camera;
    bool hold = false;
};

void printCharacteristics(const Json& characteristics) {
    if (characteristics.empty()) return;
    Table table({"CHARACTERISTIC", "TYPE", "VALUE"});
    for (const Json& entry : characteristics) {
        char tag[16];
        snprintf(tag, sizeof(tag), "0x%08x", entry.at("tag").get<uint32_t>());
        table.addRow(
                {tag, entry.at("type").get<std::string>(), entry.at("value").get<std::string>()});
    }
    table.print(std::cout, wantsColour());
}

void printCamera(const Json& answer, bool hold) {
    const std::string camera = answer.at("camera");
    std::cout << camera << ": resource cost " << answer.at("resourceCost").get<int64_t>()
              << ", conflicts with "
              << listed(answer.at("conflictingDevices").get<std::vector<std::string>>()) << "\n";
    const std::string info = answer.at("info");
    if (!info.empty()) std::cout << info << "\n";
    printCharacteristics(answer.at("characteristics"));
    if (!answer.at("opened").get<bool>()) return;
    std::cout << (hold ? "opened; camerasim close " + camera + " closes it" : "opened, and closed")
              << std::endl;
}

int openCamera(const OpenOptions& options) {
    const auto answer =
            askDevice(options.device,
                      {{"command", "open"}, {"camera", options.camera}, {"hold", options.hold}});
    if (!answer) return complain(answer.error());
    const std::string status = answer->at("status");
    const bool opened = answer->at("opened");
    if (options.json()) {
        printDocument(*answer);
        return opened ? kAsExpected : kNotAsExpected;
    }
    if (opened || status == "OK") printCamera(*answer, options.hold);
    if (opened) return kAsExpected;
    return complain(didNotHappen(options.camera + " was not opened: " + status));
}

int closeOne(const std::string& root, const std::string& camera) {
    const auto answer = askByName(root, {{"command", "close"}, {"camera", camera}});
    if (!answer) return complain(answer.error());
    std::cout << camera << ": closed" << std::endl;
    return kAsExpected;
}

int closeCameras(const OpenOptions& options) {
    const auto root = chooseDevice(options.device);
    if (!root) return complain(root.error());
    if (!options.camera.empty()) return closeOne(*root, options.camera);
    const auto answer = ask(*root, {{"command", "state"}});
    if (!answer) return complain(answer.error());
    int status = -1;
    for (const CameraState& camera : answer->get<HeadsetState>().cameras) {
        if (camera.open) status = std::max(status, closeOne(*root, camera.name));
    }
    if (status >= 0) return status;
    return complain(didNotHappen("no camera is held open; camerasim open CAMERA --hold does so"));
}

}  // namespace

void addOpenAndClose(Commands& commands) {
    auto options = std::make_shared<OpenOptions>();
    commands.add({"open", "read a camera, open it, and close it again",
                  "camerasim open device@3.2/legacy/100 --hold"},
                 [options] { return openCamera(*options); })
            .argument("CAMERA", options->camera, "in the framework's words; camerasim cameras")
            .flag("--hold", options->hold, "keep it open")
            .device(*options)
            .format(*options);

    auto which = std::make_shared<OpenOptions>();
    commands.add({"close", "close a camera that is held open",
                  "camerasim close device@3.2/legacy/100"},
                 [which] { return closeCameras(*which); })
            .optionalArgument("CAMERA", which->camera,
                              "the camera; all that are held open, if not given")
            .device(*which);
}

}  // namespace orvo::simulator
