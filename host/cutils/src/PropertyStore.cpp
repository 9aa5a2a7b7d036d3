// SPDX-License-Identifier: Apache-2.0
// The property store on LMDB: one environment file, one table, a lock file beside it.

#include "PropertyStore.h"

#include <pthread.h>
#include <stdlib.h>

#include <map>

#include <lmdb.h>

#include "host/Mutex.h"

namespace orvo {

using android::base::Error;
using android::base::Result;
using android::base::unexpected;

namespace {

constexpr char kFileName[] = "/properties";
// Address space, not disk space: the file grows with what is in it.
constexpr size_t kLargestStoreBytes = 256u << 20;
// One for every read that is under way at one moment in any process.
constexpr unsigned int kMostReaders = 1024;

/**
 * Whether something has been committed that the reader does not see. A writer puts its last page in
 * place and then says so; one that is killed in between has committed, and readers go on reading
 * what was there before.
 */
bool isBehind(MDB_env* environment, MDB_txn* reader) {
    MDB_envinfo info;
    return mdb_env_info(environment, &info) == 0 && info.me_last_txnid > mdb_txn_id(reader);
}

/** A transaction that is given up unless it is committed. */
class Transaction {
  public:
    Transaction(MDB_env* environment, unsigned int flags) {
        begin(environment, flags);
        if ((flags & MDB_RDONLY) == 0 || mResult != 0 || !isBehind(environment, mTransaction)) {
            return;
        }
        giveUp();
        // Whoever takes the lock of a killed writer says what that one could not say any more; a
        // living writer is waited for.
        { Transaction writer(environment, 0); }
        begin(environment, flags);
    }
    ~Transaction() { giveUp(); }
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    /** 0 or the error of beginning. */
    int result() const { return mResult; }
    MDB_txn* get() const { return mTransaction; }
    int commit() { return mdb_txn_commit(std::exchange(mTransaction, nullptr)); }

  private:
    void begin(MDB_env* environment, unsigned int flags) {
        mResult = mdb_txn_begin(environment, nullptr, flags, &mTransaction);
        if (mResult != MDB_READERS_FULL) return;
        // Killed readers keep their slots until somebody looks.
        mdb_reader_check(environment, nullptr);
        mResult = mdb_txn_begin(environment, nullptr, flags, &mTransaction);
    }
    void giveUp() {
        if (mTransaction != nullptr) mdb_txn_abort(std::exchange(mTransaction, nullptr));
    }

    MDB_txn* mTransaction = nullptr;
    int mResult;
};

MDB_val toValue(std::string_view text) {
    return {text.size(), const_cast<char*>(text.data())};
}

std::string toString(const MDB_val& value) {
    return std::string(static_cast<const char*>(value.mv_data), value.mv_size);
}

/** The stores that this process has opened. */
struct OpenedStores {
    Mutex mutex;
    /** Path of the environment file -> the store in it. */
    std::map<std::string, std::unique_ptr<PropertyStore>> byPath GUARDED_BY(mutex);
    /** Stores that were opened before this process was forked off; unusable, and never closed
     *  because closing would disturb the parent's. */
    std::vector<std::unique_ptr<PropertyStore>> ofParent GUARDED_BY(mutex);

