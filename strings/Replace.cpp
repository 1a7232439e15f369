#include "strings/Replace.h"

#include <cstddef>
#include <cstring>
#include <functional>
#include <new>
#include <string_view>

namespace Tavrel {

namespace {

constexpr std::size_t kNotFound = std::string_view::npos;

// Whether bytes points into text's current contents (compared with std::less, which is a
// total order on pointers even when they come from different objects).
bool PointsInto(std::string const& text, char const* bytes) {
    std::less<char const*> const before;
    char const* const begin = text.data();
    return !before(bytes, begin) && before(bytes, begin + text.size());
}

// The next occurrence of from in text at or after pos; the scan for its first byte is memchr.
std::size_t FindFrom(std::string_view const& text, std::string_view const& from,
                     std::size_t pos) {
    return text.find(from, pos);
}

// Replaces, when to is not longer than from, by compacting text in place: each kept stretch
// moves down once, so the tail is not moved at every occurrence. The search reads only bytes
// behind the last occurrence, which the writes never reach.
void ReplaceShrinking(std::string& text, std::string_view const& from,
                      std::string_view const& to, std::size_t at) {
    std::string_view const original(text);
    char* const bytes = text.data();
    std::size_t read = 0;
    std::size_t write = 0;
    while (at != kNotFound) {
        std::size_t const kept = at - read;
        if (write != read && kept != 0) {
            std::memmove(bytes + write, bytes + read, kept);
        }
        write += kept;
        if (!to.empty()) {
            std::memcpy(bytes + write, to.data(), to.size());
        }
        write += to.size();
        read = at + from.size();
        at = FindFrom(original, from, read);
    }
    std::size_t const rest = text.size() - read;
    if (write != read && rest != 0) {
        std::memmove(bytes + write, bytes + read, rest);
    }
    text.resize(write + rest);
}

// The number of occurrences from at onwards, counted as the left-to-right procedure finds them.
std::size_t CountFrom(std::string_view const& text, std::string_view const& from,
                      std::size_t at) {
    std::size_t count = 0;
    for (; at != kNotFound; at = FindFrom(text, from, at + from.size())) {
        ++count;
    }
    return count;
}

// The size of the result of count replacements; a size that cannot exist cannot be allocated.
std::size_t GrownSize(std::string const& text, std::size_t count, std::size_t growth) {
    std::size_t const room = text.max_size() - text.size();
    if (count > room / growth) {
        throw std::bad_alloc();
    }
    return text.size() + count * growth;
}

// Replaces, when to is longer than from, by building the result once in a string of the exact
// final size and then swapping it in.
void ReplaceGrowing(std::string& text, std::string_view const& from, std::string_view const& to,
                    std::size_t at) {
    std::string_view const original(text);
    std::string result;
    result.reserve(GrownSize(text, CountFrom(original, from, at), to.size() - from.size()));
    std::size_t read = 0;
    while (at != kNotFound) {
        result.append(original.data() + read, at - read);
        result.append(to.data(), to.size());
        read = at + from.size();
        at = FindFrom(original, from, read);
    }
    result.append(original.data() + read, original.size() - read);
    text.swap(result);
}

// The whole-text replacement for views that do not look into text.
void ReplaceViews(std::string& text, std::string_view const& from, std::string_view const& to) {
    if (text.empty() || from.empty()) {
        return;
    }
    std::size_t const at = FindFrom(text, from, 0);
    if (at == kNotFound) {
        return;
    }
    if (to.size() <= from.size()) {
        ReplaceShrinking(text, from, to, at);
    } else {
        ReplaceGrowing(text, from, to, at);
    }
}

// NOTE: from and to must not look into text, since text changes while they are read. When a
// caller breaks that rule anyway, they are copied first so that nothing reads freed or moved
// bytes; the result is then that of the same texts held apart.
void ReplaceDetached(std::string& text, std::string_view const& from,
                     std::string_view const& to) {
    bool const fromInside = !from.empty() && PointsInto(text, from.data());
    bool const toInside = !to.empty() && PointsInto(text, to.data());
    if (!fromInside && !toInside) {
        ReplaceViews(text, from, to);
        return;
    }
    std::string const fromCopy(from);
    std::string const toCopy(to);
    ReplaceViews(text, fromCopy, toCopy);
}

}  // namespace

void ReplaceAll(std::string& text, char from, char to) {
    for (char& c : text) {
        if (c == from) {
            c = to;
        }
    }
}

void ReplaceAll(std::string& text, std::string const& from, std::string const& to) {
    ReplaceDetached(text, from, to);
}

void ReplaceAll(std::string& text, char const* from, char const* to) {
    if (from == nullptr || to == nullptr || text.empty()) {
        return;
    }
    ReplaceDetached(text, from, to);
}

}  // namespace Tavrel
