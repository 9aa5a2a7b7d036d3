// SPDX-License-Identifier: Apache-2.0
// DescriptionKeys: the tables by which the descriptions are read, and the page that they make.

#include "simulator/description/DescriptionKeys.h"

#include <cstdio>
#include <cstdlib>
#include <limits>

#include <android-base/strings.h>
#include <android/hardware/camera/common/1.0/types.h>

namespace orvo::simulator {

using android::hardware::camera::common::V1_0::TagBoundaryId;

namespace {

constexpr int64_t kLastTag = std::numeric_limits<uint32_t>::max();
constexpr int64_t kFirstVendorTag = static_cast<int64_t>(TagBoundaryId::VENDOR);
constexpr const char* kRequired = nullptr;
constexpr char kNone[] = "none";  ///< of a list

DescriptionKey text(const char* name, const char* sentence) {
    return {name, "a text", kRequired, sentence, 0, 0, {}};
}

DescriptionKey flag(const char* name, const char* fallback, const char* sentence) {
    return {name, "`true` or `false`", fallback, sentence, 0, 0, {}};
}

DescriptionKey number(const char* name, int64_t low, int64_t high, const char* fallback,
                      const char* sentence) {
    const std::string form = "a number from " + std::to_string(low) + " to " + std::to_string(high);
    return {name, form, fallback, sentence, low, high, {}};
}

DescriptionKey word(const char* name, const std::vector<std::string>& choices,
                    const char* sentence) {
    const std::string form = "`" + android::base::Join(choices, "`, `") + "`";
    return {name, form, kRequired, sentence, 0, 0, choices};
}

DescriptionKey list(const char* name, const char* of, const char* fallback, const char* sentence) {
    return {name, std::string("a list of ") + of, fallback, sentence, 0, 0, {}};
}

const std::vector<std::string> kTypes = {"BYTE", "INT32", "FLOAT", "INT64", "DOUBLE", "RATIONAL"};

std::string rowOf(const DescriptionKey& key) {
    std::string fallback = "must be there";
    if (key.fallback != kRequired) {
        fallback =
                key.fallback == std::string(kNone) ? kNone : "`" + std::string(key.fallback) + "`";
    }
    return "| `" + std::string(key.name) + "` | " + key.form + " | " + fallback + " | " +
           key.sentence + " |\n";
}

}  // namespace

const DescriptionKey& DescriptionTable::key(const std::string& name) const {
    for (const DescriptionKey& key : keys) {
        if (key.name == name) return key;
    }
    fprintf(stderr, "%s has no key %s\n", title, name.c_str());
    abort();  // a mistake of the reader's
}

const DescriptionTable& headsetKeys() {
    static const DescriptionTable kTable = {
            "The device",
            "`device.yaml`",
            {text("name", "names the device for `--device`"),
             list("service", "instances", kRequired,
                  "what the camera provider service loads the library for, one after the other:"
                  " those that the map puts in front of others, and `default/0`, the in-process MR"
                  " provider, which `vendor/etc/mrprovider.yaml` then describes as a provider"),
             list("providers", "files", kNone,
                  "describes one provider process each, in the order of their start; a file is "
                  "named"
                  " from the directory of the device"),
             list("clearOnRestart", "properties", kNone,
                  "what init empties before it starts the service again, such as"
                  " `camera.external.ids`")}};
    return kTable;
}

const DescriptionTable& providerKeys() {
    static const DescriptionTable kTable = {
            "A provider",
            "a file under `providers` of `device.yaml`; `vendor/etc/mrprovider.yaml`",
            {text("instance",
                  "what it registers as, `<type>/<number>`; the manifest declares it for"
                  " `ICameraProvider` and, if it is a process, for `ISimulatedProvider`"),
             flag("torch", "true", "answers whether torch modes can be set"),
             flag("reportsBuiltIn", "false",
                  "also cameras that are built in are reported to a new listener; a provider behind"
                  " another one needs it, as that learns of cameras by reports alone"),
             list("vendorTags", "sections", kNone, "the vendor tags that it tells of"),
             list("cameras", "cameras", kNone, "the cameras that it has")}};
    return kTable;
}

const DescriptionTable& cameraKeys() {
    static const DescriptionTable kTable = {
            "A camera",
            "an entry of `cameras`",
            {text("name",
                  "in the provider's own words: `device@3.2/<type>/<id>`, or version `1.0`; the id "
                  "is"
                  " one that no other camera of the provider has"),
             word("facing", {"BACK", "FRONT", "EXTERNAL"},
                  "where it looks; an `EXTERNAL` one can be plugged in and out, the others are "
                  "built"
                  " in"),
             flag("present", "true", "it is there from the start"),
             flag("flash", "false", "it has a flash, and so a torch"),
             number("orientation", 0, 270, "0",
                    "of its sensor in degrees, clockwise: 0, 90, 180 or 270"),
             number("resourceCost", 0, 100, kRequired,
                    "of the device's means, in percent: cameras whose costs add up to more than 100"
                    " are not open at a time"),
             list("conflictsWith", "names", kNone,
                  "other cameras of the provider that are not open while it is"),
             list("characteristics", "entries", kNone,
                  "beside those that facing, orientation and flash make; none for version 1")}};
    return kTable;
}

const DescriptionTable& characteristicKeys() {
    static const DescriptionTable kTable = {
            "A characteristic",
            "an entry of `characteristics`",
            {number("tag", 0, kLastTag, kRequired, "its number, decimal or with `0x` in front"),
             word("type", kTypes, "of its values"),
             list("values", "numbers", kRequired,
                  "at least one; a `RATIONAL` is `[numerator, denominator]`")}};
    return kTable;
}

const DescriptionTable& vendorTagSectionKeys() {
    static const DescriptionTable kTable = {
            "A section of vendor tags",
            "an entry of `vendorTags`",
            {text("section", "its name, such as `com.example.lamp`"),
             list("tags", "tags", kRequired, "at least one")}};
    return kTable;
}

const DescriptionTable& vendorTagKeys() {
    static const DescriptionTable kTable = {
            "A vendor tag",
            "an entry of `tags`",
            {number("id", kFirstVendorTag, kLastTag, kRequired,
                    "one that no other tag of the provider has, as `0x80010000`"),
             text("name", "without that of its section"), word("type", kTypes, "of its values")}};
    return kTable;
}

std::string descriptionKeysPage() {
    std::string page =
            "# The keys of the descriptions\n\n"
            "What the YAML files of a device may say. A key that is not here is refused, with its\n"
            "file and line. [simulator.md](simulator.md#a-device) shows how the files belong"
            " together.\n";
    for (const DescriptionTable* table :
         {&headsetKeys(), &providerKeys(), &cameraKeys(), &characteristicKeys(),
          &vendorTagSectionKeys(), &vendorTagKeys()}) {
        page += "\n## " + std::string(table->title) + "\n\nIn " + table->where +
                ".\n\n| key | value | if left out | meaning |\n|---|---|---|---|\n";
        for (const DescriptionKey& key : table->keys) page += rowOf(key);
    }
    return page;
}

}  // namespace orvo::simulator
