// SPDX-License-Identifier: Apache-2.0
// DescriptionReader: reads a YAML description and turns the first mistake in it into one clear
// line.

#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include <android-base/result.h>
#include <yaml-cpp/yaml.h>

namespace orvo::simulator {

/**
 * Reads one file, then hands out its values checked.
 *
 * The first mistake is kept as "<file>:<line>: <what is wrong>; <what to write instead>", later
 * ones are ignored, and every getter answers something harmless after a mistake. So a caller reads
 * everything in order and asks once at the end, with error(), whether to believe it.
 *
 * `what` names the thing being read for the message, such as "camera". Keys are required unless a
 * fallback is given. One thread at a time.
 */
class DescriptionReader {
  public:
    explicit DescriptionReader(std::string file);

    /** The whole document, which must be a map; an undefined node after a mistake. */
    YAML::Node load();

    /** Complains about a key that is not in the list, and about a key that is there twice. */
    void expectKeys(const YAML::Node& map, const std::string& what,
                    std::initializer_list<const char*> keys);

    /** A text that is not empty. */
    std::string text(const YAML::Node& map, const char* key, const std::string& what);
    bool flag(const YAML::Node& map, const char* key, const std::string& what, bool fallback);
    /** A number from `low` to `high`, decimal or with 0x in front. */
    int64_t number(const YAML::Node& map, const char* key, const std::string& what, int64_t low,
                   int64_t high, std::optional<int64_t> fallback = std::nullopt);
    /** The index, in `choices`, of the text under the key. */
    size_t choice(const YAML::Node& map, const char* key, const std::string& what,
                  const std::vector<std::string>& choices);
    /** The entries of the list under the key; none if the key is missing and not required. */
    std::vector<YAML::Node> list(const YAML::Node& map, const char* key, const std::string& what,
                                 bool required);
    /** The scalar as a number; for values in lists. */
    int64_t numberOf(const YAML::Node& scalar, const std::string& what, int64_t low, int64_t high);
    double realOf(const YAML::Node& scalar, const std::string& what);
    std::string textOf(const YAML::Node& scalar, const std::string& what);
    /** True, and a mistake kept, unless the node is a map. */
    bool isNotMap(const YAML::Node& node, const std::string& what);

    /** Keeps a mistake at the line of the node, which must be defined. */
    void fail(const YAML::Node& node, const std::string& message);

    /** The first mistake, one line; nothing if there was none. */
    const std::optional<std::string>& error() const { return mError; }

  private:
    void failAtLine(int line, const std::string& message);
    /** The value under a required key; an undefined node, and a mistake, if it is missing. */
    YAML::Node require(const YAML::Node& map, const char* key, const std::string& what);

    const std::string mFile;
    std::optional<std::string> mError;
};

}  // namespace orvo::simulator
