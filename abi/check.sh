#!/usr/bin/env bash
# Guards the module's exported surface: its 28 exported functions with the types of their
# parameters and results, as abidw (Debian's abigail-tools) reads them from the built module's
# symbol table and debug information. The baseline abi/Binary.abi is kept in the repository.
#
#   abi/check.sh [MODULE]            compare MODULE with the baseline; any difference fails
#   abi/check.sh --update [MODULE]   write the baseline from MODULE (a deliberate change:
#                                    read the comparison first, then commit the new file)
#
# MODULE defaults to build/default/module/Binary.so, which has debug information (the default
# preset builds RelWithDebInfo); a module without it cannot be compared.
# It does not see the order of the host's virtual tables, which no symbol table shows:
# tests/abi pins those.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
baseline="$root/abi/Binary.abi"

update=0
if [ "${1:-}" = "--update" ]; then
    update=1
    shift
fi
module="${1:-$root/build/default/module/Binary.so}"

for tool in abidw abidiff; do
    if ! command -v "$tool" >/dev/null; then
        echo "abi/check.sh: $tool was not found. Install it with: apt-get install abigail-tools" >&2
        exit 2
    fi
done
if [ ! -f "$module" ]; then
    echo "abi/check.sh: $module does not exist; build it first (cmake --workflow --preset test)" >&2
    exit 2
fi
sections=$(readelf --section-headers "$module")
if [[ "$sections" != *".debug_info"* ]]; then
    echo "abi/check.sh: $module has no debug information; build it as RelWithDebInfo or Debug" >&2
    exit 2
fi

if [ "$update" = 1 ]; then
    # No paths, no source locations, type ids by hash: the file changes only with the surface.
    abidw --no-corpus-path --no-comp-dir-path --no-show-locs --exported-interfaces-only \
        --type-id-style hash --out-file "$baseline" "$module"
    functions=$(grep -c "<elf-symbol .*type='func-type'" "$baseline" || true)
    echo "abi/check.sh: wrote $baseline ($functions exported functions) from $module"
    exit 0
fi

# abidiff's status is a bit set: 0 is no change at all; 4 a change, 8 an incompatible one,
# 1 and 2 an error of its own.
status=0
abidiff --no-show-locs "$baseline" "$module" || status=$?
if [ "$status" -ne 0 ]; then
    echo "abi/check.sh: the exported surface of $module differs from $baseline (abidiff status $status)." >&2
    echo "If the change is meant: abi/check.sh --update $module, and commit abi/Binary.abi." >&2
    exit 1
fi
echo "abi/check.sh: $module exports what $baseline holds"
