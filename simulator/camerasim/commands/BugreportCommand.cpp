// SPDX-License-Identifier: Apache-2.0
// BugreportCommand: `camerasim bugreport`.

#include <chrono>
#include <ctime>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>

#include "simulator/camerasim/ExitStatus.h"
#include "simulator/camerasim/commands/Bugreport.h"
#include "simulator/camerasim/commands/Commands.h"
#include "simulator/camerasim/commands/Complaint.h"
#include "simulator/camerasim/commands/HeadsetFinder.h"

namespace orvo::simulator {

namespace {

struct BugreportOptions : DeviceOptions {
    std::string file;
    double timeout = 15;
};

std::string defaultFile(const std::string& device) {
    char moment[32];
    const time_t now = time(nullptr);
    tm local{};
    localtime_r(&now, &local);
    strftime(moment, sizeof(moment), "%Y%m%d-%H%M%S", &local);
    return "camerasim-" + device + "-" + moment + ".tar.gz";
}

int report(const BugreportOptions& options) {
    const auto root = chooseDeviceOrRemains(options.device);
    if (!root) return complain(root.error());
    Bugreport report(*root,
                     std::chrono::milliseconds(static_cast<int64_t>(options.timeout * 1000)));
    const std::string file = options.file.empty() ? defaultFile(report.deviceName()) : options.file;
    const auto written = report.write(file);
    if (!written) return complain(written.error());
    for (const std::string& line : report.missing()) std::cout << "missing: " << line << "\n";
    std::cout << "written: " << std::filesystem::absolute(file).string() << std::endl;
    return kAsExpected;
}

}  // namespace

void addBugreport(Commands& commands) {
    auto options = std::make_shared<BugreportOptions>();
    commands.add({"bugreport",
                  "collect logs, map, manifest, properties, state, dump and events into one "
                  ".tar.gz;"
                  " also of a device that answers no more",
                  "camerasim bugreport -o report.tar.gz"},
                 [options] { return report(*options); })
            .option("-o,--output", options->file, "FILE",
                    "the archive (default: camerasim-NAME-TIME.tar.gz here)")
            .seconds("--timeout", options->timeout, 3600,
                     "seconds to wait for each answer of the device (default: 15)")
            .device(*options);
}

}  // namespace orvo::simulator
