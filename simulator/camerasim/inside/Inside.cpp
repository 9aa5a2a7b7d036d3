// SPDX-License-Identifier: Apache-2.0
// Inside: what is made first is the last to go, and by then nobody uses it any more.

#include "simulator/camerasim/inside/Inside.h"

#include <fcntl.h>

#include <optional>

#include <android-base/unique_fd.h>
#include <hidl/HidlTransportSupport.h>

#include "host/TransportEnd.h"
#include "host/log/ProgramLog.h"
#include "simulator/camerasim/Looks.h"
#include "simulator/camerasim/inside/EventPrinter.h"
#include "simulator/camerasim/inside/Headset.h"
#include "simulator/camerasim/inside/Requests.h"
#include "simulator/camerasim/inside/StopWatch.h"
#include "simulator/camerasim/outside/Logs.h"
#include "simulator/control/Complaint.h"
#include "simulator/control/ControlServer.h"

namespace orvo::simulator {

using android::base::unique_fd;

namespace {

/** Notifications of several providers come at once. */
constexpr size_t kPoolThreads = 8;

std::string greetingOf(const Headset& headset) {
    return "The device \"" + headset.files().description().name + "\" in " +
           headset.stage().root() +
           "\nFrom other terminals: camerasim ps, cameras, events, kill, plug, torch and more; see"
           " camerasim --help.\nCtrl-C here, or camerasim stop there, ends it.\n";
}

/** The outer half found the files in order a moment ago. */
int filesChanged() {
    return complain(badUse("the device's files have changed; try again"));
}

/** Of what is made after it nobody is called any more when it ends. */
struct TransportUse {
    ~TransportUse() { endTransport(); }
};

/** One that is not inherited by programs of the headset. */
unique_fd own(int descriptor) {
    fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    return unique_fd(descriptor);
}

}  // namespace

int runInside(const InsideOptions& options) {
    const TransportUse transport;
    const Stage stage(options.root);
    logToFile(stage.logOf("camerasim"));
    unique_fd socket = own(options.socketFd);
    const auto description = HeadsetDescription::read(options.directory);
    if (!description) return filesChanged();
    const auto files = HeadsetFiles::read(*description);
    const auto installation = Installation::ofThisProgram();
    if (!files || !installation) return filesChanged();
    android::hardware::configureRpcThreadpool(kPoolThreads, false);

    Headset headset(*files, *installation, stage, options.restart);
    std::optional<EventPrinter> printer;
    if (!options.quiet) printer.emplace(headset.timeline(), greetingOf(headset), wantsColour());
    const StopWatch stopWatch(own(options.stopFd), [&headset] { headset.stop(); });
    const auto booted = headset.boot();
    if (!booted) {
        if (headset.isStopping()) return kAsExpected;
        (void)headset.endPrograms();
        printer.reset();
        printTails(stage);
        return complain(didNotHappen(booted.error().message()));
    }
    Requests requests(headset);
    ControlServer server(std::move(socket), [&requests](const std::string& line, Reply& reply) {
        requests.answer(line, reply);
    });
    server.serve();
    return headset.run();
}

}  // namespace orvo::simulator
