#include "testing/StringReferences.h"

#include <cctype>
#include <cstring>
#include <iomanip>
#include <sstream>

namespace tavrel_testing::reference {

namespace {

// The C library's fold, each byte passed as a signed char widened to int.
bool SameFolded(char a, char b) {
    return std::tolower(static_cast<int>(static_cast<signed char>(a))) ==
           std::tolower(static_cast<int>(static_cast<signed char>(b)));
}

bool Printable(char c) { return std::isprint(static_cast<unsigned char>(c)) != 0; }

bool IsLowerLetter(char c) { return c >= 'a' && c <= 'z'; }
bool IsUpperLetter(char c) { return c >= 'A' && c <= 'Z'; }
bool IsAlphanumeric(char c) {
    return IsLowerLetter(c) || IsUpperLetter(c) || (c >= '0' && c <= '9');
}

// Whether needle matches text at place under the fold (needle fits there).
bool FoldedAt(std::string_view text, std::size_t place, std::string_view needle) {
    for (std::size_t i = 0; i < needle.size(); ++i) {
        if (!SameFolded(text[place + i], needle[i])) {
            return false;
        }
    }
    return true;
}

// strncmp over count bytes of a and b: equal up to a common NUL or to the end.
bool EqualUpToNul(char const* a, char const* b, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        if (a[i] != b[i]) {
            return false;
        }
        if (a[i] == '\0') {
            return true;
        }
    }
    return true;
}

// The length of the sequence that lead begins, or 0 for a byte that begins none.
unsigned SequenceLength(unsigned char lead) {
    if (lead >= 0xC0 && lead <= 0xDF) {
        return 2;
    }
    if (lead >= 0xE0 && lead <= 0xEF) {
        return 3;
    }
    if (lead >= 0xF0 && lead <= 0xF7) {
        return 4;
    }
    return 0;
}

bool IsContinuation(char c) {
    auto const byte = static_cast<unsigned char>(c);
    return byte >= 0x80 && byte <= 0xBF;
}

Utf8Verdict Utf8Failure(std::size_t place, std::size_t line, std::size_t position) {
    return {false,
            "Sign: " + std::to_string(place) + " in column: " + std::to_string(line) +
                " is not utf-8 conform.",
            position};
}

bool InSet(std::string_view set, char c) { return set.find(c) != std::string_view::npos; }

}  // namespace

std::size_t CountedFind(std::string_view text, char const* needle) {
    std::size_t const n = std::strlen(needle);
    if (text.empty() || n > text.size()) {
        return kNotFound;
    }
    for (std::size_t place = 0; place + n <= text.size(); ++place) {
        if (std::memcmp(text.data() + place, needle, n) == 0) {
            return place;
        }
    }
    return kNotFound;
}

std::size_t FoldFind(std::string_view text, std::size_t first, std::size_t last,
                       std::string_view needle) {
    std::size_t const size = text.size();
    if (needle.empty() || text.empty() || first > last || first > size || last > size) {
        return kNotFound;
    }
    std::size_t const end = last < size - 1 ? last + 1 : size;  // one behind the range
    for (std::size_t place = first; place + needle.size() <= end; ++place) {
        if (FoldedAt(text, place, needle)) {
            return place;
        }
    }
    return kNotFound;
}

std::string ReplaceAll(std::string_view text, std::string_view from, std::string_view to) {
    if (text.empty() || from.empty()) {
        return std::string(text);
    }
    std::string out;
    std::size_t i = 0;
    while (i < text.size()) {
        if (text.substr(i, from.size()) == from) {
            out += to;
            i += from.size();
        } else {
            out += text[i];
            ++i;
        }
    }
    return out;
}

std::string ReplaceAll(std::string_view text, char from, char to) {
    std::string out(text);
    for (char& c : out) {
        c = c == from ? to : c;
    }
    return out;
}

bool StartsWithUpToNul(std::string_view text, std::string_view prefix) {
    if (text.empty() || prefix.empty() || prefix.size() > text.size()) {
        return false;
    }
    return EqualUpToNul(text.data(), prefix.data(), prefix.size());
}

bool EndsWithUpToNul(std::string_view text, std::string_view suffix) {
    if (text.empty() || suffix.empty() || suffix.size() > text.size()) {
        return false;
    }
    return EqualUpToNul(text.data() + text.size() - suffix.size(), suffix.data(), suffix.size());
}

bool StartsWithFolded(std::string_view text, std::string_view prefix) {
    if (text.empty() || prefix.empty() || prefix.size() > text.size()) {
        return false;
    }
    return FoldedAt(text, 0, prefix);
}

bool EndsWithFolded(std::string_view text, std::string_view suffix) {
    if (text.empty() || suffix.empty() || suffix.size() > text.size()) {
        return false;
    }
    return FoldedAt(text, text.size() - suffix.size(), suffix);
}

bool EqualsFolded(std::string_view text, std::string_view other) {
    return text.size() == other.size() && FoldedAt(text, 0, other);
}

