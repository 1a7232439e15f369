#!/usr/bin/env bash
# Builds the fuzz preset, then runs each fuzz target for the given number of seconds
# (default 30) on a scratch copy of its seed corpus in fuzz/corpus-work/<target>/, and prints
# how many inputs each target ran. A crash, a leak, undefined behaviour or a broken rule stops
# the script with the target's status; the input that did it is kept in
# fuzz/corpus-work/<target>/artifacts/ and belongs in fuzz/corpus/<target>/ once understood.
set -euo pipefail

seconds="${1:-30}"
root="$(cd "$(dirname "$0")/.." && pwd)"
cd "$root"

cmake --preset fuzz
cmake --build --preset fuzz

for target in fuzz_entries fuzz_strings fuzz_path; do
    work="$root/fuzz/corpus-work/$target"
    rm -rf "$work"
    mkdir -p "$work/corpus" "$work/artifacts"
    cp "$root/fuzz/corpus/$target/"* "$work/corpus/"
    status=0
    (cd "$work" && "$root/build/fuzz/fuzz/$target" -max_total_time="$seconds" \
        -print_final_stats=1 -timeout=10 -artifact_prefix=artifacts/ corpus) \
        > "$work/log.txt" 2>&1 || status=$?
    executions="$(sed -n 's/^stat::number_of_executed_units: *//p' "$work/log.txt")"
    echo "$target: ${executions:-0} executions in $seconds s"
    if [ "$status" -ne 0 ]; then
        tail -n 40 "$work/log.txt"
        echo "$target failed (status $status); the input is in $work/artifacts/" >&2
        exit "$status"
    fi
done
