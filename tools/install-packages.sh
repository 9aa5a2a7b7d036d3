#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Installs what is missing of the Debian packages that a list names, one a line.
#
# usage: install-packages.sh LIST
set -euo pipefail

missing=()
while read -r package; do
    status=$(dpkg-query -W -f '${Status}' "$package" 2>/dev/null || true)
    [ "$status" = "install ok installed" ] || missing+=("$package")
done < <(grep -vE '^(#|$)' "$1")

[ ${#missing[@]} -gt 0 ] || exit 0

if [ "$(id -u)" -eq 0 ]; then
    sudo=()
elif command -v sudo >/dev/null; then
    sudo=(sudo)
else
    echo "These Debian packages are missing; install them as root and try again:" >&2
    echo "  apt-get install ${missing[*]}" >&2
    exit 1
fi

echo "Installing ${#missing[@]} Debian packages: ${missing[*]}"
log=$(mktemp)
trap 'rm -f "$log"' EXIT
export DEBIAN_FRONTEND=noninteractive
if ! { "${sudo[@]}" apt-get update && "${sudo[@]}" apt-get install -y --no-install-recommends \
        "${missing[@]}"; } >"$log" 2>&1; then
    tail -n 20 "$log" >&2
    echo "Installing packages failed; see above." >&2
    exit 1
fi
