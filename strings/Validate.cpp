#include "strings/Validate.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__) && !defined(TAVREL_STRINGS_NO_SIMD)
#include <emmintrin.h>
#define TAVREL_VALIDATE_SSE2 1
#endif

namespace Tavrel {

namespace {

// Where a UTF-8 text first fails: the index of the byte that cannot begin a sequence
// (length 0), or of the lead byte of a faulty or cut-off sequence of the given length.
struct Utf8Fault {
    std::size_t lead = 0;
    std::size_t length = 0;
};

bool IsContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

// The length of the sequence that b begins: 1 for ASCII, 2 to 4 for a lead byte, 0 for a byte
// that cannot begin one (0x80-0xBF, 0xF8-0xFF).
std::size_t SequenceLength(char c) {
    unsigned char const b = static_cast<unsigned char>(c);
    if (b < 0x80) {
        return 1;
    }
    if (b >= 0xC0 && b <= 0xDF) {
        return 2;
    }
    if (b >= 0xE0 && b <= 0xEF) {
        return 3;
    }
    if (b >= 0xF0 && b <= 0xF7) {
        return 4;
    }
    return 0;
}

#ifdef TAVREL_VALIDATE_SSE2

__m128i Load(char const* at) { return _mm_loadu_si128(reinterpret_cast<__m128i const*>(at)); }

unsigned Mask(__m128i lanes) { return static_cast<unsigned>(_mm_movemask_epi8(lanes)); }

// Lanes holding a byte from 0x20 to 0x7E; as signed bytes, everything from 0x80 up is negative.
__m128i PrintableLanes(__m128i block) {
    return _mm_and_si128(_mm_cmpgt_epi8(block, _mm_set1_epi8(0x1F)),
                         _mm_cmplt_epi8(block, _mm_set1_epi8(0x7F)));
}

std::size_t CountTrailingZeros(unsigned mask) {
    return static_cast<std::size_t>(__builtin_ctz(mask));
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
            return i + CountTrailingZeros(high);
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
            return i + CountTrailingZeros(bad);
        }
    }
    while (i < size && bytes[i] >= 0x20 && bytes[i] < 0x7F) {
        ++i;
    }
    return i;
}

#else

constexpr std::uint64_t kHighBits = 0x8080808080808080ULL;
constexpr std::uint64_t kOnes = 0x0101010101010101ULL;

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

// The length of the leading run of bytes below 0x80, 8 bytes per step, then byte by byte.
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

// Whether all 8 bytes of word lie from 0x20 to 0x7E.
bool AllPrintable(std::uint64_t word) {
    return (word & kHighBits) == 0 && BytesBelow(word, 0x20) == 0 &&
           BytesBelow(word ^ (kOnes * 0x7F), 1) == 0;
}

// The length of the leading run of bytes from 0x20 to 0x7E, found the same way.
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

#endif

// Walks the text sequence by sequence from from, which must be the start of a sequence, and
// stores the first fault. Runs of ASCII are skipped a block at a time.
bool FindFaultFrom(char const* bytes, std::size_t size, std::size_t from, Utf8Fault& fault) {
    std::size_t i = from;
    while (i < size) {
        i += AsciiRun(bytes + i, size - i);
        if (i == size) {
            break;
        }
        std::size_t const length = SequenceLength(bytes[i]);
        if (length == 0) {
            fault = {i, 0};
            return true;
        }
        bool const complete =
            length <= size - i && std::all_of(bytes + i + 1, bytes + i + length, IsContinuation);
        if (!complete) {
            fault = {i, length};
            return true;
        }
        i += length;
    }
    return false;
}

#ifdef TAVREL_VALIDATE_SSE2

// 64 bytes seen as four blocks: one bit per byte, byte 0 in bit 0.
struct Block64 {
    __m128i lanes[4];

    explicit Block64(char const* at)
        : lanes{Load(at), Load(at + 16), Load(at + 32), Load(at + 48)} {}

