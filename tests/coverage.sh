#!/usr/bin/env bash
# Builds the coverage preset, runs every test, and prints line and function coverage per
# folder of the module and its libraries. Installs gcovr (Debian's package) if missing.
set -euo pipefail
cd "$(dirname "$0")/.."

if ! command -v gcovr >/dev/null 2>&1; then
    echo "gcovr is missing; installing Debian's gcovr package" >&2
    if [ "$(id -u)" = 0 ]; then
        apt-get update -qq && apt-get install -y -qq gcovr >/dev/null
    else
        echo "run: sudo apt-get install gcovr" >&2
        exit 2
    fi
fi

cmake --preset coverage >/dev/null
cmake --build --preset coverage
find build/coverage -name '*.gcda' -delete
ctest --preset coverage

printf '\n%-10s %8s %10s\n' folder lines functions
# NOTE: the second, SIMD-free build of the string library (tests/strings) compiles the same
# files to other functions at other lines, which gcovr cannot merge with the first; the report
# counts the library as this machine builds it. CMake's compiler probe has no data at all.
for folder in module object strings path host minihost; do
    summary=$(gcovr --root . --object-directory build/coverage build/coverage \
        --exclude-directories '.*tavrel_strings_portable\.dir' \
        --exclude-directories '.*CMakeFiles/[0-9.]+/.*' --filter "${folder}/" \
        --exclude-unreachable-branches --gcov-ignore-parse-errors --print-summary \
        --output /dev/null 2>/dev/null)
    lines=$(sed -n 's/^lines: *\([0-9.]*%\).*/\1/p' <<<"$summary")
    functions=$(sed -n 's/^functions: *\([0-9.]*%\).*/\1/p' <<<"$summary")
    printf '%-10s %8s %10s\n' "$folder" "${lines:-n/a}" "${functions:-n/a}"
done
