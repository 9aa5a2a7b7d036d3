#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs test programs under memcheck; any error, and any block that nothing points to any more,
# fails.
#
# The programs keep an operator new of their own, where they have one: it runs out of memory on
# request.
#
# usage: valgrind.sh BUILD_DIRECTORY PROGRAM...
set -euo pipefail
cd "$(dirname "$0")/.."

build=$1
shift
python3 -B tools/gtest_programs.py \
    --launcher "valgrind --quiet --error-exitcode=99 --leak-check=full --num-callers=30
        --errors-for-leak-kinds=definite --show-leak-kinds=definite
        --soname-synonyms=somalloc=nouserintercepts" \
    --leave-out tools/valgrind-left-out.txt \
    "${@/#/$build/bin/}"
