// SPDX-License-Identifier: Apache-2.0
// UpCommand: the outer half of `camerasim up`.

#include "simulator/camerasim/commands/UpCommand.h"

#include <signal.h>

#include <iostream>
#include <string>
#include <vector>

#include "simulator/camerasim/ExitStatus.h"
#include "simulator/camerasim/outside/Session.h"
#include "simulator/description/HeadsetFiles.h"

namespace orvo::simulator {

namespace {

int refuse(const android::base::ResultError& mistake) {
    std::cerr << "camerasim: " << mistake.message() << std::endl;
    return kBadUse;
}

/** A device that stays up is ended by a signal as a matter of course. */
bool wasToldToStop(int status) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        if (status == 128 + signal) return true;
    }
    return status == kAsExpected;
}

}  // namespace

int runUp(const UpOptions& options) {
    const auto device = HeadsetDescription::read(options.deviceDirectory);
    if (!device) return refuse(device.error());
    // The inner half reads them again; here everything that is wrong is found before anything runs.
    const auto files = HeadsetFiles::read(*device);
    if (!files) return refuse(files.error());
    const auto installation = Installation::ofThisProgram();
    if (!installation) return refuse(installation.error());
    auto host = Session::prepare(*device, *installation, options.keep);
    if (!host) return refuse(host.error());

    const auto command = [&](int stopFd) {
        std::vector<std::string> words = {installation->camerasim, "inside", "up"};
        if (options.restart) words.push_back("--restart");
        for (const std::string& word :
             {host->stage().root(), std::to_string(stopFd), device->directory}) {
            words.push_back(word);
        }
        return words;
    };
    const auto status = host->run(command);
    if (!status) return refuse(status.error());
    if (options.keep) std::cout << "Kept: " << host->stage().root() << std::endl;
    return wasToldToStop(*status) ? kAsExpected : *status;
}

}  // namespace orvo::simulator
