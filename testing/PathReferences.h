// PathReferences: plain implementations of the path class's rules on std::string, written
// from the rules and not from the class, for the tests and the fuzzers to compare against.
// Separators are named by the set of bytes a caller accepts ("/", "\\" or "/\\"). They work
// on text only, never on the file system, and check nothing themselves. Nothing of the
// module or its libraries may use them.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tavrel_testing::reference {

inline constexpr std::string_view kSlash = "/";
inline constexpr std::string_view kBackslash = "\\";
inline constexpr std::string_view kAnySeparator = "/\\";
inline constexpr std::size_t kNoPlace = static_cast<std::size_t>(-1);

// A slash or a backslash.   '/' => true     '\\' => true     ':' => false
bool IsSeparator(char c);

// Every backslash made a slash.   "a\b/" => "a/b/"
std::string Slashed(std::string_view text);
// Without the bytes of separators at the end, or at the start.   "a/\/", "/" => "a/\"
std::string WithoutEndSeparators(std::string_view text, std::string_view separators);
std::string WithoutStartSeparators(std::string_view text, std::string_view separators);
// The first or last separator of that set; with both kinds accepted a slash is looked for
// first, and a backslash only in a text with no slash.   "a\b/c", "/\" => 3 (first)
//   last: ("a/b\c", "/\") => 1     ("a\b", "/") => kNoPlace
std::size_t FirstSeparator(std::string_view text, std::string_view separators);
std::size_t LastSeparator(std::string_view text, std::string_view separators);

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

// The leaf (behind the last separator once trailing ones are gone) and the root (before the
// first; "/" for an absolute path); nullopt when no separator is left.
//   Leaf: "a/b/" => "b"     "a\b" => "b"     "a" => nullopt     "/" => nullopt
//   Root: "a/b" => "a"      "/a" => "/"       "a/" => nullopt
std::optional<std::string> Leaf(std::string_view text);
std::optional<std::string> Root(std::string_view text);

// The text that IsEqual compares: slashed, upper-cased unless caseSensitive.
//   ("a\b/", true, false) => "A/B"     ("a/", false, true) => "a/"
std::string ComparedForm(std::string_view text, bool ignoreEndSeparators, bool caseSensitive);
// StartsWithPath, EndsWith and FindSubDir for two different objects.
//   StartsWithPath: ("/a/b", "/a", false) => true     ("/ab", "/a", false) => false
//                   ("/a/b", "/a", true) => false     ("/a/b", "/a/", true) => true
//   EndsWithPath:   ("/a/b/", "b", true) => true      ("/a/b/", "b", false) => false
//                   ("/a/b", "a\b", false) => true
//   SubDirectoryPlace: ("/a/b/c", "/b/", 0) => 3     ("/a/b/c", "c", 0) => kNoPlace
//                      ("b/c", "b", 0) => kNoPlace   ("/a/b/c", "b", 9) => kNoPlace
// NOTE: EndsWithPath slashes text only, not path; a sub-directory needs a separator on both
// sides, so one at the very start or end of path is never found.
bool StartsWithPath(std::string_view path, std::string_view other, bool strict);
bool EndsWithPath(std::string_view path, std::string_view text, bool ignoreEndSeparators);
std::size_t SubDirectoryPlace(std::string_view path, std::string_view sub, std::size_t start);

}  // namespace tavrel_testing::reference
