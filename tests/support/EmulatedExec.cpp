// SPDX-License-Identifier: Apache-2.0
// Starts programs of another architecture under the emulator that runs this one.
//
// A test that starts a program, or itself again for a death test, asks the kernel for it, and the
// kernel knows nothing of the emulator unless the machine was told. Linked into a program, these
// definitions come before the C library's and put the emulator in front of the command line.

#include <dlfcn.h>
#include <elf.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstddef>

namespace {

/** The emulator, its options, and a null pointer. */
const char* const kEmulator[] = {ORVO_EMULATOR, nullptr};
constexpr size_t kEmulatorWords = sizeof(kEmulator) / sizeof(kEmulator[0]) - 1;

/** More than any test gives a program. */
constexpr size_t kMostWords = 64;

/** A command line in place: between fork and exec nothing may be allocated. */
struct EmulatedCommand {
    char* words[kEmulatorWords + kMostWords + 1];

    /** False if there are more words than fit. */
    bool make(const char* path, char* const argv[]) {
        size_t count = 0;
        for (; kEmulator[count] != nullptr; count++)
            words[count] = const_cast<char*>(kEmulator[count]);
        words[count++] = const_cast<char*>(path);
        for (size_t i = 1; argv[0] != nullptr && argv[i] != nullptr; i++) {
            if (i == kMostWords) return false;
            words[count++] = argv[i];
        }
        words[count] = nullptr;
        return true;
    }
};

/** Of this program's architecture, which is not the machine's. */
bool needsEmulator(const char* path) {
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0) return false;
    Elf64_Ehdr header{};
    const bool whole = read(file, &header, sizeof(header)) == sizeof(header);
    close(file);
    return whole && header.e_ident[EI_MAG0] == ELFMAG0 && header.e_ident[EI_MAG1] == ELFMAG1 &&
           header.e_machine == EM_AARCH64;
}

}  // namespace

extern "C" int execv(const char* path, char* const argv[]) {
    EmulatedCommand command;
    if (needsEmulator(path) && command.make(path, argv)) {
        return static_cast<int>(syscall(SYS_execve, kEmulator[0], command.words, environ));
    }
    return static_cast<int>(syscall(SYS_execve, path, argv, environ));
}

extern "C" int posix_spawn(pid_t* pid, const char* path,
                           const posix_spawn_file_actions_t* fileActions,
                           const posix_spawnattr_t* attributes, char* const argv[],
                           char* const envp[]) {
    using Spawn = decltype(&posix_spawn);
    const auto spawn = reinterpret_cast<Spawn>(dlsym(RTLD_NEXT, "posix_spawn"));
    EmulatedCommand command;
    if (needsEmulator(path) && command.make(path, argv)) {
        return spawn(pid, kEmulator[0], fileActions, attributes, command.words, envp);
    }
    return spawn(pid, path, fileActions, attributes, argv, envp);
}
