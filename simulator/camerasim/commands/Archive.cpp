// SPDX-License-Identifier: Apache-2.0
// Archive: libarchive writes it under another name first.

#include "simulator/camerasim/commands/Archive.h"

#include <archive.h>
#include <archive_entry.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <utility>

#include "simulator/control/Complaint.h"

namespace orvo::simulator {

namespace fs = std::filesystem;

using android::base::Result;
using android::base::ResultError;
using android::base::unexpected;

namespace {

std::string unfinishedName(const std::string& file) {
    return file + ".part";
}

}  // namespace

void Archive::Close::operator()(archive* open) const {
    archive_write_free(open);
}

Archive::Archive(const std::string& file) : mFile(file), mArchive(archive_write_new()) {}

Archive::Archive(Archive&& other) noexcept
    : mFile(std::exchange(other.mFile, "")), mArchive(std::move(other.mArchive)) {}

Archive::~Archive() {
    mArchive.reset();
    if (!mFile.empty()) unlink(unfinishedName(mFile).c_str());
}

ResultError Archive::failure() const {
    const char* reason = archive_error_string(mArchive.get());
    return didNotHappen("cannot write '" + mFile + "' (" +
                        (reason == nullptr ? "no reason given" : reason) +
                        "); say where with -o FILE");
}

Result<Archive> Archive::create(const std::string& name) {
    std::error_code ignored;
    // A device node or a pipe that is replaced is gone for everybody else, too.
    const fs::file_type there = fs::status(name, ignored).type();
    if (fs::exists(fs::symlink_status(name, ignored)) && there != fs::file_type::regular) {
        return didNotHappen("'" + name +
                            "' is there and is no regular file; say where with -o FILE");
    }
    const std::string file =
            there == fs::file_type::regular ? fs::canonical(name, ignored).string() : name;
    Archive created(file);
    archive* open = created.mArchive.get();
    if (archive_write_add_filter_gzip(open) != ARCHIVE_OK ||
        archive_write_set_format_pax_restricted(open) != ARCHIVE_OK ||
        archive_write_open_filename(open, unfinishedName(file).c_str()) != ARCHIVE_OK) {
        const ResultError reason = created.failure();
        created.mFile.clear();
        return unexpected(reason);
    }
    return created;
}

Result<void> Archive::add(const std::string& name, const std::string& content) {
    return addEntry(name, content, "");
}

Result<void> Archive::addLink(const std::string& name, const std::string& target) {
    return addEntry(name, "", target);
}

Result<void> Archive::addEntry(const std::string& name, const std::string& content,
                               const std::string& target) {
    const std::unique_ptr<archive_entry, void (*)(archive_entry*)> entry(archive_entry_new(),
                                                                         archive_entry_free);
    archive_entry_set_pathname(entry.get(), name.c_str());
    archive_entry_set_filetype(entry.get(), target.empty() ? AE_IFREG : AE_IFLNK);
    if (!target.empty()) archive_entry_set_symlink(entry.get(), target.c_str());
    archive_entry_set_perm(entry.get(), 0644);
    archive_entry_set_mtime(entry.get(), time(nullptr), 0);
    archive_entry_set_size(entry.get(), static_cast<la_int64_t>(content.size()));
    if (archive_write_header(mArchive.get(), entry.get()) != ARCHIVE_OK) return failure();
    const la_ssize_t written = archive_write_data(mArchive.get(), content.data(), content.size());
    if (written != static_cast<la_ssize_t>(content.size())) return failure();
    return {};
}

Result<void> Archive::finish() {
    if (archive_write_close(mArchive.get()) != ARCHIVE_OK) return failure();
    if (rename(unfinishedName(mFile).c_str(), mFile.c_str()) != 0) {
        return didNotHappen("cannot write '" + mFile + "' (" + strerror(errno) +
                            "); say where with -o FILE");
    }
    mFile.clear();
    return {};
}

}  // namespace orvo::simulator
