#!/usr/bin/env bash
# Counts the instructions of one call of the Size entry and of the hand-written entry beside it
# in the same shared object (bench/SizeCalls.cpp, bench/HandWrittenSize.cpp), with valgrind's
# callgrind: each runs COUNT calls with the same DATAREF of 100 bytes, and only the
# instructions inside the entry (and what it calls: the host's variant and the buffer) are
# collected. Unlike a time, the count does not move with the load of the machine.
#
#   bench/instructions.sh [BUILD_DIR]     default build/bench (preset bench)
#
# Prints both counts per call and their ratio, and writes them to BUILD_DIR/instructions.json
# for bench/table.py. Needs valgrind (apt-get install valgrind).
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
cd "$root"
build="${1:-build/bench}"
count=20000

if ! command -v valgrind >/dev/null 2>&1; then
  echo "bench/instructions.sh: valgrind is missing; install it with: apt-get install valgrind" >&2
  exit 2
fi
if [ "$build" = build/bench ]; then
  cmake --preset bench >/dev/null
fi
cmake --build "$build" --target tavrel_size_calls >/dev/null

program="$build/bench/tavrel_size_calls"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

# Instructions per call inside the function that the pattern names.
per_call() {
  local which="$1" pattern="$2"
  valgrind --tool=callgrind --callgrind-out-file="$work/$which.out" \
    "--toggle-collect=$pattern" "$program" "$which" "$count" >"$work/$which.log" 2>&1 || {
    cat "$work/$which.log" >&2
    exit 2
  }
  local total
  total="$(sed -n 's/^summary: *//p' "$work/$which.out")"
  python3 -c "print($total / $count)"
}

entry="$(per_call entry tavrel_module_BinarySize)"
hand="$(per_call hand 'bench::HandWrittenSize*')"
ratio="$(python3 -c "print('%.3f' % ($entry / $hand))")"
printf 'Size through the entry: %s instructions per call; hand-written entry: %s; ratio %s\n' \
  "$entry" "$hand" "$ratio"
printf '{"entry": %s, "hand": %s}\n' "$entry" "$hand" >"$build/instructions.json"
