// StringReferences: plain, slow implementations of the string library's rules, written
// from the rules and not from the library, for the strings fuzzer to compare against. Each
// favours the most literal reading (one byte at a time, no early exits that the rule does not
// name). Texts are bytes. The property tests of the string library use them too; nothing here
// is meant for use outside the fuzzers and the tests.
#pragma once

#include <list>
#include <optional>
#include <string>
#include <string_view>

namespace fuzz::reference {

inline constexpr unsigned long kNotFound = static_cast<unsigned long>(-1);

// Index of the first place at which needle (the bytes before its first NUL) lies wholly
// inside text; kNotFound for an empty text or a needle longer than it. "" is found at 0.
//   ("aab", "ab") => 1     ("abc", "") => 0     ("", "") => kNotFound
unsigned long CountedFind(std::string_view text, char const* needle);

// The first match of needle under the tolower fold inside the inclusive range
// [first, last] (last == size meaning size - 1); kNotFound for an empty text or needle,
// first > last, first or last > size, or no match.
unsigned long FoldFind(std::string_view text, unsigned long first, unsigned long last,
                       std::string_view needle);

// Left to right, non-overlapping, never searching what was put in. Empty text or from =>
// text. ("aaa", "a", "aa") => "aaaaaa"     ("aaaa", "aa", "b") => "bb"
std::string ReplaceAll(std::string_view text, std::string_view from, std::string_view to);
// Every from byte becomes to.
std::string ReplaceAll(std::string_view text, char from, char to);

// Byte-wise comparison that also ends, as equal, at a NUL that both sides hold at the
// same place. False when either side is empty or affix is longer than text.
bool StartsWithUpToNul(std::string_view text, std::string_view prefix);
bool EndsWithUpToNul(std::string_view text, std::string_view suffix);
// Every byte under the fold. The affix forms are false when either side is empty or affix
// is longer than text; two empty texts are equal.
bool StartsWithFolded(std::string_view text, std::string_view prefix);
bool EndsWithFolded(std::string_view text, std::string_view suffix);
bool EqualsFolded(std::string_view text, std::string_view other);

struct Utf8Verdict {
    bool valid = true;
    std::string message;  // set only when not valid
    unsigned long position = 0;
};
// The form-only UTF-8 walk with its line and place counting.
Utf8Verdict CheckUtf8(std::string_view text);
// Index of the first byte above 0x7F, or nullopt.
std::optional<unsigned long> FirstNonAscii(std::string_view text);
// Index of the first byte outside 0x20-0x7E, or nullopt.
std::optional<unsigned long> FirstNonPrintableAscii(std::string_view text);

// The two replacement passes of escaping and of unescaping.
std::string Escaped(std::string_view text, char special, char escape);
std::string Unescaped(std::string_view text, char special, char escape);

// Without the bytes that isprint rejects; with replace, replacement stands for each.
std::string WithoutNonPrint(std::string_view text, bool replace, std::string_view replacement);
// Each byte that isprint rejects becomes replacement.
std::string NonPrintReplaced(std::string_view text, char replacement);
// Each byte that isprint rejects becomes "\x" and two lower-case hexadecimal digits.
std::string NonPrintEscaped(std::string_view text);

// Trimming with a NUL-terminated set (its bytes before the first NUL) or one byte.
std::string LeftTrimmed(std::string_view text, std::string_view set);
std::string RightTrimmed(std::string_view text, std::string_view set);
std::string LeftTrimmed(std::string_view text, char c);
std::string RightTrimmed(std::string_view text, char c);

// ASCII letters only, by 0x20.
std::string Upper(std::string_view text);
std::string Lower(std::string_view text);
// Alphanumeric runs joined, a lower-case letter behind a separator made upper case; the
// first byte stays (upper-cased if it is a lower-case letter).
std::string CamelCase(std::string_view text);

// The pieces between delimiters (any one byte of them, or the whole text), empty ones kept.
// With anyOf false, delimiters must not be empty.
std::list<std::string> Split(std::string_view text, std::string_view delimiters, bool anyOf);

}  // namespace fuzz::reference
