// Protecting one chosen character with an escape character and taking that protection off
// again (both plain text replacements, not scanners), and removing or making visible the bytes
// that the C library's isprint, under the current C locale, does not call printable.
// There is no operation that reverses EscapeNonPrint.
#pragma once

#include <string>
#include <string_view>

namespace Tavrel {

// Doubles every escape, then puts escape in front of every special.
// With special ';' and escape '\':
//   "" => ""     "a;b" => "a\;b"     "a\b" => "a\\b"     "\;" => "\\\;"
// With special and escape both '\':  "\" => "\\\\"
void Escape(std::string& text, char special, char escape);
// Replaces each pair of escapes, taken from the left, by one escape, then each escape followed
// by special by special alone. Undoes Escape; on other texts it is no inverse of anything.
// With special ';' and escape '\':
//   "\" => "\"     "\x" => "\x"     "\\\" => "\\"     "\\;" => ";"     "a\\\\;b" => "a\;b"
// With special and escape both '\':  "\\\\" => "\"
void Unescape(std::string& text, char special, char escape);

// out becomes text without its non-printable bytes; with replace, the whole of replacement
// stands in the place of each (replacement is not read otherwise). out is cleared first.
// In the C locale, with replacement "[]":
//   "a\tb" => "ab" / "a[]b"     "\xC3\xA9" => "" / "[][]"     "\\" => "\\"     "" => ""
void RemoveNonPrint(std::string_view const& text, std::string& out, bool replace,
                    std::string_view const& replacement);
// The same on text in place; text is written only at the end.
void RemoveNonPrint(std::string& text, bool replace, std::string_view const& replacement);
// out becomes text with each non-printable byte replaced by the byte replacement; the size
// does not change. "a\0b", '?' => "a?b"     "\x7F" => "?"     "" => ""
void RemoveNonPrint(std::string_view const& text, std::string& out, char const& replacement);
// The same on text in place.
void RemoveNonPrint(std::string& text, char const& replacement);
// out becomes text with each non-printable byte written as "\x" and two lower-case hex digits.
//   "a\tb" => "a\x09b"     "\0" => "\x00"     "\xC3\xA9" => "\xc3\xa9"     "\\" => "\\"
void EscapeNonPrint(std::string_view const& text, std::string& out);
// The same on text in place; text is written only at the end.
void EscapeNonPrint(std::string& text);

}  // namespace Tavrel
