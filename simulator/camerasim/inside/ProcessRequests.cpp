// SPDX-License-Identifier: Apache-2.0
// ProcessRequests: the requests that do something to the processes of a headset, or to what they
// hold.

#include <signal.h>
#include <string.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <optional>
#include <set>
#include <vector>

#include <android-base/parseint.h>
#include <android-base/strings.h>

#include "simulator/camerasim/inside/Requests.h"
#include "simulator/control/Complaint.h"
#include "simulator/description/Suggestions.h"

namespace orvo::simulator {

using android::sp;
using android::base::Result;
using android::base::unexpected;

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

/** Those of `all` that are not among the others; both are sorted. */
std::vector<std::string> without(const std::vector<std::string>& all,
                                 const std::vector<std::string>& others) {
    std::vector<std::string> left;
    std::set_difference(all.begin(), all.end(), others.begin(), others.end(),
                        std::back_inserter(left));
    return left;
}

/** The full name of a provider's camera, which may be given by its id alone. */
Result<std::string> cameraOf(const std::string& provider,
                             const sp<ProviderConnections::Control>& control,
                             const std::string& word) {
    std::vector<std::string> all, found;
    const auto asked = control->getState([&](const auto& state) {
        for (const auto& device : state.devices) all.push_back(device.cameraDeviceName);
    });
    if (!asked.isOk()) return didNotHappen(provider + " has just ended");
    for (const std::string& name : all) {
        if (name == word) return name;
        if (idOf(name) == word) found.push_back(name);
    }
    if (found.size() == 1) return found[0];
    if (found.empty()) {
        return badUse(provider + " has no camera '" + word + "'; it has " + someOf(all, word));
    }
    return badUse("'" + word + "' may be " + android::base::Join(found, " or ") + "; say which");
}

}  // namespace

Requests::Result<std::string> Requests::runningProgram(const std::string& name) const {
    auto program = mHeadset.programOf(name);
    if (program && !mHeadset.supervisor().isRunning(*program)) {
        return didNotHappen(name + " is not running");
    }
    return program;
}

ProcessReply Requests::processNow(const std::string& name, const std::string& what) const {
    const auto program = mHeadset.programOf(name);
    return {name, what, program ? mHeadset.supervisor().pidOf(*program).value_or(0) : 0, false};
}

Requests::Result<ProcessReply> Requests::perform(const KillRequest& request) {
    const std::string& who = request.provider;
    const auto signal = signalOf(request.signal);
    if (!signal) {
        return badUse("there is no signal '" + request.signal + "'; say KILL, TERM, SEGV or 9");
    }
    const auto program = runningProgram(who);
    if (!program) return unexpected(program.error());
    Supervisor& supervisor = mHeadset.supervisor();
    if (supervisor.isHung(*program) && *signal != SIGKILL && *signal != SIGCONT) {
        return didNotHappen(who + " is hung and hears no signal but KILL; camerasim start " + who +
                            " lets it go on");
    }
    // The very process that runs now: the service is started again as soon as it has ended.
    const int ends = supervisor.historyOf(*program).ends;
    note(who, "kill " + request.signal);
    if (!supervisor.signal(*program, *signal)) {
        return didNotHappen(who + " is not running any more");
    }
    if (endsPrograms(*signal)) (void)supervisor.awaitMoreEnds(*program, ends, kEndPatience);
    const Supervisor::History history = supervisor.historyOf(*program);
    if (history.ends == ends) return processNow(who, "goes on");
    return ProcessReply{who, history.lastEnd, 0, true};
}

Requests::Result<ProcessReply> Requests::perform(const HangRequest& request) {
    const std::string& who = request.provider;
    const auto program = runningProgram(who);
    if (!program) return unexpected(program.error());
    Supervisor& supervisor = mHeadset.supervisor();
    if (supervisor.isHung(*program)) return didNotHappen(who + " is hung already");
    note(who, "hang");
    const auto pid = supervisor.pidOf(*program);
    if (!pid || !supervisor.signal(*program, SIGSTOP)) {
        return didNotHappen(who + " is not running any more");
    }
    // Told when it has stopped, or that it never will because it has ended; others who ask for the
    // same are told, too.
    siginfo_t info;
    TEMP_FAILURE_RETRY(waitid(P_PID, *pid, &info, WSTOPPED | WNOWAIT));
    return processNow(who, "hangs");
}

Requests::Result<ProcessReply> Requests::perform(const StartRequest& request) {
    const std::string& who = request.provider;
    const auto program = mHeadset.programOf(who);
    if (!program) return unexpected(program.error());
    if (mHeadset.supervisor().isHung(*program)) {
        note(who, "resume");
        mHeadset.supervisor().signal(*program, SIGCONT);
        return processNow(who, "runs");
    }
    if (mHeadset.supervisor().isRunning(*program)) return didNotHappen(who + " runs already");
    if (who == Headset::kServiceWord) {
        return didNotHappen("the service is started again by itself in a moment");
    }
    note(who, "start");
    const auto started = mHeadset.startOnMainThread(who);
    if (!started) return unexpected(started.error());
    return processNow(who, "runs");
}

Requests::Result<PlugReply> Requests::perform(const PlugRequest& request) {
    using Status = android::hardware::camera::common::V1_0::CameraDeviceStatus;
    const std::string& provider = request.provider;
    if (provider == Headset::kServiceWord) {
        return badUse("nothing is plugged into the service; name a provider");
    }
    const auto program = runningProgram(provider);
    if (!program) return unexpected(program.error());
    if (mHeadset.supervisor().isHung(*program)) {
        return didNotHappen(provider + " is hung; camerasim start " + provider + " lets it go on");
    }
    const auto control = mHeadset.providers().controlOf(provider);
    if (control == nullptr) return didNotHappen(provider + " is not ready yet; try again");
    const auto camera = cameraOf(provider, control, request.device);
    if (!camera) return unexpected(camera.error());

    const Status status = request.present ? Status::PRESENT : Status::NOT_PRESENT;
    note(provider, (request.present ? "plug " : "unplug ") + *camera);
    const std::vector<std::string> heldBefore = mHeadset.cameras().heldOpen();
    std::string refusal;
    const auto set = control->setDeviceStatus(
            *camera, status, [&](auto, const auto& message) { refusal = message; });
    if (!set.isOk()) return didNotHappen(provider + " has just ended");
    if (!refusal.empty()) return didNotHappen(refusal);
    mHeadset.settle();
    return PlugReply{*camera, toString(status), without(heldBefore, mHeadset.cameras().heldOpen())};
}

}  // namespace orvo::simulator
