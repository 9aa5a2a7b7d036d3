// SPDX-License-Identifier: Apache-2.0
// Reads the text of a manifest file into a VintfManifest.

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include <pugixml.hpp>

#include "VintfManifest.h"

namespace orvo {

namespace {

using Transport = VintfManifest::Transport;

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\n";
    const size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string textOf(const pugi::xml_node& node) {
    return std::string(trimmed(node.text().get()));
}

/** A file may have line breaks where it is quoted; the error stays one line. */
std::string onOneLine(std::string text) {
    std::replace_if(
            text.begin(), text.end(), [](unsigned char c) { return c < ' '; }, ' ');
    return text;
}

/** Reads one file. Every read... answers false after it has written the error line. */
class Reader {
  public:
    Reader(const std::string& text, const std::string& name, VintfManifest* manifest,
           std::string* error)
        : mText(text), mName(name), mManifest(manifest), mError(error) {}

    bool read() {
        pugi::xml_document document;
        const pugi::xml_parse_result result =
                document.load_buffer(mText.data(), mText.size(), pugi::parse_default);
        if (result.status == pugi::status_no_document_element) {
            return fail(0, "there is no element; a manifest has a <manifest> element");
        }
        if (!result) return fail(result.offset, std::string(result.description()) + "; repair it");
        return readManifest(document.document_element());
    }

  private:
    /** What one <hal> says about all of its instances. */
    struct Hal {
        std::string package;
        Transport transport;
        std::vector<std::string> versions;
    };

    bool readManifest(const pugi::xml_node& root) {
        if (std::string_view(root.name()) != "manifest") {
            return fail(root, std::string("the root element is <") + root.name() +
                                      ">; it must be <manifest>");
        }
        const std::string version = root.attribute("version").value();
        if (version.substr(0, 2) != "1." && version.substr(0, 2) != "2.") {
            return fail(root, "unknown manifest version \"" + version + "\"; use version=\"1.0\"");
        }
        const std::string type = root.attribute("type").as_string("device");
        if (type != "device" && type != "framework") {
            return fail(root, "unknown manifest type \"" + type +
                                      "\"; use type=\"device\" or type=\"framework\"");
        }
        mByFramework = type == "framework";
        const auto hals = root.children("hal");
        return std::all_of(hals.begin(), hals.end(),
                           [this](const pugi::xml_node& hal) { return readHal(hal); });
    }

    bool readHal(const pugi::xml_node& node) {
        // Services of other kinds are none of this service manager's.
        if (std::string_view(node.attribute("format").as_string("hidl")) != "hidl") return true;

        Hal hal;
        hal.package = textOf(node.child("name"));
        if (hal.package.empty()) {
            return fail(node, "<hal> without a <name>; name the package, such as a.b.c");
        }
        if (!readTransport(node, &hal.transport)) return false;
        for (const pugi::xml_node& version : node.children("version")) {
            hal.versions.push_back(textOf(version));
            if (!parse(hal.package, hal.versions.back(), "I")) {
                return fail(version, "\"" + hal.package + "@" + hal.versions.back() +
                                             "\" is no package with a version such as a.b@2.4");
            }
        }
        for (const pugi::xml_node& interface : node.children("interface")) {
            if (!readInterface(interface, hal)) return false;
        }
        for (const pugi::xml_node& fqname : node.children("fqname")) {
            if (!readFqName(fqname, hal)) return false;
        }
        return true;
    }

    bool readTransport(const pugi::xml_node& hal, Transport* transport) {
        const pugi::xml_node node = hal.child("transport");
        const std::string text = textOf(node);
        if (text == "hwbinder") {
            *transport = Transport::HWBINDER;
        } else if (text == "passthrough") {
            *transport = Transport::PASSTHROUGH;
        } else {
            return fail(node ? node : hal, "unknown transport \"" + text +
                                                   "\"; <transport> is hwbinder or passthrough");
        }
        return true;
    }

    bool readInterface(const pugi::xml_node& node, const Hal& hal) {
        const std::string interface = textOf(node.child("name"));
        if (hal.versions.empty()) {
            return fail(node, "<interface> in a <hal> without a <version>; add one such as 2.4");
        }
        for (const std::string& version : hal.versions) {
            const auto name = parse(hal.package, version, interface);
            if (!name) {
                return fail(node, "\"" + interface +
                                          "\" is no interface name; <name> is one such as IFoo");
            }
            for (const pugi::xml_node& instance : node.children("instance")) {
                if (!declare(instance, *name, textOf(instance), hal)) return false;
            }
        }
        return true;
    }

    bool readFqName(const pugi::xml_node& node, const Hal& hal) {
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
        return declare(node, *name, text.substr(slash + 1), hal);
    }

    bool declare(const pugi::xml_node& node, const InterfaceName& name, const std::string& instance,
                 const Hal& hal) {
        if (instance.empty()) return fail(node, "empty instance name; give one such as default");
        if (mManifest->declare(name, instance, hal.transport, mByFramework)) return true;
        return fail(node, "instance \"" + instance + "\" of " + name.interface +
                                  " is declared with two transports; remove one");
    }

    static std::optional<InterfaceName> parse(const std::string& package,
                                              const std::string& version,
                                              const std::string& interface) {
        return InterfaceName::parse(package + "@" + version + "::" + interface);
    }

    bool fail(const pugi::xml_node& node, const std::string& problem) {
        return fail(node.offset_debug(), problem);
    }

    bool fail(ptrdiff_t offset, const std::string& problem) {
        const size_t end =
                std::min(mText.size(), static_cast<size_t>(std::max<ptrdiff_t>(offset, 0)));
        const auto line = 1 + std::count(mText.begin(), mText.begin() + end, '\n');
        const size_t lineStart = end == 0 ? 0 : mText.rfind('\n', end - 1) + 1;
        *mError = mName + ":" + std::to_string(line) + ":" + std::to_string(end - lineStart + 1) +
                  ": " + onOneLine(problem);
        return false;
    }

    const std::string& mText;
    const std::string& mName;
    VintfManifest* const mManifest;
    std::string* const mError;
    bool mByFramework = false;
};

}  // namespace

bool VintfManifest::addText(const std::string& text, const std::string& name, std::string* error) {
    return Reader(text, name, this, error).read();
}

}  // namespace orvo
