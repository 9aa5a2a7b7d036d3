#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Checks what a compiler does not: layout, file rules, and static analysis of what is not a test.
#
# usage: lint.sh BUILD_DIRECTORY   (configured; generated sources are made as needed)
set -uo pipefail
cd "$(dirname "$0")/.."
build=$1
failed=0

complain() {
    echo "lint: $1" >&2
    failed=1
}

mapfile -t sources < <(git ls-files --cached --others --exclude-standard '*.cpp' '*.h')
mapfile -t files < <(git ls-files --cached --others --exclude-standard)

# Every file that can carry it begins with the licence line.
for file in "${files[@]}"; do
    [ -f "$file" ] || continue
    case $file in
        LICENSE|fuzz/corpus/*|*.json|*.md|*.txt|*.svg|*.gitignore|*.clang-*) continue ;;
    esac
    head -n 3 "$file" | grep -q 'SPDX-License-Identifier: Apache-2.0' ||
        complain "$file: begin it with the line SPDX-License-Identifier: Apache-2.0"
done

# Headers are included once, and nothing grows past what one can read.
for file in "${sources[@]}"; do
    [ -f "$file" ] || continue
    case $file in
        *.h) grep -q '^#pragma once$' "$file" || complain "$file: add #pragma once" ;;
    esac
    case $file in
        tests/*) ;;
        *) [ "$(wc -l < "$file")" -le 500 ] || complain "$file: longer than 500 lines, split it" ;;
    esac
done

clang-format --dry-run -Werror "${sources[@]}" || complain "run: clang-format -i on the files above"

# Headers under host/*/include are the platform's, and include what a device's do.
git ls-files --cached --others --exclude-standard '*.cpp' '*.h' ':!host/*/include/*' | xargs tools/check-includes.py ||
    complain "remove the includes above"

# Trailing blanks and tabs, where they mean nothing.
if git grep -nIE '[[:blank:]]+$' -- '*.cpp' '*.h' '*.cmake' '*CMakeLists.txt' '*.md' '*.yaml' '*.hal' '*.sh'; then
    complain "remove the trailing blanks above"
fi

# Every link of the documents leads somewhere.
git ls-files --cached --others --exclude-standard '*.md' | xargs tools/check-links.py ||
    complain "mend the links above"

# Analysis needs the generated headers, which are built first.
cmake --build "$build" --target generated_headers -j "$(nproc)" > /dev/null ||
    complain "the generated headers cannot be built"

# Clang holds the library to its locks, as it does host/ and simulator/ whenever it builds them, and
# would say so if one were missing.
cmake --build "$build" --target library_locks -j "$(nproc)" > "$build/library_locks.log" ||
    complain "take the locks that are missing: $(grep error: "$build/library_locks.log")"
for kind in host library; do
    [[ $(cmake --build "$build" --target missing_lock_$kind) == *'requires holding mutex'* ]] ||
        complain "clang does not see the lock that tests/locks/MissingLock.cpp does not take ($kind)"
done

mapfile -t analysed < <(git ls-files 'provider/*.cpp' 'mapper/*.cpp' 'mapcheck/*.cpp' 'host/*.cpp' 'simulator/*.cpp')
printf '%s\n' "${analysed[@]}" |
    xargs -P "$(nproc)" -n 4 clang-tidy --quiet -p "$build" 2> >(grep -v 'warnings generated\|Suppressed\|Use -header-filter\|Use .*-system-headers' >&2) ||
    complain "clang-tidy found the above"

[ $failed -eq 0 ] && echo "lint: nothing to complain about"
exit $failed
