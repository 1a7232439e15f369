// Tests whether a byte text is well-formed UTF-8, ASCII or printable ASCII.
#pragma once

#include <string>
#include <string_view>

namespace Tavrel {

bool ValidUTF8(std::string_view const& text, std::string& message, unsigned long* position);
bool ValidASCII(std::string_view const& text, unsigned long* position);
bool ValidPrintableASCII(std::string_view const& text, unsigned long* position);

}  // namespace Tavrel
