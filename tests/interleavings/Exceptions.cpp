// SPDX-License-Identifier: Apache-2.0
// The list, and what is in it.

#include "tests/interleavings/Exceptions.h"

#include <algorithm>
#include <sstream>

namespace orvo::interleavings {

const std::vector<KnownException>& knownExceptions() {
    static const std::vector<KnownException> all = {
            {"The process ends in the middle",
             "A listing that meets a dead provider, or a look-up of an unknown camera, ends the "
             "process while something else is half done.",
             "An id property that still lists a camera of which the framework was never told, or "
             "that it was told is gone; the property outlives the process.",
             "A transport failure of a listing, and a device name that does not parse, end the "
             "process whatever else runs in it.",
             {"!*;*;list|tags|interface", "!list|tags|interface;*;*"}},
            {"Told in another order",
             "Two changes of one camera are recorded in one order, and told to the framework in "
             "the "
             "other.",
             "The table and the id property say that a camera is present, and the last word that "
             "the framework had is that it is absent, or the other way round. It stays so until "
             "the camera's next report.",
             "The framework is told after the lock is released.",
             {"report|torch|death;tell the framework;report|torch|death"}},
            {"Told to the callback that was replaced",
             "setCallback comes between the choice of the callback and its notification, or in the "
             "middle of a withdrawal.",
             "A callback hears of one more change after setCallback for another one, or for null, "
             "has returned; of a withdrawal one callback hears the first half, another the rest.",
             "The callback is read without a lock.",
             {"report|torch|death;tell the framework|after unlock;setCallback"}},
            {"Told before setCallback has returned",
             "A change is told to the new callback while its setCallback still registers with the "
             "providers.",
             "A framework that takes a callback into use only after setCallback has returned "
             "refuses the report, and nobody repeats it.",
             "The callback is stored first, before any provider is registered with.",
             {"setCallback;return from setCallback;report|torch|death"}},
            {"Two registrations at once",
             "Two calls of setCallback store their callbacks in one order and return in the other.",
             "The callback in use is not that of the call that returned last.",
             "The callback is stored without a lock, and before the providers are called.",
             {"setCallback;register|after register|return from setCallback;setCallback"}},
            {"A registration meets a death",
             "A provider dies, or comes back, after setCallback has looked its shim up.",
             "setCallback answers INTERNAL_ERROR, with \"Failed to set callback\", although the "
             "callback is in use and the provider soon is again; providers behind it in the set "
             "are not registered by this call.",
             "A transport failure ends the registration at once, and the stored callback stays.",
             {"setCallback;register|after register;death|reconnection"}},
            {"Dead before it is linked, at the start",
             "A provider dies after an instance that is being loaded has looked it up, and before "
             "it has linked to its death.",
             "\"Could not link to death\", and this instance goes without the provider until the "
             "process ends, although the provider soon runs again.",
             "Only a service that is linked reports its death, and what failed at the start is "
             "not tried again.",
             {"load legacy/0;after look up|link to the death of|make a shim;death"}},
            {"Between two shims",
             "The shim library has dropped the old shim, and the descriptor does not have the new "
             "one yet.",
             "One listing without that provider's cameras, one registration that skips it, one "
             "camera or torch question answered with INTERNAL_ERROR, although the provider has "
             "been running again before and is so after.",
             "The shim is held weakly, and replaced without a lock after the factory has returned.",
             {"reconnection;after make a shim;setCallback|list|torch support|interface"}},
            {"Dead, and still there",
             "A provider is dead, and its cameras are not withdrawn yet.",
             "A camera that is listed as active answers with a transport failure; vendor tags or a "
             "listing end the process, which they would not have done a moment later; reports of "
             "the dead provider are still recorded and told.",
             "The service is dropped first and the cameras are withdrawn afterwards, without a "
             "lock around both.",
             {"death;after die|log|unlink from the death of|after unlink from the death of|lock;"
              "report|torch|setCallback|list|tags|torch support|interface|death"}},
            {"Asked before a death, answered after it",
             "A provider or its shim is looked up, and dies or is replaced before it is called.",
             "The answer of a provider that is not there any more: a transport failure, "
             "INTERNAL_ERROR, or the end of the process.",
             "References are taken for the length of one call only, without a lock.",
             {"list|tags|torch support|interface;ask for ids|ask for tags|ask for torch support|"
              "ask for the interface|log;death|reconnection"}},
            {"Dead before it is linked",
             "The provider that came back dies again before the reconnection has linked to its "
             "death.",
             "\"Could not link to death\", and one attempt is lost; this death is not reported.",
             "Only a service that is linked reports its death.",
             {"reconnection;after look up|link to the death of;death"}},
            {"A reconnection meets a loading",
             "Another instance with the provider is loaded while the provider is reconnected.",
             "Attempts are lost, as the shim of one takes the other's away, and links add up.",
             "The shim library keeps the newest shim of each provider, and no thread waits for "
             "another one.",
             {"reconnection;make a shim|after make a shim|register;load legacy/0"}},
            {"Two reconnections of one provider",
             "The provider that came back dies again while its reconnection has steps left, and a "
             "second thread reconnects the same descriptor.",
             "Attempts are lost, as each thread's shim takes the other's away; \"Successfully "
             "reinitialized\" twice, or one of them gives up although the provider runs; links "
             "that add up, so "
             "that its next death is reported several times. If the shim library destroys a shim "
             "as "
             "soon as there is a newer one, the slower thread takes a weak reference of freed "
             "memory.",
             "Every death starts a thread, no thread waits for another one, an attempt that fails "
             "after it has linked stays linked, and the shim factory returns a bare pointer.",
             {"reconnection;make a shim|after make a shim|register;death|reconnection",
              "death;*;reconnection"}},
    };
    return all;
}

namespace {

bool isOneOf(const std::string& texts, const std::string& text) {
    if (texts == "*") return true;
    std::istringstream stream(texts);
    for (std::string one; std::getline(stream, one, '|');) {
        if (one == text) return true;
    }
    return false;
}

bool matches(std::string pattern, const Interruption& interruption, bool ends, bool anyStep) {
    const bool onlyIfEnds = pattern[0] == '!';
    if (onlyIfEnds && !ends) return false;
    std::istringstream stream(pattern.substr(onlyIfEnds ? 1 : 0));
    std::string victims;
    std::string steps;
    std::string intruders;
    std::getline(stream, victims, ';');
    std::getline(stream, steps, ';');
    std::getline(stream, intruders, ';');
    const auto& all = interruption.intruders;
    return isOneOf(victims, interruption.victim) &&
           (anyStep || isOneOf(steps, interruption.step)) &&
           std::any_of(all.begin(), all.end(),
                       [&](const std::string& one) { return isOneOf(intruders, one); });
}

// Null when it is not known. What takes several interruptions is made of known ones; between which
// steps exactly each of them falls depends on the others, and does not count.
const KnownException* find(const Interruption& interruption, bool ends, bool anyStep) {
    for (const KnownException& known : knownExceptions()) {
        for (const std::string& pattern : known.patterns) {
            if (matches(pattern, interruption, ends, anyStep)) return &known;
        }
    }
    return nullptr;
}

// The steps of one thread at a stretch on a line, without what everybody does all the time.
std::string shortStory(const Scenario& scenario, const Run& run) {
    std::string text;
    size_t line = 0;
    for (size_t i = 0; i < run.steps.size();) {
        const int thread = run.steps[i].thread;
        std::string steps;
        for (; i < run.steps.size() && run.steps[i].thread == thread; ++i) {
            const Step& step = run.steps[i];
            if (step.kind == "go on" || step.kind == "begin" || step.kind == "log") continue;
            if (!steps.empty()) steps += "; ";
            steps += step.kind;
            if (!step.detail.empty()) steps += " " + step.detail;
        }
        if (steps.empty()) continue;
        const Operation& operation = scenario.operations[thread % kMostOperations];
        const std::string who =
                thread < kMostOperations
                        ? scenario.words(operation)
                        : "the reconnection of " + scenario.provider(operation.provider);
        text += std::to_string(++line) + ". " + who + ": *" + steps + "*\n";
    }
    return text;
}

}  // namespace

void Findings::add(const Scenario& scenario, const Exploration& exploration) {
    ++scenarios;
    if (!exploration.all) ++incomplete[exploration.interruptions];
    orders += exploration.orders;
    deepest = std::max(deepest, exploration.deepest);
    seconds += exploration.seconds;
    const std::string again = "\nsee it again: interleavings replay \"" + scenario.text() + "\" ";
    for (const Run& run : exploration.failures) {
        std::string text;
        for (const std::string& finding : run.findings) text += finding + "\n";
        broken.push_back(text + run.story() + again + run.order());
    }
    for (const auto& [outcome, exception] : exploration.exceptions) {
        const bool ends = outcome.rfind("the process ends", 0) == 0;
        const size_t count = exception.interruptions.size();
        for (const Interruption& interruption : exception.interruptions) {
            const KnownException* const known = find(interruption, ends, count > 1);
            if (known == nullptr) {
                broken.push_back("an exception that is not in the list: " + interruption.victim +
                                 ", before \"" + interruption.step + "\", interrupted by " +
                                 *interruption.intruders.begin() + "\n" + exception.run.story() +
                                 outcome + again + exception.run.order());
                continue;
            }
            const auto earlier = seen.find(known->title);
            const auto size = [](const Exception& one) {
                return std::make_pair(one.interruptions.size(), one.run.steps.size());
            };
            if (earlier == seen.end() || size(exception) < size(earlier->second)) {
                seen[known->title] = exception;
            }
        }
    }
}

std::string chapter(const Findings& findings) {
    std::string text;
    for (const KnownException& known : knownExceptions()) {
        const auto example = findings.seen.find(known.title);
        if (example == findings.seen.end()) continue;
        const Exception& shortest = example->second;
        text += "### " + known.title + "\n\n" + known.what + " " + known.rule +
                "\n\nSeen: " + known.seen + "\n\nShortest, `" + shortest.scenario +
                "` in the order `" + shortest.run.order() + "`:\n\n" +
                shortStory(*Scenario::fromText(shortest.scenario), shortest.run) + "\n";
    }
    return text;
}

}  // namespace orvo::interleavings
