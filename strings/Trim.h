// Cutting chosen bytes off the ends of a text, in place.
#pragma once

#include <string>

namespace Tavrel {

void LTrim(std::string& text, char const* set);
void LTrim(std::string& text, char const& c);
void RTrim(std::string& text, char const* set);
void RTrim(std::string& text, char const& c);
void Trim(std::string& text, char const* set);
void Trim(std::string& text, char const& c);

}  // namespace Tavrel
