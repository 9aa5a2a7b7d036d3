// SPDX-License-Identifier: Apache-2.0
// ServiceLog: what a running program writes to its log file, to be waited on.

#pragma once

#include <chrono>
#include <functional>
#include <string>

#include <android-base/unique_fd.h>

namespace orvo::simulator::testing {

/**
 * Follows a log file to which a program appends. One thread may use an object at a time.
 *
 * A mark is a place in the file; everything is asked of what was written after a mark.
 */
class ServiceLog {
  public:
    using Predicate = std::function<bool(const std::string& written)>;

    /** The file must be there. */
    explicit ServiceLog(std::string file);

    /** The present end of the file. */
    size_t mark() const;
    std::string since(size_t mark) const;

    /** How often the text was written. */
    size_t count(const std::string& text, size_t mark) const;

    /** Waits until the predicate accepts what was written; false if time is up first. */
    bool waitFor(const Predicate& predicate, size_t mark, std::chrono::milliseconds patience);
    /** Waits until the text was written that often. */
    bool waitForCount(const std::string& text, size_t count, size_t mark,
                      std::chrono::milliseconds patience);

    /** Waits until anything is written, but no longer than this. */
    void awaitGrowth(std::chrono::milliseconds patience);

  private:
    const std::string mFile;
    const android::base::unique_fd mWatch;
};

/** How often the text occurs in the other one. */
size_t occurrences(const std::string& text, const std::string& in);

}  // namespace orvo::simulator::testing
