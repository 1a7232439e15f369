// Escaping one chosen character, and removing or making visible non-printable bytes.
#pragma once

#include <string>
#include <string_view>

namespace Tavrel {

void Escape(std::string& text, char special, char escape);
void Unescape(std::string& text, char special, char escape);

void RemoveNonPrint(std::string_view const& text, std::string& out, bool replace,
                    std::string_view const& replacement);
void RemoveNonPrint(std::string& text, bool replace, std::string_view const& replacement);
void RemoveNonPrint(std::string_view const& text, std::string& out, char const& replacement);
void RemoveNonPrint(std::string& text, char const& replacement);
void EscapeNonPrint(std::string_view const& text, std::string& out);
void EscapeNonPrint(std::string& text);

}  // namespace Tavrel