    void abandon() REQUIRES(mutex) {
        for (auto& [path, store] : byPath) ofParent.push_back(std::move(store));
        byPath.clear();
    }
};

OpenedStores& openedStores() {
    static OpenedStores* const stores = new OpenedStores;  // used until the very end of the process
    return *stores;
}

/** Takes the lock before a fork and gives it back on both sides; the compiler follows no fork. */
int handleForks() {
    return pthread_atfork([]() NO_THREAD_SAFETY_ANALYSIS { openedStores().mutex.lock(); },
                          []() NO_THREAD_SAFETY_ANALYSIS { openedStores().mutex.unlock(); },
                          []() NO_THREAD_SAFETY_ANALYSIS {
                              openedStores().abandon();
                              openedStores().mutex.unlock();
                          });
}

int openEnvironment(MDB_env* environment, const char* path, MDB_dbi* table) {
    int result = mdb_env_set_mapsize(environment, kLargestStoreBytes);
    if (result == 0) result = mdb_env_set_maxreaders(environment, kMostReaders);
    // MDB_NOTLS: a reader's slot belongs to its transaction, so any number of threads may read.
    // MDB_NOSYNC: the store must survive its processes, which the page cache does; it need not
    // survive the machine, whose end is the device's end too.
    if (result == 0) {
        result = mdb_env_open(environment, path, MDB_NOSUBDIR | MDB_NOTLS | MDB_NOSYNC, 0600);
    }
    if (result == 0) result = mdb_reader_check(environment, nullptr);
    if (result != 0) return result;

    Transaction transaction(environment, MDB_RDONLY);
    result = transaction.result();
    if (result == 0) result = mdb_dbi_open(transaction.get(), nullptr, 0, table);
    return result == 0 ? transaction.commit() : result;
}

int put(MDB_env* environment, MDB_dbi table, std::string_view name, std::string_view value,
        unsigned int flags) {
    Transaction transaction(environment, 0);
    if (transaction.result() != 0) return transaction.result();
    MDB_val key = toValue(name);
    MDB_val data = toValue(value);
    const int result = mdb_put(transaction.get(), table, &key, &data, flags);
    return result == 0 ? transaction.commit() : result;
}

}  // namespace

Result<std::unique_ptr<PropertyStore>> PropertyStore::open(const std::string& path) {
    MDB_env* environment = nullptr;
    MDB_dbi table = 0;
    int result = mdb_env_create(&environment);
    if (result == 0) result = openEnvironment(environment, path.c_str(), &table);
    if (result == 0) return std::unique_ptr<PropertyStore>(new PropertyStore(environment, table));

    if (environment != nullptr) mdb_env_close(environment);
    return Error() << "cannot open the property store " << path << " (" << mdb_strerror(result)
                   << "); ORVO_DEVICE_DIR must name a writable directory of a device";
}

Result<PropertyStore*> PropertyStore::ofThisDevice() {
    const char* directory = getenv("ORVO_DEVICE_DIR");
    if (directory == nullptr || *directory == '\0') {
        return Error() << "there is no property store; set ORVO_DEVICE_DIR to the directory of a "
                          "device";
    }
    OpenedStores& stores = openedStores();
    static const int forkHandlers = handleForks();
    static_cast<void>(forkHandlers);  // fails only for want of memory

    const std::string path = std::string(directory) + kFileName;
    MutexLock lock(stores.mutex);
    std::unique_ptr<PropertyStore>& store = stores.byPath[path];
    if (store == nullptr) {
        auto opened = open(path);
        if (!opened) return unexpected(opened.error());
        store = std::move(*opened);
    }
    return store.get();
}

std::optional<std::string> PropertyStore::get(std::string_view name) const {
    Transaction transaction(mEnvironment, MDB_RDONLY);
    if (transaction.result() != 0) return std::nullopt;
    MDB_val key = toValue(name);
    MDB_val value;
    if (mdb_get(transaction.get(), mTable, &key, &value) != 0) return std::nullopt;
    return toString(value);
}

bool PropertyStore::set(std::string_view name, std::string_view value, Overwrite overwrite) {
    const unsigned int flags = overwrite == Overwrite::REFUSED ? MDB_NOOVERWRITE : 0;
    int result = put(mEnvironment, mTable, name, value, flags);
    if (result == MDB_MAP_FULL) {
        // Readers that were killed hold on to old pages until somebody looks.
        mdb_reader_check(mEnvironment, nullptr);
        result = put(mEnvironment, mTable, name, value, flags);
    }
    return result == 0;
}

std::optional<std::vector<std::pair<std::string, std::string>>> PropertyStore::list() const {
    Transaction transaction(mEnvironment, MDB_RDONLY);
    if (transaction.result() != 0) return std::nullopt;
    MDB_cursor* cursor = nullptr;
    if (mdb_cursor_open(transaction.get(), mTable, &cursor) != 0) return std::nullopt;

    std::vector<std::pair<std::string, std::string>> properties;
    MDB_val key;
    MDB_val value;
    int result = 0;
    while ((result = mdb_cursor_get(cursor, &key, &value, MDB_NEXT)) == 0) {
        properties.emplace_back(toString(key), toString(value));
    }
    mdb_cursor_close(cursor);
    if (result != MDB_NOTFOUND) return std::nullopt;
    return properties;
}

}  // namespace orvo
