// The portable path: plain C++ for every processor, eight bytes at a time where it can.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "strings/Kernels.h"

namespace Tavrel::kernels {

namespace {

constexpr std::uint64_t kHighBits = 0x8080808080808080ULL;
constexpr std::uint64_t kOnes = 0x0101010101010101ULL;
constexpr std::size_t kNone = static_cast<std::size_t>(-1);

std::uint64_t LoadWord(char const* at) {
    std::uint64_t word;
    std::memcpy(&word, at, sizeof word);
    return word;
}

// High bit of a byte set where a byte of word is below n (n <= 0x80), for words whose bytes are
// all below 0x80; then a borrow cannot start at a byte that is not below n.
std::uint64_t BytesBelow(std::uint64_t word, std::uint64_t n) {
    return (word - kOnes * n) & ~word & kHighBits;
}

// Whether all 8 bytes of word lie from 0x20 to 0x7E.
bool AllPrintable(std::uint64_t word) {
    return (word & kHighBits) == 0 && BytesBelow(word, 0x20) == 0 &&
           BytesBelow(word ^ (kOnes * 0x7F), 1) == 0;
}

std::size_t AsciiRun(char const* bytes, std::size_t size) {
    std::size_t i = 0;
    while (size - i >= 8 && (LoadWord(bytes + i) & kHighBits) == 0) {
        i += 8;
    }
    while (i < size && static_cast<unsigned char>(bytes[i]) < 0x80) {
        ++i;
    }
    return i;
}

std::size_t PrintableRun(char const* bytes, std::size_t size) {
    std::size_t i = 0;
    while (size - i >= 8 && AllPrintable(LoadWord(bytes + i))) {
        i += 8;
    }
    while (i < size && bytes[i] >= 0x20 && bytes[i] < 0x7F) {
        ++i;
    }
    return i;
}

// The walk by sequences checks everything from the start; it skips ASCII runs itself.
std::size_t Utf8CheckedPrefix(char const* /*bytes*/, std::size_t /*size*/) { return 0; }

// The first passing start from pos to lastStart: memchr finds the candidates for an exact
// first byte, the others are tried one by one.
std::size_t FirstPassing(unsigned char const* text, std::size_t pos, std::size_t lastStart,
                         StartFilter const& filter) {
    if (filter.head[0] != filter.head[1]) {
        for (std::size_t p = pos; p <= lastStart; ++p) {
            if (Passes(text + p, filter)) {
                return p;
            }
        }
        return kNone;
    }
    for (std::size_t p = pos; p <= lastStart; ++p) {
        void const* const found = std::memchr(text + p, filter.head[0], lastStart - p + 1);
        if (found == nullptr) {
            return kNone;
        }
        p = static_cast<std::size_t>(static_cast<unsigned char const*>(found) - text);
        if (Passes(text + p, filter)) {
            return p;
        }
    }
    return kNone;
}

std::size_t FindCandidates(char const* text, std::size_t pos, std::size_t lastStart,
                           StartFilter const& filter, std::uint64_t* mask) {
    std::size_t const block =
        FirstPassing(reinterpret_cast<unsigned char const*>(text), pos, lastStart, filter);
    if (block != kNone) {
        *mask = PassingStarts(text, block, lastStart, filter);
    }
    return block;
}

}  // namespace

Kernels const kPortableKernels = {AsciiRun,       PrintableRun, Utf8CheckedPrefix,
                                  FindCandidates, nullptr,      nullptr};

}  // namespace Tavrel::kernels
