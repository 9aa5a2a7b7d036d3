// SPDX-License-Identifier: Apache-2.0
// Command: what a person can type after "camerasim", and what becomes of it.

#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace orvo::simulator {

using Words = std::vector<std::string>;

/** A word or an option of a command. */
struct Argument {
    enum class Kind {
        WORD,           ///< has to be there
        OPTIONAL_WORD,  ///< may be left out
        WORDS,          ///< one or more, up to four
        FLAG,           ///< an option without a value
        TEXT,           ///< an option with one
        NUMBER,         ///< an option with a whole number from 1
        SECONDS,        ///< an option with seconds, a day's at most
    };
    /** What a shell completes it with. */
    enum class Completion {
        NONE,
        CAMERAS,
        PROVIDERS,
        PROCESSES,  ///< providers and "service"
        SERVICES,
        CAMERAS_OF_PROVIDER,  ///< of the one that is the word before
        HEADSETS,
        FILES,
        DIRECTORIES,
        CONDITION,  ///< the words of a condition, one after the other
    };

    Kind kind;
    std::string name;  ///< "CAMERA", or "-f,--follow": by the last one its value is asked for
    std::string sentence;
    Completion completion = Completion::NONE;
    Words choices = {};     ///< the only words that it can be, if there are any
    std::string type = {};  ///< what the help calls an option's value

    bool isOption() const { return kind >= Kind::FLAG; }
    /** Such as "--follow". */
    std::string key() const { return name.substr(name.rfind(',') + 1); }
};

/** The words that were typed. What was left out is empty. */
class Values {
  public:
    void set(const std::string& key, Words words) { mWords[key] = std::move(words); }

    const Words& words(const std::string& key) const;
    std::string text(const std::string& key) const;
    bool has(const std::string& key) const { return !words(key).empty(); }
    /** Of a NUMBER or of SECONDS. */
    double number(const std::string& key, double otherwise) const;
    bool json() const { return text("--format") == "json"; }

  private:
    std::map<std::string, Words> mWords;
};

/** One row of the table of commands. */
struct Command {
    std::string name;
    std::string sentence;  ///< what it does
    std::string example;   ///< a command line
    std::vector<Argument> arguments;
    /** @return an exit status. */
    std::function<int(const Values& values)> run = nullptr;
};

/** "--device": which one, if several run. */
Argument deviceOption();
/** "--format": for people or for programs. */
Argument formatOption();

/** All of them, in the order of the help. */
const std::vector<Command>& commandTable();

/** The one of that name; null if there is none. */
const Command* findCommand(const std::string& name);

/** What may stand at the last of the words after "camerasim", for a shell's completion. */
Words completionsOf(const Words& words);

// Commands that do more than ask one thing, in the files named after them or their kind.
int listHeadsets(const Values& values);
int listCameras(const Values& values);
int listEvents(const Values& values);
int listLog(const Values& values);
int watch(const Values& values);
int closeCameras(const Values& values);
int reportBugs(const Values& values);
int stopHeadset(const Values& values);
int bootHeadset(const Values& values);
int tourHeadset(const Values& values);
int writeHeadset(const Values& values);
int checkFiles(const Values& values);
int printKeys(const Values& values);

}  // namespace orvo::simulator
