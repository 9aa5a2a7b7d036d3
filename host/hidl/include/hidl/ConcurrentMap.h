// SPDX-License-Identifier: Apache-2.0
// ConcurrentMap: an ordered map behind a mutex.

#pragma once

#include <map>
#include <mutex>
#include <utility>

namespace android {
namespace hardware {

/**
 * Every method but begin, end and those named "...Locked" takes the lock. Those are for a caller
 * that holds the lock which lock() gave it, and that calls none of the others meanwhile. Values
 * are destroyed under the lock, so their destructors must not come back here.
 */
template <typename K, typename V>
class ConcurrentMap {
  private:
    using Map = std::map<K, V>;

  public:
    using size_type = typename Map::size_type;
    using iterator = typename Map::iterator;
    using const_iterator = typename Map::const_iterator;

    void set(K&& key, V&& value) {
        std::unique_lock<std::mutex> guard = lock();
        setLocked(std::move(key), std::move(value));
    }

    /** The value of the key, or `defaultValue`. */
    V get(const K& key, const V& defaultValue) const {
        std::unique_lock<std::mutex> guard = lock();
        return getLocked(key, defaultValue);
    }

    size_type erase(const K& key) {
        std::unique_lock<std::mutex> guard = lock();
        return eraseLocked(key);
    }

    /** Erases the key if its value is the given one. */
    size_type eraseIfEqual(const K& key, const V& value) {
        std::unique_lock<std::mutex> guard = lock();
        const_iterator found = mMap.find(key);
        if (found == mMap.end() || !(found->second == value)) return 0;
        mMap.erase(found);
        return 1;
    }

    std::unique_lock<std::mutex> lock() const { return std::unique_lock<std::mutex>(mMutex); }

    void setLocked(K&& key, V&& value) { mMap[std::move(key)] = std::move(value); }
    void setLocked(const K& key, const V& value) { mMap[key] = value; }

    V getLocked(const K& key, const V& defaultValue) const {
        const_iterator found = mMap.find(key);
        return found == mMap.end() ? defaultValue : found->second;
    }

    size_type eraseLocked(const K& key) { return mMap.erase(key); }

    iterator begin() { return mMap.begin(); }
    iterator end() { return mMap.end(); }
    const_iterator begin() const { return mMap.begin(); }
    const_iterator end() const { return mMap.end(); }

  private:
    mutable std::mutex mMutex;
    /** Guarded by mMutex; not annotated, because lock() gives that away as an ordinary one. */
    Map mMap;
};

}  // namespace hardware
}  // namespace android
