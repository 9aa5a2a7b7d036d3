// SPDX-License-Identifier: Apache-2.0
// CommandTable: every command, what it takes, what it asks, and how the reply is printed.

#include "simulator/camerasim/commands/Asking.h"
#include "simulator/camerasim/commands/Replies.h"
#include "simulator/camerasim/outside/Installation.h"
#include "simulator/control/Condition.h"

namespace orvo::simulator {

namespace {

using Kind = Argument::Kind;
using Completion = Argument::Completion;

const Argument kCamera = {Kind::WORD, "CAMERA", "in the framework's words; camerasim cameras",
                          Completion::CAMERAS};
const Argument kProvider = {
        Kind::WORD, "PROVIDER",
        "a provider, such as external/0, or service: the camera provider service",
        Completion::PROCESSES};
const Argument kService = {Kind::OPTIONAL_WORD, "SERVICE", "only this instance, such as legacy/0",
                           Completion::SERVICES};
const Argument kFollow = {Kind::FLAG, "-f,--follow", "go on with what comes, until Ctrl-C"};
const Argument kKeep = {Kind::FLAG, "--keep",
                        "leave the temporary directory, with the logs, there"};

Argument directory() {
    return {Kind::OPTIONAL_WORD, "DEVICE_DIR",
            "directory with a device.yaml (default: " + Installation::defaultHeadset() + ")",
            Completion::DIRECTORIES};
}

std::vector<Argument> plugArguments() {
    return {{Kind::WORD, "PROVIDER", "such as external/0", Completion::PROVIDERS},
            {Kind::WORD, "CAMERA",
             "in the provider's words, such as device@3.2/external/100, or its id",
             Completion::CAMERAS_OF_PROVIDER}};
}

std::vector<Command> sessions() {
    return {
            {"tour",
             "boot a device, walk through what its cameras do, and end with 0 if all of it was as"
             " expected",
             "camerasim tour --pause 5",
             {directory(),
              kKeep,
              {Kind::SECONDS,
               "--pause",
               "seconds to wait after each step",
               Completion::NONE,
               {},
               "S"}},
             tourHeadset},
            {"up",
             "boot a device and stay, with a line for whatever happens, until Ctrl-C",
             "camerasim up simulator/devices/headset --restart",
             {directory(),
              kKeep,
              {Kind::FLAG, "--restart",
               "start provider processes again when they end: at once, and after growing pauses"
               " when they end within a second again and again"}},
             bootHeadset},
            {"stop", "shut the device down", "camerasim stop", {deviceOption()}, stopHeadset},
            {"new",
             "write the directory of a small device, to start from",
             "camerasim new my-headset",
             {{Kind::WORD, "DEVICE_DIR", "where; it must not be there, or be empty",
               Completion::DIRECTORIES}},
             writeHeadset},
            {"check",
             "say all that is wrong with the files of a device; ends with 1 if something is",
             "camerasim check my-headset",
             {directory()},
             checkFiles},
            {"keys",
             "list what the descriptions of a device may say, as docs/descriptions.md",
             "camerasim keys",
             {},
             printKeys},
    };
}

std::vector<Command> lists() {
    return {
            {"devices",
             "list the devices that run",
             "camerasim devices",
             {formatOption()},
             listHeadsets},
            asking<StateRequest>(
                    {"ps",
                     "list the providers: declared, running, connected, how often each died, and"
                     " what is wrong",
                     "camerasim ps --format=json",
                     {}},
                    [](const Values&) { return StateRequest(); }, printProviders),
            {"cameras",
             "list the cameras as the framework sees them",
             "camerasim cameras",
             {deviceOption(), formatOption()},
             listCameras},
            asking<ListRequest>(
                    {"list",
                     "list what the services answer when they are asked for their cameras",
                     "camerasim list legacy/0",
                     {kService}},
                    [](const Values& values) { return ListRequest{values.text("SERVICE")}; },
                    printLists),
            asking<TagsRequest>(
                    {"tags",
                     "list the vendor tags as the framework is given them",
                     "camerasim tags --service legacy/0",
                     {{Kind::TEXT,
                       "--service",
                       "only of this instance, such as legacy/0",
                       Completion::SERVICES,
                       {},
                       "INSTANCE"}}},
                    [](const Values& values) { return TagsRequest{values.text("--service")}; },
                    printTags),
            asking<DumpRequest>(
                    {"dump",
                     "show what the services hold, as lshal debug does",
                     "camerasim dump legacy/0",
                     {kService}},
                    [](const Values& values) { return DumpRequest{values.text("SERVICE")}; },
                    printDumps),
            asking<PropsRequest>(
                    {"props", "list the system properties", "camerasim props", {}},
                    [](const Values&) { return PropsRequest(); }, printProperties),
            {"log",
             "list what the programs of the device have logged, in the order of time",
             "camerasim log --tag OrvoCameraServiceImpl --priority W -f",
             {{Kind::TEXT, "--tag", "only with this tag", Completion::NONE, {}, "TAG"},
              {Kind::TEXT,
               "--priority",
               "only of this priority and above: V, D, I, W, E or F",
               Completion::NONE,
               {"V", "D", "I", "W", "E", "F"},
               "P"},
              {Kind::TEXT,
               "--program",
               "only of this program, or of this provider's",
               Completion::PROVIDERS,
               {},
               "NAME"},
              kFollow,
              deviceOption(),
              formatOption()},
             listLog},
            {"events",
             "list what has happened since the boot",
             "camerasim events -f --from 20",
             {kFollow,
              {Kind::NUMBER,
               "--from",
               "number of the first event (default: 1)",
               Completion::NONE,
               {},
               "N"},
              deviceOption(),
              formatOption()},
             listEvents},
            {"watch",
             "show providers, cameras and events as they change, until Ctrl-C",
             "camerasim watch",
             {deviceOption()},
             watch},
    };
}

std::vector<Command> actions() {
    return {
            asking<OpenRequest>(
                    {"open",
                     "read a camera, open it, and close it again",
                     "camerasim open device@3.2/legacy/100 --hold",
                     {kCamera, {Kind::FLAG, "--hold", "keep it open"}}},
                    [](const Values& values) {
                        return OpenRequest{values.text("CAMERA"), values.has("--hold")};
                    },
                    printOpened, whyNotOpened),
            {"close",
             "close a camera that is held open",
             "camerasim close device@3.2/legacy/100",
             {{Kind::OPTIONAL_WORD, "CAMERA", "the camera; all that are held open, if not given",
               Completion::CAMERAS},
              deviceOption()},
             closeCameras},
            asking<TorchRequest>(
                    {"torch",
                     "switch a camera's torch on or off",
                     "camerasim torch device@3.2/legacy/100 on",
                     {kCamera, {Kind::WORD, "MODE", "on or off", Completion::NONE, {"on", "off"}}}},
                    [](const Values& values) {
                        return TorchRequest{values.text("CAMERA"), values.text("MODE") == "on"};
                    },
                    printTorch, whyNotSwitched),
            asking<PlugRequest>(
                    {"plug", "plug a camera into a provider", "camerasim plug external/0 usb-7C21",
                     plugArguments()},
                    [](const Values& values) {
                        return PlugRequest{values.text("PROVIDER"), values.text("CAMERA"), true};
                    },
                    printPlugged),
            asking<PlugRequest>(
                    {"unplug", "pull a camera out of a provider",
                     "camerasim unplug external/0 usb-7C21", plugArguments()},
                    [](const Values& values) {
                        return PlugRequest{values.text("PROVIDER"), values.text("CAMERA"), false};
                    },
                    printPlugged),
            asking<KillRequest>(
                    {"kill",
                     "end a provider's process with SIGKILL",
                     "camerasim kill external/0",
                     {kProvider, {Kind::FLAG, "--clean", "ask it to end, with SIGTERM, instead"}}},
                    [](const Values& values) {
                        return KillRequest{values.text("PROVIDER"),
                                           values.has("--clean") ? "TERM" : "KILL"};
                    },
                    printKilled, whyNotEnded),
            asking<HangRequest>(
                    {"hang",
                     "stop a provider's process, so that it answers no more",
                     "camerasim hang external/0",
                     {kProvider}},
                    [](const Values& values) { return HangRequest{values.text("PROVIDER")}; },
                    printProcess),
            asking<StartRequest>(
                    {"start",
                     "start a provider's process that has ended, or let a hung one go on",
                     "camerasim start external/0",
                     {kProvider}},
                    [](const Values& values) { return StartRequest{values.text("PROVIDER")}; },
                    printProcess),
            asking<WaitRequest>(
                    {"wait",
                     std::string("wait until something is so; ends with 1 if it is not in time\n\n"
                                 "CONDITION is one of\n") +
                             Condition::kForms,
                     "camerasim wait provider external/0 connected --timeout 10",
                     {{Kind::WORDS, "CONDITION", "the words of a condition", Completion::CONDITION},
                      {Kind::SECONDS,
                       "--timeout",
                       "seconds to wait at most (default: 30)",
                       Completion::NONE,
                       {},
                       "S"}}},
                    [](const Values& values) {
                        return WaitRequest{values.words("CONDITION"),
                                           values.number("--timeout", 30)};
                    },
                    printWaited, whyNotMet),
            {"bugreport",
             "collect logs, map, manifest, properties, state, dump and events into one .tar.gz; "
             "also"
             " of a device that answers no more",
             "camerasim bugreport -o report.tar.gz",
             {{Kind::TEXT,
               "-o,--output",
               "the archive (default: camerasim-NAME-TIME.tar.gz here)",
               Completion::FILES,
               {},
               "FILE"},
              {Kind::SECONDS,
               "--timeout",
               "seconds to wait for each answer of the device (default: 15)",
               Completion::NONE,
               {},
               "S"},
              deviceOption()},
             reportBugs},
    };
}

std::vector<Command> allOf(std::initializer_list<std::vector<Command>> groups) {
    std::vector<Command> all;
    for (const auto& group : groups) all.insert(all.end(), group.begin(), group.end());
    return all;
}

}  // namespace

const std::vector<Command>& commandTable() {
    static const std::vector<Command> kTable = allOf({sessions(), lists(), actions()});
    return kTable;
}

}  // namespace orvo::simulator