Utf8Verdict CheckUtf8(std::string_view text) {
    std::size_t line = 1;
    std::size_t place = 0;  // bytes so far on the line
    std::size_t i = 0;
    while (i < text.size()) {
        auto const byte = static_cast<unsigned char>(text[i]);
        if (byte < 0x80) {
            ++place;
            if (byte == '\n') {
                ++line;
                place = 0;
            }
            ++i;
            continue;
        }
        unsigned const length = SequenceLength(byte);
        if (length == 0) {
            return Utf8Failure(place + 1, line, i);
        }
        std::size_t const lastByte = i + length - 1;
        place += length;
        bool whole = lastByte < text.size();
        for (std::size_t k = i + 1; whole && k <= lastByte; ++k) {
            whole = IsContinuation(text[k]);
        }
        if (!whole) {
            return Utf8Failure(place + 1, line, lastByte);
        }
        i = lastByte + 1;
    }
    return {};
}

std::optional<std::size_t> FirstNonAscii(std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (static_cast<unsigned char>(text[i]) > 0x7F) {
            return i;
        }
    }
    return std::nullopt;
}

std::optional<std::size_t> FirstNonPrintableAscii(std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        auto const byte = static_cast<unsigned char>(text[i]);
        if (byte < 0x20 || byte > 0x7E) {
            return i;
        }
    }
    return std::nullopt;
}

std::string Escaped(std::string_view text, char special, char escape) {
    std::string const doubled = ReplaceAll(text, std::string(1, escape), std::string(2, escape));
    return ReplaceAll(doubled, std::string(1, special), std::string{escape, special});
}

std::string Unescaped(std::string_view text, char special, char escape) {
    std::string const halved = ReplaceAll(text, std::string(2, escape), std::string(1, escape));
    return ReplaceAll(halved, std::string{escape, special}, std::string(1, special));
}

std::string WithoutNonPrint(std::string_view text, bool replace, std::string_view replacement) {
    std::string out;
    for (char c : text) {
        if (Printable(c)) {
            out += c;
        } else if (replace) {
            out += replacement;
        }
    }
    return out;
}

std::string NonPrintReplaced(std::string_view text, char replacement) {
    std::string out;
    for (char c : text) {
        out += Printable(c) ? c : replacement;
    }
    return out;
}

std::string NonPrintEscaped(std::string_view text) {
    std::string out;
    for (char c : text) {
        if (Printable(c)) {
            out += c;
            continue;
        }
        std::ostringstream form;
        form << "\\x" << std::hex << std::setw(2) << std::setfill('0')
             << static_cast<unsigned>(static_cast<unsigned char>(c));
        out += form.str();
    }
    return out;
}

std::string LeftTrimmed(std::string_view text, std::string_view set) {
    std::size_t start = 0;
    while (start < text.size() && InSet(set, text[start])) {
        ++start;
    }
    return std::string(text.substr(start));
}

std::string RightTrimmed(std::string_view text, std::string_view set) {
    std::size_t end = text.size();
    while (end > 0 && InSet(set, text[end - 1])) {
        --end;
    }
    return std::string(text.substr(0, end));
}

std::string LeftTrimmed(std::string_view text, char c) {
    return LeftTrimmed(text, std::string_view(&c, 1));
}

std::string RightTrimmed(std::string_view text, char c) {
    return RightTrimmed(text, std::string_view(&c, 1));
}

std::string Upper(std::string_view text) {
    std::string out(text);
    for (char& c : out) {
        c = IsLowerLetter(c) ? static_cast<char>(c - 0x20) : c;
    }
    return out;
}

std::string Lower(std::string_view text) {
    std::string out(text);
    for (char& c : out) {
        c = IsUpperLetter(c) ? static_cast<char>(c + 0x20) : c;
    }
    return out;
}

std::string CamelCase(std::string_view text) {
    if (text.empty()) {
        return std::string();
    }
    std::string out = Upper(text.substr(0, 1));
    bool afterSeparator = false;
    for (char c : text.substr(1)) {
        if (!IsAlphanumeric(c)) {
            afterSeparator = true;
            continue;
        }
        out += afterSeparator ? Upper(std::string_view(&c, 1)) : std::string(1, c);
        afterSeparator = false;
    }
    return out;
}

std::list<std::string> Split(std::string_view text, std::string_view delimiters, bool anyOf) {
    std::list<std::string> pieces;
    std::string piece;
    std::size_t i = 0;
    while (i < text.size()) {
        bool const anyOfHit = anyOf && InSet(delimiters, text[i]);
        bool const wholeHit = !anyOf && text.substr(i, delimiters.size()) == delimiters;
        if (anyOfHit || wholeHit) {
            pieces.push_back(piece);
            piece.clear();
            i += anyOf ? 1 : delimiters.size();
        } else {
            piece += text[i];
            ++i;
        }
    }
    pieces.push_back(piece);
    return pieces;
}

}  // namespace tavrel_testing::reference
