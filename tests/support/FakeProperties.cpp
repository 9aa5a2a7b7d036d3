// SPDX-License-Identifier: Apache-2.0
// The property functions of a test process.

#include "tests/support/FakeProperties.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>

#include <cutils/properties.h>

namespace orvo::test {
namespace {

FakeProperties* gCurrent = nullptr;

bool isLegalName(const std::string& name) {
    return !name.empty() && name.front() != '.' && name.back() != '.' &&
           name.find("..") == std::string::npos;
}

}  // namespace

bool operator==(const PropertyWrite& left, const PropertyWrite& right) {
    return left.name == right.name && left.value == right.value && left.accepted == right.accepted;
}

void PrintTo(const PropertyWrite& write, std::ostream* stream) {
    *stream << write.name << " = \"" << write.value << "\"" << (write.accepted ? "" : " (refused)");
}

FakeProperties::FakeProperties() {
    if (gCurrent != nullptr) abort();  // Two stores would split the writes.
    gCurrent = this;
}

FakeProperties::~FakeProperties() {
    gCurrent = nullptr;
}

void FakeProperties::preset(const std::string& name, const std::string& value) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mValues[name] = value;
}

std::string FakeProperties::value(const std::string& name) const {
    const std::lock_guard<std::mutex> lock(mMutex);
    const auto found = mValues.find(name);
    return found == mValues.end() ? "" : found->second;
}

std::vector<PropertyWrite> FakeProperties::writes() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mWrites;
}

std::vector<std::string> FakeProperties::reads() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mReads;
}

std::string FakeProperties::read(const std::string& name) {
    if (onRead) onRead();
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mReads.push_back(name);
    }
    return readsFail ? "" : value(name);
}

bool FakeProperties::write(const std::string& name, const std::string& value) {
    if (onWrite) onWrite();
    const std::lock_guard<std::mutex> lock(mMutex);
    const bool accepted = !writesFail && isLegalName(name) && value.size() < PROPERTY_VALUE_MAX;
    if (accepted) mValues[name] = value;
    mWrites.push_back({name, value, accepted});
    return accepted;
}

extern "C" int property_get(const char* name, char* value, const char* defaultValue) {
    // The platform's own libraries read properties of theirs, also before a test has begun.
    std::string found = gCurrent == nullptr ? "" : gCurrent->read(name);
    if (found.empty() && defaultValue != nullptr) found = defaultValue;
    found.resize(std::min<size_t>(found.size(), PROPERTY_VALUE_MAX - 1));
    memcpy(value, found.c_str(), found.size() + 1);
    return static_cast<int>(found.size());
}

extern "C" int property_set(const char* name, const char* value) {
    if (gCurrent == nullptr) {
        fprintf(stderr, "property_set(%s) in a test without a FakeProperties\n", name);
        abort();
    }
    return gCurrent->write(name, value) ? 0 : -1;
}

}  // namespace orvo::test
