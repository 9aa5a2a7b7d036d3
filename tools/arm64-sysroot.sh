#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Unpacks the arm64 packages of the libraries that the build needs, from the Debian archive that
# this machine uses, into a directory. Nothing on the machine itself is changed, and no program of
# the packages is run.
#
# usage: arm64-sysroot.sh DIRECTORY
set -euo pipefail

directory=$1
# The libraries of packages.txt, and the C and C++ libraries that a cross compiler looks for there.
packages=libc6-dev,libstdc++-12-dev
packages+=,android-libbase-dev,android-libcutils-dev,android-liblog-dev,android-libutils-dev
packages+=,android-platform-system-core-headers
packages+=,libarchive-dev,libbenchmark-dev,libcapnp-dev,libcli11-dev,libfmt-dev,libgmock-dev,libgtest-dev
packages+=,liblmdb-dev,libxml2-dev,libyaml-cpp-dev,nlohmann-json3-dev

# A list that has changed asks for another tree.
stamp="$directory/.packages"
[ "$(cat "$stamp" 2>/dev/null)" != "$packages" ] || exit 0

sources=()
for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list /etc/apt/sources.list.d/*.sources; do
    # Archives of other makers have no arm64 packages of these, or another key.
    ! grep -qsE '^[^#]*/debian\b' "$file" || sources+=("$file")
done
rm -rf "$directory"
mkdir -p "$(dirname "$directory")"
log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! mmdebstrap --variant=extract --arch=arm64 --include="$packages" \
        "$(. /etc/os-release && echo "$VERSION_CODENAME")" "$directory" "${sources[@]}" \
        >"$log" 2>&1; then
    tail -n 20 "$log" >&2
    echo "The arm64 packages could not be fetched; see above." >&2
    exit 1
fi
echo "$packages" >"$stamp"
