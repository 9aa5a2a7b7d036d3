// SPDX-License-Identifier: Apache-2.0
// From the command line to the exit status.

#include "mapcheck/MapCheck.h"

#include <stdio.h>

#include <algorithm>
#include <set>

#include "host/vintf/VintfManifest.h"
#include "mapcheck/EntryChecks.h"
#include "mapcheck/Finding.h"
#include "mapcheck/MapFile.h"
#include "mapcheck/Report.h"

namespace orvo::mapcheck {
namespace {

void append(const Findings& findings, std::vector<Finding>* all) {
    const std::vector<Finding> sorted = findings.byLine();
    all->insert(all->end(), sorted.begin(), sorted.end());
}

constexpr char kCameraProvider[] = "android.hardware.camera.provider@2.4::ICameraProvider";

// What the manifests declare together; false when one of them is of no use.
bool readManifests(const std::vector<std::string>& files, std::set<std::string>* declared,
                   std::vector<Finding>* all) {
    VintfManifest manifest;
    bool usable = true;
    for (const std::string& file : files) {
        Findings findings(file);
        for (const ManifestMistake& mistake : manifest.addFile(file)) {
            findings.error(mistake.line, mistake.code, mistake.message);
        }
        usable = findings.empty() && usable;
        append(findings, all);
    }
    const std::vector<std::string> instances = manifest.instancesOf(kCameraProvider);
    declared->insert(instances.begin(), instances.end());
    return usable;
}

int checkMap(const std::string& file, const Surroundings& surroundings, std::vector<Finding>* all) {
    Findings findings(file);
    const MapFile map = MapFile::read(file, &findings);
    if (map.usable) checkEntries(map.entries, surroundings, &findings);
    append(findings, all);
    if (!map.usable) return UNUSABLE;
    return findings.empty() ? CLEAN : FINDINGS;
}

int checkAll(const Options& options, std::vector<Finding>* all) {
    std::set<std::string> declared;
    // Without all of it, declared instances would be taken for undeclared ones.
    if (!readManifests(options.manifests, &declared, all)) return UNUSABLE;

    Surroundings surroundings;
    if (!options.manifests.empty()) surroundings.declared = declared;
    surroundings.providers = options.providers;
    int status = CLEAN;
    for (const std::string& file : options.files) {
        status = std::max(status, checkMap(file, surroundings, all));
    }
    return status;
}

// The status, unless the text cannot be written to the last byte.
int print(const std::string& text, int status) {
    if (fwrite(text.data(), 1, text.size(), stdout) == text.size() && fflush(stdout) == 0) {
        return status;
    }
    perror("orvo-mapcheck: the output cannot be written");
    return UNUSABLE;
}

}  // namespace

int checkMaps(int argc, char** argv, DescriptionReader readDescription) {
    Options options;
    if (const OptionError error = parseOptions(argc, argv, readDescription, &options)) {
        fprintf(stderr, "orvo-mapcheck: %s\n", error->c_str());
        return UNUSABLE;
    }
    if (options.help) return print(helpText(readDescription != nullptr), CLEAN);
    std::vector<Finding> all;
    const int status = checkAll(options, &all);
    return print(options.json ? toJson(all) : toText(all), status);
}

}  // namespace orvo::mapcheck
