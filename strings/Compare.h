// Prefix, suffix and equality tests on byte texts: exact (strncmp, which stops at a NUL that
// both sides hold) or under the tolower fold of the current C locale (every byte compared,
// NUL included). An empty prefix or suffix never matches. Does not allocate.
#pragma once

#include <string_view>

namespace Tavrel {

// Whether text begins with prefix, compared by strncmp over the prefix's length.
//   ("abc", "ab") => true     ("abc", "") => false (an empty prefix never matches)
//   ("", "")      => false    ("abc", "abcd") => false
//   ("x\0b", "x\0c") => true (strncmp stops at the shared NUL)
bool StartsWith(std::string_view const& text, std::string_view const& prefix);
// Whether text is not empty and its first byte is c; NUL counts as a byte.
//   ("", '\0') => false     ("\0a", '\0') => true
bool StartsWith(std::string_view const& text, char const& c);
// Whether text ends with suffix, compared by strncmp over the suffix's length.
//   ("abc", "bc") => true     ("abc", "BC") => false     ("abc", "") => false
//   ("x\0b", "x\0c") => true
bool EndsWith(std::string_view const& text, std::string_view const& suffix);
// Whether text is not empty and its last byte is c.
//   ("", 'a') => false     ("/a/", '/') => true
bool EndsWith(std::string_view const& text, char const& c);
// Whether text begins with prefix under the fold.
//   ("abc", "AB") => true     ("abc", "") => false     ("x\0b", "x\0c") => false
bool StartsWithCaseInsensitive(std::string_view const& text, std::string_view const& prefix);
// Whether text ends with suffix under the fold.
//   ("abc", "BC") => true     ("abc", "") => false     ("x\0b", "x\0c") => false
bool EndsWithCaseInsensitive(std::string_view const& text, std::string_view const& suffix);
// Whether both have the same size and match byte by byte under the fold.
//   ("abc", "ABC") => true     ("", "") => true     ("abc", "ab") => false
bool EqualsCaseInsensitive(std::string_view const& text, std::string_view const& other);

}  // namespace Tavrel
