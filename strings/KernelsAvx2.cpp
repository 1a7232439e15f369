// The AVX2 path: 32 bytes per instruction. Every function carries the target attribute, so the
// rest of the library, and every function that the compiler emits from a header, stays within
// the x86-64 base; these run only after Dispatch.cpp has seen AVX2, BMI1, BMI2 and POPCNT.
// NOTE: no lambdas here: a lambda does not inherit its function's target attribute.
#include "strings/Kernels.h"

#ifdef TAVREL_STRINGS_X86

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

#define TAVREL_AVX2 __attribute__((target("avx2,bmi,bmi2,popcnt")))

namespace Tavrel::kernels {

namespace {

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

TAVREL_AVX2 __m256i Load(char const* at) {
    return _mm256_loadu_si256(reinterpret_cast<__m256i const*>(at));
}

TAVREL_AVX2 std::uint32_t Mask(__m256i lanes) {
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(lanes));
}

TAVREL_AVX2 std::size_t LowestBit(std::uint64_t mask) {
    return static_cast<std::size_t>(_tzcnt_u64(mask));
}

TAVREL_AVX2 std::size_t AsciiRun(char const* bytes, std::size_t size) {
    std::size_t i = 0;
    for (; size - i >= 128; i += 128) {
        __m256i const any =
            _mm256_or_si256(_mm256_or_si256(Load(bytes + i), Load(bytes + i + 32)),
                            _mm256_or_si256(Load(bytes + i + 64), Load(bytes + i + 96)));
        if (Mask(any) != 0) {
            break;
        }
    }
    for (; size - i >= 32; i += 32) {
        if (std::uint32_t const high = Mask(Load(bytes + i)); high != 0) {
            return i + LowestBit(high);
        }
    }
    while (i < size && static_cast<unsigned char>(bytes[i]) < 0x80) {
        ++i;
    }
    return i;
}

// Each byte plus 0x60, as a signed byte: 0x20-0x7E become -128 to -34, every other byte more.
TAVREL_AVX2 __m256i PrintableShift(__m256i block) {
    return _mm256_add_epi8(block, _mm256_set1_epi8(0x60));
}

TAVREL_AVX2 std::uint32_t NotPrintable(__m256i shifted) {
    return Mask(_mm256_cmpgt_epi8(shifted, _mm256_set1_epi8(-34)));
}

TAVREL_AVX2 std::size_t PrintableRun(char const* bytes, std::size_t size) {
    std::size_t i = 0;
    for (; size - i >= 128; i += 128) {
        __m256i const largest = _mm256_max_epi8(
            _mm256_max_epi8(PrintableShift(Load(bytes + i)), PrintableShift(Load(bytes + i + 32))),
            _mm256_max_epi8(PrintableShift(Load(bytes + i + 64)),
                            PrintableShift(Load(bytes + i + 96))));
        if (NotPrintable(largest) != 0) {
            break;
        }
    }
    for (; size - i >= 32; i += 32) {
        if (std::uint32_t const bad = NotPrintable(PrintableShift(Load(bytes + i))); bad != 0) {
            return i + LowestBit(bad);
        }
    }
    while (i < size && bytes[i] >= 0x20 && bytes[i] < 0x7F) {
        ++i;
    }
    return i;
}

// The bytes of block that break the form rules, given the bytes 1, 2 and 3 before each of
// its bytes, as the top bit of each byte: a byte must be a continuation (0x80-0xBF) exactly when
// the byte 1 before it is 0xC0 or above, the byte 2 before 0xE0 or above, or the byte 3 before 0xF0
// or above; and no byte is 0xF8 or above. A saturating subtraction of (bound - 0x80) leaves the top
// bit set exactly for the bytes from bound on.
TAVREL_AVX2 __m256i Utf8FaultsOf(__m256i block, __m256i back1, __m256i back2, __m256i back3) {
    __m256i const needed =
        _mm256_or_si256(_mm256_or_si256(_mm256_subs_epu8(back1, _mm256_set1_epi8(0x40)),
                                        _mm256_subs_epu8(back2, _mm256_set1_epi8(0x60))),
                        _mm256_subs_epu8(back3, _mm256_set1_epi8(0x70)));
    __m256i const continuation = _mm256_cmpgt_epi8(_mm256_set1_epi8(-64), block);
    __m256i const tooLarge = _mm256_subs_epu8(block, _mm256_set1_epi8(0x78));
    return _mm256_or_si256(_mm256_xor_si256(needed, continuation), tooLarge);
}

// The same for block, given the 32 bytes before it.
TAVREL_AVX2 __m256i Utf8Faults(__m256i block, __m256i previous) {
    __m256i const before = _mm256_permute2x128_si256(previous, block, 0x21);
    return Utf8FaultsOf(block, _mm256_alignr_epi8(block, before, 15),
                        _mm256_alignr_epi8(block, before, 14),
                        _mm256_alignr_epi8(block, before, 13));
}

// The same for block, read from at, with at least 3 bytes of the text before it: the bytes
// 1, 2 and 3 before each byte come from loads at at - 1, at - 2 and at - 3.
// NOTE: loads rather than shuffles, since the load ports are idle here while the shuffles
// compete with the arithmetic for the vector unit.
TAVREL_AVX2 __m256i Utf8FaultsAt(__m256i block, char const* at) {
    return Utf8FaultsOf(block, Load(at - 1), Load(at - 2), Load(at - 3));
}

// Whether a sequence begun in the last 3 bytes of a block needs bytes behind it.
TAVREL_AVX2 bool EndsInsideSequence(__m256i block) {
    __m256i const bounds =
        _mm256_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1,
                         -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 0x70, 0x60, 0x40);
    return Mask(_mm256_subs_epu8(block, bounds)) != 0;
}

