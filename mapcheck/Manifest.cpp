// SPDX-License-Identifier: Apache-2.0
// Reads the two forms in which a manifest declares an instance: <interface> and <fqname>.

#include "mapcheck/Manifest.h"

#include <stdio.h>

#include "mapcheck/XmlFile.h"

namespace orvo::mapcheck {
namespace {

constexpr char kPackage[] = "android.hardware.camera.provider";
constexpr char kInterface[] = "ICameraProvider";

// The service manager answers for a version with the instances of every later one of its major.
constexpr int kMajor = 2;
constexpr int kLeastMinor = 4;

bool isServedVersion(const std::string& version) {
    int major = 0;
    int minor = 0;
    return sscanf(version.c_str(), "%d.%d", &major, &minor) == 2 && major == kMajor &&
           minor >= kLeastMinor;
}

template <typename Visit>
void forEachChild(const xmlNode* parent, const char* name, Visit visit) {
    for (const xmlNode* node = parent->children; node != nullptr; node = node->next) {
        if (isElement(node, name)) visit(node);
    }
}

template <typename Accept>
bool hasChild(const xmlNode* parent, const char* name, Accept accept) {
    bool found = false;
    forEachChild(parent, name,
                 [&](const xmlNode* node) { found = found || accept(trimmed(contentOf(node))); });
    return found;
}

void addInterface(const xmlNode* interface, std::set<std::string>* instances) {
    if (!hasChild(interface, "name", [](const std::string& text) { return text == kInterface; })) {
        return;
    }
    forEachChild(interface, "instance",
                 [&](const xmlNode* instance) { instances->insert(trimmed(contentOf(instance))); });
}

// Such as "@2.4::ICameraProvider/external/0".
void addFqName(const std::string& text, std::set<std::string>* instances) {
    const size_t colons = text.find("::");
    if (colons == std::string::npos || text[0] != '@') return;
    const size_t slash = text.find('/', colons);
    if (slash == std::string::npos || !isServedVersion(text.substr(1, colons - 1))) return;
    if (text.substr(colons + 2, slash - colons - 2) == kInterface) {
        instances->insert(text.substr(slash + 1));
    }
}

void addHal(const xmlNode* hal, std::set<std::string>* instances) {
    if (attributeOf(hal, "format").value_or("hidl") != "hidl") return;
    if (!hasChild(hal, "name", [](const std::string& text) { return text == kPackage; })) return;
    if (hasChild(hal, "version", isServedVersion)) {
        forEachChild(hal, "interface",
                     [&](const xmlNode* interface) { addInterface(interface, instances); });
    }
    forEachChild(hal, "fqname",
                 [&](const xmlNode* name) { addFqName(trimmed(contentOf(name)), instances); });
}

}  // namespace

bool Manifest::addFile(const std::string& path, Findings* findings) {
    const XmlFile file = XmlFile::read(path);
    if (file.document == nullptr) {
        findings->error(file.mistake.line, file.mistake.code,
                        file.mistake.message + "; name a manifest file");
        return false;
    }
    const xmlNode* const root = xmlDocGetRootElement(file.document.get());
    if (!isElement(root, "manifest")) {
        findings->error(lineOf(root), "wrong-root",
                        "the root element is <" + nameOf(root) +
                                ">, that of a manifest is <manifest>; name a manifest file");
        return false;
    }
    forEachChild(root, "hal", [&](const xmlNode* hal) { addHal(hal, &mInstances); });
    return true;
}

}  // namespace orvo::mapcheck
