// Searching byte texts: a counted substring search and a case-insensitive search
// over an inclusive index range. Texts are bytes; no character set is decoded.
// Does not allocate.
#pragma once

#include <string_view>

namespace Tavrel {

// The result of a search that finds nothing: the unsigned long with all bits set.
inline constexpr unsigned long npos = static_cast<unsigned long>(-1);

char const* StrnStr(char const* text, unsigned long size, char const* needle);

unsigned long FindCaseInsensitive(std::string_view const& text, unsigned long first,
                                  unsigned long last, std::string_view const& needle);
unsigned long FindCaseInsensitive(std::string_view const& text, unsigned long first,
                                  std::string_view const& needle);
unsigned long FindCaseInsensitive(std::string_view const& text, std::string_view const& needle);

}  // namespace Tavrel
