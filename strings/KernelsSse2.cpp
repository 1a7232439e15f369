// The SSE2 path, the floor of every x86-64 processor: 16 bytes per instruction, four of them
// per 64-byte block. SSE2 is part of the x86-64 base, so nothing here needs a target attribute.
#include "strings/Kernels.h"

#ifdef TAVREL_STRINGS_X86

#include <emmintrin.h>

#include <cstddef>
#include <cstdint>

namespace Tavrel::kernels {

namespace {

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

__m128i Load(char const* at) { return _mm_loadu_si128(reinterpret_cast<__m128i const*>(at)); }

unsigned Mask(__m128i lanes) { return static_cast<unsigned>(_mm_movemask_epi8(lanes)); }

std::size_t LowestBit(std::uint64_t mask) {
    return static_cast<std::size_t>(__builtin_ctzll(mask));
}

// Lanes holding a byte from 0x20 to 0x7E; as signed bytes, everything from 0x80 up is negative.
__m128i PrintableLanes(__m128i block) {
    return _mm_and_si128(_mm_cmpgt_epi8(block, _mm_set1_epi8(0x1F)),
                         _mm_cmplt_epi8(block, _mm_set1_epi8(0x7F)));
}

// The length of the leading run of bytes below 0x80: 64 bytes per step while the run lasts,
// then 16 at a time to find the lane, then byte by byte.
std::size_t AsciiRun(char const* bytes, std::size_t size) {
    std::size_t i = 0;
    for (; size - i >= 64; i += 64) {
        __m128i const any = _mm_or_si128(_mm_or_si128(Load(bytes + i), Load(bytes + i + 16)),
                                         _mm_or_si128(Load(bytes + i + 32), Load(bytes + i + 48)));
        if (Mask(any) != 0) {
            break;
        }
    }
    for (; size - i >= 16; i += 16) {
        if (unsigned const high = Mask(Load(bytes + i)); high != 0) {
            return i + LowestBit(high);
        }
    }
    while (i < size && static_cast<unsigned char>(bytes[i]) < 0x80) {
        ++i;
    }
    return i;
}

// The length of the leading run of bytes from 0x20 to 0x7E, found the same way.
std::size_t PrintableRun(char const* bytes, std::size_t size) {
    std::size_t i = 0;
    for (; size - i >= 64; i += 64) {
        __m128i const all = _mm_and_si128(
            _mm_and_si128(PrintableLanes(Load(bytes + i)), PrintableLanes(Load(bytes + i + 16))),
            _mm_and_si128(PrintableLanes(Load(bytes + i + 32)),
                          PrintableLanes(Load(bytes + i + 48))));
        if (Mask(all) != 0xFFFF) {
            break;
        }
    }
    for (; size - i >= 16; i += 16) {
        if (unsigned const bad = ~Mask(PrintableLanes(Load(bytes + i))) & 0xFFFF; bad != 0) {
            return i + LowestBit(bad);
        }
    }
    while (i < size && bytes[i] >= 0x20 && bytes[i] < 0x7F) {
        ++i;
    }
    return i;
}

// 64 bytes seen as four blocks: one bit per byte, byte 0 in bit 0.
struct Block64 {
    __m128i lanes[4];

    explicit Block64(char const* at)
        : lanes{Load(at), Load(at + 16), Load(at + 32), Load(at + 48)} {}

