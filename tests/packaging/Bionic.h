// SPDX-License-Identifier: Apache-2.0
// Compiled in front of a source, makes it take this machine's C library for a device's: its macro,
// and what the sources use of it alone.
#pragma once

#include <stdio.h>
#include <sys/types.h>

#define fpos_t off_t
extern "C" FILE* funopen(const void* cookie, int (*read)(void*, char*, int),
                         int (*write)(void*, const char*, int), fpos_t (*seek)(void*, fpos_t, int),
                         int (*close)(void*));

#define __BIONIC__ 1
