// SPDX-License-Identifier: Apache-2.0
// Reads the text of a manifest file into a VintfManifest.

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include <pugixml.hpp>

#include "VintfManifest.h"

namespace orvo {

using android::base::Result;
using android::base::ResultError;
using android::base::unexpected;

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

/** Reads one file. */
class Reader {
  public:
    Reader(const std::string& text, const std::string& name, VintfManifest* manifest)
        : mText(text), mName(name), mManifest(manifest) {}

    Result<void> read() {
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

    Result<void> readManifest(const pugi::xml_node& root) {
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
        for (const pugi::xml_node& hal : root.children("hal")) {
            if (auto read = readHal(hal); !read) return read;
        }
        return {};
    }

    Result<void> readHal(const pugi::xml_node& node) {
        // Services of other kinds are none of this service manager's.
        if (std::string_view(node.attribute("format").as_string("hidl")) != "hidl") return {};

        Hal hal;
        hal.package = textOf(node.child("name"));
        if (hal.package.empty()) {
            return fail(node, "<hal> without a <name>; name the package, such as a.b.c");
        }
        const auto transport = readTransport(node);
        if (!transport) return unexpected(transport.error());
        hal.transport = *transport;
        for (const pugi::xml_node& version : node.children("version")) {
            hal.versions.push_back(textOf(version));
            if (!parse(hal.package, hal.versions.back(), "I")) {
                return fail(version, "\"" + hal.package + "@" + hal.versions.back() +
                                             "\" is no package with a version such as a.b@2.4");
            }
        }
        for (const pugi::xml_node& interface : node.children("interface")) {
            if (auto read = readInterface(interface, hal); !read) return read;
        }
        for (const pugi::xml_node& fqname : node.children("fqname")) {
            if (auto read = readFqName(fqname, hal); !read) return read;
        }
        return {};
    }

    Result<Transport> readTransport(const pugi::xml_node& hal) {
        const pugi::xml_node node = hal.child("transport");
        const std::string text = textOf(node);
        if (text == "hwbinder") return Transport::HWBINDER;
        if (text == "passthrough") return Transport::PASSTHROUGH;
        return fail(node ? node : hal,
                    "unknown transport \"" + text + "\"; <transport> is hwbinder or passthrough");
    }

    Result<void> readInterface(const pugi::xml_node& node, const Hal& hal) {
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
                auto declared = declare(instance, *name, textOf(instance), hal);
                if (!declared) return declared;
            }
        }
        return {};
    }

    Result<void> readFqName(const pugi::xml_node& node, const Hal& hal) {
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

    Result<void> declare(const pugi::xml_node& node, const InterfaceName& name,
                         const std::string& instance, const Hal& hal) {
        if (instance.empty()) return fail(node, "empty instance name; give one such as default");
        if (mManifest->declare(name, instance, hal.transport, mByFramework)) return {};
        return fail(node, "instance \"" + instance + "\" of " + name.interface +
                                  " is declared with two transports; remove one");
    }

    static std::optional<InterfaceName> parse(const std::string& package,
                                              const std::string& version,
                                              const std::string& interface) {
        return InterfaceName::parse(package + "@" + version + "::" + interface);
    }

    ResultError fail(const pugi::xml_node& node, const std::string& problem) const {
        return fail(node.offset_debug(), problem);
    }

    ResultError fail(ptrdiff_t offset, const std::string& problem) const {
        const size_t end =
                std::min(mText.size(), static_cast<size_t>(std::max<ptrdiff_t>(offset, 0)));
        const auto line = 1 + std::count(mText.begin(), mText.begin() + end, '\n');
        const size_t lineStart = end == 0 ? 0 : mText.rfind('\n', end - 1) + 1;
        return {mName + ":" + std::to_string(line) + ":" + std::to_string(end - lineStart + 1) +
                        ": " + onOneLine(problem),
                0 /* no errno */};
    }

    const std::string& mText;
    const std::string& mName;
    VintfManifest* const mManifest;
    bool mByFramework = false;
};

}  // namespace

Result<void> VintfManifest::addText(const std::string& text, const std::string& name) {
    return Reader(text, name, this).read();
}

}  // namespace orvo