    // The bytes that are greater than bound as signed bytes.
    std::uint64_t Above(char bound) const {
        __m128i const b = _mm_set1_epi8(bound);
        return std::uint64_t{Mask(_mm_cmpgt_epi8(lanes[0], b))} |
               std::uint64_t{Mask(_mm_cmpgt_epi8(lanes[1], b))} << 16 |
               std::uint64_t{Mask(_mm_cmpgt_epi8(lanes[2], b))} << 32 |
               std::uint64_t{Mask(_mm_cmpgt_epi8(lanes[3], b))} << 48;
    }
    std::uint64_t High() const {
        return std::uint64_t{Mask(lanes[0])} | std::uint64_t{Mask(lanes[1])} << 16 |
               std::uint64_t{Mask(lanes[2])} << 32 | std::uint64_t{Mask(lanes[3])} << 48;
    }
    bool AllAscii() const {
        __m128i const any =
            _mm_or_si128(_mm_or_si128(lanes[0], lanes[1]), _mm_or_si128(lanes[2], lanes[3]));
        return Mask(any) == 0;
    }
    // Whether any byte is 0xF8 or above: the largest byte, less 0xF7 with saturation, is not 0.
    bool AnyFromF8() const {
        __m128i const largest =
            _mm_max_epu8(_mm_max_epu8(lanes[0], lanes[1]), _mm_max_epu8(lanes[2], lanes[3]));
        __m128i const excess = _mm_subs_epu8(largest, _mm_set1_epi8(static_cast<char>(0xF7)));
        return Mask(_mm_cmpeq_epi8(excess, _mm_setzero_si128())) != 0xFFFF;
    }
};

// Checks 64 bytes at once. carry holds the bytes at the start of the block that sequences of
// the previous block still need as continuations, and becomes those of the next block. Valid
// UTF-8 has a continuation byte exactly where a lead byte before it asks for one, and no byte
// from 0xF8 up; a block that breaks this holds the first fault.
bool BlockIsValid(char const* at, std::uint64_t& carry) {
    Block64 const block(at);
    if (carry == 0 && block.AllAscii()) {
        return true;
    }
    std::uint64_t const high = block.High();
    // As signed bytes: 0xC0 is -64, 0xE0 is -32, 0xF0 is -16. A lead from 0xF0 is counted by
    // all three masks, so it asks for the three bytes behind it.
    std::uint64_t const lead2 = block.Above(-65) & high;
    std::uint64_t const lead3 = block.Above(-33) & high;
    std::uint64_t const lead4 = block.Above(-17) & high;
    std::uint64_t const needed = (lead2 << 1) | (lead3 << 2) | (lead4 << 3) | carry;
    std::uint64_t const continuation = high & ~lead2;
    carry = (lead2 >> 63) | (lead3 >> 62) | (lead4 >> 61);
    return needed == continuation && !block.AnyFromF8();
}

std::size_t Utf8CheckedPrefix(char const* bytes, std::size_t size) {
    std::size_t i = 0;
    std::uint64_t carry = 0;
    for (; size - i >= 64; i += 64) {
        if (!BlockIsValid(bytes + i, carry)) {
            break;
        }
    }
    return OpenSequenceStart(bytes, i);
}

// Lanes of the 16 bytes at at that equal bytes[0] (with kEither also bytes[1]).
template <bool kEither>
__m128i Equal(char const* at, __m128i const* bytes) {
    __m128i const block = Load(at);
    __m128i equal = _mm_cmpeq_epi8(block, bytes[0]);
    if constexpr (kEither) {
        equal = _mm_or_si128(equal, _mm_cmpeq_epi8(block, bytes[1]));
    }
    return equal;
}

// Whether any of the 64 bytes at at is a first byte of the filter.
template <bool kEither>
bool AnyHead(char const* at, __m128i const* bytes) {
    __m128i const any =
        _mm_or_si128(_mm_or_si128(Equal<kEither>(at, bytes), Equal<kEither>(at + 16, bytes)),
                     _mm_or_si128(Equal<kEither>(at + 32, bytes), Equal<kEither>(at + 48, bytes)));
    return Mask(any) != 0;
}

// The 64 starts at block that pass, bit k for start block + k.
template <bool kEither>
std::uint64_t Hits64(char const* text, std::size_t block, StartFilter const& filter,
                     __m128i const* bytes) {
    std::uint64_t bits = 0;
    for (std::size_t k = 0; k < 64; k += 16) {
        char const* const at = text + block + k;
        __m128i const hits =
            _mm_and_si128(_mm_and_si128(Equal<kEither>(at, bytes),
                                        Equal<kEither>(at + filter.middleOffset, bytes + 2)),
                          Equal<kEither>(at + filter.tailOffset, bytes + 4));
        bits |= std::uint64_t{Mask(hits)} << k;
    }
    return bits;
}

// While first bytes are rare, 64 starts cost one compare each; once a block holds first bytes
// that lead nowhere, all three bytes are compared at every start.
template <bool kEither>
std::size_t FindCandidatesOf(char const* text, std::size_t pos, std::size_t lastStart,
                             StartFilter const& filter, std::uint64_t* mask) {
    auto const lane = [](unsigned char b) { return _mm_set1_epi8(static_cast<char>(b)); };
    __m128i const bytes[6] = {lane(filter.head[0]),   lane(filter.head[1]), lane(filter.middle[0]),
                              lane(filter.middle[1]), lane(filter.tail[0]), lane(filter.tail[1])};
    bool headsAreRare = true;
    std::size_t block = pos;
    for (; lastStart - block >= 63; block += 64) {
        if (!headsAreRare || AnyHead<kEither>(text + block, bytes)) {
            if (std::uint64_t const bits = Hits64<kEither>(text, block, filter, bytes); bits != 0) {
                *mask = bits;
                return block;
            }
            headsAreRare = false;
        }
        if (lastStart - block == 63) {
            return kNone;
        }
    }
    // Fewer than 64 starts are left: they are tried one by one, so no load reaches behind.
    *mask = PassingStarts(text, block, lastStart, filter);
    return *mask != 0 ? block : kNone;
}

std::size_t FindCandidates(char const* text, std::size_t pos, std::size_t lastStart,
                           StartFilter const& filter, std::uint64_t* mask) {
    return IsExact(filter) ? FindCandidatesOf<false>(text, pos, lastStart, filter, mask)
                           : FindCandidatesOf<true>(text, pos, lastStart, filter, mask);
}

}  // namespace

Kernels const kSse2Kernels = {AsciiRun,       PrintableRun, Utf8CheckedPrefix,
                              FindCandidates, nullptr,      nullptr};

}  // namespace Tavrel::kernels

#endif
