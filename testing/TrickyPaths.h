// TrickyPaths: for the path class's tests and its fuzzer, a way to store a text in an FSPath
// without conversion (Raw), and a list of texts that have broken path code before
// (TrickyPaths). They look at no file system and check nothing themselves.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "path/FSPath.h"

namespace tavrel_testing {

// A path holding text exactly as given, backslashes and NUL bytes included.
//   "a\b"  => "a\b" (the constructor would make it "a/b")     "" => ""
// NOTE: inline, so that the library itself needs no path class: a program that tests another
// build of the string library links tavrel_testing without the usual one coming along.
inline Tavrel::FSPath Raw(std::string_view text) {
    Tavrel::FSPath path;
    path = text;
    return path;
}

// Empty, dots, separator runs of both kinds, climbs above the root, a drive-like name, and
// NUL bytes inside a name; the same list on every call, "" first.
std::vector<std::string> const& TrickyPaths();

}  // namespace tavrel_testing
