#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Builds targets of a preset and says how far it is. Configures only what is not configured yet:
# afterwards the build itself notices a change of its files.
#
# usage: build.sh PRESET [-D<variable>=<value>...] TARGET...
#
# JOBS is how many compilers run at once (default: one for each processor).
set -euo pipefail
cd "$(dirname "$0")/.."

preset=$1
shift
build=build/$preset
settings=()
while [[ ${1-} == -D* ]]; do
    settings+=("$1")
    shift
done

# Whether every setting is in the cache already; what a value is typed as does not matter.
is_configured() {
    [ -f "$build/build.ninja" ] || return 1
    for setting in "${settings[@]}"; do
        local pair=${setting#-D}
        grep -qE "^${pair%%=*}:[A-Z]+=${pair#*=}$" "$build/CMakeCache.txt" || return 1
    done
}

if ! is_configured; then
    mkdir -p build
    echo "Configuring $build"
    cmake --preset "$preset" "${settings[@]}" >"$build.configure.log" 2>&1 || {
        cat "$build.configure.log" >&2
        exit 1
    }
fi

echo "Building in $build: $*"
NINJA_STATUS='[%f of %t, %e s] ' ninja -C "$build" -j "${JOBS:-$(nproc)}" "$@"
