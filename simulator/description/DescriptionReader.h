// SPDX-License-Identifier: Apache-2.0
// DescriptionReader: reads a YAML description and turns each mistake in it into one clear line.

#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <yaml-cpp/yaml.h>

#include "simulator/description/DescriptionKeys.h"

namespace orvo::simulator {

/**
 * Reads one file, then hands out its values checked.
 *
 * Mistakes are kept as "<file>:<line>: <what is wrong>; <what to write instead>", and every getter
 * answers something harmless after one. So a caller reads everything in order and asks once at the
 * end, with mistakes(), whether to believe it.
 *
 * `what` names the thing being read for the message, such as "camera". One thread at a time.
 */
class DescriptionReader {
  public:
    explicit DescriptionReader(std::string file);

    /** The whole document, which must be a map; an empty one after a mistake. */
    YAML::Node load();

    /** The scalar, for values in lists. A number is decimal, or has 0x in front. */
    int64_t numberOf(const YAML::Node& scalar, const std::string& what, int64_t low, int64_t high);
    double realOf(const YAML::Node& scalar, const std::string& what);
    std::string textOf(const YAML::Node& scalar, const std::string& what);

    /** Keeps a mistake at the line of the node, which must be defined. */
    void fail(const YAML::Node& node, const std::string& message);

    /** In the order of their lines; empty if there are none. */
    std::vector<std::string> mistakes() const;
    size_t mistakeCount() const { return mMistakes.size(); }

  private:
    /** An empty document, after a mistake. */
    YAML::Node failToLoad(const std::string& message);
    void failAtLine(int line, const std::string& message);

    const std::string mFile;
    std::multimap<int, std::string> mMistakes;  ///< line, which is 0 for the whole file -> text
};

/**
 * One map of a description, read by the table of its keys: whether a key must be there, its
 * default, its range and its choices are those of the table.
 */
class DescribedMap {
  public:
    /**
     * Complains about a node that is no map, and then of nothing more; about keys that are not in
     * the table, and about those that are there twice.
     */
    DescribedMap(DescriptionReader& reader, const YAML::Node& node, std::string what,
                 const DescriptionTable& table);

    bool isMap() const { return mIsMap; }
    const std::string& what() const { return mWhat; }
    bool has(const char* key) const { return mIsMap && mNode[key].IsDefined(); }

    /** A text that is not empty. */
    std::string text(const char* key) const;
    bool flag(const char* key) const;
    int64_t number(const char* key) const;
    /** The index of the word in the choices. */
    size_t choice(const char* key) const;
    /** The entries of the list; at least one if it must be there. */
    std::vector<YAML::Node> list(const char* key) const;

    /** Keeps a mistake at the line of the key, or of the map if it does not have the key. */
    void fail(const char* key, const std::string& message) const;

  private:
    void checkKeys() const;
    /** The value of a key that must be there; undefined, after a mistake, if it is not. */
    YAML::Node require(const char* key) const;

    DescriptionReader& mReader;
    const YAML::Node mNode;
    const std::string mWhat;
    const DescriptionTable& mTable;
    bool mIsMap;
};

}  // namespace orvo::simulator
