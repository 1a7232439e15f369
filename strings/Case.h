// ASCII case changes and camel-casing; independent of the locale.
#pragma once

#include <string>
#include <string_view>

namespace Tavrel {

void ToUpper(std::string& text);
std::string ToUpper(std::string_view const& text);
void ToLower(std::string& text);
std::string ToLower(std::string_view const& text);
void ToCamelCase(std::string& text);

}  // namespace Tavrel
