// SPDX-License-Identifier: Apache-2.0
// Archive: a .tar.gz file that is written entry by entry.

#pragma once

#include <memory>
#include <string>

#include <android-base/result.h>

struct archive;

namespace orvo::simulator {

/** One thread. Nothing is under the archive's name until it is whole. */
class Archive {
  public:
    /**
     * @param file its name. A regular file of that name, or one that a link of that name leads to,
     *             is replaced by finish(); anything else that is there is refused.
     */
    static android::base::Result<Archive> create(const std::string& file);
    Archive(Archive&& other) noexcept;
    /** Removes what was written if it was not finished. */
    ~Archive();

    /** A file. `name` has the directories above it. */
    android::base::Result<void> add(const std::string& name, const std::string& content);
    /** A symbolic link. */
    android::base::Result<void> addLink(const std::string& name, const std::string& target);

    /** The last call. */
    android::base::Result<void> finish();

  private:
    struct Close {
        void operator()(archive* open) const;
    };

    explicit Archive(const std::string& file);
    android::base::Result<void> addEntry(const std::string& name, const std::string& content,
                                         const std::string& target);
    android::base::ResultError failure() const;

    std::string mFile;  ///< "" once finished or moved from
    std::unique_ptr<archive, Close> mArchive;
};

}  // namespace orvo::simulator
