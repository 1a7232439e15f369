// The AVX-512BW path: 64 bytes per instruction, comparisons straight into bit masks, and masked
// loads for the last bytes of a text (a masked load does not touch the bytes it leaves out).
// Every function carries the target attribute, so the rest of the library, and every function
// that the compiler emits from a header, stays within the x86-64 base; these run only after
// Dispatch.cpp has seen AVX-512F, AVX-512BW, AVX-512VL, BMI1, BMI2 and POPCNT.
// NOTE: no lambdas here: a lambda does not inherit its function's target attribute.
#include "strings/Kernels.h"

#ifdef TAVREL_STRINGS_X86

#include <immintrin.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#define TAVREL_AVX512 __attribute__((target("avx512f,avx512bw,avx512vl,bmi,bmi2,popcnt")))

namespace Tavrel::kernels {

namespace {

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

TAVREL_AVX512 __m512i Load(char const* at) { return _mm512_loadu_si512(at); }

// The first n (< 64) bytes at at, zeros in the other lanes; only those n bytes are read.
TAVREL_AVX512 __m512i LoadFirst(char const* at, std::uint64_t lanes) {
    return _mm512_maskz_loadu_epi8(lanes, at);
}

TAVREL_AVX512 std::uint64_t FirstLanes(std::size_t n) { return _bzhi_u64(~std::uint64_t{0}, n); }

TAVREL_AVX512 std::size_t LowestBit(std::uint64_t mask) {
    return static_cast<std::size_t>(_tzcnt_u64(mask));
}

TAVREL_AVX512 std::uint64_t High(__m512i block) { return _mm512_movepi8_mask(block); }

TAVREL_AVX512 __m512i Or4(__m512i a, __m512i b, __m512i c, __m512i d) {
    return _mm512_or_si512(_mm512_or_si512(a, b), _mm512_or_si512(c, d));
}

TAVREL_AVX512 std::size_t AsciiRun(char const* bytes, std::size_t size) {
    std::size_t i = 0;
    for (; size - i >= 256; i += 256) {
        __m512i const any = Or4(Load(bytes + i), Load(bytes + i + 64), Load(bytes + i + 128),
                                Load(bytes + i + 192));
        if (High(any) != 0) {
            break;
        }
    }
    for (; size - i >= 64; i += 64) {
        if (std::uint64_t const high = High(Load(bytes + i)); high != 0) {
            return i + LowestBit(high);
        }
    }
    if (i < size) {
        if (std::uint64_t const high = High(LoadFirst(bytes + i, FirstLanes(size - i)));
            high != 0) {
            return i + LowestBit(high);
        }
    }
    return size;
}

// Each byte less 0x20: the printable bytes 0x20-0x7E become 0-0x5E, every other byte more.
TAVREL_AVX512 __m512i PrintableShift(__m512i block) {
    return _mm512_sub_epi8(block, _mm512_set1_epi8(0x20));
}

TAVREL_AVX512 std::uint64_t NotPrintable(__m512i shifted) {
    return _mm512_cmpgt_epu8_mask(shifted, _mm512_set1_epi8(0x5E));
}

TAVREL_AVX512 std::size_t PrintableRun(char const* bytes, std::size_t size) {
    std::size_t i = 0;
    for (; size - i >= 256; i += 256) {
        __m512i const largest = _mm512_max_epu8(
            _mm512_max_epu8(PrintableShift(Load(bytes + i)), PrintableShift(Load(bytes + i + 64))),
            _mm512_max_epu8(PrintableShift(Load(bytes + i + 128)),
                            PrintableShift(Load(bytes + i + 192))));
        if (NotPrintable(largest) != 0) {
            break;
        }
    }
    for (; size - i >= 64; i += 64) {
        if (std::uint64_t const bad = NotPrintable(PrintableShift(Load(bytes + i))); bad != 0) {
            return i + LowestBit(bad);
        }
    }
    if (i < size) {
        std::uint64_t const lanes = FirstLanes(size - i);
        std::uint64_t const bad = NotPrintable(PrintableShift(LoadFirst(bytes + i, lanes))) & lanes;
        if (bad != 0) {
            return i + LowestBit(bad);
        }
    }
    return size;
}

// The bytes of block that break the form rules, given the bytes 1, 2 and 3 before each of
// its bytes, as the top bit of each byte: a byte must be a continuation (0x80-0xBF) exactly when
// the byte 1 before it is 0xC0 or above, the byte 2 before 0xE0 or above, or the byte 3 before 0xF0
// or above; and no byte is 0xF8 or above. A saturating subtraction of (bound - 0x80) leaves the top
// bit set exactly for the bytes from bound on.
TAVREL_AVX512 __m512i Utf8FaultsOf(__m512i block, __m512i back1, __m512i back2, __m512i back3) {
    __m512i const needed = _mm512_ternarylogic_epi32(
        _mm512_subs_epu8(back1, _mm512_set1_epi8(0x40)),
        _mm512_subs_epu8(back2, _mm512_set1_epi8(0x60)),
        _mm512_subs_epu8(back3, _mm512_set1_epi8(0x70)), 0xFE);  // a | b | c
    // A continuation has bit 7 set and bit 6 clear: bit 7 of block & ~(block << 1).
    __m512i const mismatch = _mm512_ternarylogic_epi32(needed, block, _mm512_slli_epi16(block, 1),
                                                       0xB4);  // a ^ (b & ~c)
    return _mm512_or_si512(mismatch, _mm512_subs_epu8(block, _mm512_set1_epi8(0x78)));
}

// The same for block, given the 64 bytes before it.
TAVREL_AVX512 __m512i Utf8Faults(__m512i block, __m512i previous) {
    // The 16 bytes before each 16-byte lane of block: the last lane of previous, then block's.
    // NOTE: the zero-masked form with every lane kept, since GCC 12 warns that the plain
    // form's undefined start value may be used.
    __m512i const before = _mm512_maskz_alignr_epi64(0xFF, block, previous, 6);
    return Utf8FaultsOf(block, _mm512_alignr_epi8(block, before, 15),
                        _mm512_alignr_epi8(block, before, 14),
                        _mm512_alignr_epi8(block, before, 13));
}

// The same for block, read from at, with at least 3 bytes of the text before it: the bytes 1, 2
// and 3 before each byte come from loads at at - 1, at - 2 and at - 3.
// NOTE: loads rather than shuffles, since the load ports are idle here while the shuffles
// compete with the arithmetic for the vector unit.
TAVREL_AVX512 __m512i Utf8FaultsAt(__m512i block, char const* at) {
    return Utf8FaultsOf(block, Load(at - 1), Load(at - 2), Load(at - 3));
}

// Whether a sequence begun in the last 3 bytes of a block needs bytes behind it.
TAVREL_AVX512 bool EndsInsideSequence(__m512i block) {
    // Bytes 61, 62 and 63 less 0x70, 0x60 and 0x40 keep their top bit from 0xF0, 0xE0 and
    // 0xC0 on; every other byte less 0xFF becomes 0.
    __m512i const bounds = _mm512_set_epi64(0x406070FFFFFFFFFFLL, -1, -1, -1, -1, -1, -1, -1);
    return High(_mm512_subs_epu8(block, bounds)) != 0;
}

// Checks two blocks at a time; a pair of ASCII blocks needs only that no sequence is open
// before it, and starts a run of ASCII that is skipped four blocks at a time. The first pair
// that fails stops the check: the walk by sequences finds the fault from there.
TAVREL_AVX512 std::size_t Utf8CheckedPrefix(char const* bytes, std::size_t size) {
    std::size_t i = 0;
    __m512i previous = _mm512_setzero_si512();
    while (size - i >= 128) {
        __m512i const first = Load(bytes + i);
        __m512i const second = Load(bytes + i + 64);
        if (High(_mm512_or_si512(first, second)) == 0) {
            if (EndsInsideSequence(previous)) {
                break;
            }
            previous = second;
            i += 128;
            for (; size - i >= 256; i += 256) {
                __m512i const last = Load(bytes + i + 192);
                if (High(Or4(Load(bytes + i), Load(bytes + i + 64), Load(bytes + i + 128), last)) !=
                    0) {
                    break;
                }
                previous = last;
            }
            continue;
        }
        __m512i const faults =
            i >= 3 ? _mm512_or_si512(Utf8FaultsAt(first, bytes + i),
                                     Utf8FaultsAt(second, bytes + i + 64))
                   : _mm512_or_si512(Utf8Faults(first, previous), Utf8Faults(second, first));
        if (High(faults) != 0) {
            break;
        }
        previous = second;
        i += 128;
    }
    if (size - i >= 64) {
        __m512i const block = Load(bytes + i);
        if (High(Utf8Faults(block, previous)) == 0) {
            i += 64;
        }
    }
    return OpenSequenceStart(bytes, i);
}

TAVREL_AVX512 __m512i Spread(unsigned char b) { return _mm512_set1_epi8(static_cast<char>(b)); }

// The lanes of block that equal the first (with kEither also the second) of two bytes.
template <bool kEither>
TAVREL_AVX512 std::uint64_t Equal(__m512i block, __m512i const* bytes) {
    std::uint64_t equal = _mm512_cmpeq_epi8_mask(block, bytes[0]);
    if constexpr (kEither) {
        equal |= _mm512_cmpeq_epi8_mask(block, bytes[1]);
    }
    return equal;
}

// How many bytes lie from at to the next multiple of 64 in the address space (0 to 63).
TAVREL_AVX512 std::size_t AlignmentLead(char const* at) {
    return static_cast<std::size_t>(-reinterpret_cast<std::uintptr_t>(at) & 63);
}

// The lanes of the starts from pos on that lie at or before lastStart, at most 64.
TAVREL_AVX512 std::uint64_t StartLanes(std::size_t pos, std::size_t lastStart) {
    return lastStart - pos >= 63 ? ~std::uint64_t{0} : FirstLanes(lastStart - pos + 1);
}

// The starts among the lanes from at on that pass: bytes holds the two bytes of the head, the
// middle and the tail of filter. Only those lanes are read.
template <bool kEither>
TAVREL_AVX512 std::uint64_t Hits(char const* at, std::uint64_t lanes, StartFilter const& filter,
                                 __m512i const* bytes) {
    return Equal<kEither>(LoadFirst(at, lanes), bytes) &
           Equal<kEither>(LoadFirst(at + filter.middleOffset, lanes), bytes + 2) &
           Equal<kEither>(LoadFirst(at + filter.tailOffset, lanes), bytes + 4) & lanes;
}

// The same for 64 whole lanes.
template <bool kEither>
TAVREL_AVX512 std::uint64_t Hits(char const* at, StartFilter const& filter, __m512i const* bytes) {
    return Equal<kEither>(Load(at), bytes) &
           Equal<kEither>(Load(at + filter.middleOffset), bytes + 2) &
           Equal<kEither>(Load(at + filter.tailOffset), bytes + 4);
}

template <bool kEither>
TAVREL_AVX512 std::size_t FindCandidatesOf(char const* text, std::size_t pos, std::size_t lastStart,
                                           StartFilter const& filter, std::uint64_t* mask) {
    __m512i const bytes[6] = {Spread(filter.head[0]),   Spread(filter.head[1]),
                              Spread(filter.middle[0]), Spread(filter.middle[1]),
                              Spread(filter.tail[0]),   Spread(filter.tail[1])};
    std::size_t block = pos;
    // The first 64 starts come first, from wherever pos lies; the blocks behind them begin
    // at a multiple of 64 in the address space, so that their first bytes are loaded whole
    // from single cache lines (a few starts are looked at twice).
    if (std::size_t const lead = AlignmentLead(text + pos); lead != 0) {
        std::uint64_t const bits =
            Hits<kEither>(text + pos, StartLanes(pos, lastStart), filter, bytes);
        if (bits != 0) {
            *mask = bits;
            return pos;
        }
        if (lastStart - pos <= 63) {
            return kNone;
        }
        block = pos + lead;
    }
    // 256 starts per step while they all lie at or before lastStart. While first bytes are
    // rare, only they are compared; once a step finds first bytes that lead nowhere, the
    // first and last bytes are compared together, and only where both pass are the middle
    // bytes loaded.
    char const* const tails = text + filter.tailOffset;
    char const* const middles = text + filter.middleOffset;
    bool headsAreRare = true;
    for (; lastStart - block >= 255; block += 256) {
        // NOTE: written out, not as a loop over an array, which GCC keeps in memory.
        char const* const at = text + block;
        char const* const tailAt = tails + block;
        std::uint64_t ends0 = Equal<kEither>(Load(at), bytes);
        std::uint64_t ends1 = Equal<kEither>(Load(at + 64), bytes);
        std::uint64_t ends2 = Equal<kEither>(Load(at + 128), bytes);
        std::uint64_t ends3 = Equal<kEither>(Load(at + 192), bytes);
        bool const anyHead = (ends0 | ends1 | ends2 | ends3) != 0;
        if (!headsAreRare || anyHead) {
            ends0 &= Equal<kEither>(Load(tailAt), bytes + 4);
            ends1 &= Equal<kEither>(Load(tailAt + 64), bytes + 4);
            ends2 &= Equal<kEither>(Load(tailAt + 128), bytes + 4);
            ends3 &= Equal<kEither>(Load(tailAt + 192), bytes + 4);
        }
        if ((ends0 | ends1 | ends2 | ends3) != 0) {
            char const* const middleAt = middles + block;
            std::uint64_t const hits0 = ends0 & Equal<kEither>(Load(middleAt), bytes + 2);
            std::uint64_t const hits1 = ends1 & Equal<kEither>(Load(middleAt + 64), bytes + 2);
            std::uint64_t const hits2 = ends2 & Equal<kEither>(Load(middleAt + 128), bytes + 2);
            std::uint64_t const hits3 = ends3 & Equal<kEither>(Load(middleAt + 192), bytes + 2);
            if ((hits0 | hits1) != 0) {
                *mask = hits0 != 0 ? hits0 : hits1;
                return hits0 != 0 ? block : block + 64;
            }
            if ((hits2 | hits3) != 0) {
                *mask = hits2 != 0 ? hits2 : hits3;
                return hits2 != 0 ? block + 128 : block + 192;
            }
        }
        headsAreRare = headsAreRare && !anyHead;
        if (lastStart - block == 255) {
            return kNone;
        }
    }
    for (; lastStart - block >= 63; block += 64) {
        if (std::uint64_t const bits = Hits<kEither>(text + block, filter, bytes); bits != 0) {
            *mask = bits;
            return block;
        }
        if (lastStart - block == 63) {
            return kNone;
        }
    }
    // Fewer than 64 starts are left: masked loads read only their bytes.
    std::uint64_t const bits =
        Hits<kEither>(text + block, FirstLanes(lastStart - block + 1), filter, bytes);
    *mask = bits;
    return bits != 0 ? block : kNone;
}

TAVREL_AVX512 std::size_t FindCandidates(char const* text, std::size_t pos, std::size_t lastStart,
                                         StartFilter const& filter, std::uint64_t* mask) {
    return IsExact(filter) ? FindCandidatesOf<false>(text, pos, lastStart, filter, mask)
                           : FindCandidatesOf<true>(text, pos, lastStart, filter, mask);
}

// The bytes from source to source + n - 1 (n <= 64) copied to target, which may lie below
// source in the same text: all are loaded before any is stored.
TAVREL_AVX512 void CopyUpTo64(char* target, char const* source, std::size_t n) {
    std::uint64_t const lanes = FirstLanes(n);
    _mm512_mask_storeu_epi8(target, lanes, _mm512_maskz_loadu_epi8(lanes, source));
}

// A pattern of ReplaceRun and its replacement in registers.
struct RunPattern {
    __m512i from;  // the pattern, zeros behind it
    __m512i to;    // the replacement, zeros behind it
    __m256i to32;  // its first 32 bytes
    __m512i head;  // the pattern's first byte in every lane
    __m512i tail;  // its last byte in every lane
    std::uint64_t fromLanes;
    std::uint64_t toLanes;
    std::size_t fromSize;
    std::size_t toSize;
};

TAVREL_AVX512 RunPattern RunPatternOf(Replacement64 const& pattern) {
    std::uint64_t const fromLanes = FirstLanes(pattern.fromSize);
    std::uint64_t const toLanes = FirstLanes(pattern.toSize);
    return {_mm512_maskz_loadu_epi8(fromLanes, pattern.from),
            _mm512_maskz_loadu_epi8(toLanes, pattern.to),
            _mm256_maskz_loadu_epi8(static_cast<__mmask32>(toLanes), pattern.to),
            Spread(static_cast<unsigned char>(pattern.from[0])),
            Spread(static_cast<unsigned char>(pattern.from[pattern.fromSize - 1])),
            fromLanes,
            toLanes,
            pattern.fromSize,
            pattern.toSize};
}

// Stores the replacement at at, with a store no wider than 32 bytes where it fits in them.
// NOTE: a masked store keeps the whole width of its register from being read back at once by
// the loads that follow it; the narrower store leaves the next 32 bytes free for them.
TAVREL_AVX512 inline __attribute__((always_inline)) void StoreReplacement(
    char* at, RunPattern const& pattern) {
    if (pattern.toSize <= 32) {
        _mm256_mask_storeu_epi8(at, static_cast<__mmask32>(pattern.toLanes), pattern.to32);
    } else {
        _mm512_mask_storeu_epi8(at, pattern.toLanes, pattern.to);
    }
}

// Overwrites, in text, the occurrences among candidates (bit k: a start at base + k whose first
// and last bytes agree) that begin at or behind next, the end of the last occurrence, from left
// to right, each checked in full with one masked compare.
TAVREL_AVX512 inline __attribute__((always_inline)) void OverwriteCandidates(
    char* text, std::size_t base, std::uint64_t candidates, std::size_t& next,
    RunPattern const& pattern) {
    if (next > base) {
        candidates &= next - base >= 64 ? 0 : ~FirstLanes(next - base);
    }
    while (candidates != 0) {
        std::size_t const at = base + LowestBit(candidates);
        if (pattern.fromSize > 2 &&
            _mm512_cmpneq_epi8_mask(LoadFirst(text + at, pattern.fromLanes), pattern.from) != 0) {
            candidates &= candidates - 1;
            continue;
        }
        StoreReplacement(text + at, pattern);
        next = at + pattern.fromSize;
        std::size_t const skip = next - base;  // no overlaps: starts behind it are left
        candidates = skip < 64 ? candidates & (~std::uint64_t{0} << skip) : 0;
    }
}

// Overwrites the occurrences among the count (at most 64) starts from block on, read with
// masked loads, so that no byte behind the text is touched.
TAVREL_AVX512 inline __attribute__((always_inline)) void OverwriteFew(char* text, std::size_t block,
                                                                      std::size_t count,
                                                                      std::size_t& next,
                                                                      RunPattern const& pattern) {
    std::uint64_t const lanes = FirstLanes(count);
    char const* const at = text + block;
    std::uint64_t const candidates =
        Equal<false>(LoadFirst(at, lanes), &pattern.head) &
        Equal<false>(LoadFirst(at + pattern.fromSize - 1, lanes), &pattern.tail) & lanes;
    OverwriteCandidates(text, block, candidates, next, pattern);
}

// A replacement of the same length in place, from the occurrence at pos on: nothing moves, so
// the text is scanned on a fixed grid of 256 starts per step from a multiple of 64 on, and
// where to go on never waits for an occurrence to be checked and written.
// NOTE: a replacement written over an occurrence that reaches into the next step changes bytes
// that step reads; they lie before the end of that occurrence, where no start counts.
TAVREL_AVX512 void OverwriteRun(char* text, std::size_t size, std::size_t pos,
                                RunPattern const& pattern) {
    std::size_t const n = pattern.fromSize;
    std::size_t const lastStart = size - n;
    std::size_t next = pos;
    std::size_t block = pos;
    if (std::size_t const lead = AlignmentLead(text + pos); lead != 0) {
        std::size_t const count = std::min(lead, lastStart - pos + 1);
        OverwriteFew(text, block, count, next, pattern);
        block += count;
    }
    // Whole steps: 256 starts whose last bytes lie within the text.
    for (; block <= lastStart && lastStart - block >= 255; block += 256) {
        char* const at = text + block;
        std::uint64_t heads0 = Equal<false>(Load(at), &pattern.head);
        std::uint64_t heads1 = Equal<false>(Load(at + 64), &pattern.head);
        std::uint64_t heads2 = Equal<false>(Load(at + 128), &pattern.head);
        std::uint64_t heads3 = Equal<false>(Load(at + 192), &pattern.head);
        if ((heads0 | heads1 | heads2 | heads3) == 0) {
            continue;
        }
        char const* const tails = at + n - 1;
        heads0 &= Equal<false>(Load(tails), &pattern.tail);
        heads1 &= Equal<false>(Load(tails + 64), &pattern.tail);
        heads2 &= Equal<false>(Load(tails + 128), &pattern.tail);
        heads3 &= Equal<false>(Load(tails + 192), &pattern.tail);
        OverwriteCandidates(text, block, heads0, next, pattern);
        OverwriteCandidates(text, block + 64, heads1, next, pattern);
        OverwriteCandidates(text, block + 128, heads2, next, pattern);
        OverwriteCandidates(text, block + 192, heads3, next, pattern);
    }
    for (; block <= lastStart; block += 64) {
        OverwriteFew(text, block, std::min<std::size_t>(64, lastStart - block + 1), next, pattern);
    }
}

// Where ReplaceRun reads and writes.
struct Run {
    char const* in;
    char* out;
    std::size_t read;
    std::size_t write;
    bool inPlace;

