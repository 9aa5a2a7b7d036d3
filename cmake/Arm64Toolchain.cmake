# SPDX-License-Identifier: Apache-2.0
# Cross-compiles for 64-bit Arm with Debian's compiler against a tree of Debian's arm64 packages,
# and runs the result under qemu's user-mode emulation.
#
# ORVO_ARM64_SYSROOT names that tree; tools/arm64-sysroot.sh makes it.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)

# try_compile() starts with an empty cache.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ORVO_ARM64_SYSROOT)
set(CMAKE_SYSROOT ${ORVO_ARM64_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L ${ORVO_ARM64_SYSROOT})
