// SPDX-License-Identifier: Apache-2.0
// The commands that the document shows print what it shows.

#include <filesystem>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "tests/mapcheck/MapCheckTest.h"
#include "tests/packaging/SourceTexts.h"

namespace orvo::test {
namespace {

using ::testing::HasSubstr;
using ::testing::SizeIs;

constexpr char kDocument[] = "docs/device.md";
constexpr char kPrompt[] = "$ ";

/** What stands between two lines of three backticks. */
struct Block {
    std::string language;
    std::string text;
    int line;  // Of its first line in the document.
};

std::vector<Block> blocksOf(const std::string& document) {
    const std::string fence = "```";
    std::vector<Block> blocks;
    bool isInside = false;
    int number = 0;
    std::istringstream lines(document);
    for (std::string line; std::getline(lines, line);) {
        ++number;
        if (line.compare(0, fence.size(), fence) == 0) {
            isInside = !isInside;
            if (isInside) blocks.push_back({line.substr(fence.size()), "", number + 1});
        } else if (isInside) {
            blocks.back().text += line + "\n";
        }
    }
    return blocks;
}

bool isPrompt(const std::string& line) {
    return line.compare(0, sizeof kPrompt - 1, kPrompt) == 0;
}

// The commands of a block, each as it is shown: from the prompt to the last of its lines.
std::vector<std::string> commandsOf(const std::string& block) {
    std::vector<std::string> commands;
    bool continues = false;
    std::istringstream lines(block);
    for (std::string line; std::getline(lines, line);) {
        if (continues) {
            commands.back() += "\n" + line;
        } else if (isPrompt(line)) {
            commands.push_back(line);
        }
        continues = (continues || isPrompt(line)) && line.back() == '\\';
    }
    return commands;
}

std::string inQuotes(const std::string& text) {
    return "'" + std::regex_replace(text, std::regex("'"), "'\\''") + "'";
}

// A script that prints all of the block, each command in front of its output. A command may ask for
// the exit status of the one before it.
std::string scriptOf(const std::vector<std::string>& commands) {
    std::string script = "exec 2>&1\nstatus=0\n";
    for (const std::string& command : commands) {
        script += "printf '%s\\n' " + inQuotes(command) + "\n(exit $status)\n" +
                  command.substr(sizeof kPrompt - 1) + "\nstatus=$?\n";
    }
    return script;
}

class DocumentTest : public MapCheckTest {
  protected:
    DocumentTest() {
        for (const Block& block : mBlocks) {
            if (block.language == "xml") mDirectory.write("map.xml", block.text);
        }
        mDirectory.write("manifest.xml", manifestText(declared()));
        std::filesystem::create_directory_symlink(std::string(ORVO_SOURCE_DIR) + "/simulator",
                                                  mDirectory.path() + "/simulator");
    }

    // The instances that the manifest declares according to the document.
    std::vector<std::string> declared() const {
        static const std::regex kSentence("a manifest that\\s+declares\\s+([^:]+):");
        static const std::regex kName("`([^`]+)`");
        std::smatch found;
        EXPECT_TRUE(std::regex_search(mText, found, kSentence))
                << "say in " << kDocument << " what the manifest beside the map declares";
        const std::string names = found[1];
        return {std::sregex_token_iterator(names.begin(), names.end(), kName, 1), {}};
    }

    // What the commands print in the directory of the map and the manifest.
    std::string outputOf(const std::vector<std::string>& commands) const {
        const std::string programs =
                std::filesystem::path(simulator::testing::programPath("orvo-mapcheck"))
                        .parent_path();
        return simulator::testing::runProgram(
                       {"/bin/sh", "-c",
                        "cd " + inQuotes(mDirectory.path()) + "\n" + scriptOf(commands)},
                       {{"PATH", programs + ":" + getenv("PATH")}})
                .out;
    }

    const std::string mText = sourceText(kDocument);
    const std::vector<Block> mBlocks = blocksOf(mText);
};

TEST_F(DocumentTest, TheCommandsPrintWhatIsShown) {
    int checks = 0;
    for (const Block& block : mBlocks) {
        const std::vector<std::string> commands = commandsOf(block.text);
        if (commands.empty()) continue;
        for (const std::string& command : commands) {
            checks += command.find(std::string(kPrompt) + "orvo-mapcheck ") == 0 ? 1 : 0;
        }
        EXPECT_THAT(block.text, HasSubstr("$ echo $?\n"))
                << "show the exit status in the block at line " << block.line;
        const std::string printed = outputOf(commands);
        EXPECT_EQ(block.text, printed)
                << kDocument << " shows from line " << block.line
                << " on what the program does not print. If the program is right, put this there:\n"
                << printed;
    }
    const std::string check = "\n$ orvo-mapcheck ";
    int shown = 0;
    for (size_t at = mText.find(check); at != std::string::npos; at = mText.find(check, at + 1)) {
        ++shown;
    }
    EXPECT_GT(checks, 0);
    EXPECT_EQ(checks, shown) << "a command stands outside of a block";
}

TEST_F(DocumentTest, TheMapIsShownOnce) {
    std::vector<std::string> maps;
    for (const Block& block : mBlocks) {
        if (block.language == "xml") maps.push_back(block.text);
    }
    EXPECT_THAT(maps, SizeIs(1)) << "the test takes the xml block of " << kDocument
                                 << " for the map of its first command";
}

}  // namespace
}  // namespace orvo::test
