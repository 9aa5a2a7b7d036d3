// SPDX-License-Identifier: Apache-2.0
// A process that uses the property store as it is told to, for tests with several processes.
//
//   property_program get NAME              prints the value
//   property_program set NAME VALUE        exit status 0 if it was set
//   property_program fill PREFIX COUNT     sets PREFIX.0, PREFIX.1, ... to the number of each
//   property_program rewrite NAME COUNT    sets NAME so often to 91 equal letters, another each
//   time property_program rewrite-until-killed NAME
//                                          the same without end; prints "started" after one
//   property_program set-and-die NAME VALUE
//                                          is killed right after the write that commits the value

#include <signal.h>
#include <stdio.h>
#include <string.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <string>

#include <cutils/properties.h>

namespace {

bool gDiesOfTheCommit = false;

std::string lettersOfRound(long round) {
    return std::string(PROPERTY_VALUE_MAX - 1, static_cast<char>('a' + round % 26));
}

int fill(const std::string& prefix, long count) {
    for (long i = 0; i < count; ++i) {
        const std::string number = std::to_string(i);
        if (property_set((prefix + "." + number).c_str(), number.c_str()) != 0) return 1;
    }
    return 0;
}

int rewrite(const char* name, long count) {
    for (long round = 0; round < count; ++round) {
        if (property_set(name, lettersOfRound(round).c_str()) != 0) return 1;
    }
    return 0;
}

int rewriteUntilKilled(const char* name) {
    for (long round = 0;; ++round) {
        if (property_set(name, lettersOfRound(round).c_str()) != 0) return 1;
        if (round > 0) continue;
        puts("started");
        fflush(stdout);
    }
}

}  // namespace

/** Stands in front of the C library's. The store's first two pages say what is committed. */
extern "C" ssize_t pwrite(int file, const void* bytes, size_t count, off_t offset) {
    const long written = syscall(SYS_pwrite64, file, bytes, count, offset);
    if (gDiesOfTheCommit && offset < 2 * sysconf(_SC_PAGESIZE)) kill(getpid(), SIGKILL);
    return written;
}

int main(int argc, char** argv) {
    const std::string command = argc > 2 ? argv[1] : "";
    if (command == "get") {
        char value[PROPERTY_VALUE_MAX];
        property_get(argv[2], value, "");
        puts(value);
        return 0;
    }
    if (command == "set" && argc == 4) return property_set(argv[2], argv[3]) == 0 ? 0 : 1;
    if (command == "fill" && argc == 4) return fill(argv[2], atol(argv[3]));
    if (command == "rewrite" && argc == 4) return rewrite(argv[2], atol(argv[3]));
    if (command == "set-and-die" && argc == 4) {
        // The first one opens the store, which may write too.
        if (property_set("opened", "1") != 0) return 1;
        gDiesOfTheCommit = true;
        return property_set(argv[2], argv[3]) == 0 ? 0 : 1;
    }
    if (command == "rewrite-until-killed") return rewriteUntilKilled(argv[2]);
    fputs("property_program: unknown command; the head of its source lists them\n", stderr);
    return 2;
}
