// SPDX-License-Identifier: Apache-2.0
// CommandLine: words in the form that exec takes, made before a fork.

#pragma once

#include <unistd.h>

#include <string>
#include <utility>
#include <vector>

namespace orvo::simulator {

/**
 * Between fork and exec a process of several threads may allocate nothing, so what exec needs is
 * made beforehand.
 */
class CommandLine {
  public:
    /** The first word is the path of the program. */
    explicit CommandLine(std::vector<std::string> words) : mWords(std::move(words)) {
        for (std::string& word : mWords) mPointers.push_back(word.data());
        mPointers.push_back(nullptr);
    }
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    /** Becomes the program; returns only if that fails. */
    void execute() const { execv(mPointers[0], mPointers.data()); }

  private:
    std::vector<std::string> mWords;
    std::vector<char*> mPointers;
};

}  // namespace orvo::simulator
