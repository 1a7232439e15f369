#include "strings/Split.h"

#include <string_view>

namespace Tavrel {

namespace {

// Whether s is one of the elements of out, which out.clear() would destroy.
template <class Container>
bool IsElementOf(std::string const& s, Container const& out) {
    for (auto const& element : out) {
        if (&element == &s) {
            return true;
        }
    }
    return false;
}

// Splits text into out; the delimiters never look into out.
template <class Container>
void SplitInto(std::string_view const& text, Container& out, std::string_view const& delimiters,
               bool anyOf) {
    // NOTE: an empty delimiter text would be found at every place without moving on, so with
    // anyOf false it splits nothing and text stays whole, as with anyOf true.
    if (!anyOf && delimiters.empty()) {
        out.emplace_back(text);
        return;
    }
    std::size_t const step = anyOf ? 1 : delimiters.size();
    auto const next = [&](std::size_t from) {
        return anyOf ? text.find_first_of(delimiters, from) : text.find(delimiters, from);
    };
    std::size_t start = 0;
    for (std::size_t pos = next(0); pos != std::string_view::npos; pos = next(start)) {
        out.emplace_back(text.substr(start, pos - start));
        start = pos + step;
    }
    out.emplace_back(text.substr(start));
}

}  // namespace

template <class Container>
typename Container::size_type SplitString(std::string const& text, Container& out,
                                          std::string const& delimiters, bool anyOf) {
    // NOTE: text or delimiters may be an element of out; clearing out would destroy it, so it
    // is copied first (the copies are what keeps the bytes alive, hence the NOLINTs).
    if (IsElementOf(text, out) || IsElementOf(delimiters, out)) {
        std::string const textCopy(text);              // NOLINT(performance-unnecessary-copy-*)
        std::string const delimitersCopy(delimiters);  // NOLINT(performance-unnecessary-copy-*)
        out.clear();
        SplitInto(textCopy, out, delimitersCopy, anyOf);
        return out.size();
    }
    out.clear();
    SplitInto(text, out, delimiters, anyOf);
    return out.size();
}

template std::list<std::string>::size_type SplitString<std::list<std::string>>(
    std::string const&, std::list<std::string>&, std::string const&, bool);

}  // namespace Tavrel
