#include "strings/Trim.h"

#include <string_view>

namespace Tavrel {

namespace {

constexpr std::size_t kNone = std::string::npos;

// Erases the bytes in front of first, the index of the first byte to keep (kNone: none).
void CutFront(std::string& text, std::size_t first) {
    if (first == kNone) {
        text.clear();
    } else if (first > 0) {
        text.erase(0, first);
    }
}

// Erases the bytes behind last, the index of the last byte to keep (kNone: none).
void CutBack(std::string& text, std::size_t last) {
    if (last == kNone) {
        text.clear();
    } else if (last + 1 < text.size()) {
        text.erase(last + 1);
    }
}

// Cuts both ends; the set is given as a view so that the set and char forms share this.
void CutBoth(std::string& text, std::string_view const& set) {
    std::size_t const first = text.find_first_not_of(set);
    if (first == kNone) {
        text.clear();
        return;
    }
    CutBack(text, text.find_last_not_of(set));
    CutFront(text, first);
}

}  // namespace

// NOTE: a null set is taken as the empty set, so text stays unchanged, as with Trim.
void LTrim(std::string& text, char const* set) {
    if (text.empty() || set == nullptr) {
        return;
    }
    CutFront(text, text.find_first_not_of(set));
}

void LTrim(std::string& text, char const& c) {
    if (!text.empty()) {
        CutFront(text, text.find_first_not_of(c));
    }
}

// NOTE: a null set is taken as the empty set, so text stays unchanged, as with Trim.
void RTrim(std::string& text, char const* set) {
    if (text.empty() || set == nullptr) {
        return;
    }
    CutBack(text, text.find_last_not_of(set));
}

void RTrim(std::string& text, char const& c) {
    if (!text.empty()) {
        CutBack(text, text.find_last_not_of(c));
    }
}

void Trim(std::string& text, char const* set) {
    if (text.empty() || set == nullptr || *set == '\0') {
        return;
    }
    CutBoth(text, set);
}

void Trim(std::string& text, char const& c) {
    char const byte = c;  // c may refer to a byte of text itself
    if (!text.empty()) {
        CutBoth(text, std::string_view(&byte, 1));
    }
}

}  // namespace Tavrel
