// SPDX-License-Identifier: Apache-2.0
// What the built library exports, read from its dynamic symbol table.

#include <cxxabi.h>
#include <dlfcn.h>
#include <elf.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "provider/naming/DeviceMap.h"
#include "tests/support/Allocations.h"
#include "tests/support/Fault.h"

namespace orvo::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::UnorderedElementsAre;

const std::string kScope = "android::hardware::camera::provider::V2_4::implementation::";

// The name as a program writes it, without the tag that the C++ library adds to its string type.
std::string demangle(const std::string& name) {
    int status = 0;
    const std::unique_ptr<char, decltype(&free)> text(
            abi::__cxa_demangle(name.c_str(), nullptr, nullptr, &status), free);
    const std::string plain = status == 0 ? text.get() : name;
    return plain.substr(0, plain.find("[abi:"));
}

// A view of the file of a shared library or of what the compiler made of one source.
class ElfFile {
  public:
    explicit ElfFile(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        mBytes.assign(std::istreambuf_iterator<char>(file), {});
        EXPECT_GT(mBytes.size(), sizeof(Elf64_Ehdr)) << path;
        EXPECT_EQ(memcmp(mBytes.data(), ELFMAG, SELFMAG), 0) << path;
    }

    // The names of the dynamic symbols that are defined here (or that are not).
    std::vector<std::string> symbols(bool defined) const {
        std::vector<std::string> names;
        for (const auto& [name, symbol] : table(SHT_DYNSYM)) {
            // Some linkers list sections here, too, as local symbols without a name.
            if (ELF64_ST_BIND(symbol.st_info) == STB_LOCAL) continue;
            if ((symbol.st_shndx != SHN_UNDEF) == defined) names.push_back(name);
        }
        return names;
    }

    // The symbol tables of that kind, with their names.
    std::vector<std::pair<std::string, Elf64_Sym>> table(Elf64_Word kind) const {
        std::vector<std::pair<std::string, Elf64_Sym>> symbols;
        for (const Elf64_Shdr& section : sections()) {
            if (section.sh_type != kind) continue;
            const char* const strings = mBytes.data() + sections()[section.sh_link].sh_offset;
            const auto* const first =
                    reinterpret_cast<const Elf64_Sym*>(mBytes.data() + section.sh_offset);
            for (size_t i = 1; i < section.sh_size / sizeof(Elf64_Sym); ++i) {
                symbols.emplace_back(strings + first[i].st_name, first[i]);
            }
        }
        return symbols;
    }

  private:
    std::vector<Elf64_Shdr> sections() const {
        const auto* const header = reinterpret_cast<const Elf64_Ehdr*>(mBytes.data());
        const auto* const first =
                reinterpret_cast<const Elf64_Shdr*>(mBytes.data() + header->e_shoff);
        return {first, first + header->e_shnum};
    }

    std::vector<char> mBytes;
};

TEST(ExportedSymbolsTest, TheLibraryExportsExactlyItsThreeSymbols) {
    std::vector<std::string> names;
    for (const std::string& name : ElfFile(ORVO_PROVIDER_LIBRARY).symbols(true)) {
        names.push_back(demangle(name));
    }
    EXPECT_THAT(names, UnorderedElementsAre("HIDL_FETCH_ICameraProvider", kScope + "gDeviceMap",
                                            kScope + "gParseFlag"));
}

// As the compiler made it: hidden symbols become local ones only in the linked library, and only
// with the right flags.
TEST(ExportedSymbolsTest, TheDefaultTableIsLocalToItsFile) {
    std::vector<std::pair<int, int>> found;
    for (const auto& [name, symbol] : ElfFile(ORVO_DEVICE_MAP_OBJECT).table(SHT_SYMTAB)) {
        if (demangle(name) != kScope + "gDefaultDeviceMap") continue;
        found.emplace_back(ELF64_ST_TYPE(symbol.st_info), ELF64_ST_BIND(symbol.st_info));
    }
    EXPECT_THAT(found, ElementsAre(Pair(STT_OBJECT, STB_LOCAL)));
}

TEST(ExportedSymbolsTest, TheShimFactoryIsImported) {
    EXPECT_THAT(ElfFile(ORVO_PROVIDER_LIBRARY).symbols(false),
                ::testing::Contains("HIDL_FETCH_ICameraProvider_shim"));
}

TEST(ExportedSymbolsTest, TheLoadedLibraryHasAnEmptyMapAndAClearFlag) {
    namespace implementation = android::hardware::camera::provider::V2_4::implementation;
    void* const library = dlopen(ORVO_PROVIDER_LIBRARY, RTLD_NOW);
    ASSERT_NE(library, nullptr) << dlerror();
    std::map<std::string, void*> objects;  // Key: demangled name.
    for (const std::string& name : ElfFile(ORVO_PROVIDER_LIBRARY).symbols(true)) {
        objects[demangle(name)] = dlsym(library, name.c_str());
    }
    const auto* const map = static_cast<implementation::DeviceMap*>(objects[kScope + "gDeviceMap"]);
    const auto* const flag = static_cast<bool*>(objects[kScope + "gParseFlag"]);
    ASSERT_NE(map, nullptr);
    ASSERT_NE(flag, nullptr);
    EXPECT_THAT(*map, IsEmpty());
    EXPECT_FALSE(*flag);
    EXPECT_NE(objects["HIDL_FETCH_ICameraProvider"], nullptr);
    EXPECT_EQ(dlclose(library), 0);
}

// Loads the library in a process of its own, with memory for that many allocations; gives that
// process's wait status.
int loadWith(size_t allowed) {
    const pid_t child = fork();
    if (child == 0) {
        const rlimit noCore = {0, 0};
        setrlimit(RLIMIT_CORE, &noCore);
        freopen("/dev/null", "w", stderr);
        // Like the platform's loader, nobody here handles what comes out of the load.
        [allowed]() noexcept {
            const Allocations allocations(allowed);
            if (dlopen(ORVO_PROVIDER_LIBRARY, RTLD_NOW) == nullptr) _exit(2);
        }();
        _exit(0);
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return status;
}

TEST(LibraryLoadTest, WithoutMemoryForItsTablesTheProcessEndsWhileTheLibraryLoads) {
    recordFault("memory", "none is left for the tables that are made while the library loads",
                "the process ends");
    if (!Allocations::kWatched) GTEST_SKIP() << "operator new belongs to the sanitizer";
    size_t allowed = 0;
    int status = loadWith(allowed);
    for (; status != 0 && allowed < 1000; status = loadWith(++allowed)) {
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT)
                << "status " << status << " after " << allowed << " allocations";
    }
    EXPECT_EQ(status, 0);
    EXPECT_GT(allowed, 8u) << "there were points to fail at: four tables, each copied";
}

}  // namespace
}  // namespace orvo::test
