#include "strings/Compare.h"

#include <cstring>

#include "strings/Search.h"

namespace Tavrel {

namespace {

// Whether part can be looked for at an end of text at all: neither is empty and part fits.
bool FitsInside(std::string_view const& text, std::string_view const& part) {
    return !text.empty() && !part.empty() && part.size() <= text.size();
}

// NOTE: strncmp stops at the first NUL that both sides hold at the same place, so bytes behind
// such a NUL are not compared. It never reads more than part's size from either side.
bool SameUpToNul(char const* at, std::string_view const& part) {
    return std::strncmp(at, part.data(), part.size()) == 0;
}

}  // namespace

bool StartsWith(std::string_view const& text, std::string_view const& prefix) {
    return FitsInside(text, prefix) && SameUpToNul(text.data(), prefix);
}

bool StartsWith(std::string_view const& text, char const& c) {
    return !text.empty() && text.front() == c;
}

bool EndsWith(std::string_view const& text, std::string_view const& suffix) {
    return FitsInside(text, suffix) &&
           SameUpToNul(text.data() + (text.size() - suffix.size()), suffix);
}

bool EndsWith(std::string_view const& text, char const& c) {
    return !text.empty() && text.back() == c;
}

bool StartsWithCaseInsensitive(std::string_view const& text, std::string_view const& prefix) {
    // The range has exactly the length of prefix, so only the start of text can match.
    return FitsInside(text, prefix) &&
           FindCaseInsensitive(text, 0, prefix.size() - 1, prefix) != npos;
}

bool EndsWithCaseInsensitive(std::string_view const& text, std::string_view const& suffix) {
    // The range runs from size - suffix size to the end, so only the end of text can match.
    return FitsInside(text, suffix) &&
           FindCaseInsensitive(text, text.size() - suffix.size(), text.size(), suffix) != npos;
}

bool EqualsCaseInsensitive(std::string_view const& text, std::string_view const& other) {
    if (text.size() != other.size()) {
        return false;
    }
    return text.empty() || FindCaseInsensitive(text, 0, text.size(), other) == 0;
}

}  // namespace Tavrel
