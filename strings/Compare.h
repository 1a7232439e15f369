// Prefix, suffix and equality tests on byte texts, exact or under the C locale's fold.
#pragma once

#include <string_view>

namespace Tavrel {

bool StartsWith(std::string_view const& text, std::string_view const& prefix);
bool StartsWith(std::string_view const& text, char const& c);
bool EndsWith(std::string_view const& text, std::string_view const& suffix);
bool EndsWith(std::string_view const& text, char const& c);
bool StartsWithCaseInsensitive(std::string_view const& text, std::string_view const& prefix);
bool EndsWithCaseInsensitive(std::string_view const& text, std::string_view const& suffix);
bool EqualsCaseInsensitive(std::string_view const& text, std::string_view const& other);

}  // namespace Tavrel
