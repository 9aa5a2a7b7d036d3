// SPDX-License-Identifier: Apache-2.0
// Tour: what to do at each step, what to expect, and how to say it.

#include "simulator/camerasim/tour/Tour.h"

#include <chrono>
#include <cstdio>
#include <utility>

#include <android-base/strings.h>

#include "simulator/camerasim/Looks.h"
#include "simulator/description/MetadataBuffer.h"

namespace orvo::simulator {

namespace {

std::string quoted(const std::string& text) {
    return "\"" + text + "\"";
}

std::string linesOf(const std::vector<std::string>& lines) {
    return lines.empty() ? "nothing" : android::base::Join(lines, "\n");
}

/** One line for a section and its tags. */
std::string sectionText(const TagSection& section) {
    if (section.tags.empty()) return "[" + section.name + "]";
    std::vector<std::string> tags;
    for (const VendorTag& tag : section.tags) {
        tags.push_back(" " + hexadecimal(tag.id) + " " + tag.name + " " + tag.type);
    }
    return "  " + section.name + ":" + android::base::Join(tags, ",");
}

/** The same of a description. */
std::string sectionText(const android::hardware::camera::common::V1_0::VendorTagSection& section) {
    TagSection same{section.sectionName, {}};
    for (const auto& tag : section.tags) {
        same.tags.push_back({tag.tagId, tag.tagName, toString(tag.tagType)});
    }
    return sectionText(same);
}

/** What a camera tells of itself, in the words in which its description is compared with it. */
std::string factsText(const OpenReply& facts) {
    std::vector<std::string> entries;
    for (const Characteristic& entry : facts.characteristics) {
        entries.push_back(" " + hexadecimal(entry.tag) + " = " + entry.value);
    }
    return "resource cost " + std::to_string(facts.resourceCost) + ", conflicts with " +
           listed(facts.conflictingDevices) + "\n" + std::to_string(facts.characteristicsBytes) +
           " bytes of characteristics:" + android::base::Join(entries, ",");
}

OpenReply described(const CameraDescription& camera) {
    OpenReply facts{};
    facts.resourceCost = camera.resourceCost;
    facts.conflictingDevices = camera.conflicts;
    facts.characteristicsBytes = static_cast<int64_t>(camera.characteristics.size());
    const auto entries =
            unpackMetadata(camera.characteristics.data(), camera.characteristics.size());
    for (const MetadataEntry& entry : *entries) {
        facts.characteristics.push_back({entry.tag, toString(entry.type), entry.toText()});
    }
    return facts;
}

}  // namespace

Tour::Tour(TourPlan plan, const std::string& root, Narrator& narrator,
           std::chrono::milliseconds pause)
    : mPlan(std::move(plan)), mNarrator(narrator), mWitness(root, narrator), mPause(pause) {}

bool Tour::boot() {
    const std::string expected = "every program ready; " + listed(mPlan.served) + " served";
    // An answer comes when it has booted, or has ended.
    const auto state = mWitness.ask(StateRequest(), kForEver);
    if (!state) return false;
    std::vector<std::string> missing;
    for (const ProviderState& provider : state->providers) {
        if (provider.inProcess && !provider.running) {
            missing.push_back(provider.instance + " is not served: " + provider.problem);
        } else if (provider.described && !provider.running) {
            missing.push_back(provider.instance + " does not run: " + provider.problem);
        } else if (provider.described) {
            mNarrator.detail("  " + provider.instance + ", process " +
                             std::to_string(provider.pid));
        }
    }
    mNarrator.detail("  camera_provider_service, process " + std::to_string(state->service.pid));
    return mWitness.check(
            expected,
            missing.empty() ? "every program ready; each instance found" : linesOf(missing),
            missing.empty());
}

bool Tour::hearOfCameras() {
    const auto told = mWitness.await(
            [this](const TimelineEvent& event) {
                return event.kind == "service" && event.who == mPlan.aggregator;
            },
            1);
    const bool taken = told && told->what == "serves the framework";
    bool good = mWitness.check("setCallback answers OK",
                               taken  ? "OK"
                               : told ? told->what
                                      : "no answer",
                               taken);
    for (const TourCamera& camera : mPlan.announced) {
        mNarrator.detail("  " + camera.described.name + " of " + camera.provider);
        good = good && mWitness.hear(camera.frameworkName, "PRESENT", 1);
    }
    return good;
}

bool Tour::checkList(const std::string& service,
                     const std::vector<ProviderDescription>& described) {
    std::vector<std::string> expected;
    for (const ProviderDescription& provider : described) {
        for (const CameraDescription& camera : provider.cameras) {
            if (camera.builtIn()) expected.push_back(camera.name);
        }
    }
    const auto lists = mWitness.ask(ListRequest{service});
    return lists && mWitness.check("", "OK\n" + linesOf(expected),
                                   lists->at(0).status + "\n" + linesOf(lists->at(0).names));
}

bool Tour::listCameras() {
    return checkList(mPlan.aggregator, mPlan.behind);
}

bool Tour::askForTorch() {
    const auto lists = mWitness.ask(ListRequest{mPlan.aggregator});
    const auto words = [](bool supported) { return supported ? "supported" : "not supported"; };
    const bool expected = !mPlan.behind.empty() && mPlan.behind[0].torchSupported;
    return lists &&
           mWitness.check("", std::string("OK, ") + words(expected),
                          lists->at(0).torchStatus + ", " + words(lists->at(0).torchSupported));
}

bool Tour::readVendorTags() {
    std::vector<std::string> expected, seen;
    for (const ProviderDescription& provider : mPlan.behind) {
        expected.push_back("[" + provider.instance + "]");
        for (const auto& section : provider.vendorTags) expected.push_back(sectionText(section));
    }
    const auto tags = mWitness.ask(TagsRequest{mPlan.aggregator});
    if (!tags) return false;
    for (const TagSection& section : tags->at(0).sections) seen.push_back(sectionText(section));
    return mWitness.check("", "OK\n" + linesOf(expected),
                          tags->at(0).status + "\n" + linesOf(seen));
}

bool Tour::readCamera() {
    const auto facts = mWitness.ask(OpenRequest{mPlan.opened->frameworkName});
    return facts &&
           mWitness.check("", factsText(described(mPlan.opened->described)), factsText(*facts));
}

bool Tour::openCamera() {
    const std::string& camera = mPlan.opened->frameworkName;
    const bool lit = mPlan.hasTorch();
    int64_t from = mWitness.now();
    const auto opened = mWitness.ask(OpenRequest{camera, true});
    if (!opened ||
        !mWitness.check("open answers OK with a session", opened->status, opened->opened)) {
        return false;
    }
    if (lit && !mWitness.hear(camera, "NOT_AVAILABLE", from, "torch")) return false;
    from = mWitness.now();
    if (!mWitness.ask(CloseRequest{camera})) return false;
    return mWitness.check("close gets through", "it did", true) &&
           (!lit || mWitness.hear(camera, "AVAILABLE_OFF", from, "torch"));
}

bool Tour::checkIds(const TourCamera& camera, bool withPlugged, const std::string& when) {
    std::vector<std::string> ids;
    for (const TourCamera& other : mPlan.announced) {
        if (other.idProperty == camera.idProperty) ids.push_back(other.id);
    }
    if (withPlugged) ids.push_back(mPlan.plugged->id);
    return mWitness.check(when + " " + camera.idProperty + " is ",
                          quoted(android::base::Join(ids, ", ")),
                          quoted(mWitness.property(camera.idProperty)));
}

bool Tour::plugIn() {
    const TourCamera& camera = *mPlan.plugged;
    if (!checkIds(camera, false, "before,")) return false;
    const int64_t from = mWitness.now();
    if (!mWitness.ask(PlugRequest{camera.provider, camera.described.name, true}) ||
        !mWitness.hear(camera.frameworkName, "PRESENT", from) ||
        !checkIds(camera, true, "after,")) {
        return false;
    }
    const auto facts = mWitness.ask(OpenRequest{camera.frameworkName});
    return facts && mWitness.check("it answers: ",
                                   "resource cost " + std::to_string(camera.described.resourceCost),
                                   "resource cost " + std::to_string(facts->resourceCost));
}

bool Tour::pullOut() {
    const TourCamera& camera = *mPlan.plugged;
    const int64_t from = mWitness.now();
    return mWitness.ask(PlugRequest{camera.provider, camera.described.name, false}) &&
           mWitness.hear(camera.frameworkName, "NOT_PRESENT", from) &&
           checkIds(camera, false, "after,");
}

bool Tour::switchTorch() {
    const std::string& camera = mPlan.opened->frameworkName;
    for (const bool on : {true, false}) {
        const int64_t from = mWitness.now();
        const auto reply = mWitness.ask(TorchRequest{camera, on});
        const std::string request =
                std::string("setTorchMode(") + (on ? "ON" : "OFF") + ") answers ";
        if (!reply || !mWitness.check(request, "OK", reply->status) ||
            !mWitness.hear(camera, on ? "AVAILABLE_ON" : "AVAILABLE_OFF", from, "torch")) {
            return false;
        }
    }
    return true;
}

bool Tour::askMrProvider() {
    return checkList(mPlan.mrProvider->instance, {*mPlan.mrProvider});
}

bool Tour::hearOfLostProvider(const std::string& status, int64_t from, const std::string& since) {
    for (const TourCamera& camera : mPlan.announced) {
        if (camera.provider != mPlan.opened->provider) continue;
        if (!mWitness.hear(camera.frameworkName, status, from)) return false;
    }
    char text[64];
    snprintf(text, sizeof(text), "  %s %.0f ms after the kill", since.c_str(),
             (mWitness.lastHeard() - mKilledAt) * 1000);
    mNarrator.detail(text);
    return true;
}

bool Tour::loseProvider() {
    const TourCamera& lost = *mPlan.opened;
    const int64_t from = mWitness.now();
    const auto killed = mWitness.ask(KillRequest{lost.provider});
    if (!killed || !mWitness.check(lost.provider + " ends", killed->what, killed->ended)) {
        return false;
    }
    const auto asked = mWitness.await(
            [](const TimelineEvent& event) { return event.kind == "command"; }, from);
    if (asked) mKilledAt = asked->seconds;
    if (!hearOfLostProvider("NOT_PRESENT", from, "withdrawn") ||
        !mWitness.check(lost.idProperty + " is ", quoted(""),
                        quoted(mWitness.property(lost.idProperty)))) {
        return false;
    }
    for (const TourCamera& camera : mPlan.announced) {
        if (camera.idProperty != lost.idProperty) return checkIds(camera, false, "still,");
    }
    return true;
}

bool Tour::regainProvider() {
    const TourCamera& camera = *mPlan.opened;
    const int64_t from = mWitness.now();
    if (!mWitness.ask(StartRequest{camera.provider}) ||
        !mWitness.check("the process is ready", "it is", true) ||
        !hearOfLostProvider("PRESENT", from, "back") || !checkIds(camera, false, "again,")) {
        return false;
    }
    const auto facts = mWitness.ask(OpenRequest{camera.frameworkName});
    return facts && mWitness.check(camera.frameworkName + " answers ", "OK", facts->status);
}

bool Tour::shutDown() {
    const auto stopped = mWitness.ask(StopRequest());
    return stopped &&
           mWitness.check("every program ends with status 0",
                          stopped->complaints.empty() ? "they did" : linesOf(stopped->complaints),
                          stopped->complaints.empty());
}

}  // namespace orvo::simulator