    // Whether the bytes read must be stored: not where, in place, nothing has moved yet.
    bool MustCopy() const { return !inPlace || write != read; }
};

// Replaces the occurrences among candidates (bit k: a start at block + k whose first and last
// bytes agree; block <= run.read) from left to right, each checked in full with one masked
// compare, and its piece before it moved with one masked load and store. Gives false when it
// stopped before an occurrence for want of room before outEnd.
TAVREL_AVX512 inline __attribute__((always_inline)) bool ReplaceCandidates(
    Run& run, std::size_t block, std::uint64_t candidates, RunPattern const& pattern,
    std::size_t outEnd) {
    while (candidates != 0) {
        std::size_t const at = block + LowestBit(candidates);
        // Up to 2 bytes, the first and last bytes are the whole pattern.
        if (pattern.fromSize > 2 &&
            _mm512_cmpneq_epi8_mask(LoadFirst(run.in + at, pattern.fromLanes), pattern.from) != 0) {
            candidates &= candidates - 1;
            continue;
        }
        if (outEnd - run.write < kRunRoom) {
            return false;
        }
        if (run.MustCopy()) {
            CopyUpTo64(run.out + run.write, run.in + run.read, at - run.read);
        }
        run.write += at - run.read;
        StoreReplacement(run.out + run.write, pattern);
        run.write += pattern.toSize;
        run.read = at + pattern.fromSize;
        std::size_t const skip = run.read - block;  // no overlaps: starts behind it are left
        candidates = skip < 64 ? candidates & (~std::uint64_t{0} << skip) : 0;
    }
    return true;
}

// Moves the blocks from run.read on while they hold no first byte, 64 bytes per step, at most
// blocks of them.
TAVREL_AVX512 inline __attribute__((always_inline)) void CopyClearBlocks(Run& run,
                                                                         std::size_t blocks,
                                                                         __m512i head) {
    char const* source = run.in + run.read;
    char* target = run.out + run.write;
    char const* const end = source + 64 * blocks;
    for (; source != end; source += 64, target += 64) {
        __m512i const bytes = Load(source);
        if (Equal<false>(bytes, &head) != 0) {
            break;
        }
        _mm512_storeu_si512(target, bytes);
    }
    std::size_t const moved = static_cast<std::size_t>(source - (run.in + run.read));
    run.read += moved;
    run.write += moved;
}

// Passes over the blocks from run.read on while they hold no first byte, where nothing has to
// move: four blocks per step while 256 bytes are left, then to the first block that holds one.
TAVREL_AVX512 inline __attribute__((always_inline)) void SkipClearBlocks(Run& run, std::size_t size,
                                                                         __m512i head) {
    std::size_t at = run.read;
    for (; size - at >= 256; at += 256) {
        char const* const bytes = run.in + at;
        std::uint64_t const heads0 = Equal<false>(Load(bytes), &head);
        std::uint64_t const heads1 = Equal<false>(Load(bytes + 64), &head);
        std::uint64_t const heads2 = Equal<false>(Load(bytes + 128), &head);
        std::uint64_t const heads3 = Equal<false>(Load(bytes + 192), &head);
        if ((heads0 | heads1 | heads2 | heads3) != 0) {
            at += 64 * LowestBit(std::uint64_t{heads0 != 0} | std::uint64_t{heads1 != 0} << 1 |
                                 std::uint64_t{heads2 != 0} << 2 | std::uint64_t{1} << 3);
            break;
        }
    }
    run.write += at - run.read;
    run.read = at;
}

// The whole replacement loop for patterns and replacements of at most 64 bytes. Each step
// takes the 64 starts from where the reading stands, wherever that lies: blocks without a
// first byte move as they are, in a tight loop of their own; in a block with one, the
// candidates whose last byte also agrees are checked and replaced, and the next step starts
// behind the last occurrence, so that no branch depends on a length. Where nothing has to move
// (in place, before anything changed size), four blocks are looked at per step.
// NOTE: one block per step where bytes move: an occurrence then costs one mispredicted branch,
// where a step of several blocks costs a second one to find the block that holds it.
TAVREL_AVX512 std::size_t ReplaceRun(char const* in, std::size_t size, std::size_t* read, char* out,
                                     std::size_t write, std::size_t outEnd,
                                     Replacement64 const& pattern) {
    RunPattern const p = RunPatternOf(pattern);
    std::size_t const n = p.fromSize;
    // NOTE: in and out are compared as addresses only.
    Run run{in, out, *read, write,
            reinterpret_cast<std::uintptr_t>(out) == reinterpret_cast<std::uintptr_t>(in)};
    if (run.inPlace && !run.MustCopy() && p.toSize == n && size >= n) {
        OverwriteRun(out, size, run.read, p);
        *read = size;
        return size;
    }
    // Whole blocks: 64 starts whose last bytes all lie within the text.
    while (size - run.read >= 64 + n - 1 && outEnd - run.write >= kRunRoom) {
        if (run.MustCopy()) {
            CopyClearBlocks(run,
                            std::min((size - run.read - (n - 1)) / 64,
                                     (outEnd - run.write - kRunRoom) / 64 + 1),
                            p.head);
        } else {
            SkipClearBlocks(run, size, p.head);
        }
        if (size - run.read < 64 + n - 1 || outEnd - run.write < kRunRoom) {
            break;
        }
        std::size_t const block = run.read;
        __m512i const bytes = Load(in + block);
        std::uint64_t const heads = Equal<false>(bytes, &p.head);
        if (heads != 0) {
            std::uint64_t const candidates =
                heads & Equal<false>(Load(in + block + n - 1), &p.tail);
            if (!ReplaceCandidates(run, block, candidates, p, outEnd)) {
                break;
            }
            if (run.read != block) {
                // The rest of the block moves now, so that the next step starts where this one
                // ends, whatever the occurrences were.
                if (run.read < block + 64) {
                    if (run.MustCopy()) {
                        CopyUpTo64(out + run.write, in + run.read, block + 64 - run.read);
                    }
                    run.write += block + 64 - run.read;
                    run.read = block + 64;
                }
                continue;
            }
        }
        if (run.MustCopy()) {
            _mm512_storeu_si512(out + run.write, bytes);
        }
        run.read += 64;
        run.write += 64;
    }
    // The last bytes, fewer than 64 + n - 1: masked loads read only them.
    while (run.read < size && outEnd - run.write >= kRunRoom) {
        std::size_t const block = run.read;
        std::size_t const count = std::min<std::size_t>(64, size - block);
        std::size_t const starts = size - block >= n ? std::min(count, size - block - n + 1) : 0;
        std::uint64_t const lanes = FirstLanes(starts);
        std::uint64_t const candidates =
            Equal<false>(LoadFirst(in + block, lanes), &p.head) &
            Equal<false>(LoadFirst(in + block + n - 1, lanes), &p.tail) & lanes;
        if (!ReplaceCandidates(run, block, candidates, p, outEnd)) {
            break;
        }
        if (run.read == block) {
            if (run.MustCopy()) {
                CopyUpTo64(out + run.write, in + block, count);
            }
            run.read += count;
            run.write += count;
        }
    }
    *read = run.read;
    return run.write;
}

#define TAVREL_AVX512_VBMI2 \
    __attribute__((target("avx512f,avx512bw,avx512vl,avx512vbmi2,bmi,bmi2,popcnt")))

// The starts of the occurrences of a pattern of n bytes among the 64 lanes of block, read at at:
// for up to 3 bytes the first, middle and last bytes are the whole pattern; a longer one is
// compared in full at each candidate. Reads n - 1 bytes behind the block.
TAVREL_AVX512_VBMI2 inline __attribute__((always_inline)) std::uint64_t Occurrences(
    char const* at, __m512i block, std::size_t n, __m512i const* probes, __m512i from) {
    std::size_t const last = n - 1;
    std::uint64_t starts = _mm512_cmpeq_epi8_mask(block, probes[0]) &
                           _mm512_cmpeq_epi8_mask(Load(at + last / 2), probes[1]) &
                           _mm512_cmpeq_epi8_mask(Load(at + last), probes[2]);
    if (n > 3) {
        for (std::uint64_t candidates = starts; candidates != 0; candidates &= candidates - 1) {
            std::size_t const k = LowestBit(candidates);
            if (_mm512_cmpneq_epi8_mask(LoadFirst(at + k, FirstLanes(n)), from) != 0) {
                starts &= ~(std::uint64_t{1} << k);
            }
        }
    }
    return starts;
}

// Where the deletion loop stands: the next byte to read, and where it goes.
// NOTE: pointers rather than offsets from in and out: the loop then keeps all it needs in
// registers, also where the pattern's size is not a constant.
struct Cursor {
    char const* source;
    char* target;
};

// Moves the blocks from at on as they are while they hold no first byte, up to the block that
// starts at lastBlock; gives true with the first block that holds one in block, false when none
// of them does.
// NOTE: two blocks per step, and no branch of its own to tell which of the two holds a first
// byte: the first is stored with all lanes or none, and the step moves on by it or not.
TAVREL_AVX512 inline __attribute__((always_inline)) bool MoveToHead(Cursor& at,
                                                                    char const* lastBlock,
                                                                    __m512i head, __m512i& block) {
    char const* source = at.source;
    char* target = at.target;
    bool found = false;
    for (; lastBlock - source >= 64; source += 128, target += 128) {
        __m512i const first = Load(source);
        __m512i const second = Load(source + 64);
        std::uint64_t const heads0 = Equal<false>(first, &head);
        std::uint64_t const heads1 = Equal<false>(second, &head);
        if ((heads0 | heads1) != 0) {
            bool const firstClear = heads0 == 0;
            _mm512_mask_storeu_epi8(target, firstClear ? ~std::uint64_t{0} : 0, first);
            block = _mm512_mask_mov_epi64(first, firstClear ? 0xFF : 0, second);
            source += firstClear ? 64 : 0;
            target += firstClear ? 64 : 0;
            found = true;
            break;
        }
        _mm512_storeu_si512(target, first);
        _mm512_storeu_si512(target + 64, second);
    }
    if (!found && source <= lastBlock) {
        block = Load(source);
        found = Equal<false>(block, &head) != 0;
        if (!found) {
            _mm512_storeu_si512(target, block);
            source += 64;
            target += 64;
        }
    }
    at = {source, target};
    return found;
}

// Moves the 64 bytes of block, read at at.source, to at.target less the bytes that the
// occurrences starting at starts cover, and advances both; carry holds the lanes at the block's
// start that an occurrence of the block before still covers, and becomes those of the next
// block. The block is stored whole: in place, the target lies at or below the source, so its 64
// bytes end where the block ends.
// NOTE: the occurrences of a pattern without a border never overlap, so the lanes each one
// covers, from its start s to s + n - 1, are (1 << (s + n)) - (1 << s), and the sum of those
// over all starts is their union. Taken as a 128-bit number, its upper half (what reaches past
// lane 63) is the next block's carry: the upper half of the shifted starts less the borrow of
// the lower half.
TAVREL_AVX512_VBMI2 inline __attribute__((always_inline)) void DropOccurrences(
    Cursor& at, std::uint64_t& carry, std::uint64_t starts, __m512i block, std::size_t n) {
    std::uint64_t const ends = n == 64 ? 0 : starts << n;
    std::uint64_t const covered = ends - starts;
    std::uint64_t const keep = ~(covered | carry);
    carry = (n == 64 ? starts : starts >> (64 - n)) - std::uint64_t{ends < starts};
    _mm512_storeu_si512(at.target, _mm512_maskz_compress_epi8(keep, block));
    at.target += _mm_popcnt_u64(keep);
    at.source += 64;
}

// DropOccurrences for a block that nothing covers from the block before and that holds one
// occurrence, which ends before its last lane; gives false, having done nothing, for any other.
// NOTE: the test is a branch and the positions advance by constants on purpose: in sparse text
// the branch is predicted, and the stores of the blocks behind then need not wait for this
// block's compares to know where they go.
TAVREL_AVX512_VBMI2 inline __attribute__((always_inline)) bool DropLoneOccurrence(
    Cursor& at, std::uint64_t starts, __m512i block, std::size_t n) {
    if (starts == 0 || (starts & (starts - 1)) != 0 || (starts >> (64 - n)) != 0) {
        return false;
    }
    std::uint64_t const covered = (starts << n) - starts;
    _mm512_storeu_si512(at.target, _mm512_maskz_compress_epi8(~covered, block));
    at.target += 64 - n;
    at.source += 64;
    return true;
}

// The deletion loop for patterns of kSize bytes (0: of any size, taken from the pattern): 64
// bytes from where the reading stands per step; blocks without a first byte move as they are,
// and a block that holds one, or the end of an occurrence, passes through one compress,
// whatever the number of occurrences in it.
template <std::size_t kSize>
TAVREL_AVX512_VBMI2 std::size_t DeleteRunOf(char const* in, std::size_t size, std::size_t* read,
                                            char* out, std::size_t write,
                                            Replacement64 const& pattern) {
    std::size_t const n = kSize != 0 ? kSize : pattern.fromSize;
    // Each block reads n - 1 bytes behind itself for the last byte of a start.
    if (size - *read < 64 + n - 1) {
        return write;
    }
    char const* const lastBlock = in + (size - (n - 1) - 64);
    __m512i const probes[3] = {Spread(static_cast<unsigned char>(pattern.from[0])),
                               Spread(static_cast<unsigned char>(pattern.from[(n - 1) / 2])),
                               Spread(static_cast<unsigned char>(pattern.from[n - 1]))};
    __m512i const from = _mm512_maskz_loadu_epi8(FirstLanes(n), pattern.from);
    Cursor at{in + *read, out + write};
    std::uint64_t carry = 0;
    while (at.source <= lastBlock) {
        __m512i block;
        bool const carried = carry != 0;
        if (carried) {
            block = Load(at.source);
        } else if (!MoveToHead(at, lastBlock, probes[0], block)) {
            break;
        }
        std::uint64_t const starts = Occurrences(at.source, block, n, probes, from);
        if (carried || !DropLoneOccurrence(at, starts, block, n)) {
            DropOccurrences(at, carry, starts, block, n);
        }
    }
    // What the last occurrence still covers is passed over; the rest is left to the caller.
    *read =
        static_cast<std::size_t>(at.source - in) + static_cast<std::size_t>(_mm_popcnt_u64(carry));
    return static_cast<std::size_t>(at.target - out);
}

// The deletion loops by pattern size: at k the loop for k bytes, at 0 the one for any size.
// NOTE: the patterns of up to 8 bytes (tags, markers, line ends) get loops of their own: with
// the size a constant, the offsets, masks and shifts that depend on it are too, about 0.5 ns
// less per occurrence in sparse text.
using DeleteLoop = std::size_t (*)(char const*, std::size_t, std::size_t*, char*, std::size_t,
                                   Replacement64 const&);
template <std::size_t... kSizes>
constexpr std::array<DeleteLoop, sizeof...(kSizes)> DeleteLoops(std::index_sequence<kSizes...>) {
    return {DeleteRunOf<kSizes>...};
}
constexpr auto kDeleteLoops = DeleteLoops(std::make_index_sequence<9>());

TAVREL_AVX512_VBMI2 std::size_t DeleteRun(char const* in, std::size_t size, std::size_t* read,
                                          char* out, std::size_t write,
                                          Replacement64 const& pattern) {
    std::size_t const n = pattern.fromSize;
    return kDeleteLoops[n < kDeleteLoops.size() ? n : 0](in, size, read, out, write, pattern);
}

}  // namespace

Kernels const kAvx512Kernels = {AsciiRun,       PrintableRun, Utf8CheckedPrefix,
                                FindCandidates, ReplaceRun,   nullptr};
Kernels const kAvx512Vbmi2Kernels = {AsciiRun,       PrintableRun, Utf8CheckedPrefix,
                                     FindCandidates, ReplaceRun,   DeleteRun};

}  // namespace Tavrel::kernels

#endif
