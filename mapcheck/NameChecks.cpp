// SPDX-License-Identifier: Apache-2.0
// The form of keys, values and device names. One mistake gives one finding where a second would
// only follow.

#include "mapcheck/NameChecks.h"

#include <stdlib.h>
#include <string.h>

#include <optional>

#include "host/vintf/XmlFile.h"
#include "mapcheck/Utf8.h"
#include "provider/naming/DeviceInfo.h"

namespace orvo::mapcheck {
namespace {

namespace naming = ::android::hardware::camera::provider::V2_4::implementation;

// The entry point compares as many characters of a name as there are here.
constexpr char kMRInstance[] = "default/0";

bool hasSlash(const std::string& name) {
    return name.find('/') != std::string::npos;
}

bool isDecimal(const std::string& text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

bool hasEmptyPart(const std::string& name) {
    return name.front() == '/' || name.back() == '/' || name.find("//") != std::string::npos;
}

struct Version {
    unsigned long major;
    unsigned long minor;
};

// That of a device name which the framework can read.
std::optional<Version> versionOf(const std::string& name) {
    naming::DeviceInfo info;
    if (!naming::parseDeviceString(name, info) || info.prefix != "device" || info.type.empty() ||
        info.id.empty()) {
        return std::nullopt;
    }
    const size_t point = info.version.find('.');
    if (point == std::string::npos) return std::nullopt;
    const std::string major = info.version.substr(0, point);
    const std::string minor = info.version.substr(point + 1);
    if (!isDecimal(major) || !isDecimal(minor)) return std::nullopt;
    constexpr unsigned long kMax = 65535;
    const Version version = {strtoul(major.c_str(), nullptr, 10),
                             strtoul(minor.c_str(), nullptr, 10)};
    if (version.major > kMax || version.minor > kMax) return std::nullopt;
    return version;
}

// Where the first character stands that is neither a blank nor one that an instance may have.
size_t findOddCharacter(const std::string& name) {
    for (size_t at = 0; at < name.size(); ++at) {
        const auto byte = static_cast<unsigned char>(name[at]);
        const bool isBlank = strchr(kXmlBlanks, byte) != nullptr;
        if (byte >= 0x7F || (byte < 0x20 && !isBlank)) return at;
    }
    return std::string::npos;
}

// Blanks, commas and the like are part of a name, and so it is a name that nobody has. `what` is
// "key" or "value". True when there are none.
bool checkCharacters(const std::string& name, const std::string& what, const char* consequence,
                     long line, Findings* findings) {
    const std::string start = "the " + what + " " + quoted(name);
    const std::string bare = trimmed(name);
    if (bare.size() < name.size()) {
        findings->error(line, ("blanks-around-" + what).c_str(),
                        start + " has blanks or line breaks around it, which are part of the " +
                                "name: " + consequence + "; write " + quoted(bare));
    }
    const size_t odd = findOddCharacter(bare);
    if (odd != std::string::npos) {
        const std::string number = "U+" + hexadecimal(characterAt(bare, odd).value, 4);
        findings->error(line, ("odd-character-in-" + what).c_str(),
                        start + " has the character " + number + " in it, which is part of the " +
                                "name: " + consequence + "; write the name in ASCII");
    }
    const bool comma = bare.find(',') != std::string::npos;
    if (comma || bare.find_first_of(kXmlBlanks) != std::string::npos) {
        findings->error(line, ((comma ? "comma-in-" : "blanks-in-") + what).c_str(),
                        start + " is one name and never split: " + consequence +
                                "; write one entry for each name");
        return false;
    }
    return bare.size() == name.size() && odd == std::string::npos;
}

}  // namespace

std::string typeOf(const std::string& instance) {
    return naming::typeOfInstance(instance).value_or(instance);
}

bool isPlainName(const std::string& name) {
    return hasSlash(name) &&
           name.find_first_of(std::string(kXmlBlanks) + ",") == std::string::npos &&
           findOddCharacter(name) == std::string::npos;
}

bool isMRInstance(const std::string& name) {
    return name.compare(0, sizeof kMRInstance - 1, kMRInstance) == 0;
}

bool isAskedFor(const std::string& key) {
    return isPlainName(key) && !hasEmptyPart(key) && !isMRInstance(key);
}

bool checkKey(const MapEntry& entry, Findings* findings) {
    const std::string& key = entry.key;
    if (!checkCharacters(key, "key", "no instance has it", entry.line, findings)) return false;
    if (isMRInstance(key)) {
        findings->error(entry.line, "mr-key",
                        "the key " + quoted(key) + " never reaches the map: every instance that " +
                                "begins with \"default/0\" is the MR provider; remove the entry");
        return false;
    }
    if (!hasSlash(key)) {
        findings->error(entry.line, "key-without-slash",
                        "the key " + quoted(key) + " has no \"/\": a service that is started for " +
                                "it ends before it reads the map; write a name such as " +
                                "\"legacy/0\"");
        return false;
    }
    if (hasEmptyPart(key)) {
        findings->error(entry.line, "empty-part-in-key",
                        "the key " + quoted(key) + " has an empty part: no instance has it; " +
                                "write a name such as \"legacy/0\"");
        return false;
    }
    if (!isDecimal(key.substr(key.find('/') + 1))) {
        findings->error(
                entry.line, "not-numbered",
                "the key " + quoted(key) + " is not of the form TYPE/NUMBER: the framework " +
                        "ignores an instance of that name, with all of its cameras; write " +
                        "a name such as \"legacy/0\"");
        return false;
    }
    return true;
}

bool checkValue(const MapEntry& entry, Findings* findings) {
    const std::string& value = entry.value;
    const std::string start = "the value " + quoted(value);
    const bool good = checkCharacters(value, "value", "no provider has it", entry.line, findings);
    if (!hasSlash(value)) {
        const bool fatal = isAskedFor(entry.key);
        const std::string consequence =
                fatal ? "the service ends whenever it is started for " + quoted(entry.key)
                      : "it would end the service if its key were ever asked for";
        findings->error(
                entry.line, fatal ? "fatal-value" : "value-without-slash",
                start + " has no \"/\": " + consequence + "; write a name such as \"external/0\"");
        return false;
    }
    if (!good) return false;
    if (value == entry.key) {
        findings->error(entry.line, "own-name",
                        start + " is its own key: its start waits for a service that only the " +
                                "end of its start registers; name another provider");
        return false;
    }
    if (value.front() == '/') {
        findings->error(entry.line, "empty-part-in-value",
                        start + " has nothing before its \"/\": no provider has it; write a name " +
                                "such as \"external/0\"");
        return false;
    }
    if (value != typeOf(value) + "/0") {
        findings->error(entry.line, "not-instance-0",
                        start + " is not of the form TYPE/0: its cameras are looked for behind " +
                                quoted(typeOf(value) + "/0") + " and can never be opened; let " +
                                "the provider serve as that");
        return false;
    }
    return true;
}

bool checkDeviceName(const MapEntry& entry, const std::string& name, Findings* findings) {
    const std::string start = quoted(entry.value) + " has " + escaped(name);
    const std::optional<Version> version = versionOf(name);
    if (!version) {
        findings->error(
                entry.line, "device-name",
                start + ", which is not of the form device@MAJOR.MINOR/TYPE/ID with decimal " +
                        "numbers below 65536: the framework refuses the camera, and all of " +
                        quoted(entry.key) + " if the provider lists it; write a name such " +
                        "as device@3.2/external/100");
        return false;
    }
    if (version->major != 1 && version->major != 3) {
        findings->error(entry.line, "device-version",
                        start + ": the framework refuses cameras of other major versions than 1 " +
                                "and 3; give it one of these");
        return false;
    }
    if (version->major == 1 && version->minor == 0) {
        findings->warning(entry.line, "device-version-1",
                          start + ": the conformance test of a device whose first level is 29 " +
                                  "refuses cameras of version 1.0; give it version 3");
    }
    return true;
}

}  // namespace orvo::mapcheck
