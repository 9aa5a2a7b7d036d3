// SPDX-License-Identifier: Apache-2.0
// The functions of <cutils/properties.h> over the device's property store.

#include <cutils/properties.h>

#include <errno.h>
#include <inttypes.h>
#include <string.h>

#include <algorithm>
#include <limits>
#include <set>
#include <string>
#include <string_view>

#include <log/log.h>

#include "PropertyRules.h"
#include "PropertyStore.h"
#include "host/Mutex.h"

using orvo::PropertyStore;

namespace {

constexpr char kLogTag[] = "properties";

// What property_get yields for a value that does not fit; its length is part of the contract.
constexpr char kValueTooLong[] = "(too long for property_get, property_list has all)";
static_assert(sizeof(kValueTooLong) - 1 == 50);

/** Copies at most what a property value may hold and answers the length of the copy. */
int copyValue(std::string_view text, char* value) {
    const size_t length = std::min<size_t>(text.size(), PROP_VALUE_MAX - 1);
    memcpy(value, text.data(), length);
    value[length] = '\0';
    return static_cast<int>(length);
}

/** One line for each different reason, however often it is met. */
void logOnce(const std::string& error) {
    static orvo::Mutex mutex;
    static auto* const logged PT_GUARDED_BY(mutex) = new std::set<std::string>;
    {
        orvo::MutexLock lock(mutex);
        if (!logged->insert(error).second) return;
    }
    __android_log_write(ANDROID_LOG_ERROR, kLogTag, error.c_str());
}

std::string storedValue(const char* key) {
    const auto store = PropertyStore::ofThisDevice();
    return store ? (*store)->get(key).value_or("") : "";  // a reader is content with the default
}

/** The integer at the start of the property's value, if it has one between the two limits. */
int64_t getInteger(const char* key, int64_t lowest, int64_t highest, int64_t defaultValue) {
    if (key == nullptr) return defaultValue;
    char text[PROPERTY_VALUE_MAX];
    property_get(key, text, "");
    char* end = nullptr;
    errno = 0;
    const intmax_t number = strtoimax(text, &end, 0);
    if (end == text || errno == ERANGE || number < lowest || number > highest) return defaultValue;
    return number;
}

}  // namespace

int property_get(const char* key, char* value, const char* default_value) {
    const std::string stored = key == nullptr ? std::string() : storedValue(key);
    if (stored.size() >= PROP_VALUE_MAX) return copyValue(kValueTooLong, value);
    if (!stored.empty()) return copyValue(stored, value);
    return copyValue(default_value == nullptr ? "" : default_value, value);
}

int property_set(const char* key, const char* value) {
    if (key == nullptr || !orvo::isLegalPropertyName(key)) return -1;
    const std::string_view text = value == nullptr ? "" : value;
    const bool readOnly = orvo::isReadOnlyProperty(key);
    if (text.size() >= PROP_VALUE_MAX && !readOnly) return -1;
    if (!orvo::isValidUtf8(text)) return -1;
    // Commands are for the process that starts services, which this platform does not have.
    if (orvo::isControlProperty(key)) return 0;

    const auto store = PropertyStore::ofThisDevice();
    if (!store) {
        logOnce("properties cannot be set: " + store.error().message());
        return -1;
    }
    const auto overwrite =
            readOnly ? PropertyStore::Overwrite::REFUSED : PropertyStore::Overwrite::ALLOWED;
    return (*store)->set(key, text, overwrite) ? 0 : -1;
}

int property_list(void (*propfn)(const char* key, const char* value, void* cookie), void* cookie) {
    const auto store = PropertyStore::ofThisDevice();
    if (!store) return -1;
    const auto properties = (*store)->list();
    if (!properties) return -1;
    // A copy, so that the function may itself get and set properties.
    for (const auto& [name, text] : *properties) propfn(name.c_str(), text.c_str(), cookie);
    return 0;
}

int8_t property_get_bool(const char* key, int8_t default_value) {
    if (key == nullptr) return default_value;
    char buffer[PROPERTY_VALUE_MAX];
    property_get(key, buffer, "");
    const std::string_view text = buffer;
    for (std::string_view yes : {"1", "y", "yes", "on", "true"}) {
        if (text == yes) return 1;
    }
    for (std::string_view no : {"0", "n", "no", "off", "false"}) {
        if (text == no) return 0;
    }
    return default_value;
}

int32_t property_get_int32(const char* key, int32_t default_value) {
    using Limits = std::numeric_limits<int32_t>;
    return static_cast<int32_t>(getInteger(key, Limits::min(), Limits::max(), default_value));
}

int64_t property_get_int64(const char* key, int64_t default_value) {
    using Limits = std::numeric_limits<int64_t>;
    return getInteger(key, Limits::min(), Limits::max(), default_value);
}
