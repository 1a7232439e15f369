// Replacing every occurrence of a byte or a text, left to right, in place.
#pragma once

#include <string>

namespace Tavrel {

void ReplaceAll(std::string& text, char from, char to);
void ReplaceAll(std::string& text, std::string const& from, std::string const& to);
void ReplaceAll(std::string& text, char const* from, char const* to);

}  // namespace Tavrel