// Checks two blocks at a time; a pair of ASCII blocks needs only that no sequence is open
// before it, and starts a run of ASCII that is skipped four blocks at a time. The first pair
// that fails stops the check: the walk by sequences finds the fault from there.
TAVREL_AVX2 std::size_t Utf8CheckedPrefix(char const* bytes, std::size_t size) {
    std::size_t i = 0;
    __m256i previous = _mm256_setzero_si256();
    while (size - i >= 64) {
        __m256i const first = Load(bytes + i);
        __m256i const second = Load(bytes + i + 32);
        if (Mask(_mm256_or_si256(first, second)) == 0) {
            if (EndsInsideSequence(previous)) {
                break;
            }
            previous = second;
            i += 64;
            for (; size - i >= 128; i += 128) {
                __m256i const last = Load(bytes + i + 96);
                __m256i const any =
                    _mm256_or_si256(_mm256_or_si256(Load(bytes + i), Load(bytes + i + 32)),
                                    _mm256_or_si256(Load(bytes + i + 64), last));
                if (Mask(any) != 0) {
                    break;
                }
                previous = last;
            }
            continue;
        }
        __m256i const faults =
            i >= 3 ? _mm256_or_si256(Utf8FaultsAt(first, bytes + i),
                                     Utf8FaultsAt(second, bytes + i + 32))
                   : _mm256_or_si256(Utf8Faults(first, previous), Utf8Faults(second, first));
        if (Mask(faults) != 0) {
            break;
        }
        previous = second;
        i += 64;
    }
    if (size - i >= 32) {
        __m256i const block = Load(bytes + i);
        if (Mask(Utf8Faults(block, previous)) == 0) {
            i += 32;
        }
    }
    return OpenSequenceStart(bytes, i);
}

TAVREL_AVX2 __m256i Spread(unsigned char b) { return _mm256_set1_epi8(static_cast<char>(b)); }

// The lanes of the 32 bytes at at that equal bytes[0] (with kEither also bytes[1]).
template <bool kEither>
TAVREL_AVX2 __m256i Equal(char const* at, __m256i const* bytes) {
    __m256i const block = Load(at);
    __m256i equal = _mm256_cmpeq_epi8(block, bytes[0]);
    if constexpr (kEither) {
        equal = _mm256_or_si256(equal, _mm256_cmpeq_epi8(block, bytes[1]));
    }
    return equal;
}

