// SPDX-License-Identifier: Apache-2.0
// Inside: the inner half of `camerasim up`, which is the device's supervisor and its framework.

#include <unistd.h>

#include <chrono>
#include <iostream>
#include <string>
#include <thread>

#include <hidl/HidlTransportSupport.h>

#include "simulator/camerasim/ExitStatus.h"
#include "simulator/camerasim/commands/UpCommand.h"
#include "simulator/camerasim/inside/EventPrinter.h"
#include "simulator/camerasim/inside/Headset.h"
#include "simulator/camerasim/inside/InnerHalf.h"
#include "simulator/camerasim/inside/Requests.h"

namespace orvo::simulator {

namespace {

/** Notifications of several providers come at once. */
constexpr size_t kPoolThreads = 8;

void greet(const Headset& device) {
    std::cout << "The device \"" << device.files().description().name << "\" in "
              << device.stage().root() << "\n"
              << "From other terminals: camerasim ps, cameras, events, kill, plug, torch and more;"
              << " see camerasim --help.\n"
              << "Ctrl-C here, or camerasim stop there, ends it." << std::endl;
}

/** For the last lines of a device that was told to stop; the screen takes half of it at most. */
constexpr std::chrono::seconds kLastLines{2};

/**
 * Threads of the pool and of requests still run; ending without destructors is the only way. Every
 * line was flushed when it was printed; a last flush would wait for whoever does not read.
 */
[[noreturn]] void leave(int status) {
    _exit(status);
}

}  // namespace

int runUpInside(const UpOptions& options, const std::string& root, int stopFd) {
    const Stage stage(root);
    redirectLog(stage.logOf("camerasim"));
    const auto description = HeadsetDescription::read(options.deviceDirectory);
    if (!description) return filesChanged();
    const auto files = HeadsetFiles::read(*description);
    const auto installation = Installation::ofThisProgram();
    if (!files || !installation) return filesChanged();
    android::hardware::configureRpcThreadpool(kPoolThreads, false);

    Headset device(*files, *installation, stage, options.restart);
    whenTold(stopFd, [&device] {
        device.stop();
        // The main thread leaves, unless it prints and nobody reads.
        std::this_thread::sleep_for(kLastLines);
        leave(kAsExpected);
    });
    // Who connects before the device is up waits for it.
    auto socket = ControlServer::listen(stage.control());
    if (!socket) {
        std::cerr << "camerasim: " << socket.error().message() << std::endl;
        return kBadUse;
    }
    greet(device);
    EventPrinter screen(device.timeline(), wantsColour());
    const auto booted = device.boot();
    if (!booted) {
        const bool wasToldToStop = device.isStopping();
        device.endPrograms();
        screen.finish();
        if (wasToldToStop) leave(kAsExpected);
        printTails(device.running());
        std::cerr << "camerasim: " << booted.error().message() << std::endl;
        leave(kNotAsExpected);
    }
    Requests requests(device);
    ControlServer server(std::move(*socket), [&requests](const std::string& line, Reply& reply) {
        requests.answer(line, reply);
    });
    server.serve();
    const int status = device.run();
    screen.finish();
    leave(status);
}

}  // namespace orvo::simulator
