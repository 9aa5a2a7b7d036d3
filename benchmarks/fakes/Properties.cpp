// SPDX-License-Identifier: Apache-2.0
// The property functions of a benchmark: a small table that allocates nothing.

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <array>

#include <cutils/properties.h>

#include "benchmarks/fakes/Surroundings.h"

namespace orvo::benchmarks {
namespace {

struct Property {
    char name[64];
    char value[PROPERTY_VALUE_MAX];
};

std::array<Property, 128> gTable;
size_t gCount = 0;

// The entry of that name, made when there is none.
Property& entry(const char* name) {
    for (size_t i = 0; i < gCount; ++i) {
        if (strcmp(gTable[i].name, name) == 0) return gTable[i];
    }
    if (gCount == gTable.size() || strlen(name) >= sizeof(Property::name)) {
        fprintf(stderr, "no room for the property %s\n", name);
        abort();
    }
    strcpy(gTable[gCount].name, name);
    return gTable[gCount++];
}

}  // namespace

void presetProperty(const std::string& name, const std::string& value) {
    strcpy(entry(name.c_str()).value, value.c_str());
}

extern "C" int property_get(const char* name, char* value, const char* defaultValue) {
    const char* const found = entry(name).value;
    const char* const text = *found == '\0' && defaultValue != nullptr ? defaultValue : found;
    const size_t size = strlen(text);
    memcpy(value, text, size + 1);
    return static_cast<int>(size);
}

// Keeps the platform's rule that a value that is too long changes nothing.
extern "C" int property_set(const char* name, const char* value) {
    if (Journal::isOn()) Journal::add(std::string("property ") + name + " = " + value);
    const size_t size = strlen(value);
    if (size >= PROPERTY_VALUE_MAX) return -1;
    memcpy(entry(name).value, value, size + 1);
    return 0;
}

}  // namespace orvo::benchmarks
