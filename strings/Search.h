// Searching byte texts: a counted substring search and a case-insensitive search over an
// inclusive index range. Texts are bytes; no character set is decoded, and a NUL byte inside a
// counted text is an ordinary byte. Does not allocate and keeps no state.
// The case-insensitive search folds through the C library's tolower, so the current C locale
// decides which bytes match; it does not know about multi-byte characters. Its filter for
// candidate starts runs on the instruction-set path that Dispatch.h chooses; every path finds
// the same match.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Tavrel {

// The result of a search that finds nothing: the std::size_t with all bits set, the same value
// as std::string::npos on every platform (positions are std::size_t, as wide as memory).
inline constexpr std::size_t npos = static_cast<std::size_t>(-1);
static_assert(npos == std::string::npos);

// The first place where the NUL-terminated needle occurs inside the first size bytes of text,
// or null. Only size bounds text: NUL bytes inside it are compared like any other byte.
//   ("abcabc", 6, "ca")   => text + 2
//   ("abcabc", 3, "ca")   => null (the match would end behind size)
//   ("abc", 3, "")        => text (an empty needle matches at once)
//   ("abc", 0, "")        => null (size 0 never matches)
//   ("a\0bc", 4, "bc")    => text + 2
//   (null, _, _), (_, _, null) => null
char const* StrnStr(char const* text, std::size_t size, char const* needle);

// The index (from the start of text) of the first match of needle under the tolower fold that
// lies wholly inside the inclusive range [first, last], or npos. last == size counts as
// size - 1; first or last greater than size gives npos.
// On "Hello World" (size 11):
//   (0, 10, "WORLD") => 6        (0, 9, "WORLD") => npos (the match would end behind last)
//   (0, 11, "world") => 6        (0, 12, "world") => npos (last greater than size)
//   (4, 3, "o")      => npos     (5, 7, "o")      => 7
//   (11, 11, "d")    => npos     (0, 10, "")      => npos (an empty needle never matches)
//   empty text       => npos for every range and needle
std::size_t FindCaseInsensitive(std::string_view const& text, std::size_t first,
                                  std::size_t last, std::string_view const& needle);
// As above with last = size - 1 (0 for an empty text).
//   ("Hello World", 5, "O") => 7     ("Hello World", 11, "d") => npos
std::size_t FindCaseInsensitive(std::string_view const& text, std::size_t first,
                                  std::string_view const& needle);
// As above with first = 0.
//   ("Hello World", "LL") => 2      ("", "") => npos      ("a\0B", "\0b") => 1
std::size_t FindCaseInsensitive(std::string_view const& text, std::string_view const& needle);

}  // namespace Tavrel
