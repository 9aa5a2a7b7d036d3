// SPDX-License-Identifier: Apache-2.0
// Commands: the subcommands that are typed beside a running device, each in a file of its own.

#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

// Its headers take a compiler longer than all that is here: only the sources that parse include
// them.
namespace CLI {
class App;
}

namespace orvo::simulator {

/** The options that every command on one device has. */
struct DeviceOptions {
    std::string device;            ///< name, description's directory or root; "" if not given
    std::string format = "table";  ///< "table" or "json", where something is listed
    bool json() const { return format == "json"; }
};

/** How a command shows itself in the help. */
struct CommandText {
    std::string name;
    std::string sentence;  ///< what it does
    std::string example;   ///< a command line
};

/**
 * What one subcommand is given on the command line, in the order of its help.
 *
 * Values are filled while the command line is parsed; they must live as long as the program.
 */
class Parameters {
  public:
    using Words = std::vector<std::string>;

    explicit Parameters(CLI::App* parser) : mParser(parser) {}

    /** A word that has to be there; one of `choices`, if there are any. */
    Parameters& argument(const std::string& name, std::string& value, const std::string& sentence,
                         const Words& choices = {});
    Parameters& optionalArgument(const std::string& name, std::string& value,
                                 const std::string& sentence);
    /** One word or more. */
    Parameters& arguments(const std::string& name, Words& value, size_t most,
                          const std::string& sentence);
    Parameters& flag(const std::string& names, bool& value, const std::string& sentence);
    /** `type` is what the help calls the value. */
    Parameters& option(const std::string& names, std::string& value, const std::string& type,
                       const std::string& sentence, const Words& choices = {});
    /** A positive number. */
    Parameters& option(const std::string& names, int64_t& value, const std::string& type,
                       const std::string& sentence);
    Parameters& seconds(const std::string& names, double& value, double most,
                        const std::string& sentence);
    /** --device: which one, if several run. */
    Parameters& device(DeviceOptions& options);
    /** --format: for people or for programs. */
    Parameters& format(DeviceOptions& options);

  private:
    CLI::App* mParser;
};

/** Subcommands of one program and what each of them runs. One thread. */
class Commands {
  public:
    /** Does the command's work. @return an exit status. */
    using Body = std::function<int()>;

    /** The program must outlive this. */
    explicit Commands(CLI::App& program) : mProgram(program) {}

    /** Adds a subcommand; it belongs to the program. */
    Parameters add(const CommandText& text, Body body);
    /** As add(), without a line in the help. */
    Parameters addHidden(const CommandText& text, Body body);

    /** Runs the one that was typed. @return its exit status; -1 if it is none of these. */
    int run() const;

    /** Those that the help shows. */
    std::vector<std::string> names() const;
    /** With their dashes; none for an unknown command. */
    std::vector<std::string> optionsOf(const std::string& command) const;

  private:
    struct Command {
        CLI::App* parser;
        Body body;
    };

    CLI::App& mProgram;
    std::vector<Command> mCommands;
};

/** All of them. */
void addCommands(Commands& commands);

// One file each, or one for a few of a kind.
void addDevices(Commands& commands);
void addPs(Commands& commands);
void addCameras(Commands& commands);
void addTags(Commands& commands);
void addDump(Commands& commands);
void addProps(Commands& commands);
void addLog(Commands& commands);
void addEvents(Commands& commands);
void addWatch(Commands& commands);
void addOpenAndClose(Commands& commands);
void addKillHangAndStart(Commands& commands);
void addPlugAndUnplug(Commands& commands);
void addTorch(Commands& commands);
void addWait(Commands& commands);
void addBugreport(Commands& commands);
void addStop(Commands& commands);
void addNames(Commands& commands);

}  // namespace orvo::simulator
