#!/usr/bin/env bash
# Builds the benchmark suite (preset bench: Release, -O2, build/bench), runs it and prints one
# table: each figure of the module, its baseline measured in the same run, the ratio, the
# target, and whether it is met; beside the time of the Size entry, its instructions per call
# (bench/instructions.sh). Exit status 0 when every target is met.
# TAVREL_STRINGS_PATH=portable (or sse2, avx2) runs the string library on that path.
#
#   bench/run.sh            the full run: 9 repetitions, randomly interleaved, medians
#   bench/run.sh --smoke    every benchmark once with a very short minimum time, only to show
#                           that they build and run and give the bytes they should (for CI)
#
# Needs Debian's libbenchmark-dev (apt-get install libbenchmark-dev), and valgrind for the
# instruction counts; the configure step names the package when one is missing.
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
cd "$root"

mode=full
case "${1:-}" in
  "") ;;
  --smoke) mode=smoke ;;
  *) echo "usage: bench/run.sh [--smoke]" >&2; exit 2 ;;
esac

for package in libbenchmark-dev; do
  if ! dpkg -s "$package" >/dev/null 2>&1; then
    if [ "$(id -u)" = 0 ]; then
      echo "bench/run.sh: installing Debian's $package" >&2
      apt-get update -qq >/dev/null && apt-get install -y -qq "$package" >/dev/null
    else
      echo "bench/run.sh: $package is missing; install it with: apt-get install $package" >&2
      exit 2
    fi
  fi
done

cmake --preset bench >/dev/null
cmake --build --preset bench

out="build/bench/results.json"
log="build/bench/run.log"
# Runs the suite with the given options; its own console output goes to the log.
run_suite() {
  if ! build/bench/bench/tavrel_bench "$@" --benchmark_out="$out" \
      --benchmark_out_format=json >"$log" 2>&1; then
    cat "$log" >&2
    exit 2
  fi
}

if [[ $mode == smoke ]]; then
  run_suite --benchmark_min_time=0.001
  exec python3 bench/table.py --smoke "$out"
fi

# NOTE: many short repetitions in random order spread each figure and its baseline over the
# whole run, so that a burst of load elsewhere on the machine moves both alike.
run_suite --benchmark_repetitions=9 --benchmark_min_time=0.25 \
  --benchmark_enable_random_interleaving=true --benchmark_report_aggregates_only=true
echo "Machine: $(lscpu | sed -n 's/^Model name: *//p'), $(nproc) cores"
# The instructions of the Size entry beside the hand-written one (needs valgrind); without
# valgrind the table goes without that row.
counts=()
if command -v valgrind >/dev/null 2>&1; then
  bench/instructions.sh
  counts=(build/bench/instructions.json)
else
  echo "bench/run.sh: valgrind is missing, so no instruction counts (apt-get install valgrind)" >&2
fi
exec python3 bench/table.py "$out" "${counts[@]}"
