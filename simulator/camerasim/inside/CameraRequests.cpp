// SPDX-License-Identifier: Apache-2.0
// CameraRequests: the requests that the framework passes on to the service, and the properties.

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <cutils/properties.h>

#include "simulator/camerasim/Looks.h"
#include "simulator/camerasim/inside/Requests.h"
#include "simulator/control/Complaint.h"
#include "simulator/description/Suggestions.h"

namespace orvo::simulator {

using android::base::Result;
using android::base::unexpected;

namespace {

TagSection sectionOf(const FrameworkClient::VendorTagSection& section) {
    TagSection told{section.sectionName, {}};
    for (const auto& tag : section.tags) {
        told.tags.push_back({tag.tagId, tag.tagName, toString(tag.tagType)});
    }
    return told;
}

OpenReply factsOf(const std::string& camera, const Answer<CameraFacts>& facts) {
    OpenReply reply{};
    reply.camera = camera;
    reply.status = toString(facts.status);
    reply.resourceCost = facts.value.resourceCost;
    reply.conflictingDevices = facts.value.conflictingDevices;
    reply.info = facts.value.info;
    reply.characteristicsBytes = static_cast<int64_t>(facts.value.characteristicsBytes);
    for (const MetadataEntry& entry : facts.value.characteristics) {
        reply.characteristics.push_back({entry.tag, toString(entry.type), entry.toText()});
    }
    return reply;
}

bool isVersion1(const std::string& camera) {
    return camera.rfind("device@1.", 0) == 0;
}

/** How a call to the service failed. */
template <typename T>
android::base::ResultError notAnswered(const std::string& whom, const Answer<T>& answer) {
    return didNotHappen(whom + " did not answer: " + answer.failure);
}

/** Asks the named instance of the service, or all; each may refuse with an error of its own. */
template <typename Reply>
Result<std::vector<Reply>> askServices(
        const Framework& framework, const std::string& wanted,
        const std::function<Result<Reply>(const std::string& service, FrameworkClient& client)>&
                question) {
    std::vector<Reply> all;
    const std::vector<std::string> served = framework.instances();
    for (const std::string& service : wanted.empty() ? served : std::vector{wanted}) {
        const auto client = framework.clientOf(service);
        if (client == nullptr) {
            return badUse("the service does not serve '" + service + "'; it serves " +
                          listed(served));
        }
        auto reply = question(service, *client);
        if (!reply) return unexpected(reply.error());
        all.push_back(std::move(*reply));
    }
    return all;
}

}  // namespace

Requests::Result<std::vector<ServiceTags>> Requests::perform(const TagsRequest& request) {
    const auto question = [](const std::string& service,
                             FrameworkClient& client) -> Result<ServiceTags> {
        const auto answer = client.vendorTags();
        if (!answer.arrived()) return notAnswered(service, answer);
        ServiceTags tags{service, toString(answer.status), {}};
        for (const auto& section : answer.value) tags.sections.push_back(sectionOf(section));
        return tags;
    };
    return askServices<ServiceTags>(mHeadset.framework(), request.service, question);
}

Requests::Result<std::vector<ServiceDump>> Requests::perform(const DumpRequest& request) {
    const auto question = [](const std::string& service,
                             FrameworkClient& client) -> Result<ServiceDump> {
        const auto answer = client.dump();
        if (!answer.arrived()) return notAnswered(service, answer);
        return ServiceDump{service, answer.value};
    };
    return askServices<ServiceDump>(mHeadset.framework(), request.service, question);
}

Requests::Result<std::vector<ServiceList>> Requests::perform(const ListRequest& request) {
    const auto question = [](const std::string& service,
                             FrameworkClient& client) -> Result<ServiceList> {
        const auto names = client.cameraIdList();
        if (!names.arrived()) return notAnswered(service, names);
        const auto torch = client.isTorchSupported();
        if (!torch.arrived()) return notAnswered(service, torch);
        return ServiceList{service, toString(names.status), names.value, toString(torch.status),
                           torch.value};
    };
    return askServices<ServiceList>(mHeadset.framework(), request.service, question);
}

Requests::Result<std::vector<PropertyState>> Requests::perform(const PropsRequest& /*request*/) {
    std::vector<PropertyState> all;
    const auto add = [](const char* name, const char* value, void* list) {
        static_cast<std::vector<PropertyState>*>(list)->push_back({name, value});
    };
    if (property_list(add, &all) == 0) return all;
    return didNotHappen("the property store of the device cannot be read; boot it again");
}

Requests::Result<Framework::Client> Requests::clientFor(const std::string& name) const {
    const auto camera = mHeadset.cameras().find(name);
    // The service ends its process when it is asked for a name that it has not reported PRESENT,
    // or has withdrawn since.
    if (!camera || camera->status != "PRESENT") {
        std::vector<std::string> present;
        for (const CameraState& one : mHeadset.cameras().cameras()) {
            if (one.status == "PRESENT") present.push_back(one.name);
        }
        const std::string which = present.empty() ? "; there is none; camerasim ps says why"
                                                  : "; present are " + someOf(present, name);
        return camera ? didNotHappen("the camera '" + name + "' is not present" + which)
                      : badUse("there is no camera '" + name + "'" + which);
    }
    const auto client = mHeadset.framework().clientOf(camera->service);
    if (client == nullptr) return didNotHappen(camera->service + " has just ended");
    return client;
}

Requests::Result<OpenReply> Requests::perform(const OpenRequest& request) {
    const std::string& name = request.camera;
    const auto client = clientFor(name);
    if (!client) return unexpected(client.error());
    note(name, request.hold ? "open and hold" : "open");
    const auto facts = (*client)->readCamera(name);
    if (!facts.arrived()) return notAnswered(name, facts);
    OpenReply reply = factsOf(name, facts);
    // A camera of version 1 is opened by its own interface, which nothing here needs.
    if (!facts.ok() || isVersion1(name)) return reply;
    const auto session = (*client)->openSession(name);
    if (!session.arrived()) return notAnswered(name, session);
    reply.status = toString(session.status);
    reply.opened = session.ok();
    reply.heldOpen = mHeadset.cameras().heldOpen();
    if (!session.ok()) return reply;
    const bool held = request.hold && mHeadset.framework().hold(name, session.value);
    const bool closed = !held && session.value->close().isOk();
    // What the torch has to tell of that is on the timeline before the reply.
    mHeadset.settle();
    if (held || (closed && !request.hold)) return reply;
    return didNotHappen(name + " went away as soon as it was open");
}

Requests::Result<CloseReply> Requests::perform(const CloseRequest& request) {
    const std::string& name = request.camera;
    const Framework::Session session = mHeadset.framework().release(name);
    if (session == nullptr) {
        const std::string line = "the camera '" + name +
                                 "' is not held open; camerasim open"
                                 " --hold holds one";
        return mHeadset.cameras().find(name) ? didNotHappen(line) : badUse(line);
    }
    note(name, "close");
    if (!session->close().isOk()) return didNotHappen(name + " is gone");
    mHeadset.settle();
    return CloseReply{name};
}

Requests::Result<TorchReply> Requests::perform(const TorchRequest& request) {
    const std::string& name = request.camera;
    const auto client = clientFor(name);
    if (!client) return unexpected(client.error());
    if (isVersion1(name)) return badUse(name + " is of version 1; only version 3 has a torch");
    note(name, request.on ? "torch on" : "torch off");
    const auto answer = (*client)->setTorchMode(name, request.on);
    if (!answer.arrived()) return notAnswered(name, answer);
    mHeadset.settle();
    return TorchReply{name, toString(answer.status)};
}

}  // namespace orvo::simulator
