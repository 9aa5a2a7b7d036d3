// SPDX-License-Identifier: Apache-2.0
// LogCommand: `camerasim log`.

#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "simulator/camerasim/Looks.h"
#include "simulator/camerasim/commands/Command.h"
#include "simulator/camerasim/commands/HeadsetFinder.h"
#include "simulator/camerasim/commands/LogReader.h"
#include "simulator/camerasim/commands/Output.h"
#include "simulator/camerasim/inside/Programs.h"
#include "simulator/camerasim/outside/Stage.h"
#include "simulator/control/Complaint.h"

namespace orvo::simulator {

using android::base::Result;

namespace {

struct LogOptions {
    LogFilter filter;
    bool json;
};

/** A provider's log goes by the provider's name, too. */
Result<std::string> programCalled(const std::string& name,
                                  const std::vector<std::string>& programs) {
    for (const std::string& candidate : {name, Programs::programOf(name)}) {
        if (std::find(programs.begin(), programs.end(), candidate) != programs.end()) {
            return candidate;
        }
    }
    return badUse("there is no log of a program '" + name + "'; there is " +
                  listed(programs, "none at all"));
}

/** @return how many passed the filter. */
size_t printLines(const std::vector<LogLine>& lines, const LogOptions& options) {
    size_t printed = 0;
    for (const LogLine& line : lines) {
        if (!options.filter.accepts(line)) continue;
        printed++;
        if (options.json) {
            printJsonLine(line);
        } else {
            std::cout << logText(line, wantsColour()) << "\n";
        }
    }
    std::cout.flush();
    return printed;
}

std::string whyNothing(size_t lines, const LogFilter& filter) {
    if (lines == 0) return "no program has written to its log";
    return counted(lines, "line") + " in all logs, none with " + filter.toText();
}

void follow(LogReader& reader, const LogOptions& options) {
    bool more = true;
    while (more) {
        printLines(reader.readNew(false), options);
        more = reader.awaitMore();
    }
    printLines(reader.readNew(true), options);
    std::cerr << "the device has ended" << std::endl;
}

}  // namespace

int listLog(const Values& values) {
    LogOptions options{{values.text("--tag"), values.text("--priority"), values.text("--program")},
                       values.json()};
    const auto root = chooseHeadsetOrRemains(values.text("--device"));
    if (!root) return complain(root.error());
    auto reader = LogReader::open(Stage(*root).logs());
    if (!reader) return complain(reader.error());
    if (!options.filter.program.empty()) {
        const auto program = programCalled(options.filter.program, reader->programs());
        if (!program) return complain(program.error());
        options.filter.program = *program;
    }
    if (values.has("--follow")) {
        follow(*reader, options);
        return kAsExpected;
    }
    const std::vector<LogLine> lines = reader->readNew(true);
    if (printLines(lines, options) == 0 && !options.json) {
        printNothing(whyNothing(lines.size(), options.filter));
    }
    return kAsExpected;
}

}  // namespace orvo::simulator
