// SPDX-License-Identifier: Apache-2.0
// A stranger on a serving process's socket who writes any bytes: the process hangs up and goes on.

#include <errno.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

#include "fuzz/support/Require.h"
#include "fuzz/transport/ThisProcess.h"

using orvo::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const int stream = orvo::fuzz::connectAsStranger(orvo::fuzz::serveKinds());
    // The process may hang up before it has read everything.
    (void)!send(stream, data, size, MSG_NOSIGNAL);
    shutdown(stream, SHUT_WR);
    char buffer[4096];
    ssize_t count;
    do {
        count = TEMP_FAILURE_RETRY(read(stream, buffer, sizeof(buffer)));
    } while (count > 0);
    require(count == 0 || errno == ECONNRESET, "the process hangs up", strerror(errno));
    close(stream);
    return 0;
}
