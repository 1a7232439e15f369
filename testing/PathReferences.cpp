#include "testing/PathReferences.h"

#include <iterator>
#include <list>

#include "testing/StringReferences.h"

namespace tavrel_testing::reference {

namespace {

bool Accepts(std::string_view separators, char c) {
    return separators.find(c) != std::string_view::npos;
}

// The text split at every separator, empty pieces kept.   "/a//" => {"", "a", "", ""}
std::list<std::string> Components(std::string_view text) {
    std::list<std::string> parts(1);
    for (char c : text) {
        if (IsSeparator(c)) {
            parts.emplace_back();
        } else {
            parts.back() += c;
        }
    }
    return parts;
}

// One removal of the reduction; false when a scan found nothing to remove. A ".." at the
// front clears the list.
bool ReduceOnce(std::list<std::string>& parts) {
    for (auto it = parts.begin(); it != parts.end(); ++it) {
        if (*it == ".") {
            parts.erase(it);
            return true;
        }
        if (*it == "..") {
            if (it == parts.begin()) {
                parts.clear();
                return false;
            }
            parts.erase(std::prev(it), std::next(it));
            return true;
        }
    }
    return false;
}

bool EndsWithSeparator(std::string_view text) { return !text.empty() && IsSeparator(text.back()); }

}  // namespace

bool IsSeparator(char c) { return c == '/' || c == '\\'; }

std::string Slashed(std::string_view text) { return ReplaceAll(text, '\\', '/'); }

std::string WithoutEndSeparators(std::string_view text, std::string_view separators) {
    while (!text.empty() && Accepts(separators, text.back())) {
        text.remove_suffix(1);
    }
    return std::string(text);
}

std::string WithoutStartSeparators(std::string_view text, std::string_view separators) {
    while (!text.empty() && Accepts(separators, text.front())) {
        text.remove_prefix(1);
    }
    return std::string(text);
}

std::size_t FirstSeparator(std::string_view text, std::string_view separators) {
    for (char const separator : separators) {
        std::size_t const place = text.find(separator);
        if (place != std::string_view::npos) {
            return place;
        }
    }
    return kNoPlace;
}

std::size_t LastSeparator(std::string_view text, std::string_view separators) {
    for (char const separator : separators) {
        std::size_t const place = text.rfind(separator);
        if (place != std::string_view::npos) {
            return place;
        }
    }
    return kNoPlace;
}

std::string Joined(std::string_view path, std::string_view argument, bool dir) {
    std::string joined(path);
    bool const needsSeparator = !path.empty() && !EndsWithSeparator(path) && !argument.empty() &&
                                !IsSeparator(argument.front());
    if (needsSeparator) {
        joined += '/';
    }
    joined += argument;
    if (dir && !EndsWithSeparator(argument)) {
        joined += '/';
    }
    return Slashed(joined);
}

Corrected CorrectedAbsolute(std::string_view text) {
    if (text.empty() || !IsSeparator(text.front())) {
        return {false, std::string(text)};
    }
    std::list<std::string> parts = Components(text);
    while (ReduceOnce(parts)) {
    }
    if (parts.empty()) {
        return {false, std::string()};
    }
    std::string result = parts.front().empty() ? "/" : "";
    for (std::string const& part : parts) {
        if (!part.empty()) {
            result = Joined(result, part, false);
        }
    }
    return {true, result};
}

std::string Simplified(std::string_view text) {
    std::string s(text);
    if (s.empty()) {
        return s;
    }
    std::size_t i = 0;
    std::size_t n = s.size();
    while (i < n) {
        if (s[i] == '.' && i + 1 < n && IsSeparator(s[i + 1])) {
            s.erase(i, 2);
            n -= 2;
            continue;
        }
        if (s[i] == '.' && i + 1 < n && s[i + 1] == '.') {
            if (i + 2 == n) {
                s.erase(i, 2);
                break;
            }
            if (IsSeparator(s[i + 2])) {
                s.erase(i, 3);
                n -= 3;
                continue;
            }
        }
        ++i;
    }
    return s.empty() ? std::string(".") : s;
}

std::optional<std::string> Leaf(std::string_view text) {
    std::string const trimmed = WithoutEndSeparators(Slashed(text), kAnySeparator);
    std::size_t const place = trimmed.rfind('/');
    if (place == std::string::npos) {
        return std::nullopt;
    }
    return trimmed.substr(place + 1);
}

std::optional<std::string> Root(std::string_view text) {
    std::string const trimmed = WithoutEndSeparators(Slashed(text), kAnySeparator);
    std::size_t const place = trimmed.find('/');
    if (place == std::string::npos) {
        return std::nullopt;
    }
    return place == 0 ? std::string("/") : trimmed.substr(0, place);
}

std::string ComparedForm(std::string_view text, bool ignoreEndSeparators, bool caseSensitive) {
    std::string form =
        ignoreEndSeparators ? WithoutEndSeparators(text, kAnySeparator) : std::string(text);
    form = Slashed(form);
    return caseSensitive ? form : Upper(form);
}

bool StartsWithPath(std::string_view path, std::string_view other, bool strict) {
    if (path.empty() || other.empty() || path.size() < other.size()) {
        return false;
    }
    // Equal up to the first NUL that both hold, as strncmp compares.
    if (!StartsWithUpToNul(path, other)) {
        return false;
    }
    if (path.size() == other.size()) {
        return true;
    }
    if (EndsWithSeparator(other)) {
        return true;
    }
    return !strict && IsSeparator(path[other.size()]);
}

bool EndsWithPath(std::string_view path, std::string_view text, bool ignoreEndSeparators) {
    std::string mine(path);
    std::string theirs = Slashed(text);
    if (ignoreEndSeparators) {
        mine = WithoutEndSeparators(mine, kAnySeparator);
        theirs = WithoutEndSeparators(theirs, kAnySeparator);
    }
    return EndsWithUpToNul(mine, theirs);
}

std::size_t SubDirectoryPlace(std::string_view path, std::string_view sub, std::size_t start) {
    if (start >= path.size()) {
        return kNoPlace;
    }
    std::string const dir =
        WithoutStartSeparators(WithoutEndSeparators(sub, kAnySeparator), kAnySeparator);
    if (dir.empty()) {
        return kNoPlace;
    }
    for (std::size_t i = start; i < path.size(); ++i) {
        i = path.find(dir, i);
        if (i == std::string_view::npos || i == 0) {
            return kNoPlace;
        }
        std::size_t const behind = i + dir.size();
        if (IsSeparator(path[i - 1]) && behind < path.size() && IsSeparator(path[behind])) {
            return i;
        }
    }
    return kNoPlace;
}

}  // namespace tavrel_testing::reference
