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
using android::hardware::camera::common::V1_0::VendorTag;
using android::hardware::camera::common::V1_0::VendorTagSection;

namespace orvo::simulator {

namespace {

/** Tags that every camera has; they are made from the description's own fields. */
constexpr uint32_t kFlashInfoAvailable = 0x00050000;
constexpr uint32_t kLensFacing = 0x00080005;
constexpr uint32_t kSensorOrientation = 0x000e000e;

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

MetadataEntry readCharacteristic(DescriptionReader& reader, const YAML::Node& node,
                                 const std::string& what) {
    MetadataEntry entry{};
    const DescribedMap map(reader, node, what, characteristicKeys());
    entry.tag = static_cast<uint32_t>(map.number("tag"));
    const size_t mistakes = reader.mistakeCount();
    entry.type = static_cast<CameraMetadataType>(map.choice("type"));
    const bool typeIsKnown = reader.mistakeCount() == mistakes;
    for (const YAML::Node& value : map.list("values")) {
        if (typeIsKnown) appendValue(reader, value, entry.type, what + ": a value", &entry.bytes);
    }
    return entry;
}

/** The camera's own entries, the described ones after them. */
void readCharacteristics(DescriptionReader& reader, const DescribedMap& map,
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

    const std::string what = map.what() + ": an entry of characteristics";
    for (const YAML::Node& item : map.list("characteristics")) {
        const size_t mistakes = reader.mistakeCount();
        const MetadataEntry entry = readCharacteristic(reader, item, what);
        if (reader.mistakeCount() != mistakes) continue;
        const auto sameTag = [&](const MetadataEntry& other) { return other.tag == entry.tag; };
        if (std::any_of(entries.begin(), entries.end(), sameTag)) {
            reader.fail(item, what + " has a tag that is there already; leave one out (facing,"
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

/** Such as "camera 'device@3.2/external/7'"; "a camera" if it has no name. */
std::string calledBy(const YAML::Node& node, const char* key, const std::string& kind) {
    const bool named = node.IsMap() && node[key].IsDefined() && node[key].IsScalar() &&
                       !node[key].Scalar().empty();
    return named ? kind + " '" + node[key].Scalar() + "'" : "a " + kind;
}

/** `type` is that of the provider, or "" if it is not known. */
CameraDescription readCamera(DescriptionReader& reader, const YAML::Node& node,
                             const std::string& type) {
    CameraDescription camera{};
    const DescribedMap map(reader, node, calledBy(node, "name", "camera"), cameraKeys());
    camera.name = map.text("name");
    camera.majorVersion = majorVersionOf(camera.name, type);
    if (!type.empty() && !camera.name.empty() && camera.majorVersion == 0) {
        map.fail("name", map.what() + " is not named for this provider; write device@3.2/" + type +
                                 "/<id> or device@1.0/" + type + "/<id>");
    }
    camera.facing = static_cast<Facing>(map.choice("facing"));
    camera.present = map.flag("present");
    camera.flash = map.flag("flash");
    camera.orientation = static_cast<uint32_t>(map.number("orientation"));
    if (camera.orientation % 90 != 0) {
        map.fail("orientation", map.what() + ": orientation is " +
                                        std::to_string(camera.orientation) +
                                        "; write 0, 90, 180 or 270");
    }
    camera.resourceCost = static_cast<uint32_t>(map.number("resourceCost"));
    for (const YAML::Node& other : map.list("conflictsWith")) {
        camera.conflicts.push_back(
                reader.textOf(other, map.what() + ": an entry of conflictsWith"));
    }
    if (camera.majorVersion != 1) {
        readCharacteristics(reader, map, &camera);
    } else if (map.has("characteristics")) {
        map.fail("characteristics",
                 map.what() + " is of version 1 and has no characteristics; leave them out");
    }
    return camera;
}

VendorTagSection readSection(DescriptionReader& reader, const YAML::Node& node,
                             std::set<uint32_t>* ids) {
    const bool named = node.IsMap() && node["section"].IsDefined();
    const DescribedMap map(reader, node,
                           named ? calledBy(node, "section", "section") : "a section of vendorTags",
                           vendorTagSectionKeys());
    VendorTagSection section;
    section.sectionName = map.text("section");
    std::vector<VendorTag> tags;
    for (const YAML::Node& item : map.list("tags")) {
        const DescribedMap tagMap(reader, item, map.what() + ": a tag", vendorTagKeys());
        const size_t mistakes = reader.mistakeCount();
        VendorTag tag;
        tag.tagId = static_cast<uint32_t>(tagMap.number("id"));
        if (reader.mistakeCount() == mistakes && tagMap.isMap() && !ids->insert(tag.tagId).second) {
            reader.fail(item, tagMap.what() + " has an id that another tag has; give each its own");
        }
        tag.tagName = tagMap.text("name");
        tag.tagType = static_cast<CameraMetadataType>(tagMap.choice("type"));
        tags.push_back(tag);
    }
    section.tags = tags;
    return section;
}

/** Names and ids are unique, and a conflict names a camera of this provider. */
void checkCameras(DescriptionReader& reader, const std::vector<YAML::Node>& nodes,
                  const std::vector<CameraDescription>& cameras) {
    std::set<std::string> names, ids;
    for (size_t i = 0; i < cameras.size(); i++) {
        const std::string& name = cameras[i].name;
        if (name.empty()) continue;
        const std::string id = name.substr(name.find('/', name.find('/') + 1) + 1);
        if (!names.insert(name).second || !ids.insert(id).second) {
            reader.fail(nodes[i], "camera '" + name + "' has an id that another camera has; give" +
                                          " each camera its own");
        }
    }
    for (size_t i = 0; i < cameras.size(); i++) {
        for (const std::string& other : cameras[i].conflicts) {
            if (other.empty() || (names.count(other) != 0 && other != cameras[i].name)) continue;
            reader.fail(nodes[i]["conflictsWith"],
                        "camera '" + cameras[i].name + "' conflicts with '" + other +
                                "'; name another camera of this description");
        }
    }
}

}  // namespace

android::base::Result<ProviderDescription> ProviderDescription::read(const std::string& file) {
    std::vector<std::string> mistakes;
    ProviderDescription provider = read(file, &mistakes);
    if (!mistakes.empty()) return android::base::Error() << mistakes.front();
    return provider;
}

ProviderDescription ProviderDescription::read(const std::string& file,
                                              std::vector<std::string>* mistakes) {
    DescriptionReader reader(file);
    ProviderDescription provider{};
    const DescribedMap map(reader, reader.load(), "the description", providerKeys());
    provider.instance = map.text("instance");
    const size_t slash = provider.instance.find('/');
    const bool isComplete =
            slash != 0 && slash != std::string::npos && slash + 1 != provider.instance.size();
    if (!provider.instance.empty() && !isComplete) {
        map.fail("instance", "instance is '" + provider.instance +
                                     "'; write <type>/<number>, such as external/0");
    }
    provider.torchSupported = map.flag("torch");
    provider.reportsBuiltIn = map.flag("reportsBuiltIn");
    std::set<uint32_t> tagIds;
    for (const YAML::Node& node : map.list("vendorTags")) {
        provider.vendorTags.push_back(readSection(reader, node, &tagIds));
    }
    const std::string type = isComplete ? provider.instance.substr(0, slash) : "";
    const auto nodes = map.list("cameras");
    for (const YAML::Node& node : nodes) {
        provider.cameras.push_back(readCamera(reader, node, type));
    }
    checkCameras(reader, nodes, provider.cameras);
    for (const std::string& mistake : reader.mistakes()) mistakes->push_back(mistake);
    return provider;
}

}  // namespace orvo::simulator
