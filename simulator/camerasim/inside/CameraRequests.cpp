// SPDX-License-Identifier: Apache-2.0
// CameraRequests: the requests that the framework passes on to the service, and the properties.

#include <string>
#include <utility>
#include <vector>

#include <android-base/strings.h>
#include <cutils/properties.h>
#include <nlohmann/json.hpp>

#include "simulator/camerasim/inside/Requests.h"

namespace orvo::simulator {

using android::base::Error;
using android::base::Result;
using android::base::unexpected;
using nlohmann::json;

namespace {

/** How a call to the service failed, for a person. */
template <typename T>
std::string notAnswered(const std::string& whom, const Answer<T>& answer) {
    return whom + " did not answer: " + answer.failure;
}

json sectionsOf(const std::vector<FrameworkClient::VendorTagSection>& sections) {
    json all = json::array();
    for (const auto& section : sections) {
        json tags = json::array();
        for (const auto& tag : section.tags) {
            tags.push_back({{"id", tag.tagId},
                            {"name", std::string(tag.tagName)},
                            {"type", toString(tag.tagType)}});
        }
        all.push_back({{"name", std::string(section.sectionName)}, {"tags", tags}});
    }
    return all;
}

json factsOf(const std::string& camera, const Answer<CameraFacts>& facts) {
    json characteristics = json::array();
    for (const MetadataEntry& entry : facts.value.characteristics) {
        characteristics.push_back(
                {{"tag", entry.tag}, {"type", toString(entry.type)}, {"value", entry.toText()}});
    }
    return {{"camera", camera},
            {"status", toString(facts.status)},
            {"resourceCost", facts.value.resourceCost},
            {"conflictingDevices", facts.value.conflictingDevices},
            {"info", facts.value.info},
            {"characteristics", characteristics},
            {"opened", false}};
}

bool isVersion1(const std::string& camera) {
    return camera.rfind("device@1.", 0) == 0;
}

}  // namespace

Requests::Answer Requests::askServices(
        const Request& request, const std::function<Answer(FrameworkClient& client)>& question) {
    const json& wanted = request.members["service"];
    std::vector<std::string> services = mDevice.framework().instances();
    if (wanted.is_string()) services = {wanted.get<std::string>()};
    json all = json::array();
    for (const std::string& service : services) {
        const auto client = mDevice.framework().clientOf(service);
        if (client == nullptr) {
            return Error() << "the service does not serve '" << service << "'; it serves "
                           << android::base::Join(mDevice.framework().instances(), ", ");
        }
        Answer answer = question(*client);
        if (!answer) return Error() << service << " did not answer: " << answer.error().message();
        (*answer)["service"] = service;
        all.push_back(std::move(*answer));
    }
    return wanted.is_string() ? all[0] : all;
}

Requests::Answer Requests::tags(const Request& request) {
    return askServices(request, [](FrameworkClient& client) -> Answer {
        const auto answer = client.vendorTags();
        if (!answer.arrived()) return Error() << answer.failure;
        return json{{"status", toString(answer.status)}, {"sections", sectionsOf(answer.value)}};
    });
}

Requests::Answer Requests::dump(const Request& request) {
    return askServices(request, [](FrameworkClient& client) -> Answer {
        const auto answer = client.dump();
        if (!answer.arrived()) return Error() << answer.failure;
        return json{{"text", answer.value}};
    });
}

Requests::Answer Requests::props() const {
    std::vector<PropertyState> all;
    const auto add = [](const char* name, const char* value, void* list) {
        static_cast<std::vector<PropertyState>*>(list)->push_back({name, value});
    };
    if (property_list(add, &all) != 0) {
        return Error() << "the property store of the device cannot be read; boot it again";
    }
    return json(all);
}

Result<Framework::Client> Requests::clientFor(const std::string& name) const {
    const auto camera = mDevice.cameras().find(name);
    // The service ends its process when it is asked for a name that it has not reported PRESENT,
    // or has withdrawn since.
    if (!camera || camera->status != "PRESENT") {
        std::vector<std::string> present;
        for (const CameraState& one : mDevice.cameras().cameras()) {
            if (one.status == "PRESENT") present.push_back(one.name);
        }
        return Error() << (camera ? "the camera '" + name + "' is not present"
                                  : "there is no camera '" + name + "'")
                       << "; "
                       << (present.empty() ? "there is none; camerasim ps says why"
                                           : "present are " + android::base::Join(present, ", "));
    }
    const auto client = mDevice.framework().clientOf(camera->service);
    if (client == nullptr) return Error() << camera->service << " has just ended";
    return client;
}

Requests::Answer Requests::open(const Request& request) {
    const std::string name = request.text("camera");
    const auto client = clientFor(name);
    if (!client) return unexpected(client.error());
    const bool hold = request.flag("hold");
    note(name, hold ? "open and hold" : "open");
    const auto facts = (*client)->readCamera(name);
    if (!facts.arrived()) return Error() << notAnswered(name, facts);
    json answer = factsOf(name, facts);
    // A camera of version 1 is opened by its own interface, which nothing here needs.
    if (!facts.ok() || isVersion1(name)) return answer;
    const auto session = (*client)->openSession(name);
    if (!session.arrived()) return Error() << notAnswered(name, session);
    answer["status"] = toString(session.status);
    answer["opened"] = session.ok();
    if (!session.ok()) return answer;
    if (hold && mDevice.framework().hold(name, session.value)) return answer;
    const bool closed = session.value->close().isOk();
    if (hold || !closed) return Error() << name << " went away as soon as it was open";
    return answer;
}

Requests::Answer Requests::close(const Request& request) {
    const std::string name = request.text("camera");
    const Framework::Session session = mDevice.framework().release(name);
    if (session == nullptr) {
        return Error() << "the camera '" << name << "' is not held open; camerasim open --hold"
                       << " holds one";
    }
    note(name, "close");
    if (!session->close().isOk()) return Error() << name << " is gone";
    mDevice.settle();
    return json{{"camera", name}};
}

Requests::Answer Requests::torch(const Request& request) {
    const std::string name = request.text("camera");
    const auto client = clientFor(name);
    if (!client) return unexpected(client.error());
    if (isVersion1(name)) return Error() << name << " is of version 1; only version 3 has a torch";
    const bool on = request.flag("on");
    note(name, on ? "torch on" : "torch off");
    const auto answer = (*client)->setTorchMode(name, on);
    if (!answer.arrived()) return Error() << notAnswered(name, answer);
    mDevice.settle();
    return json{{"camera", name}, {"status", toString(answer.status)}};
}

}  // namespace orvo::simulator
