#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Installs what is missing of the Debian packages that packages.txt names for some purposes.
#
# usage: install-packages.sh PURPOSE...   (none: for all of them)
set -euo pipefail
cd "$(dirname "$0")/.."

packages=$(awk -v wanted=" $* " '
    /^\[/ { purpose = substr($0, 2, length($0) - 2) }
    /^[a-z0-9]/ && (wanted == "  " || index(wanted, " " purpose " ")) { print }' packages.txt)

missing=()
while read -r package; do
    missing+=("$package")
done < <(comm -23 <(sort -u <<<"$packages") \
    <(dpkg-query -W -f '${db:Status-Status} ${Package}\n' | sed -n 's/^installed //p' | sort -u))

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

echo "Installing ${#missing[@]} Debian packages and what they need in turn: ${missing[*]}"
log=$(mktemp)
trap 'rm -f "$log"' EXIT
export DEBIAN_FRONTEND=noninteractive
# A terminal shows one line that changes, anything else a line for each package.
if [ -t 1 ]; then begin=$'\r\033[K' end=''; else begin='' end=$'\n'; fi
if ! { "${sudo[@]}" apt-get update && "${sudo[@]}" apt-get install -y --no-install-recommends \
        "${missing[@]}"; } 2>&1 | tee "$log" | awk -v begin="$begin" -v end="$end" '
            /^Get:/ && NF > 6 { printf "%s  fetching %s%s", begin, $5, end }
            /^Setting up/ { printf "%s  setting up %s%s", begin, $3, end }
            { fflush() }
            END { printf "%s", begin }'; then
    tail -n 20 "$log" >&2
    echo "Installing packages failed; see above." >&2
    exit 1
fi
