// SPDX-License-Identifier: Apache-2.0
// PropertyStore: the properties of one device, shared by all of its processes.

#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <android-base/result.h>

struct MDB_env;

namespace orvo {

/**
 * A file `properties` in the device's run-time directory, which outlives every process.
 *
 * A write is seen by all processes at once, entirely or not at all, whatever becomes of the writer.
 * Every method may be called on any thread of any process of the device; writers wait for each
 * other, readers wait for nobody. All processes of one device must see each other's process ids
 * (one PID namespace): that is how the entries of dead ones are told and removed.
 *
 * A child that was forked without an exec opens the store afresh on its first use of it.
 */
class PropertyStore {
  public:
    /**
     * The store of the device that the environment variable ORVO_DEVICE_DIR names. Opened on first
     * use, created if necessary, kept open for the life of the process.
     *
     * @return never null; an error, one line that says what to do, if the variable is unset or its
     *         directory cannot be used. Tried anew each time.
     */
    static android::base::Result<PropertyStore*> ofThisDevice();

    /** What may become of an existing value. */
    enum class Overwrite { ALLOWED, REFUSED };

    /** The value of a property; nothing if it was never set or the store cannot be read. */
    std::optional<std::string> get(std::string_view name) const;

    /** False if nothing was written: it may not be overwritten, the name is too long for the store
     *  (511 bytes), or the store is full or broken. */
    bool set(std::string_view name, std::string_view value, Overwrite overwrite);

    /** Every name and value, all of one moment; nothing if the store cannot be read. */
    std::optional<std::vector<std::pair<std::string, std::string>>> list() const;

  private:
    explicit PropertyStore(MDB_env* environment, unsigned int table)
        : mEnvironment(environment), mTable(table) {}
    static android::base::Result<std::unique_ptr<PropertyStore>> open(const std::string& path);

    // Both are set once; the library below does its own locking. The environment is never closed:
    // closing it would take this process's file lock away from under concurrent users.
    MDB_env* const mEnvironment;
    const unsigned int mTable;
};

}  // namespace orvo
