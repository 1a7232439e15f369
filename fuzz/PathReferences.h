// PathReferences: plain implementations of the path class's rules on std::string, written
// from the rules and not from the class, for the path fuzzer to compare against. Separators
// are named by the set of bytes a test accepts ("/", "\\" or "/\\"). Nothing here is meant
// for use outside the fuzzers.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace fuzz::reference {

inline constexpr std::string_view kSlash = "/";
inline constexpr std::string_view kBackslash = "\\";
inline constexpr std::string_view kAnySeparator = "/\\";
inline constexpr unsigned long kNoPlace = static_cast<unsigned long>(-1);

bool IsSeparator(char c);  // a slash or a backslash

// Every backslash made a slash.   "a\b/" => "a/b/"
std::string Slashed(std::string_view text);
// Without the bytes of separators at the end, or at the start.   "a/\/", "/" => "a/\"
std::string WithoutEndSeparators(std::string_view text, std::string_view separators);
std::string WithoutStartSeparators(std::string_view text, std::string_view separators);
// The first or last separator of that set; with both kinds accepted a slash is looked for
// first, and a backslash only in a text with no slash.   "a\b/c", "/\" => 3 (first)
unsigned long FirstSeparator(std::string_view text, std::string_view separators);
unsigned long LastSeparator(std::string_view text, std::string_view separators);

// path joined with argument as AppendPath(argument, dir) joins them, in slash form.
//   ("a", "b", false) => "a/b"     ("a/", "/b", false) => "a//b"     ("", "", true) => "/"
std::string Joined(std::string_view path, std::string_view argument, bool dir);

struct Corrected {
    bool ok;
    std::string text;  // the text afterwards
};
// The component reduction of an absolute path. Relative => {false, text}; a climb that
// empties the list => {false, ""}.   "/a//../b" => "/a/b"     "/../a" => "a"
Corrected CorrectedAbsolute(std::string_view text);
// The erase loop: "./" and "../" deleted wherever they stand, two dots at the very end too;
// a text that becomes empty is ".".   "a/b/.." => "a/b/"     ".../a" => ".a"
std::string Simplified(std::string_view text);

// The leaf (behind the last separator once trailing ones are gone) and the root.
std::optional<std::string> Leaf(std::string_view text);
std::optional<std::string> Root(std::string_view text);

// The text that IsEqual compares.
std::string ComparedForm(std::string_view text, bool ignoreEndSeparators, bool caseSensitive);
// StartsWithPath, EndsWith and FindSubDir for two different objects.
bool StartsWithPath(std::string_view path, std::string_view other, bool strict);
bool EndsWithPath(std::string_view path, std::string_view text, bool ignoreEndSeparators);
unsigned long SubDirectoryPlace(std::string_view path, std::string_view sub, unsigned long start);

}  // namespace fuzz::reference
