#include "minihost/script/Suggestions.h"

#include <algorithm>

namespace minihost {

namespace {

constexpr std::size_t kMostSuggestions = 3;

char Folded(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

// The part after the last dot: "Binary.Slice" => "Slice";  "Size" => "Size".
std::string_view LastPart(std::string_view name) {
    std::size_t const dot = name.rfind('.');
    return dot == std::string_view::npos ? name : name.substr(dot + 1);
}

// How far a text of this length may be from a name to count as close.
std::size_t Allowed(std::size_t length) {
    if (length < 3) {
        return 0;
    }
    return length <= 5 ? 1 : 2;
}

// The distance of a and b when it is at most limit, else limit + 1. The difference of the
// lengths bounds the distance from below, so a long text costs nothing.
std::size_t DistanceWithin(std::string_view a, std::string_view b, std::size_t limit) {
    std::size_t const gap = a.size() > b.size() ? a.size() - b.size() : b.size() - a.size();
    return gap > limit ? limit + 1 : std::min(EditDistance(a, b), limit + 1);
}

struct Candidate {
    std::size_t rank;
    std::size_t index;
};

}  // namespace

std::size_t EditDistance(std::string_view a, std::string_view b) {
    // Three rows of the table of distances between prefixes: two back, one back, this one.
    std::vector<std::size_t> before(b.size() + 1);
    std::vector<std::size_t> previous(b.size() + 1);
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) {
        previous[j] = j;
    }
    for (std::size_t i = 1; i <= a.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            std::size_t const change = Folded(a[i - 1]) == Folded(b[j - 1]) ? 0 : 1;
            row[j] = std::min({previous[j] + 1, row[j - 1] + 1, previous[j - 1] + change});
            bool const swapped = i > 1 && j > 1 && Folded(a[i - 1]) == Folded(b[j - 2]) &&
                                 Folded(a[i - 2]) == Folded(b[j - 1]);
            if (swapped) {
                row[j] = std::min(row[j], before[j - 2] + 1);
            }
        }
        std::swap(before, previous);
        std::swap(previous, row);
    }
    return previous[b.size()];
}

std::vector<std::string> ClosestNames(std::string_view name,
                                      std::vector<std::string> const& known) {
    std::size_t const wholeLimit = Allowed(name.size());
    std::size_t const partLimit = Allowed(LastPart(name).size());
    std::vector<Candidate> close;
    for (std::size_t index = 0; index < known.size(); ++index) {
        if (known[index] == name) {
            continue;
        }
        std::size_t const whole = DistanceWithin(name, known[index], wholeLimit);
        std::size_t const part = DistanceWithin(LastPart(name), LastPart(known[index]), partLimit);
        if (whole <= wholeLimit || part <= partLimit) {
            close.push_back(Candidate{std::min(whole, part + 1), index});
        }
    }
    std::stable_sort(close.begin(), close.end(),
                     [](Candidate const& a, Candidate const& b) { return a.rank < b.rank; });
    std::vector<std::string> names;
    for (std::size_t i = 0; i < close.size() && i < kMostSuggestions; ++i) {
        names.push_back(known[close[i].index]);
    }
    return names;
}

std::string DidYouMean(std::vector<std::string> const& names) {
    if (names.empty()) {
        return "";
    }
    std::string text = "did you mean";
    for (std::size_t i = 0; i < names.size(); ++i) {
        char const* separator = i == 0 ? " " : (i + 1 == names.size() ? " or " : ", ");
        text += separator + ("'" + names[i] + "'");
    }
    return text + "?";
}

}  // namespace minihost
