// SPDX-License-Identifier: Apache-2.0
// SessionCommands: `camerasim up`, `tour`, `stop`, `close` and `bugreport`.

#include <string.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <iostream>
#include <string>
#include <thread>

#include "simulator/camerasim/Looks.h"
#include "simulator/camerasim/commands/Bugreport.h"
#include "simulator/camerasim/commands/Command.h"
#include "simulator/camerasim/commands/HeadsetFinder.h"
#include "simulator/camerasim/outside/Installation.h"
#include "simulator/camerasim/outside/Logs.h"
#include "simulator/camerasim/outside/Session.h"
#include "simulator/camerasim/tour/Tour.h"
#include "simulator/control/ControlClient.h"

namespace orvo::simulator {

using android::base::Result;
using android::base::ResultError;
using android::base::unexpected;

namespace {

SessionOptions sessionOptions(const Values& values) {
    SessionOptions options;
    options.directory =
            values.has("DEVICE_DIR") ? values.text("DEVICE_DIR") : Installation::defaultHeadset();
    options.keep = values.has("--keep");
    options.restart = values.has("--restart");
    return options;
}

/** Reads on until the headset has closed the connection, which is when it has ended. */
Result<StopReply> stop(const std::string& root) {
    auto client = ControlClient::begin(root, StopRequest());
    if (!client) return unexpected(client.error());
    StopReply reply;
    for (;;) {
        const auto message = client->next(kAnswerPatience);
        if (!message) return unexpected(message.error());
        if (message->kind == ControlMessage::Kind::END) return reply;
        const auto said = messageIn<StopReply>(message->body);
        if (!said) return unexpected(said.error());
        reply = *said;
    }
}

/** What the inner half had no chance to say itself. */
ResultError wasEndedBy(int signal) {
    return didNotHappen("the device's own process was ended by signal " + std::to_string(signal) +
                        " (" + strsignal(signal) + ")");
}

std::string defaultFile(const std::string& headset) {
    char moment[32];
    const time_t now = time(nullptr);
    tm local{};
    localtime_r(&now, &local);
    strftime(moment, sizeof(moment), "%Y%m%d-%H%M%S", &local);
    return "camerasim-" + headset + "-" + moment + ".tar.gz";
}

int closeOne(const std::string& root, const std::string& camera) {
    const auto reply = ask(root, CloseRequest{camera});
    if (!reply) return complain(reply.error());
    std::cout << camera << ": closed" << std::endl;
    return kAsExpected;
}

}  // namespace

int bootHeadset(const Values& values) {
    auto session = Session::start(sessionOptions(values));
    if (!session) return complain(badUse(session.error().message()));
    const int status = session->awaitEnd();
    session->finish();
    if (wasToldToStop(status)) return kAsExpected;
    return status > 128 ? complain(wasEndedBy(status - 128)) : status;
}

int tourHeadset(const Values& values) {
    SessionOptions options = sessionOptions(values);
    options.quiet = true;
    const auto plan = TourPlan::make(options.directory);
    if (!plan) return complain(badUse(plan.error().message()));
    auto session = Session::start(options);
    if (!session) return complain(badUse(session.error().message()));
    Narrator narrator(std::cout, wantsColour());
    const auto pause = static_cast<int64_t>(values.number("--pause", 0) * 1000);
    Tour tour(*plan, session->stage().root(), narrator, std::chrono::milliseconds(pause));
    bool good = false;
    // This thread hears the terminal, and ends the headset if it is told to; then the tour ends.
    std::thread guide([&] {
        good = tour.run();
        (void)stop(session->stage().root());
    });
    const int status = session->awaitEnd();
    guide.join();
    const bool isStopped = status > 128 && wasToldToStop(status);
    if (!good && !isStopped) printTails(session->stage());
    session->finish();
    if (isStopped) {
        std::cerr << "camerasim: the tour was stopped" << std::endl;
        return status;
    }
    if (status > 128) return complain(wasEndedBy(status - 128));
    return good ? kAsExpected : complain(didNotHappen("the tour was not as expected"));
}

int stopHeadset(const Values& values) {
    const auto root = chooseHeadset(values.text("--device"));
    if (!root) return complain(root.error());
    const auto stopped = stop(*root);
    if (!stopped) return complain(stopped.error());
    for (const std::string& complaint : stopped->complaints) std::cout << complaint << "\n";
    std::cout << "the device has ended" << std::endl;
    return kAsExpected;
}

int closeCameras(const Values& values) {
    const auto root = chooseHeadset(values.text("--device"));
    if (!root) return complain(root.error());
    if (values.has("CAMERA")) return closeOne(*root, values.text("CAMERA"));
    const auto state = ask(*root, StateRequest());
    if (!state) return complain(state.error());
    int status = -1;
    for (const CameraState& camera : state->cameras) {
        if (camera.open) status = std::max(status, closeOne(*root, camera.name));
    }
    if (status >= 0) return status;
    return complain(didNotHappen("no camera is held open; camerasim open CAMERA --hold does so"));
}

int reportBugs(const Values& values) {
    const auto root = chooseHeadsetOrRemains(values.text("--device"));
    if (!root) return complain(root.error());
    const double patience = values.number("--timeout", 15);
    Bugreport report(*root, std::chrono::milliseconds(static_cast<int64_t>(patience * 1000)));
    const std::string file = !values.text("--output").empty() ? values.text("--output")
                                                              : defaultFile(report.headsetName());
    const auto written = report.write(file);
    if (!written) return complain(written.error());
    for (const std::string& line : report.missing()) std::cout << "missing: " << line << "\n";
    std::cout << "written: " << std::filesystem::absolute(file).string() << std::endl;
    return kAsExpected;
}

}  // namespace orvo::simulator
