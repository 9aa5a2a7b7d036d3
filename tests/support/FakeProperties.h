// SPDX-License-Identifier: Apache-2.0
// A property store in memory, behind the platform's property functions, that records every write.
#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <ostream>
#include <string>
#include <vector>

namespace orvo::test {

/** One call of property_set. */
struct PropertyWrite {
    std::string name;
    std::string value;
    bool accepted = true;
};

bool operator==(const PropertyWrite& left, const PropertyWrite& right);
void PrintTo(const PropertyWrite& write, std::ostream* stream);

/**
 * Serves property_get and property_set of the whole process while it exists; at most one does at a
 * time. Keeps the platform's rules for values (91 bytes) and for names (no empty part): a refused
 * write changes nothing. Any thread.
 */
class FakeProperties {
  public:
    FakeProperties();
    ~FakeProperties();
    FakeProperties(const FakeProperties&) = delete;
    FakeProperties& operator=(const FakeProperties&) = delete;

    /** Gives a property a value that the test needs, without a rule and without a record. */
    void preset(const std::string& name, const std::string& value);
    /** The value of a property; "" when it was never set. */
    std::string value(const std::string& name) const;
    /** Every write so far, refused ones included, oldest first. */
    std::vector<PropertyWrite> writes() const;
    /** The names that were read so far, oldest first. */
    std::vector<std::string> reads() const;

    /** Every read fails, which gives its default; every write is refused. */
    std::atomic<bool> readsFail = false;
    std::atomic<bool> writesFail = false;
    /** Run at the start of every write and read, before the store is locked. */
    std::function<void()> onWrite;
    std::function<void()> onRead;

    std::string read(const std::string& name);
    bool write(const std::string& name, const std::string& value);

  private:
    mutable std::mutex mMutex;
    std::map<std::string, std::string> mValues;  // Key: property name. Value: its value.
    std::vector<PropertyWrite> mWrites;
    std::vector<std::string> mReads;
};

}  // namespace orvo::test
