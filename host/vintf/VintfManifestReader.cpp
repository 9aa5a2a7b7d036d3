// SPDX-License-Identifier: Apache-2.0
// Reads a manifest file into a VintfManifest.

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "host/vintf/VintfManifest.h"

namespace orvo {

namespace {

using Transport = VintfManifest::Transport;

constexpr char kNameAnother[] = "; name a manifest file";

/** A file may have line breaks where it is quoted; the mistake stays one line. */
std::string onOneLine(std::string text) {
    std::replace_if(
            text.begin(), text.end(), [](unsigned char c) { return c < ' '; }, ' ');
    return text;
}

std::string textOf(const xmlNode* node) {
    return node == nullptr ? "" : trimmed(contentOf(node));
}

std::vector<const xmlNode*> childrenOf(const xmlNode* parent, const char* name) {
    std::vector<const xmlNode*> children;
    for (const xmlNode* node = parent->children; node != nullptr; node = node->next) {
        if (isElement(node, name)) children.push_back(node);
    }
    return children;
}

/** The first one, or null. */
const xmlNode* childOf(const xmlNode* parent, const char* name) {
    const std::vector<const xmlNode*> children = childrenOf(parent, name);
    return children.empty() ? nullptr : children.front();
}

std::optional<InterfaceName> nameOf(const std::string& package, const std::string& version,
                                    const std::string& interface) {
    return InterfaceName::parse(package + "@" + version + "::" + interface);
}

/** Reads one file; goes on behind a mistake with what does not depend on it. */
class Reader {
  public:
    Reader(const std::string& file, VintfManifest* manifest) : mFile(file), mManifest(manifest) {}

    ManifestMistakes read(const XmlFile& file) {
        if (file.document == nullptr) {
            mMistakes.push_back({file.mistake, mFile});
            mMistakes.back().message = onOneLine(file.mistake.message) + kNameAnother;
        } else {
            readManifest(xmlDocGetRootElement(file.document.get()));
        }
        return std::move(mMistakes);
    }

  private:
    /** What one <hal> says about all of its instances. */
    struct Hal {
        std::string package;
        Transport transport = Transport::HWBINDER;
        std::vector<std::string> versions;
    };

    void readManifest(const xmlNode* root) {
        if (!isElement(root, "manifest")) {
            return fail(root,
                        "the root element is <" + orvo::nameOf(root) +
                                ">, that of a manifest is <manifest>" + kNameAnother,
                        "wrong-root");
        }
        const std::string version = attributeOf(root, "version").value_or("");
        if (version.substr(0, 2) != "1." && version.substr(0, 2) != "2.") {
            fail(root, "unknown manifest version \"" + version + "\"; use version=\"1.0\"");
        }
        const std::string type = attributeOf(root, "type").value_or("device");
        if (type != "device" && type != "framework") {
            fail(root, "unknown manifest type \"" + type +
                               "\"; use type=\"device\" or type=\"framework\"");
        }
        mByFramework = type == "framework";
        for (const xmlNode* hal : childrenOf(root, "hal")) readHal(hal);
    }

    void readHal(const xmlNode* node) {
        // Services of other kinds are none of this service manager's.
        if (attributeOf(node, "format").value_or("hidl") != "hidl") return;

        Hal hal;
        hal.package = textOf(childOf(node, "name"));
        if (hal.package.empty()) {
            return fail(node, "<hal> without a <name>; name the package, such as a.b.c");
        }
        readTransport(node, &hal);
        for (const xmlNode* version : childrenOf(node, "version")) {
            hal.versions.push_back(textOf(version));
            if (!nameOf(hal.package, hal.versions.back(), "I")) {
                fail(version, "\"" + hal.package + "@" + hal.versions.back() +
                                      "\" is no package with a version such as a.b@2.4");
                hal.versions.pop_back();
            }
        }
        for (const xmlNode* interface : childrenOf(node, "interface")) {
            readInterface(interface, hal, childOf(node, "version") != nullptr);
        }
        for (const xmlNode* fqname : childrenOf(node, "fqname")) readFqName(fqname, hal);
    }

    void readTransport(const xmlNode* hal, Hal* read) {
        const xmlNode* const node = childOf(hal, "transport");
        const std::string text = textOf(node);
        if (text == "passthrough") {
            read->transport = Transport::PASSTHROUGH;
        } else if (text != "hwbinder") {
            fail(node != nullptr ? node : hal,
                 "unknown transport \"" + text + "\"; <transport> is hwbinder or passthrough");
        }
    }

    void readInterface(const xmlNode* node, const Hal& hal, bool hasVersion) {
        if (!hasVersion) {
            return fail(node, "<interface> in a <hal> without a <version>; add one such as 2.4");
        }
        const std::string interface = textOf(childOf(node, "name"));
        if (!nameOf("a", "1.0", interface)) {
            return fail(node,
                        "\"" + interface + "\" is no interface name; <name> is one such as IFoo");
        }
        for (const std::string& version : hal.versions) {
            for (const xmlNode* instance : childrenOf(node, "instance")) {
                declare(instance, *nameOf(hal.package, version, interface), textOf(instance), hal);
            }
        }
    }

    void readFqName(const xmlNode* node, const Hal& hal) {
        const std::string text = textOf(node);
        const size_t slash = text.find('/');
        // The package comes from <name>, so the text begins with the version.
        const auto name = slash == std::string::npos || text[0] != '@'
                                  ? std::nullopt
                                  : InterfaceName::parse(hal.package + text.substr(0, slash));
        if (!name) {
            return fail(node, "\"" + text +
                                      "\" is no instance; <fqname> is one such as "
                                      "@2.4::IFoo/default");
        }
        declare(node, *name, text.substr(slash + 1), hal);
    }

    void declare(const xmlNode* node, const InterfaceName& name, const std::string& instance,
                 const Hal& hal) {
        if (instance.empty()) return fail(node, "empty instance name; give one such as default");
        if (mManifest->declare(name, instance, hal.transport, mByFramework)) return;
        fail(node, "instance \"" + instance + "\" of " + name.interface +
                           " is declared with two transports; remove one");
    }

    void fail(const xmlNode* node, const std::string& message,
              const char* code = "wrong-manifest") {
        mMistakes.push_back({{code, lineOf(node), onOneLine(message)}, mFile});
    }

    const std::string& mFile;
    VintfManifest* const mManifest;
    bool mByFramework = false;
    ManifestMistakes mMistakes;
};

}  // namespace

ManifestMistakes VintfManifest::addFile(const std::string& file) {
    return Reader(file, this).read(XmlFile::read(file));
}

ManifestMistakes VintfManifest::addText(const std::string& text, const std::string& name) {
    return Reader(name, this).read(XmlFile::parse(text));
}

}  // namespace orvo
