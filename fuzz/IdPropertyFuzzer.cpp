// SPDX-License-Identifier: Apache-2.0
// The edits of the camera id properties, held against a model that was written without a look at
// them.

#include <iterator>
#include <map>
#include <string>

#include "fuzz/support/ByteSource.h"
#include "fuzz/support/Require.h"
#include "provider/naming/CameraIdProperty.h"
#include "tests/support/FakeProperties.h"

namespace {

namespace implementation = android::hardware::camera::provider::V2_4::implementation;

using orvo::fuzz::ByteSource;
using orvo::fuzz::require;
using orvo::test::FakeProperties;

constexpr size_t kLongestValue = 91;

/** Ends at the first NUL, as everything does that passes through the property functions. */
std::string upToNul(const std::string& text) {
    std::string result;
    for (size_t i = 0; i < text.size() && text[i] != '\0'; i++) result += text[i];
    return result;
}

/** The properties as they should be, edited by the rules and one character at a time. */
class Model {
  public:
    explicit Model(const std::string& type) : mName(upToNul("camera." + type + ".ids")) {}

    const std::string& name() const { return mName; }

    void append(std::string* stored, const std::string& id) const {
        std::string value = seen(*stored);
        if (!value.empty()) value += ", ";
        write(stored, upToNul(value + id));
    }

    void remove(std::string* stored, const std::string& id) const {
        const std::string value = seen(*stored);
        if (value.empty()) return;
        std::string left;
        bool found = false;
        for (size_t i = 0; i < value.size();) {
            if (!found && matches(value, i, id)) {
                found = true;
                i += id.size();
                // The separator behind it is a comma and whatever is next.
                if (i < value.size() && value[i] == ',') i += 2;
                continue;
            }
            left += value[i++];
        }
        if (!left.empty() && left[left.size() - 1] == ' ') left.resize(left.size() - 1);
        if (!left.empty() && left[left.size() - 1] == ',') left.resize(left.size() - 1);
        write(stored, left);
    }

  private:
    static bool matches(const std::string& value, size_t at, const std::string& id) {
        for (size_t i = 0; i < id.size(); i++) {
            if (at + i >= value.size() || value[at + i] != id[i]) return false;
        }
        return true;
    }

    static std::string seen(const std::string& stored) {
        return stored.size() > kLongestValue ? stored.substr(0, kLongestValue) : stored;
    }

    /** The store refuses names with an empty part at either end or inside, and long values. */
    void write(std::string* stored, const std::string& value) const {
        const bool badName = mName.back() == '.' || mName.find("..") != std::string::npos;
        if (!badName && value.size() <= kLongestValue) *stored = value;
    }

    const std::string mName;
};

std::string chooseId(ByteSource& source) {
    static const char* const kIds[] = {"0", "1", "10", "101", "usb-7C21", ",", " ", ", ", ""};
    const size_t choice = source.below(16);
    return choice < std::size(kIds) ? kIds[choice] : source.text(95);
}

std::string chooseType(ByteSource& source) {
    static const char* const kTypes[] = {"external", "legacy", ""};
    const size_t choice = source.below(4);
    return choice < std::size(kTypes) ? kTypes[choice] : source.text();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ByteSource source(data, size);
    FakeProperties properties;
    std::map<std::string, std::string> expected;  // Key: property name. Value: its value.
    while (!source.empty()) {
        const size_t operation = source.below(8);
        const std::string type = chooseType(source);
        const Model model(type);
        std::string& value = expected[model.name()];
        if (operation == 0) {
            // As another process may have left it.
            value = upToNul(source.text());
            properties.preset(model.name(), value);
        } else if (operation < 4) {
            const std::string id = chooseId(source);
            implementation::removeCameraIdFromSystemProperty(type, id);
            model.remove(&value, id);
        } else {
            const std::string id = chooseId(source);
            implementation::appendCameraIdToSystemProperty(type, id);
            model.append(&value, id);
        }
        for (const auto& [name, wanted] : expected) {
            require(properties.value(name) == wanted, "the property is what the model says",
                    name + " = '" + properties.value(name) + "' instead of '" + wanted + "'");
        }
    }
    return 0;
}
