// Straightforward references for the property checks of the string library: each does the job
// the slow, literal way, byte by byte, with no block scans and no tables, so that the fast
// functions can be compared with them (here and by fuzz targets).
#pragma once

#include <cctype>
#include <cstddef>
#include <string>
#include <string_view>

#include "strings/Search.h"

namespace Tavrel::Testing {

// The search as the plain procedure: every start in the range, every byte through tolower.
inline unsigned long NaiveFind(std::string_view text, unsigned long first, unsigned long last,
                               std::string_view needle) {
    std::size_t const size = text.size();
    if (needle.empty() || size == 0 || first > last || first > size || last > size) {
        return npos;
    }
    std::size_t const end = last < size - 1 ? last + 1 : size;
    auto const fold = [](char c) { return std::tolower(static_cast<unsigned char>(c)); };
    for (std::size_t p = first; p + needle.size() <= end; ++p) {
        std::size_t k = 0;
        while (k < needle.size() && fold(text[p + k]) == fold(needle[k])) {
            ++k;
        }
        if (k == needle.size()) {
            return p;
        }
    }
    return npos;
}

// The left-to-right procedure, literally: find, replace in place, go on behind the insertion.
inline std::string NaiveReplace(std::string text, std::string const& from, std::string const& to) {
    if (text.empty() || from.empty()) {
        return text;
    }
    for (std::size_t at = text.find(from); at != std::string::npos;
         at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}

// The UTF-8 walk one step at a time: count of the line, line number, one sequence at a time.
inline bool ReferenceUTF8(std::string_view text, std::string& message, unsigned long& position) {
    unsigned long line = 1, count = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned char const b = static_cast<unsigned char>(text[i]);
        std::size_t const length = b < 0x80   ? 1
                                   : b < 0xC0 ? 0
                                   : b < 0xE0 ? 2
                                   : b < 0xF0 ? 3
                                   : b < 0xF8 ? 4
                                              : 0;
        bool failed = length == 0;
        if (length == 1) {
            ++count;
            if (b == '\n') {
                ++line;
                count = 0;
            }
        } else if (length > 1) {
            std::size_t const lead = i;
            i += length - 1;
            count += length;
            failed = i >= text.size();
            for (std::size_t k = lead + 1; !failed && k <= i; ++k) {
                failed = (static_cast<unsigned char>(text[k]) & 0xC0) != 0x80;
            }
        }
        if (failed) {
            message = "Sign: " + std::to_string(count + 1) + " in column: " + std::to_string(line) +
                      " is not utf-8 conform.";
            position = i;
            return false;
        }
    }
    return true;
}

}  // namespace Tavrel::Testing