    // One bit per byte from the top bit of each byte of test(lane), written out for the four
    // lanes so that they stay in registers.
    template <class Test>
    std::uint64_t Bits(Test const& test) const {
        return std::uint64_t{Mask(test(lanes[0]))} | std::uint64_t{Mask(test(lanes[1]))} << 16 |
               std::uint64_t{Mask(test(lanes[2]))} << 32 |
               std::uint64_t{Mask(test(lanes[3]))} << 48;
    }
    // The bytes that are greater than bound as signed bytes.
    std::uint64_t Above(char bound) const {
        __m128i const b = _mm_set1_epi8(bound);
        return Bits([b](__m128i lane) { return _mm_cmpgt_epi8(lane, b); });
    }
    std::uint64_t High() const {
        return Bits([](__m128i lane) { return lane; });
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
    // As signed bytes: 0xC0 is -64, 0xE0 is -32, 0xF0 is -16.
    std::uint64_t const lead2 = block.Above(-65) & high;
    std::uint64_t const lead3 = block.Above(-33) & high;
    std::uint64_t const lead4 = block.Above(-17) & high;
    std::uint64_t const needed = (lead2 << 1) | (lead3 << 2) | (lead4 << 3) | carry;
    std::uint64_t const continuation = high & ~lead2;
    carry = (lead2 >> 63) | (lead3 >> 62) | (lead4 >> 61);
    return needed == continuation && !block.AnyFromF8();
}

// The start of the sequence that is open at index at, given that the text before it is valid.
std::size_t OpenSequenceStart(char const* bytes, std::size_t at, std::uint64_t carry) {
    std::size_t start = at;
    if (carry != 0) {
        do {
            --start;
        } while (start > 0 && IsContinuation(bytes[start]));
    }
    return start;
}

// Checks whole 64-byte blocks while they are valid; the walk by sequences then starts from the
// last sequence start and finds the exact fault, or checks the rest behind the last block.
bool FindFault(char const* bytes, std::size_t size, Utf8Fault& fault) {
    std::size_t i = 0;
    std::uint64_t carry = 0;
    for (; size - i >= 64; i += 64) {
        std::uint64_t const carryIn = carry;
        if (!BlockIsValid(bytes + i, carry)) {
            carry = carryIn;
            break;
        }
    }
    return FindFaultFrom(bytes, size, OpenSequenceStart(bytes, i, carry), fault);
}

#else

bool FindFault(char const* bytes, std::size_t size, Utf8Fault& fault) {
    return FindFaultFrom(bytes, size, 0, fault);
}

#endif

// NOTE: the line number and the place on the line are only needed for a failure, so they are
// computed from the bytes before the fault instead of being counted along the way. No byte of a
// multi-byte sequence is a line feed, so only ASCII bytes can end a line.
void ReportFault(std::string_view const& text, Utf8Fault const& fault, std::string& message,
                 std::size_t* position) {
    std::string_view const before = text.substr(0, fault.lead);
    std::size_t const lastFeed = before.rfind('\n');
    std::size_t const lineStart = lastFeed == std::string_view::npos ? 0 : lastFeed + 1;
    std::size_t const line =
        1 + static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n'));
    // A faulty sequence is reported at the place behind it, not at the byte at fault.
    std::size_t const place = fault.lead - lineStart + 1 + fault.length;
    message = "Sign: " + std::to_string(place) + " in column: " + std::to_string(line) +
              " is not utf-8 conform.";
    if (position != nullptr) {
        *position = fault.length == 0 ? fault.lead : fault.lead + fault.length - 1;
    }
}

// Stores index in position when the run of good bytes ended before the end of text.
bool PassesWholeText(std::size_t run, std::size_t size, std::size_t* position) {
    if (run == size) {
        return true;
    }
    if (position != nullptr) {
        *position = run;
    }
    return false;
}

}  // namespace

bool ValidUTF8(std::string_view const& text, std::string& message, std::size_t* position) {
    Utf8Fault fault;
    if (!FindFault(text.data(), text.size(), fault)) {
        return true;
    }
    ReportFault(text, fault, message, position);
    return false;
}

bool ValidASCII(std::string_view const& text, std::size_t* position) {
    return PassesWholeText(AsciiRun(text.data(), text.size()), text.size(), position);
}

bool ValidPrintableASCII(std::string_view const& text, std::size_t* position) {
    return PassesWholeText(PrintableRun(text.data(), text.size()), text.size(), position);
}

}  // namespace Tavrel
