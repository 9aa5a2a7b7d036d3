// SPDX-License-Identifier: Apache-2.0
// Bugreport: asks the device once; if it is silent, takes what lies on the disk.

#include "simulator/camerasim/commands/Bugreport.h"

#include <algorithm>
#include <cctype>
#include <ctime>
#include <filesystem>
#include <system_error>
#include <utility>

#include <android-base/file.h>
#include <nlohmann/json.hpp>

#include "simulator/camerasim/commands/Output.h"
#include "simulator/camerasim/commands/Replies.h"
#include "simulator/camerasim/outside/Stage.h"
#include "simulator/control/ControlClient.h"

namespace orvo::simulator {

namespace fs = std::filesystem;
using android::base::Result;
using android::base::unexpected;

namespace {

std::string now() {
    char text[32];
    const time_t moment = time(nullptr);
    tm local{};
    localtime_r(&moment, &local);
    strftime(text, sizeof(text), "%Y-%m-%d %H:%M:%S %z", &local);
    return text;
}

/** "/tmp/a-report.tar.gz" unpacks to "a-report/". */
std::string prefixFor(const fs::path& file) {
    std::string name = file.filename();
    for (const std::string ending : {".gz", ".tar", ".tgz"}) {
        if (name.size() > ending.size() && fs::path(name).extension() == ending) {
            name.resize(name.size() - ending.size());
        }
    }
    return name + "/";
}

}  // namespace

Bugreport::Bugreport(std::string root, std::chrono::milliseconds patience)
    : mRoot(std::move(root)), mPatience(patience) {
    const auto answer = ask(mRoot, StateRequest(), mPatience);
    if (answer) {
        mState = *answer;
    } else {
        mSilence = answer.error().message();
    }
}

std::string Bugreport::headsetName() const {
    std::string name = mState ? mState->name : "device";
    for (char& c : name) {
        if (isalnum(static_cast<unsigned char>(c)) == 0) c = '-';
    }
    return name;
}

Result<void> Bugreport::write(const std::string& file) {
    auto archive = Archive::create(file);
    if (!archive) return unexpected(archive.error());
    mPrefix = prefixFor(file);
    const Stage stage(mRoot);
    Result<void> step = addAnswers(*archive);
    if (step) step = addTree(*archive, stage.logs(), "log");
    if (step) step = addTree(*archive, stage.vendor() + "/etc", "vendor/etc");
    if (step) step = archive->add(mPrefix + "REPORT.txt", reportText());
    if (step) step = archive->finish();
    return step;
}

Result<void> Bugreport::addAnswers(Archive& archive) {
    if (!mSilence.empty()) {
        mMissing.push_back("state, dump, events and the list of properties: " + mSilence);
        return addFile(archive, Stage(mRoot).run() + "/properties", "properties.lmdb");
    }
    Result<void> step = archive.add(mPrefix + "state.json", jsonText(*mState, 2) + "\n");
    if (step) step = addDump(archive);
    if (step) step = addProperties(archive);
    return step ? addEvents(archive) : step;
}

Result<void> Bugreport::addDump(Archive& archive) {
    const auto answer = ask(mRoot, DumpRequest(), mPatience);
    if (answer) return archive.add(mPrefix + "dump.txt", dumpText(*answer));
    mMissing.push_back("dump: " + answer.error().message());
    return {};
}

Result<void> Bugreport::addProperties(Archive& archive) {
    const auto answer = ask(mRoot, PropsRequest(), mPatience);
    if (answer) return archive.add(mPrefix + "properties.json", jsonText(*answer, 2) + "\n");
    mMissing.push_back("the list of properties: " + answer.error().message());
    return {};
}

Result<void> Bugreport::addEvents(Archive& archive) {
    std::string lines;
    const auto whole = askForEvents(mRoot, EventsRequest(), [&](const TimelineEvent& event) {
        lines += jsonText(event, -1) + "\n";
    });
    if (!whole) mMissing.push_back("events: " + whole.error().message());
    return archive.add(mPrefix + "events.ndjson", lines);
}

Result<void> Bugreport::addTree(Archive& archive, const std::string& directory,
                                const std::string& name) {
    std::error_code failure;
    std::vector<fs::directory_entry> entries;
    for (fs::directory_iterator it(directory, failure), end; !failure && it != end;
         it.increment(failure)) {
        entries.push_back(*it);
    }
    if (failure) mMissing.push_back(name + ": " + failure.message());
    std::sort(entries.begin(), entries.end());
    for (const fs::directory_entry& entry : entries) {
        const std::string inside = name + "/" + entry.path().filename().string();
        Result<void> added;
        if (entry.is_symlink(failure)) {
            added = archive.addLink(mPrefix + inside, fs::read_symlink(entry.path(), failure));
        } else if (entry.is_directory(failure)) {
            added = addTree(archive, entry.path(), inside);
        } else {
            added = addFile(archive, entry.path(), inside);
        }
        if (!added) return added;
    }
    return {};
}

Result<void> Bugreport::addFile(Archive& archive, const std::string& file,
                                const std::string& name) {
    std::string content;
    if (android::base::ReadFileToString(file, &content))
        return archive.add(mPrefix + name, content);
    mMissing.push_back(name + ": '" + file + "' cannot be read");
    return {};
}

std::string Bugreport::reportText() const {
    std::string text = "The simulated device in " + mRoot + ", collected at " + now() + ".\n";
    if (mState) text += "Its description is in " + mState->directory + ".\n";
    text += mMissing.empty() ? "Nothing is missing.\n" : "Missing:\n";
    for (const std::string& line : mMissing) text += "  " + line + "\n";
    return text;
}

}  // namespace orvo::simulator
