#include "strings/Search.h"

#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "strings/Kernels.h"

namespace Tavrel {

namespace {

// Below this many candidate bytes, folding each byte through tolower directly is cheaper than
// building a 256-byte table (which costs 256 tolower calls).
constexpr std::size_t kFoldTableMinRange = 256;

// NOTE: the fold compares tolower of each byte. The byte is passed as an unsigned char value,
// which is always a valid argument, instead of as a sign-extended char, which is undefined
// behaviour for negative values other than EOF. Only equality of the folded values matters,
// and the C library's tables for -128..-1 mirror those for 128..255, so both forms make the
// same bytes match in the C locale and in single-byte locales.
int FoldByte(char c) { return std::tolower(static_cast<unsigned char>(c)); }

// The folded value of every byte under the current locale, built once per search.
struct FoldTable {
    unsigned char folded[256];

    FoldTable() {
        for (int b = 0; b < 256; ++b) {
            folded[b] = static_cast<unsigned char>(std::tolower(b));
        }
    }
    unsigned char operator()(char c) const { return folded[static_cast<unsigned char>(c)]; }
};

// Whether the needle matches at at, byte by byte under fold.
template <class Fold>
bool MatchesAt(char const* at, std::string_view const& needle, Fold const& fold) {
    for (std::size_t k = 0; k < needle.size(); ++k) {
        if (fold(at[k]) != fold(needle[k])) {
            return false;
        }
    }
    return true;
}

// Tries every start from begin to lastStart (inclusive) in order: the plain procedure.
template <class Fold>
std::size_t ScanEachStart(std::string_view const& text, std::size_t begin, std::size_t lastStart,
                            std::string_view const& needle, Fold const& fold) {
    auto const head = fold(needle[0]);
    for (std::size_t p = begin; p <= lastStart; ++p) {
        if (fold(text[p]) == head && MatchesAt(text.data() + p, needle, fold)) {
            return p;
        }
    }
    return npos;
}

// The bytes that fold onto the same value as c, if there are at most two of them.
struct FoldVariants {
    bool fits = false;
    unsigned char bytes[2] = {0, 0};
};

FoldVariants VariantsOf(FoldTable const& fold, char c) {
    FoldVariants variants;
    unsigned char const target = fold(c);
    int count = 0;
    for (int b = 0; b < 256; ++b) {
        if (fold.folded[b] != target) {
            continue;
        }
        if (count == 2) {
            return variants;
        }
        variants.bytes[count++] = static_cast<unsigned char>(b);
    }
    if (count == 1) {
        variants.bytes[1] = variants.bytes[0];
    }
    variants.fits = true;
    return variants;
}

// Searches the starts begin..lastStart with a table. When at most two bytes fold onto each of
// the needle's first, middle and last bytes, the kernel of the path in use names the starts
// where those three can match, 64 at a time, and only they are compared in order.
std::size_t ScanWithTable(std::string_view const& text, std::size_t begin, std::size_t lastStart,
                            std::string_view const& needle) {
    FoldTable const fold;
    FoldVariants const head = VariantsOf(fold, needle.front());
    FoldVariants const middle = VariantsOf(fold, needle[needle.size() / 2]);
    FoldVariants const tail = VariantsOf(fold, needle.back());
    if (!head.fits || !middle.fits || !tail.fits) {
        return ScanEachStart(text, begin, lastStart, needle, fold);
    }
    kernels::Kernels const& kernels = kernels::ActiveKernels();
    kernels::StartFilter const filter{{head.bytes[0], head.bytes[1]},
                                      {middle.bytes[0], middle.bytes[1]},
                                      {tail.bytes[0], tail.bytes[1]},
                                      needle.size() / 2,
                                      needle.size() - 1};
    for (std::size_t pos = begin; pos <= lastStart;) {
        std::uint64_t mask = 0;
        std::size_t const block =
            kernels.findCandidates(text.data(), pos, lastStart, filter, &mask);
        if (block == npos) {
            return npos;
        }
        for (; mask != 0; mask &= mask - 1) {
            std::size_t const start = block + static_cast<std::size_t>(__builtin_ctzll(mask));
            if (MatchesAt(text.data() + start, needle, fold)) {
                return start;
            }
        }
        pos = block + 64;
    }
    return npos;
}

// The end (exclusive) of the range whose last index is last: last = size - 1 and last = size
// both reach the end of text.
std::size_t RangeEnd(std::size_t size, std::size_t last) {
    return last < size - 1 ? last + 1 : size;
}

}  // namespace

char const* StrnStr(char const* text, std::size_t size, char const* needle) {
    if (text == nullptr || size == 0 || needle == nullptr) {
        return nullptr;
    }
    std::string_view const haystack(text, size);
    std::size_t const at = haystack.find(needle);
    return at == std::string_view::npos ? nullptr : text + at;
}

std::size_t FindCaseInsensitive(std::string_view const& text, std::size_t first,
                                  std::size_t last, std::string_view const& needle) {
    std::size_t const size = text.size();
    if (needle.empty() || size == 0 || first > last || first > size || last > size) {
        return npos;
    }
    std::size_t const end = RangeEnd(size, last);
    if (end - first < needle.size()) {
        return npos;
    }
    std::size_t const lastStart = end - needle.size();
    if (end - first < kFoldTableMinRange) {
        return ScanEachStart(text, first, lastStart, needle, FoldByte);
    }
    return ScanWithTable(text, first, lastStart, needle);
}

std::size_t FindCaseInsensitive(std::string_view const& text, std::size_t first,
                                  std::string_view const& needle) {
    std::size_t const last = text.empty() ? 0 : text.size() - 1;
    return FindCaseInsensitive(text, first, last, needle);
}

std::size_t FindCaseInsensitive(std::string_view const& text, std::string_view const& needle) {
    return FindCaseInsensitive(text, 0, needle);
}

}  // namespace Tavrel
