// Shared helpers for the FSPath tests: paths stored without conversion, and a list of
// tricky texts that the property checks run over.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "path/FSPath.h"

namespace Tavrel::test {

// A path holding text exactly as given, backslashes included.
inline FSPath Raw(std::string_view text) {
    FSPath path;
    path = text;
    return path;
}

// Texts that have broken path code before: empty, dots, separator runs of both kinds,
// climbs above the root, and NUL bytes inside a name.
inline std::vector<std::string> const& TrickyTexts() {
    static std::vector<std::string> const texts = {
        "", ".", "..", "...", "/", "//", "\\", "\\/", "/\\/", "a", "a/", "a//", "/a", "\\a",
        "a/b", "a\\b", "a\\b/c", "/a/../b", "/../a", "//..", "./a", "a/.", "a/..", ".a",
        "a.", "a.b/c.d", "/a//b/", "C:\\x", std::string("a\0b", 3), std::string("/\0/", 3),
        std::string("\0", 1),
    };
    return texts;
}

}  // namespace Tavrel::test
