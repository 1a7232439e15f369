// Cutting chosen bytes off the ends of a text, in place. The set of bytes always comes from the
// caller (a NUL-terminated list of single bytes, order irrelevant, or one char); the library
// holds no notion of white space. Bytes between the first and last kept byte are never touched.
#pragma once

#include <string>

namespace Tavrel {

// Removes from the start every byte that is in set.
//   ("  ab  ", " ") => "ab  "     ("xyabyx", "xy") => "abyx"     ("xxxx", "x") => ""
//   ("ab", "") => "ab"            ("", "x") => ""                 ("ab", null) => "ab"
void LTrim(std::string& text, char const* set);
// Removes from the start every byte equal to c; NUL is a byte like any other.
//   ("\0a\0", '\0') => "a\0"
void LTrim(std::string& text, char const& c);
// Removes from the end every byte that is in set.
//   ("  ab  ", " ") => "  ab"     ("yxayx", "xy") => "yxa"       ("ab", null) => "ab"
void RTrim(std::string& text, char const* set);
// Removes from the end every byte equal to c.   ("\0a\0", '\0') => "\0a"
void RTrim(std::string& text, char const& c);
// Removes from both ends every byte that is in set.
//   ("xyabyx", "xy") => "ab"     ("a b", " ") => "a b"     ("ab", null) => "ab"
void Trim(std::string& text, char const* set);
// Removes from both ends every byte equal to c.   ("\0a\0", '\0') => "a"
void Trim(std::string& text, char const& c);

}  // namespace Tavrel
