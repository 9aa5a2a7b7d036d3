#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs the session beside this file against a device of its own, and compares what is printed with
# what a document shows, apart from times, process ids and temporary directories.
#
# usage: session.sh CAMERASIM DOCUMENT           fails if they differ
#        session.sh CAMERASIM DOCUMENT --update  writes what was printed into the document
set -euo pipefail

camerasim=$1
document=$2
source=$(cd "$(dirname "$0")/../../.." && pwd)
begin='<!-- The session is written by tests/simulator/session/session.sh --update. -->'
end='<!-- End of the session. -->'

export TMPDIR
TMPDIR=$(mktemp -d /tmp/session.XXXXXX)
up=
cleanUp() {
    if [ -n "$up" ]; then
        kill "$up" 2>/dev/null || true
        wait "$up" 2>/dev/null || true
    fi
    rm -rf "$TMPDIR"
}
trap cleanUp EXIT

# Boots the device; returns when its first line has come, which is when it can be asked.
boot() {
    mkfifo "$TMPDIR/up"
    "$camerasim" up "$source/simulator/devices/headset" >"$TMPDIR/up" 2>&1 &
    up=$!
    exec {lines}<"$TMPDIR/up"
    local line
    while read -r -t 60 line <&"$lines"; do
        case $line in *'serves the framework'*) break ;; esac
    done
    # What comes later must not fill the pipe.
    cat <&"$lines" >"$TMPDIR/up.txt" &
}

session() {
    local command
    echo '```text'
    while read -r command; do
        case $command in ''|'#'*) continue ;; esac
        echo "\$ camerasim $command"
        # shellcheck disable=SC2086  # the session's words have no blanks in them
        "$camerasim" $command 2>&1 || true
    done < "$source/tests/simulator/session/headset.session" | sed "s#$source/##g"
    echo '```'
}

# What differs from one run to the next becomes a word, and columns lose their widths. Where a process
# takes long to start, the library looks for it more than once.
normalised() {
    sed -E \
        -e 's#/[^ ]*camerasim\.[A-Za-z0-9]{6}#ROOT#g' \
        -e 's/([0-9]{2}-[0-9]{2} )?[0-9]{2}:[0-9]{2}:[0-9]{2}(\.[0-9]+)?/TIME/g' \
        -e 's/TIME +[0-9]+\.[0-9]{3} /TIME SECONDS /' \
        -e 's/[0-9.]+ (min [0-9]+ )?s\b/DURATION/g' \
        -e 's/(process|hung,) [0-9]+/\1 PID/g' \
        -e 's/ [0-9]{2,7} +(yes|no) / PID \1 /' \
        -e 's/ [0-9]+ +DURATION +ROOT/ PID DURATION ROOT/' \
        -e 's/attempt [0-9]+/attempt N/' -e '/Failed to get service /d' \
        -e 's/ +/ /g' -e 's/ $//'
}

shown() {
    awk -v begin="$begin" -v end="$end" '$0 == end { on = 0 } on { print } $0 == begin { on = 1 }' \
        "$document"
}

boot
printed=$TMPDIR/session.txt
session > "$printed"
if [ "${3:-}" = --update ]; then
    awk -v begin="$begin" -v end="$end" -v file="$printed" '
        $0 == end { on = 0 }
        !on { print }
        $0 == begin { on = 1; while ((getline line < file) > 0) print line }' \
        "$document" > "$TMPDIR/document"
    cat "$TMPDIR/document" > "$document"
    exit 0
fi
if ! diff <(shown | normalised) <(normalised < "$printed"); then
    echo "$document shows another session than the one above (>); look at it, then run:" >&2
    echo "  $0 $camerasim $document --update" >&2
    exit 1
fi
