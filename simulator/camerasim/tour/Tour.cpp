// SPDX-License-Identifier: Apache-2.0
// Tour: what happens at each step.

#include "simulator/camerasim/tour/Tour.h"

#include <signal.h>

#include <chrono>
#include <cstdio>
#include <thread>
#include <utility>
#include <vector>

#include <android-base/strings.h>
#include <cutils/properties.h>

namespace orvo::simulator {

using Device = StatusEvent::Device;
using Torch = StatusEvent::Torch;

namespace {

/** Far longer than any notification takes on a busy machine. */
constexpr std::chrono::seconds kPatience{10};

std::string quoted(const std::string& text) {
    return "\"" + text + "\"";
}

template <typename T>
std::string statusText(const Answer<T>& answer) {
    return answer.arrived() ? toString(answer.status) : "no answer: " + answer.failure;
}

std::string linesOf(const std::vector<std::string>& lines) {
    return lines.empty() ? "nothing" : android::base::Join(lines, "\n");
}

std::string propertyText(const std::string& name) {
    char value[PROPERTY_VALUE_MAX];
    property_get(name.c_str(), value, "");
    return value;
}

/** One line for a section and its tags. */
std::string sectionText(const FrameworkClient::VendorTagSection& section) {
    std::string text = section.sectionName;
    if (section.tags.size() == 0) return "[" + text + "]";
    for (size_t i = 0; i < section.tags.size(); i++) {
        char id[16];
        snprintf(id, sizeof(id), " 0x%08x ", section.tags[i].tagId);
        text += (i == 0 ? ":" : ",") + std::string(id) + std::string(section.tags[i].tagName) +
                " " + toString(section.tags[i].tagType);
    }
    return "  " + text;
}

/** What a camera tells of itself, in the words in which its description is compared with it. */
std::string factsText(uint32_t cost, const std::vector<std::string>& conflicts,
                      const std::vector<MetadataEntry>& entries, size_t bytes) {
    std::string text = "resource cost " + std::to_string(cost) + ", conflicts with " +
                       listed(conflicts) + "\n" + std::to_string(bytes) +
                       " bytes of characteristics:";
    for (const MetadataEntry& entry : entries) {
        char tag[16];
        snprintf(tag, sizeof(tag), " 0x%08x", entry.tag);
        text += (entry.tag == entries[0].tag ? "" : ",") + std::string(tag) + " = " +
                entry.toText();
    }
    return text;
}

}  // namespace

Tour::Tour(TourPlan plan, Programs& device, Narrator& narrator, std::chrono::seconds pause)
    : mPlan(std::move(plan)), mDevice(device), mNarrator(narrator), mPause(pause) {}

bool Tour::run() {
    const std::vector<bool (Tour::*)()> steps = {
            &Tour::boot,           &Tour::hearOfCameras, &Tour::listCameras,   &Tour::askForTorch,
            &Tour::readVendorTags, &Tour::readCamera,    &Tour::openCamera,    &Tour::plugIn,
            &Tour::pullOut,        &Tour::switchTorch,   &Tour::askMrProvider, &Tour::loseProvider,
            &Tour::regainProvider, &Tour::shutDown};
    for (const auto step : steps) {
        if ((this->*step)()) {
            std::this_thread::sleep_for(mPause);
            continue;
        }
        const int left = static_cast<int>(steps.size()) - mNarrator.steps();
        mNarrator.closing("Step " + std::to_string(mNarrator.steps()) + " of " +
                                  std::to_string(steps.size()) + " was not as expected" +
                                  (left > 0 ? "; the steps after it were not tried." : "."),
                          false);
        return false;
    }
    return true;
}

bool Tour::hear(const std::string& name, std::variant<Device, Torch> status, size_t mark) {
    const auto wanted = [&](const StatusEvent& event) { return event.is(name, status); };
    const bool heard = mFramework->log().waitFor(wanted, kPatience, mark).has_value();
    std::vector<std::string> others;
    if (!heard) {
        for (const StatusEvent& event : mFramework->log().events(mark)) {
            others.push_back(event.toText());
        }
    }
    const std::string text = StatusEvent{name, status}.toText();
    return mNarrator.check("the framework hears " + text,
                           heard ? text : "it heard " + listed(others), heard);
}

bool Tour::boot() {
    mNarrator.step("Boot", "The service manager, " + std::to_string(mPlan.behind.size()) +
                                   " provider processes, and the service that loads the library.");
    const auto booted = mDevice.boot();
    const std::string expected =
            "every program ready; " + listed(mDevice.description().serviceInstances) + " served";
    if (!booted) return mNarrator.check(expected, booted.error().message(), false);
    for (const std::string& program : mDevice.programs()) {
        const auto pid = mDevice.supervisor().pidOf(program);
        mNarrator.detail("  " + program + (pid ? ", process " + std::to_string(*pid) : ""));
    }
    return mNarrator.check(expected, "every program ready; each instance found", true);
}

bool Tour::hearOfCameras() {
    mNarrator.step("The framework registers with " + mPlan.aggregator,
                   "Each provider process reports its cameras; the library renames them.");
    auto client = FrameworkClient::connect(mPlan.aggregator);
    if (!client) {
        return mNarrator.check("a service " + mPlan.aggregator, client.error().message(), false);
    }
    mFramework = std::move(*client);
    const auto registered = mFramework->registerCallback();
    bool good = mNarrator.check("setCallback answers OK", statusText(registered), registered.ok());
    for (const TourCamera& camera : mPlan.announced) {
        mNarrator.detail("  " + camera.described.name + " of " + camera.provider);
        good = good && hear(camera.frameworkName, Device::PRESENT, 0);
    }
    return good;
}

bool Tour::listCameras() {
    mNarrator.step("The camera list",
                   "One list for all providers, in their own words: names are"
                   " translated in notifications only.");
    std::vector<std::string> expected;
    for (const ProviderDescription& provider : mPlan.behind) {
        for (const CameraDescription& camera : provider.cameras) {
            if (camera.builtIn()) expected.push_back(camera.name);
        }
    }
    const auto names = mFramework->cameraIdList();
    return mNarrator.check("OK\n" + linesOf(expected),
                           statusText(names) + "\n" + linesOf(names.value),
                           names.ok() && names.value == expected);
}

bool Tour::askForTorch() {
    const ProviderDescription& first = mPlan.behind.front();
    mNarrator.step("Torch support", "The first provider answers for all: " + first.instance + ".");
    const auto torch = mFramework->isTorchSupported();
    const auto words = [](bool supported) { return supported ? "supported" : "not supported"; };
    return mNarrator.check(std::string("OK, ") + words(first.torchSupported),
                           statusText(torch) + ", " + words(torch.value),
                           torch.ok() && torch.value == first.torchSupported);
}

bool Tour::readVendorTags() {
    mNarrator.step("Vendor tags",
                   "Every provider's sections, behind an empty section of the provider's name.");
    std::vector<std::string> expected, seen;
    for (const ProviderDescription& provider : mPlan.behind) {
        expected.push_back("[" + provider.instance + "]");
        for (const auto& section : provider.vendorTags) expected.push_back(sectionText(section));
    }
    const auto tags = mFramework->vendorTags();
    for (const auto& section : tags.value) seen.push_back(sectionText(section));
    return mNarrator.check("OK\n" + linesOf(expected), statusText(tags) + "\n" + linesOf(seen),
                           tags.ok() && seen == expected);
}

bool Tour::readCamera() {
    const TourCamera& camera = mPlan.lit;
    mNarrator.step("A camera's device interface",
                   camera.frameworkName + " is " + camera.described.name + " of " +
                           camera.provider + "; the library finds the way back.");
    const auto& described = camera.described;
    const auto entries =
            unpackMetadata(described.characteristics.data(), described.characteristics.size());
    const std::string expected = factsText(described.resourceCost, described.conflicts, *entries,
                                           described.characteristics.size());
    const auto facts = mFramework->readCamera(camera.frameworkName);
    const std::string seen =
            facts.ok() ? factsText(facts.value.resourceCost, facts.value.conflictingDevices,
                                   facts.value.characteristics, facts.value.characteristicsBytes)
                       : statusText(facts);
    return mNarrator.check(expected, seen, facts.ok() && seen == expected);
}

bool Tour::openCamera() {
    const TourCamera& camera = mPlan.lit;
    mNarrator.step("The camera is opened and closed",
                   "While a camera is open its flash belongs to the session.");
    const size_t mark = mFramework->log().size();
    const auto session = mFramework->openSession(camera.frameworkName);
    bool good =
            mNarrator.check("open answers OK with a session", statusText(session), session.ok());
    good = good && hear(camera.frameworkName, Torch::NOT_AVAILABLE, mark);
    if (!session.ok()) return false;
    const bool closed = session.value->close().isOk();
    good = mNarrator.check("close gets through", closed ? "it did" : "it did not", closed) && good;
    return good && hear(camera.frameworkName, Torch::AVAILABLE_OFF, mark);
}

std::string Tour::expectedIds(const TourCamera& camera, bool withPlugged) const {
    std::vector<std::string> ids;
    for (const TourCamera& other : mPlan.announced) {
        if (other.idProperty == camera.idProperty) ids.push_back(other.id);
    }
    if (withPlugged) ids.push_back(mPlan.plugged.id);
    return android::base::Join(ids, ", ");
}

bool Tour::checkIds(const TourCamera& camera, bool withPlugged, const std::string& when) {
    const std::string expected = expectedIds(camera, withPlugged);
    const std::string seen = propertyText(camera.idProperty);
    return mNarrator.check(when + " " + camera.idProperty + " is " + quoted(expected), quoted(seen),
                           seen == expected);
}

bool Tour::setDeviceStatus(const TourCamera& camera, Device status) {
    const auto control = mDevice.control(camera.provider);
    std::string refusal = "the provider process has no control";
    if (control != nullptr) {
        const auto result =
                control->setDeviceStatus(camera.described.name, status,
                                         [&](auto, const auto& message) { refusal = message; });
        if (!result.isOk()) refusal = result.description();
    }
    if (refusal.empty()) return true;
    return mNarrator.check(camera.provider + " takes the request", refusal, false);
}

bool Tour::plugIn() {
    const TourCamera& camera = mPlan.plugged;
    mNarrator.step("A camera is plugged in", camera.described.name + " of " + camera.provider +
                                                     " comes; its id is entered in a property.");
    bool good = checkIds(camera, false, "before,");
    const size_t mark = mFramework->log().size();
    good = good && setDeviceStatus(camera, Device::PRESENT) &&
           hear(camera.frameworkName, Device::PRESENT, mark) && checkIds(camera, true, "after,");
    if (!good) return false;
    const auto facts = mFramework->readCamera(camera.frameworkName);
    return mNarrator.check(
            "it answers: resource cost " + std::to_string(camera.described.resourceCost),
            facts.ok() ? "resource cost " + std::to_string(facts.value.resourceCost)
                       : statusText(facts),
            facts.ok() && facts.value.resourceCost == camera.described.resourceCost);
}

bool Tour::pullOut() {
    const TourCamera& camera = mPlan.plugged;
    mNarrator.step("It is pulled out again",
                   "The framework is told, and the id leaves the property.");
    const size_t mark = mFramework->log().size();
    return setDeviceStatus(camera, Device::NOT_PRESENT) &&
           hear(camera.frameworkName, Device::NOT_PRESENT, mark) &&
           checkIds(camera, false, "after,");
}

bool Tour::switchTorch() {
    const TourCamera& camera = mPlan.lit;
    mNarrator.step("The torch of " + camera.frameworkName,
                   "Switched through the library; the provider process reports each change.");
    for (const bool on : {true, false}) {
        const size_t mark = mFramework->log().size();
        const auto answer = mFramework->setTorchMode(camera.frameworkName, on);
        const std::string request = std::string("setTorchMode(") + (on ? "ON" : "OFF") + ")";
        if (!mNarrator.check(request + " answers OK", statusText(answer), answer.ok())) {
            return false;
        }
        const Torch status = on ? Torch::AVAILABLE_ON : Torch::AVAILABLE_OFF;
        if (!hear(camera.frameworkName, status, mark)) return false;
    }
    return true;
}

bool Tour::askMrProvider() {
    const ProviderDescription& described = mPlan.mrProvider;
    mNarrator.step("The MR provider " + described.instance,
                   "Another library inside the service; its own provider answers, untranslated.");
    auto client = FrameworkClient::connect(described.instance);
    if (!client) {
        return mNarrator.check("a service " + described.instance, client.error().message(), false);
    }
    std::vector<std::string> expected;
    for (const CameraDescription& camera : described.cameras) {
        if (camera.builtIn()) expected.push_back(camera.name);
    }
    const auto names = (*client)->cameraIdList();
    return mNarrator.check("OK\n" + linesOf(expected),
                           statusText(names) + "\n" + linesOf(names.value),
                           names.ok() && names.value == expected);
}

bool Tour::hearOfLostProvider(Device status, size_t mark) {
    bool good = true;
    for (const TourCamera& camera : mPlan.announced) {
        if (camera.provider == mPlan.lit.provider) {
            good = good && hear(camera.frameworkName, status, mark);
        }
    }
    return good;
}

void Tour::tellTime(const std::string& what) {
    char text[64];
    const std::chrono::duration<double, std::milli> took =
            std::chrono::steady_clock::now() - mKilledAt;
    snprintf(text, sizeof(text), "  %s %.0f ms after the kill", what.c_str(), took.count());
    mNarrator.detail(text);
}

bool Tour::loseProvider() {
    const std::string& instance = mPlan.lit.provider;
    mNarrator.step("The process of " + instance + " is killed",
                   "Its cameras are withdrawn, its ids leave the property; the others stay.");
    const size_t mark = mFramework->log().size();
    mKilledAt = std::chrono::steady_clock::now();
    const std::string program = Programs::programOf(instance);
    const bool killed = mDevice.supervisor().signal(program, SIGKILL) &&
                        mDevice.supervisor().awaitEnd(program, kPatience);
    if (!mNarrator.check(program + " ends",
                         killed ? mDevice.supervisor().endOf(program) : "it did not", killed) ||
        !hearOfLostProvider(Device::NOT_PRESENT, mark)) {
        return false;
    }
    tellTime("withdrawn");
    const std::string ids = propertyText(mPlan.lit.idProperty);
    bool good = mNarrator.check(mPlan.lit.idProperty + " is \"\"", quoted(ids), ids.empty());
    for (const TourCamera& camera : mPlan.announced) {
        if (camera.provider == instance) continue;
        return checkIds(camera, false, "still,") && good;
    }
    return good;
}

bool Tour::regainProvider() {
    const TourCamera& camera = mPlan.lit;
    mNarrator.step("It is started again",
                   "The library tries every half second; the cameras return when it reports them.");
    const size_t mark = mFramework->log().size();
    const auto started = mDevice.startProvider(camera.provider);
    if (!mNarrator.check("the process is ready", started ? "it is" : started.error().message(),
                         started.ok()) ||
        !hearOfLostProvider(Device::PRESENT, mark)) {
        return false;
    }
    tellTime("back");
    if (!checkIds(camera, false, "again,")) return false;
    const auto facts = mFramework->readCamera(camera.frameworkName);
    return mNarrator.check(camera.frameworkName + " answers OK", statusText(facts), facts.ok());
}

bool Tour::shutDown() {
    mNarrator.step("Shutdown", "Every program is told to end, the last one started first.");
    mFramework.reset();
    const std::vector<std::string> complaints = mDevice.shutDown();
    return mNarrator.check("every program ends with status 0",
                           complaints.empty() ? "they did" : linesOf(complaints),
                           complaints.empty());
}

}  // namespace orvo::simulator
