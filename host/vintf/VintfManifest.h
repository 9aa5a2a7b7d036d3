// SPDX-License-Identifier: Apache-2.0
// VintfManifest: which service instances the device's manifest files declare, and how they serve.

#pragma once

#include <stdint.h>

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "host/vintf/XmlFile.h"

namespace orvo {

/** Something that is wrong with a manifest file; the message is one line: what, and what to do. */
struct ManifestMistake : XmlMistake {
    std::string file;

    /** "<file>:<line>: <message>". */
    std::string toText() const;
};
using ManifestMistakes = std::vector<ManifestMistake>;

/** An interface name in parts: "a.b@2.4::IFoo". */
struct InterfaceName {
    std::string package;
    uint32_t major = 0;
    uint32_t minor = 0;
    std::string interface;

    /** Nothing if the text is not of this form. */
    static std::optional<InterfaceName> parse(std::string_view text);
};

/**
 * The union of any number of manifest files. Not thread-safe while files are added; afterwards any
 * thread may look.
 *
 * An instance that is declared for a version answers for every version of the same major number and
 * the same or a smaller minor one.
 */
class VintfManifest {
  public:
    enum class Transport { HWBINDER, PASSTHROUGH };

    /**
     * Adds what a file declares.
     *
     * @return all that is wrong with it; what is not wrong has been added.
     */
    ManifestMistakes addFile(const std::string& file);

    /**
     * Adds a device's own files: `manifest.xml` in the directory, then `manifest/<any>.xml` sorted
     * by name. Files that do not exist declare nothing.
     */
    ManifestMistakes addDirectory(const std::string& directory);

    /** As addFile, with the text of a file and a name for mistakes. */
    ManifestMistakes addText(const std::string& text, const std::string& name);

    /** How an instance serves; nothing if it is not declared or fqName is no interface name.
     *  Framework manifests are asked before device manifests. */
    std::optional<Transport> transportOf(const std::string& fqName,
                                         const std::string& instance) const;

    /** The sorted names of the instances that are declared for an interface. */
    std::vector<std::string> instancesOf(const std::string& fqName) const;

    /** One declared instance of an interface. */
    struct Declaration {
        uint32_t minor;
        std::string instance;
        Transport transport;
        bool byFramework;
    };

    /** False if the very same instance is declared with another transport. */
    bool declare(const InterfaceName& name, const std::string& instance, Transport transport,
                 bool byFramework);

  private:
    /** Package, major version, interface. */
    using Key = std::tuple<std::string, uint32_t, std::string>;

    /** The declarations for `name`'s package, major version and interface; null if there are none.
     */
    const std::vector<Declaration>* find(const InterfaceName& name) const;

    /** Interface without its minor version -> its declared instances, in the order they came. */
    std::map<Key, std::vector<Declaration>> mDeclarations;
};

}  // namespace orvo
