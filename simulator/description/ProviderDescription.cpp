// SPDX-License-Identifier: Apache-2.0
// ProviderDescription: from YAML to what a provider serves, every value checked.

#include "simulator/description/ProviderDescription.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <set>
#include <string_view>

#include "simulator/description/DescriptionReader.h"
#include "simulator/description/MetadataBuffer.h"

using android::hardware::camera::common::V1_0::CameraMetadataType;
using android::hardware::camera::common::V1_0::TagBoundaryId;
using android::hardware::camera::common::V1_0::VendorTag;
using android::hardware::camera::common::V1_0::VendorTagSection;

namespace orvo::simulator {

namespace {

/** Tags that every camera has; they are made from the description's own fields. */
constexpr uint32_t kFlashInfoAvailable = 0x00050000;
constexpr uint32_t kLensFacing = 0x00080005;
constexpr uint32_t kSensorOrientation = 0x000e000e;

constexpr int64_t kFirstVendorTag = static_cast<int64_t>(TagBoundaryId::VENDOR);
constexpr int64_t kLastTag = std::numeric_limits<uint32_t>::max();

const std::vector<std::string> kTypeNames = {"BYTE",  "INT32",  "FLOAT",
                                             "INT64", "DOUBLE", "RATIONAL"};

template <typename T>
void appendBytes(std::vector<uint8_t>* bytes, T value) {
    const auto* begin = reinterpret_cast<const uint8_t*>(&value);
    bytes->insert(bytes->end(), begin, begin + sizeof(T));
}

MetadataEntry byteEntry(uint32_t tag, uint8_t value) {
    return {tag, CameraMetadataType::BYTE, {value}};
}

template <typename T>
void appendInteger(DescriptionReader& reader, const YAML::Node& node, const std::string& what,
                   std::vector<uint8_t>* bytes) {
    appendBytes(bytes, static_cast<T>(reader.numberOf(node, what, std::numeric_limits<T>::min(),
                                                      std::numeric_limits<T>::max())));
}

void appendRational(DescriptionReader& reader, const YAML::Node& node, const std::string& what,
                    std::vector<uint8_t>* bytes) {
    if (!node.IsSequence() || node.size() != 2) {
        return reader.fail(node, what + " is not a fraction; write [numerator, denominator]");
    }
    appendInteger<int32_t>(reader, node[0], what, bytes);
    appendInteger<int32_t>(reader, node[1], what, bytes);
}

void appendValue(DescriptionReader& reader, const YAML::Node& node, CameraMetadataType type,
                 const std::string& what, std::vector<uint8_t>* bytes) {
    switch (type) {
        case CameraMetadataType::BYTE:
            return appendInteger<uint8_t>(reader, node, what, bytes);
        case CameraMetadataType::INT32:
            return appendInteger<int32_t>(reader, node, what, bytes);
        case CameraMetadataType::FLOAT:
            return appendBytes(bytes, static_cast<float>(reader.realOf(node, what)));
        case CameraMetadataType::INT64:
            return appendInteger<int64_t>(reader, node, what, bytes);
        case CameraMetadataType::DOUBLE:
            return appendBytes(bytes, reader.realOf(node, what));
        case CameraMetadataType::RATIONAL:
            return appendRational(reader, node, what, bytes);
    }
}

/** The camera's own entries, the described ones after them. */
void readCharacteristics(DescriptionReader& reader, const YAML::Node& node, const std::string& what,
                         CameraDescription* camera) {
    std::vector<MetadataEntry> entries;
    entries.push_back(byteEntry(kFlashInfoAvailable, camera->flash ? 1 : 0));
    // The platform counts the facing of a lens from the front.
    const uint8_t facing = camera->facing == Facing::FRONT  ? 0
                           : camera->facing == Facing::BACK ? 1
                                                            : 2;
    entries.push_back(byteEntry(kLensFacing, facing));
    MetadataEntry orientation{kSensorOrientation, CameraMetadataType::INT32, {}};
    appendBytes(&orientation.bytes, static_cast<int32_t>(camera->orientation));
    entries.push_back(orientation);

    const std::string entryWhat = what + ": an entry of characteristics";
    for (const YAML::Node& item : reader.list(node, "characteristics", what, false)) {
        if (reader.isNotMap(item, entryWhat)) return;
        reader.expectKeys(item, entryWhat, {"tag", "type", "values"});
        MetadataEntry entry;
        entry.tag = static_cast<uint32_t>(reader.number(item, "tag", entryWhat, 0, kLastTag));
        entry.type =
                static_cast<CameraMetadataType>(reader.choice(item, "type", entryWhat, kTypeNames));
        for (const YAML::Node& value : reader.list(item, "values", entryWhat, true)) {
            appendValue(reader, value, entry.type, entryWhat + ": a value", &entry.bytes);
        }
        const auto sameTag = [&](const MetadataEntry& other) { return other.tag == entry.tag; };
        if (std::any_of(entries.begin(), entries.end(), sameTag)) {
            reader.fail(item, entryWhat +
                                      " has a tag that is there already; leave one out (facing,"
                                      " orientation and flash make entries of their own)");
        }
        entries.push_back(entry);
    }
    camera->characteristics = packMetadata(entries);
}

/** Checks "device@<major>.<minor>/<type>/<id>" with the provider's own type; 0 if it is not. */
int majorVersionOf(const std::string& name, const std::string& type) {
    constexpr std::string_view kPrefix = "device@";
    const size_t dot = kPrefix.size() + 1;
    if (name.compare(0, kPrefix.size(), kPrefix) != 0 || name.size() <= dot) return 0;
    const char major = name[kPrefix.size()];
    if ((major != '1' && major != '3') || name[dot] != '.') return 0;
    const size_t minorEnd = name.find_first_not_of("0123456789", dot + 1);
    if (minorEnd == dot + 1 || minorEnd == std::string::npos) return 0;
    const std::string middle = "/" + type + "/";
    if (name.compare(minorEnd, middle.size(), middle) != 0) return 0;
    return name.size() > minorEnd + middle.size() ? major - '0' : 0;
}

CameraDescription readCamera(DescriptionReader& reader, const YAML::Node& node,
                             const std::string& type) {
    CameraDescription camera{};
    if (reader.isNotMap(node, "a camera")) return camera;
    camera.name = reader.text(node, "name", "a camera");
    const std::string what = "camera '" + camera.name + "'";
    reader.expectKeys(node, what,
                      {"name", "facing", "present", "flash", "orientation", "resourceCost",
                       "conflictsWith", "characteristics"});
    camera.majorVersion = majorVersionOf(camera.name, type);
    if (!reader.error() && camera.majorVersion == 0) {
        reader.fail(node["name"], what + " is not named for this provider; write device@3.2/" +
                                          type + "/<id> or device@1.0/" + type + "/<id>");
    }
    camera.facing =
            static_cast<Facing>(reader.choice(node, "facing", what, {"BACK", "FRONT", "EXTERNAL"}));
    camera.present = reader.flag(node, "present", what, true);
    camera.flash = reader.flag(node, "flash", what, false);
    camera.orientation =
            static_cast<uint32_t>(reader.number(node, "orientation", what, 0, 270, int64_t{0}));
    if (!reader.error() && camera.orientation % 90 != 0) {
        reader.fail(node["orientation"], what + ": orientation is " +
                                                 std::to_string(camera.orientation) +
                                                 "; write 0, 90, 180 or 270");
    }
    camera.resourceCost = static_cast<uint32_t>(reader.number(node, "resourceCost", what, 0, 100));
    for (const YAML::Node& other : reader.list(node, "conflictsWith", what, false)) {
        camera.conflicts.push_back(reader.textOf(other, what + ": an entry of conflictsWith"));
    }
    if (camera.majorVersion != 1) {
        readCharacteristics(reader, node, what, &camera);
    } else if (!reader.error() && node["characteristics"].IsDefined()) {
        reader.fail(node["characteristics"],
                    what + " is of version 1 and has no characteristics; leave them out");
    }
    return camera;
}

VendorTagSection readSection(DescriptionReader& reader, const YAML::Node& node,
                             std::set<uint32_t>* ids) {
    VendorTagSection section;
    if (reader.isNotMap(node, "a section of vendorTags")) return section;
    const std::string name = reader.text(node, "section", "a section of vendorTags");
    const std::string what = "section '" + name + "'";
    reader.expectKeys(node, what, {"section", "tags"});
    section.sectionName = name;
    std::vector<VendorTag> tags;
    for (const YAML::Node& item : reader.list(node, "tags", what, true)) {
        const std::string tagWhat = what + ": a tag";
        if (reader.isNotMap(item, tagWhat)) break;
        reader.expectKeys(item, tagWhat, {"id", "name", "type"});
        VendorTag tag;
        tag.tagId = static_cast<uint32_t>(
                reader.number(item, "id", tagWhat, kFirstVendorTag, kLastTag));
        tag.tagName = reader.text(item, "name", tagWhat);
        tag.tagType =
                static_cast<CameraMetadataType>(reader.choice(item, "type", tagWhat, kTypeNames));
        if (!reader.error() && !ids->insert(tag.tagId).second) {
            reader.fail(item, tagWhat + " has an id that another tag has; give each its own");
        }
        tags.push_back(tag);
    }
    section.tags = tags;
    return section;
}

/** Names and ids are unique, and a conflict names a camera of this provider. */
void checkCameras(DescriptionReader& reader, const std::vector<YAML::Node>& nodes,
                  const std::vector<CameraDescription>& cameras) {
    std::set<std::string> names, ids;
    for (size_t i = 0; !reader.error() && i < cameras.size(); i++) {
        const std::string& name = cameras[i].name;
        const std::string id = name.substr(name.find('/', name.find('/') + 1) + 1);
        if (!names.insert(name).second || !ids.insert(id).second) {
            reader.fail(nodes[i], "camera '" + name + "' has an id that another camera has; give" +
                                          " each camera its own");
        }
    }
    for (size_t i = 0; !reader.error() && i < cameras.size(); i++) {
        for (const std::string& other : cameras[i].conflicts) {
            if (names.count(other) != 0 && other != cameras[i].name) continue;
            reader.fail(nodes[i]["conflictsWith"],
                        "camera '" + cameras[i].name + "' conflicts with '" + other +
                                "'; name another camera of this description");
        }
    }
}

}  // namespace

android::base::Result<ProviderDescription> ProviderDescription::read(const std::string& file) {
    DescriptionReader reader(file);
    ProviderDescription provider{};
    const YAML::Node root = reader.load();
    if (reader.error()) return android::base::Error() << *reader.error();

    reader.expectKeys(root, "the description",
                      {"instance", "torch", "reportsBuiltIn", "vendorTags", "cameras"});
    provider.instance = reader.text(root, "instance", "the description");
    const size_t slash = provider.instance.find('/');
    if (!reader.error() &&
        (slash == 0 || slash == std::string::npos || slash + 1 == provider.instance.size())) {
        reader.fail(root["instance"], "instance is '" + provider.instance +
                                              "'; write <type>/<number>, such as external/0");
    }
    provider.torchSupported = reader.flag(root, "torch", "the description", true);
    provider.reportsBuiltIn = reader.flag(root, "reportsBuiltIn", "the description", false);
    std::set<uint32_t> tagIds;
    for (const YAML::Node& node : reader.list(root, "vendorTags", "the description", false)) {
        provider.vendorTags.push_back(readSection(reader, node, &tagIds));
    }
    const auto nodes = reader.list(root, "cameras", "the description", true);
    for (const YAML::Node& node : nodes) {
        provider.cameras.push_back(readCamera(reader, node, provider.instance.substr(0, slash)));
    }
    checkCameras(reader, nodes, provider.cameras);
    if (reader.error()) return android::base::Error() << *reader.error();
    return provider;
}

}  // namespace orvo::simulator
