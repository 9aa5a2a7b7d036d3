// SPDX-License-Identifier: Apache-2.0
// Commands: the subcommands that are typed beside a running device, each in a file of its own.

#pragma once

#include <functional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

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

/** Subcommands of one program and what each of them runs. One thread. */
class Commands {
  public:
    /** Does the command's work. @return an exit status. */
    using Body = std::function<int()>;

    /** The program must outlive this. */
    explicit Commands(CLI::App& program) : mProgram(program) {}

    /** Adds a subcommand, to be given options by the caller; it belongs to the program. */
    CLI::App* add(const CommandText& text, Body body);

    /** Runs the one that was typed. @return its exit status; -1 if it is none of these. */
    int run() const;

    const CLI::App& program() const { return mProgram; }

  private:
    struct Command {
        CLI::App* parser;
        Body body;
    };

    CLI::App& mProgram;
    std::vector<Command> mCommands;
};

void addDeviceOption(CLI::App* command, DeviceOptions& options);
void addFormatOption(CLI::App* command, DeviceOptions& options);

/** All of them. */
void addCommands(Commands& commands);

// One file each, or one for a few of a kind.
void addDevices(Commands& commands);
void addPs(Commands& commands);
void addCameras(Commands& commands);
void addTags(Commands& commands);
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
