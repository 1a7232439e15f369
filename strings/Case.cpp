#include "strings/Case.h"

namespace Tavrel {

namespace {

constexpr char kCaseBit = 0x20;

bool IsLower(char c) { return c >= 'a' && c <= 'z'; }
bool IsUpper(char c) { return c >= 'A' && c <= 'Z'; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }
// Every byte from 0x80 up is a separator: none of these ranges holds it, signed or not.
bool IsAlphanumeric(char c) { return IsLower(c) || IsUpper(c) || IsDigit(c); }

char Upper(char c) { return IsLower(c) ? static_cast<char>(c - kCaseBit) : c; }
char Lower(char c) { return IsUpper(c) ? static_cast<char>(c + kCaseBit) : c; }

}  // namespace

void ToUpper(std::string& text) {
    for (char& c : text) {
        c = Upper(c);
    }
}

std::string ToUpper(std::string_view const& text) {
    std::string copy(text);
    ToUpper(copy);
    return copy;
}

void ToLower(std::string& text) {
    for (char& c : text) {
        c = Lower(c);
    }
}

std::string ToLower(std::string_view const& text) {
    std::string copy(text);
    ToLower(copy);
    return copy;
}

void ToCamelCase(std::string& text) {
    if (text.empty()) {
        return;
    }
    // NOTE: the first byte always stays, even a separator, and it never counts as one for the
    // byte behind it: "_foo_bar" => "_fooBar".
    text[0] = Upper(text[0]);
    std::size_t write = 1;
    bool afterSeparator = false;
    for (std::size_t read = 1; read < text.size(); ++read) {
        char const c = text[read];
        if (!IsAlphanumeric(c)) {
            afterSeparator = true;
            continue;
        }
        text[write++] = afterSeparator ? Upper(c) : c;
        afterSeparator = false;
    }
    if (write != text.size()) {
        text.erase(write);
    }
}

}  // namespace Tavrel
