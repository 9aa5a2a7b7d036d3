#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs every fuzzer of a build for some time and keeps what they find.
#
# usage: run.sh BUILD_DIRECTORY SECONDS [TARGET...]
#
# Inputs that broke something are left in build/fuzz/findings/<target>/, and are run first by the
# next run. Inputs that only reached new code are kept in build/fuzz/corpus/<target>/.
set -uo pipefail
cd "$(dirname "$0")/.."

build=$1
seconds=$2
shift 2
if ! [[ $seconds =~ ^[1-9][0-9]*$ ]]; then
    echo "fuzz: FUZZ_SECONDS is '$seconds'; give the seconds for each target, such as 60" >&2
    exit 2
fi
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
    for directory in fuzz/corpus/*/; do targets+=("$(basename "$directory")"); done
fi

dictionary_of() {
    case $1 in
        map_file | device_files) echo fuzz/dictionaries/xml.dict ;;
        control_request) echo fuzz/dictionaries/json.dict ;;
        *_description) echo fuzz/dictionaries/yaml.dict ;;
    esac
}

# Threads of the transport free what an input needed when it is over, so an input that leaves more
# memory than it found is no leak; what is left at the end is. Choosing by rare features would take a
# third of the time.
settings_of() {
    case $1 in
        client_* | server_*) echo -detect_leaks=0 -entropic=0 ;;
    esac
}

reproduce() {
    echo "  reproduce it with: $build/bin/$1_fuzzer $2" >&2
    echo "  once mended, keep it: mv $2 fuzz/corpus/$1/<what it is>" >&2
}

failed=0
for target in "${targets[@]}"; do
    fuzzer=$build/bin/${target}_fuzzer
    if [ ! -x "$fuzzer" ]; then
        echo "fuzz: there is no fuzzer '$target'; the targets are $(ls fuzz/corpus | tr '\n' ' ')" >&2
        exit 2
    fi
    findings=build/fuzz/findings/$target
    corpus=build/fuzz/corpus/$target
    log=build/fuzz/$target.log
    mkdir -p "$findings" "$corpus"

    for finding in "$findings"/*; do
        [ -e "$finding" ] || continue
        "$fuzzer" -timeout=20 "$finding" > "$log" 2>&1 && continue
        echo "fuzz: $target still breaks on $finding (see $log)" >&2
        reproduce "$target" "$finding"
        failed=1
        continue 2
    done

    dictionary=$(dictionary_of "$target")
    read -ra settings <<< "$(settings_of "$target")"
    "$fuzzer" "${settings[@]}" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=2560 \
        -print_final_stats=1 -artifact_prefix="$findings/" ${dictionary:+-dict="$dictionary"} \
        "$corpus" "fuzz/corpus/$target" > "$log" 2>&1
    status=$?
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
    if [ $status -eq 0 ]; then
        echo "fuzz: $target: ${runs:-0} runs, nothing found"
        continue
    fi
    failed=1
    found=$(sed -n 's/.*Test unit written to //p' "$log" | tail -n 1)
    echo "fuzz: $target broke after ${runs:-0} runs (see $log):" >&2
    grep -a -m 3 -E 'ERROR:|SUMMARY:|runtime error|does not hold' "$log" | sed 's/^/  /' >&2
    if [ -n "$found" ]; then reproduce "$target" "$found"; else tail -n 5 "$log" >&2; fi
done
exit $failed
