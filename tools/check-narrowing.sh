#!/usr/bin/env bash
# Compiles the module and its libraries for 64-bit Windows with clang's -Wshorten-64-to-32,
# which names every place where a 64-bit size, offset or position would be cut to 32 bits
# (unsigned long is 32 bits wide there). Prints the findings; exit status 1 when there is one.
# Needs clang and Debian's mingw-w64 (apt-get install g++-mingw-w64-x86-64-posix) for the
# headers, and a configured windows build (build/windows) for the generated names.
set -euo pipefail
cd "$(dirname "$0")/.."
test -f build/windows/generated/ExportedNames.def || cmake --preset windows >/dev/null
gcc_dir=$(dirname "$(x86_64-w64-mingw32-g++-posix -print-libgcc-file-name)")
flags=(--target=x86_64-w64-mingw32 -std=c++20 -fsyntax-only -Wshorten-64-to-32 -nostdinc++
       -isystem "$gcc_dir/include/c++" -isystem "$gcc_dir/include/c++/x86_64-w64-mingw32"
       -isystem "$gcc_dir/include/c++/backward" -I. -Ibuild/windows)
# NOTE: the string library is compiled as C++23, which clang 14 names c++2b; a later -std wins.
findings=$({
    git ls-files 'object/*.cpp' 'module/*.cpp' 'path/*.cpp' 'host/*.cpp' |
        xargs -P2 -n1 clang++ "${flags[@]}" 2>&1
    git ls-files 'strings/*.cpp' | xargs -P2 -n1 clang++ "${flags[@]}" -std=c++2b 2>&1
} | grep -E "warning|error" || true)
if [ -n "$findings" ]; then
    echo "$findings"
    exit 1
fi
echo "no size cut to 32 bits in the module and its libraries"