// The 32 starts at at that pass: bytes holds the two bytes of the head, the middle and the
// tail; middle and tail point to the middle and last bytes of the start at.
template <bool kEither>
TAVREL_AVX2 std::uint32_t Hits32(char const* at, char const* middle, char const* tail,
                                 __m256i const* bytes) {
    return Mask(_mm256_and_si256(
        _mm256_and_si256(Equal<kEither>(at, bytes), Equal<kEither>(middle, bytes + 2)),
        Equal<kEither>(tail, bytes + 4)));
}

// The 64 starts at block that pass, bit k for start block + k.
template <bool kEither>
TAVREL_AVX2 std::uint64_t Hits64(char const* text, std::size_t block, StartFilter const& filter,
                                 __m256i const* bytes) {
    char const* const at = text + block;
    char const* const middle = at + filter.middleOffset;
    char const* const tail = at + filter.tailOffset;
    return Hits32<kEither>(at, middle, tail, bytes) |
           std::uint64_t{Hits32<kEither>(at + 32, middle + 32, tail + 32, bytes)} << 32;
}

// Whether any of the 128 bytes at at is a first byte of the filter.
template <bool kEither>
TAVREL_AVX2 bool AnyHead(char const* at, __m256i const* bytes) {
    __m256i const any = _mm256_or_si256(
        _mm256_or_si256(Equal<kEither>(at, bytes), Equal<kEither>(at + 32, bytes)),
        _mm256_or_si256(Equal<kEither>(at + 64, bytes), Equal<kEither>(at + 96, bytes)));
    return Mask(any) != 0;
}

// While first bytes are rare, 128 starts cost one compare each; once a step finds first bytes
// that lead nowhere, all three bytes are compared at every start.
template <bool kEither>
TAVREL_AVX2 std::size_t FindCandidatesOf(char const* text, std::size_t pos, std::size_t lastStart,
                                         StartFilter const& filter, std::uint64_t* mask) {
    __m256i const bytes[6] = {Spread(filter.head[0]),   Spread(filter.head[1]),
                              Spread(filter.middle[0]), Spread(filter.middle[1]),
                              Spread(filter.tail[0]),   Spread(filter.tail[1])};
    bool headsAreRare = true;
    std::size_t block = pos;
    // 128 starts per step while they all lie at or before lastStart, then 64.
    for (; lastStart - block >= 127; block += 128) {
        if (!headsAreRare || AnyHead<kEither>(text + block, bytes)) {
            std::uint64_t const first = Hits64<kEither>(text, block, filter, bytes);
            std::uint64_t const second = Hits64<kEither>(text, block + 64, filter, bytes);
            if ((first | second) != 0) {
                *mask = first != 0 ? first : second;
                return first != 0 ? block : block + 64;
            }
            headsAreRare = false;
        }
        if (lastStart - block == 127) {
            return kNone;
        }
    }
    for (; lastStart - block >= 63; block += 64) {
        if (std::uint64_t const bits = Hits64<kEither>(text, block, filter, bytes); bits != 0) {
            *mask = bits;
            return block;
        }
        if (lastStart - block == 63) {
            return kNone;
        }
    }
    // Fewer than 64 starts are left: they are tried one by one, so no load reaches behind.
    *mask = PassingStarts(text, block, lastStart, filter);
    return *mask != 0 ? block : kNone;
}

TAVREL_AVX2 std::size_t FindCandidates(char const* text, std::size_t pos, std::size_t lastStart,
                                       StartFilter const& filter, std::uint64_t* mask) {
    return IsExact(filter) ? FindCandidatesOf<false>(text, pos, lastStart, filter, mask)
                           : FindCandidatesOf<true>(text, pos, lastStart, filter, mask);
}

}  // namespace

Kernels const kAvx2Kernels = {AsciiRun,       PrintableRun, Utf8CheckedPrefix,
                              FindCandidates, nullptr,      nullptr};

}  // namespace Tavrel::kernels

#endif
