// SPDX-License-Identifier: Apache-2.0
// ProcessRequests: the requests that do something to the processes of a device, or to what they
// hold.

#include <signal.h>
#include <string.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <set>
#include <vector>

#include <android-base/parseint.h>
#include <android-base/strings.h>
#include <nlohmann/json.hpp>

#include "simulator/camerasim/inside/Requests.h"

namespace orvo::simulator {

using android::sp;
using android::base::Error;
using android::base::Result;
using android::base::unexpected;
using nlohmann::json;

namespace {

/** How long a program may take to end; less than the limit of a request. */
constexpr std::chrono::seconds kEndPatience{8};

/** Whether a program that does not care about a signal is ended by it. */
bool endsPrograms(int signal) {
    static const std::set<int> kHarmless = {SIGCHLD, SIGCONT, SIGSTOP, SIGTSTP,
                                            SIGTTIN, SIGTTOU, SIGURG,  SIGWINCH};
    return kHarmless.count(signal) == 0;
}

/** "KILL", "SIGKILL" or "9"; nothing if there is no such signal. */
std::optional<int> signalOf(const std::string& word) {
    int number = 0;
    if (android::base::ParseInt(word, &number, 1, NSIG - 1)) return number;
    const std::string name = word.rfind("SIG", 0) == 0 ? word.substr(3) : word;
    for (int signal = 1; signal < NSIG; signal++) {
        const char* known = sigabbrev_np(signal);
        if (known != nullptr && name == known) return signal;
    }
    return std::nullopt;
}

/** What comes after the second slash of "device@3.2/external/100". */
std::string idOf(const std::string& name) {
    const std::vector<std::string> parts = android::base::Split(name, "/");
    return parts.size() < 3 ? "" : parts[2];
}

json didOf(const std::string& provider, const std::string& what) {
    return {{"provider", provider}, {"what", what}};
}

}  // namespace

Requests::Answer Requests::end(const std::string& who, int signal, const std::string& what) {
    const auto program = mDevice.programOf(who);
    if (!program) return unexpected(program.error());
    Supervisor& supervisor = mDevice.supervisor();
    if (!supervisor.isRunning(*program)) return Error() << who << " is not running";
    if (supervisor.isHung(*program) && signal != SIGKILL && signal != SIGCONT) {
        return Error() << who << " is hung and hears no signal but KILL; camerasim start " << who
                       << " lets it go on";
    }
    // The very process that runs now: the service is started again as soon as it has ended.
    const int ends = supervisor.historyOf(*program).ends;
    note(who, what);
    if (!supervisor.signal(*program, signal)) return Error() << who << " is not running any more";
    if (endsPrograms(signal)) (void)supervisor.awaitMoreEnds(*program, ends, kEndPatience);
    const Supervisor::History history = supervisor.historyOf(*program);
    return didOf(who, history.ends > ends ? history.lastEnd : "goes on");
}

Requests::Answer Requests::kill(const Request& request) {
    const std::string word = request.text("signal");
    const auto signal = signalOf(word);
    if (!signal) return Error() << "there is no signal '" << word << "'; say KILL, TERM, SEGV or 9";
    return end(request.text("provider"), *signal, "kill " + word);
}

Requests::Answer Requests::exit(const Request& request) {
    return end(request.text("provider"), SIGTERM, "exit");
}

Requests::Answer Requests::hang(const Request& request) {
    const std::string who = request.text("provider");
    const auto program = mDevice.programOf(who);
    if (!program) return unexpected(program.error());
    Supervisor& supervisor = mDevice.supervisor();
    const auto pid = supervisor.pidOf(*program);
    if (!pid) return Error() << who << " is not running";
    if (supervisor.isHung(*program)) return Error() << who << " is hung already";
    note(who, "hang");
    if (!supervisor.signal(*program, SIGSTOP)) return Error() << who << " is not running any more";
    // Told when it has stopped, or that it never will because it has ended.
    siginfo_t info;
    TEMP_FAILURE_RETRY(waitid(P_PID, *pid, &info, WSTOPPED));
    return didOf(who, "hung");
}

Requests::Answer Requests::resume(const Request& request) {
    const std::string who = request.text("provider");
    const auto program = mDevice.programOf(who);
    if (!program) return unexpected(program.error());
    if (!mDevice.supervisor().isHung(*program)) return Error() << who << " is not hung";
    note(who, "resume");
    mDevice.supervisor().signal(*program, SIGCONT);
    return didOf(who, "goes on");
}

Requests::Answer Requests::start(const Request& request) {
    const std::string who = request.text("provider");
    const auto program = mDevice.programOf(who);
    if (!program) return unexpected(program.error());
    if (mDevice.supervisor().isHung(*program)) return resume(request);
    if (mDevice.supervisor().isRunning(*program)) return Error() << who << " runs already";
    if (who == Headset::kServiceWord) {
        return Error() << "the service is started again by itself in a moment";
    }
    note(who, "start");
    const auto started = mDevice.startOnMainThread(who);
    if (!started) return unexpected(started.error());
    return didOf(who, "started");
}

Result<std::string> Requests::deviceOf(const std::string& provider,
                                       const sp<ProviderConnections::Control>& control,
                                       const std::string& word) const {
    std::vector<std::string> all, found;
    const auto asked = control->getState([&](const auto& state) {
        for (const auto& device : state.devices) all.push_back(device.cameraDeviceName);
    });
    if (!asked.isOk()) return Error() << provider << " has just ended";
    for (const std::string& name : all) {
        if (name == word) return name;
        if (idOf(name) == word) found.push_back(name);
    }
    if (found.size() == 1) return found[0];
    if (found.empty()) {
        return Error() << provider << " has no camera '" << word << "'; it has "
                       << android::base::Join(all, ", ");
    }
    return Error() << "'" << word << "' may be " << android::base::Join(found, " or ")
                   << "; say which";
}

Requests::Answer Requests::plug(const Request& request, bool present) {
    using Status = android::hardware::camera::common::V1_0::CameraDeviceStatus;
    const std::string provider = request.text("provider");
    if (provider == Headset::kServiceWord) {
        return Error() << "nothing is plugged into the service; name a provider";
    }
    const auto program = mDevice.programOf(provider);
    if (!program) return unexpected(program.error());
    if (!mDevice.supervisor().isRunning(*program)) return Error() << provider << " is not running";
    if (mDevice.supervisor().isHung(*program)) {
        return Error() << provider << " is hung; camerasim start " << provider << " lets it go on";
    }
    const auto control = mDevice.providers().controlOf(provider);
    if (control == nullptr) return Error() << provider << " is not ready yet; try again";
    const auto device = deviceOf(provider, control, request.text("device"));
    if (!device) return unexpected(device.error());

    const Status status = present ? Status::PRESENT : Status::NOT_PRESENT;
    note(provider, (present ? "plug " : "unplug ") + *device);
    std::string refusal;
    const auto set = control->setDeviceStatus(
            *device, status, [&](auto, const auto& message) { refusal = message; });
    if (!set.isOk()) return Error() << provider << " has just ended";
    if (!refusal.empty()) return Error() << refusal;
    mDevice.settle();
    return json{{"device", *device}, {"status", toString(status)}};
}

}  // namespace orvo::simulator
