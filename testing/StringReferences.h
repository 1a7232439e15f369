// StringReferences: plain, slow implementations of the string library's rules, written
// from the rules and not from the library, for the tests and the fuzzers to compare against.
// Each favours the most literal reading (one byte at a time, no early exits that the rule
// does not name). Texts are bytes. They check nothing themselves and are never fast: a
// caller keeps its inputs to a few hundred bytes. Nothing of the module or its libraries
// may use them.
#pragma once

#include <cstddef>
#include <list>
#include <optional>
#include <string>
#include <string_view>

namespace tavrel_testing::reference {

inline constexpr std::size_t kNotFound = static_cast<std::size_t>(-1);

// Index of the first place at which needle (the bytes before its first NUL) lies wholly
// inside text; kNotFound for an empty text or a needle longer than it. "" is found at 0.
//   ("aab", "ab") => 1     ("abc", "") => 0     ("", "") => kNotFound
std::size_t CountedFind(std::string_view text, char const* needle);

// The first match of needle under the tolower fold inside the inclusive range
// [first, last] (last == size meaning size - 1); kNotFound for an empty text or needle,
// first > last, first or last > size, or no match.
//   ("HeLLo", 0, 5, "ll") => 2     ("abc", 0, 3, "c") => 2     ("abc", 0, 1, "bc") => kNotFound
//   ("abc", 2, 1, "a") => kNotFound
std::size_t FoldFind(std::string_view text, std::size_t first, std::size_t last,
                       std::string_view needle);

// Left to right, non-overlapping, never searching what was put in. Empty text or from =>
// text. ("aaa", "a", "aa") => "aaaaaa"     ("aaaa", "aa", "b") => "bb"
std::string ReplaceAll(std::string_view text, std::string_view from, std::string_view to);
// Every from byte becomes to.   ("a.b.", '.', '/') => "a/b/"
std::string ReplaceAll(std::string_view text, char from, char to);

// Byte-wise comparison that also ends, as equal, at a NUL that both sides hold at the
// same place. False when either side is empty or affix is longer than text.
//   ("abc", "ab") => true     ("ab\0x", "ab\0y") => true     ("ab", "") => false
//   ("a", "ab") => false      EndsWith: ("x\0a", "\0b") => true (equal up to the NUL)
bool StartsWithUpToNul(std::string_view text, std::string_view prefix);
bool EndsWithUpToNul(std::string_view text, std::string_view suffix);
// Every byte under the fold. The affix forms are false when either side is empty or affix
// is longer than text; two empty texts are equal.
//   StartsWith ("HeLLo", "hel") => true     EndsWith ("ab", "") => false
//   Equals ("", "") => true     Equals ("ab", "AB") => true     Equals ("ab", "abc") => false
bool StartsWithFolded(std::string_view text, std::string_view prefix);
bool EndsWithFolded(std::string_view text, std::string_view suffix);
bool EqualsFolded(std::string_view text, std::string_view other);

struct Utf8Verdict {
    bool valid = true;
    std::string message;  // set only when not valid
    std::size_t position = 0;
};
// The form-only UTF-8 walk with its line and place counting: a lead byte C0-F7 and the
// right number of continuation bytes 80-BF, nothing more (no overlong or range check).
//   "a\xC3\xA9"  => valid
//   "ab\n\x80"   => {false, "Sign: 1 in column: 2 is not utf-8 conform.", 3}
//   "\xC3"       => {false, "Sign: 3 in column: 1 is not utf-8 conform.", 1}
// NOTE: "column" counts lines, and the place of a cut sequence is one behind its end.
Utf8Verdict CheckUtf8(std::string_view text);
// Index of the first byte above 0x7F, or nullopt.   "ab\x80" => 2     "" => nullopt
std::optional<std::size_t> FirstNonAscii(std::string_view text);
// Index of the first byte outside 0x20-0x7E, or nullopt.   "a\tb" => 1     "~" => nullopt
std::optional<std::size_t> FirstNonPrintableAscii(std::string_view text);

// The two replacement passes of escaping and of unescaping: escape doubled, then special
// behind an escape; and back.   Escaped ("a;b\\", ';', '\\') => "a\\;b\\\\"
std::string Escaped(std::string_view text, char special, char escape);
std::string Unescaped(std::string_view text, char special, char escape);

// Without the bytes that isprint rejects; with replace, replacement stands for each.
//   ("a\tb", false, "?") => "ab"     ("a\tb", true, "<>") => "a<>b"
std::string WithoutNonPrint(std::string_view text, bool replace, std::string_view replacement);
// Each byte that isprint rejects becomes replacement.   ("a\tb", '?') => "a?b"
std::string NonPrintReplaced(std::string_view text, char replacement);
// Each byte that isprint rejects becomes "\x" and two lower-case hexadecimal digits.
//   "a\tb\xff" => "a\x09b\xff"
std::string NonPrintEscaped(std::string_view text);

// Trimming every byte of set (a caller passes the bytes before a C set's first NUL), or one
// byte.   Left ("  ab ", " ") => "ab "     Right ("xaxx", 'x') => "xa"     Left ("ab", "") => "ab"
std::string LeftTrimmed(std::string_view text, std::string_view set);
std::string RightTrimmed(std::string_view text, std::string_view set);
std::string LeftTrimmed(std::string_view text, char c);
std::string RightTrimmed(std::string_view text, char c);

// ASCII letters only, by 0x20.   Upper ("a\xE9-z") => "A\xE9-Z"     Lower ("ABc") => "abc"
std::string Upper(std::string_view text);
std::string Lower(std::string_view text);
// Alphanumeric runs joined, a lower-case letter behind a separator made upper case; the
// first byte stays (upper-cased if it is a lower-case letter).
//   "hello world-x" => "HelloWorldX"     "" => ""
// NOTE: a separator in first place is kept and does not count:   "-ab" => "-ab"
std::string CamelCase(std::string_view text);

// The pieces between delimiters (any one byte of them, or the whole text), empty ones kept.
// With anyOf false, delimiters must not be empty.
//   ("a,,b", ",", true) => {"a", "", "b"}     ("", ",", true) => {""}
//   ("a::b", "::", false) => {"a", "b"}
std::list<std::string> Split(std::string_view text, std::string_view delimiters, bool anyOf);

}  // namespace tavrel_testing::reference
