// SPDX-License-Identifier: Apache-2.0
// The modules of the Android.bp files, as a device's build reads them.
#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace orvo::test {

/** The files of the device's build, relative to the source directory. */
inline const std::vector<std::string> kBlueprints = {"Android.bp", "device/Android.bp",
                                                     "fuzz/cc_fuzz.bp"};

/** What the reader of Android.bp said. */
struct BlueprintReading {
    bool accepted = false;
    std::string output;      ///< JSON, if all files were accepted.
    std::string complaints;  ///< One line for each mistake.
};

/** Reads the files in one go; they are relative to `directory`, as their names are in the answer.
 */
BlueprintReading readBlueprints(const std::filesystem::path& directory,
                                const std::vector<std::string>& files);

/** The modules of several files. */
class BlueprintModules {
  public:
    /** `json` is what the reader printed. */
    explicit BlueprintModules(const std::string& json);

    /** The module of that name; the test fails and it is null if there is none. */
    nlohmann::json module(const std::string& name) const;
    /** The names of all modules of one type. */
    std::vector<std::string> namesOfType(const std::string& type) const;

    /** One property with what the defaults of the module give it; lists are joined. Null if none.
     */
    nlohmann::json property(const std::string& module, const std::string& property) const;
    /** The same for a list, as a set. */
    std::set<std::string> list(const std::string& module, const std::string& property) const;

    /** Every file that a module names, relative to the directory of the reading. */
    std::set<std::string> files() const;
    /** Those that are compiled. */
    std::set<std::string> sources() const;

  private:
    nlohmann::json mModules;
};

}  // namespace orvo::test
