// The AVX-512BW path: 64 bytes per instruction, comparisons straight into bit masks, and masked
// loads for the last bytes of a text (a masked load does not touch the bytes it leaves out).
// Every function carries the target attribute, so the rest of the library, and every function
// that the compiler emits from a header, stays within the x86-64 base; these run only after
// Dispatch.cpp has seen AVX-512F, AVX-512BW, BMI1, BMI2 and POPCNT.
// NOTE: no lambdas here: a lambda does not inherit its function's target attribute.
#include "strings/Kernels.h"

#ifdef TAVREL_STRINGS_X86

#include <immintrin.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

#define TAVREL_AVX512 __attribute__((target("avx512f,avx512bw,bmi,bmi2,popcnt")))

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

// How far ahead of the blocks being looked at ReplaceRun asks for the text: an occurrence
// costs a mispredicted branch, and the work after it then finds its bytes in the first cache.
constexpr std::size_t kPrefetchAhead = 8192;

TAVREL_AVX512 void Prefetch256(char const* at) {
    _mm_prefetch(at, _MM_HINT_T0);
    _mm_prefetch(at + 64, _MM_HINT_T0);
    _mm_prefetch(at + 128, _MM_HINT_T0);
    _mm_prefetch(at + 192, _MM_HINT_T0);
}

// The bytes from source to source + n - 1 (n <= 64) copied to target, which may lie below
// source in the same text: all are loaded before any is stored.
TAVREL_AVX512 void CopyUpTo64(char* target, char const* source, std::size_t n) {
    std::uint64_t const lanes = FirstLanes(n);
    _mm512_mask_storeu_epi8(target, lanes, _mm512_maskz_loadu_epi8(lanes, source));
}

// The whole replacement loop for patterns and replacements of at most 64 bytes: candidates
// from the first and last byte, 64 starts at a time, checked with one masked compare, and
// every piece moved with one masked load and store, so that an occurrence costs no branch on
// a length. Where four blocks in a row hold no first byte, they move as they are.
TAVREL_AVX512 std::size_t ReplaceRun(char const* in, std::size_t size, std::size_t* read, char* out,
                                     std::size_t write, std::size_t outEnd,
                                     Replacement64 const& pattern) {
    std::size_t const fromSize = pattern.fromSize;
    std::size_t const toSize = pattern.toSize;
    __m512i const from = _mm512_maskz_loadu_epi8(FirstLanes(fromSize), pattern.from);
    std::uint64_t const toLanes = FirstLanes(toSize);
    __m512i const to = _mm512_maskz_loadu_epi8(toLanes, pattern.to);
    __m512i const head = Spread(static_cast<unsigned char>(pattern.from[0]));
    __m512i const tail = Spread(static_cast<unsigned char>(pattern.from[fromSize - 1]));
    std::size_t const tailOffset = fromSize - 1;
    // Up to 2 bytes, a start whose first and last bytes agree is an occurrence.
    bool const exactFilter = fromSize <= 2;
    // NOTE: in place, pieces that stay where they are need not be copied; out and in are
    // compared as addresses only.
    bool const inPlace =
        reinterpret_cast<std::uintptr_t>(out) == reinterpret_cast<std::uintptr_t>(in);
    std::size_t r = *read;
    std::size_t w = write;
    if (size >= fromSize) {
        std::size_t const lastStart = size - fromSize;
        std::size_t block = r;
        // Whether the last block taken alone held a candidate: then the next one is taken
        // alone too, since where occurrences crowd, four clear blocks are rare.
        bool crowded = false;
        while (block <= lastStart) {
            if (outEnd - w < kRunRoom) {
                *read = r;
                return w;
            }
            std::size_t const lead = AlignmentLead(in + block);
            if (lead == 0 && r == block && lastStart - block >= 255 && outEnd - w >= 512 &&
                !crowded) {
                // The blocks before the first that holds a first byte move as they are; that
                // one goes on below. Masked stores with all lanes or none, since a branch on
                // which block it is would be mispredicted for most occurrences.
                // NOTE: the usual case, four clear blocks, is a branch of its own, so that the
                // next loads do not wait for these compares.
                char const* const at = in + block;
                if (size - block >= kPrefetchAhead + 256) {
                    Prefetch256(at + kPrefetchAhead);
                }
                __m512i const block0 = Load(at);
                __m512i const block1 = Load(at + 64);
                __m512i const block2 = Load(at + 128);
                __m512i const block3 = Load(at + 192);
                std::uint64_t const heads0 = Equal<false>(block0, &head);
                std::uint64_t const heads1 = Equal<false>(block1, &head);
                std::uint64_t const heads2 = Equal<false>(block2, &head);
                std::uint64_t const heads3 = Equal<false>(block3, &head);
                bool const copy = !inPlace || w != r;
                if ((heads0 | heads1 | heads2 | heads3) == 0) {
                    if (copy) {
                        _mm512_storeu_si512(out + w, block0);
                        _mm512_storeu_si512(out + w + 64, block1);
                        _mm512_storeu_si512(out + w + 128, block2);
                        _mm512_storeu_si512(out + w + 192, block3);
                    }
                    block += 256;
                    r = block;
                    w += 256;
                    continue;
                }
                std::size_t const clear =
                    LowestBit(std::uint64_t{heads0 != 0} | std::uint64_t{heads1 != 0} << 1 |
                              std::uint64_t{heads2 != 0} << 2 | std::uint64_t{heads3 != 0} << 3);
                if (copy) {
                    std::uint64_t const all = ~std::uint64_t{0};
                    _mm512_mask_storeu_epi8(out + w, clear > 0 ? all : 0, block0);
                    _mm512_mask_storeu_epi8(out + w + 64, clear > 1 ? all : 0, block1);
                    _mm512_mask_storeu_epi8(out + w + 128, clear > 2 ? all : 0, block2);
                }
                block += 64 * clear;
                r = block;
                w += 64 * clear;
            }
            std::size_t const count =
                std::min(lead == 0 ? std::size_t{64} : lead, lastStart - block + 1);
            std::size_t const end = block + count;
            if (r >= end) {  // an occurrence reaches over the whole block
                block = end;
                continue;
            }
            std::uint64_t candidates = 0;
            if (count == 64 && r == block) {
                // A whole block from its start: plain loads, and a clear block moves at once.
                __m512i const bytes = Load(in + block);
                candidates =
                    Equal<false>(bytes, &head) & Equal<false>(Load(in + block + tailOffset), &tail);
                crowded = (candidates & (candidates - 1)) != 0;
                if (candidates == 0) {
                    if (!inPlace || w != r) {
                        _mm512_storeu_si512(out + w, bytes);
                    }
                    block = end;
                    r = end;
                    w += 64;
                    continue;
                }
            } else {
                std::uint64_t const lanes = FirstLanes(count) & ~FirstLanes(r - block);
                candidates = Equal<false>(LoadFirst(in + block, lanes), &head) &
                             Equal<false>(LoadFirst(in + block + tailOffset, lanes), &tail) & lanes;
                crowded = (candidates & (candidates - 1)) != 0;
            }
            while (candidates != 0) {
                std::size_t const at = block + LowestBit(candidates);
                if (!exactFilter &&
                    _mm512_cmpneq_epi8_mask(LoadFirst(in + at, FirstLanes(fromSize)), from) != 0) {
                    candidates &= candidates - 1;
                    continue;
                }
                if (outEnd - w < kRunRoom) {
                    *read = r;
                    return w;
                }
                if (!inPlace || w != r) {
                    CopyUpTo64(out + w, in + r, at - r);
                }
                w += at - r;
                _mm512_mask_storeu_epi8(out + w, toLanes, to);
                w += toSize;
                r = at + fromSize;
                std::size_t const skip = r - block;  // no overlaps: starts behind it are left
                candidates = skip < 64 ? candidates & (~std::uint64_t{0} << skip) : 0;
            }
            if (r < end) {
                if (!inPlace || w != r) {
                    CopyUpTo64(out + w, in + r, end - r);
                }
                w += end - r;
                r = end;
            }
            block = end;
        }
    }
    // The bytes behind the last start, fewer than 64.
    if (r < size) {
        if (!inPlace || w != r) {
            CopyUpTo64(out + w, in + r, size - r);
        }
        w += size - r;
        r = size;
    }
    *read = r;
    return w;
}

#define TAVREL_AVX512_VBMI2 __attribute__((target("avx512f,avx512bw,avx512vbmi2,bmi,bmi2,popcnt")))

// The starts of the occurrences among the lanes at at: for up to 3 bytes the first, middle and
// last bytes are the whole pattern; a longer one is compared in full at each candidate. Only
// the bytes of those lanes (and fromSize - 1 behind them) are read.
template <bool kWhole>
TAVREL_AVX512_VBMI2 inline __attribute__((always_inline)) std::uint64_t Occurrences(
    char const* at, std::uint64_t lanes, __m512i block, Replacement64 const& pattern,
    __m512i const* probes, __m512i from) {
    std::size_t const last = pattern.fromSize - 1;
    std::uint64_t starts = 0;
    if constexpr (kWhole) {
        starts = _mm512_cmpeq_epi8_mask(block, probes[0]) &
                 _mm512_cmpeq_epi8_mask(Load(at + last / 2), probes[1]) &
                 _mm512_cmpeq_epi8_mask(Load(at + last), probes[2]);
    } else {
        starts = _mm512_mask_cmpeq_epi8_mask(lanes, block, probes[0]) &
                 _mm512_cmpeq_epi8_mask(LoadFirst(at + last / 2, lanes), probes[1]) &
                 _mm512_cmpeq_epi8_mask(LoadFirst(at + last, lanes), probes[2]);
    }
    if (pattern.fromSize > 3) {
        for (std::uint64_t candidates = starts; candidates != 0; candidates &= candidates - 1) {
            std::size_t const k = LowestBit(candidates);
            if (_mm512_cmpneq_epi8_mask(LoadFirst(at + k, FirstLanes(pattern.fromSize)), from) !=
                0) {
                starts &= ~(std::uint64_t{1} << k);
            }
        }
    }
    return starts;
}

// State of the deletion loop: where it reads and writes, and the lanes at the start of the
// next block that an occurrence of the block before still covers.
struct Deletion {
    char const* in;
    char* out;
    std::size_t read;
    std::size_t write;
    std::uint64_t carry;
};

// Moves the count (1 to 64) bytes at in + read to out + write less the bytes that
// occurrences cover, and advances both. A whole block is stored whole: in place, out + write
// lies at or below in + read, so its 64 bytes end where the block ends.
// NOTE: the occurrences of a pattern without a border never overlap, so the lanes each one
// covers, from its start s to s + fromSize - 1, are (1 << (s + fromSize)) - (1 << s), and the
// sum of those over all starts is their union. Taken as a 128-bit number, its upper half (what
// reaches past lane 63) is the next block's carry: the upper half of the shifted starts less
// the borrow of the lower half.
template <bool kWhole>
TAVREL_AVX512_VBMI2 inline __attribute__((always_inline)) void DropOccurrences(
    Deletion& d, std::size_t count, Replacement64 const& pattern, __m512i const* probes,
    __m512i from) {
    std::size_t const n = pattern.fromSize;
    char const* const at = d.in + d.read;
    std::uint64_t const lanes = kWhole ? ~std::uint64_t{0} : FirstLanes(count);
    __m512i const block = kWhole ? Load(at) : LoadFirst(at, lanes);
    std::uint64_t const starts = Occurrences<kWhole>(at, lanes, block, pattern, probes, from);
    std::uint64_t const ends = n == 64 ? 0 : starts << n;
    std::uint64_t const covered = ends - starts;
    std::uint64_t const above =
        (n == 64 ? starts : starts >> (64 - n)) - std::uint64_t{ends < starts};
    std::uint64_t const keep = ~(covered | d.carry) & lanes;
    // The carry for the block that begins behind these count lanes.
    d.carry = kWhole ? above : (covered >> count) | (above << (64 - count));
    __m512i const packed = _mm512_maskz_compress_epi8(keep, block);
    std::size_t const kept = static_cast<std::size_t>(_mm_popcnt_u64(keep));
    if constexpr (kWhole) {
        _mm512_storeu_si512(d.out + d.write, packed);
    } else {
        _mm512_mask_storeu_epi8(d.out + d.write, FirstLanes(kept), packed);
    }
    d.write += kept;
    d.read += count;
}

// The deletion loop: a block that holds a first byte, or the end of an occurrence, passes
// through one compress, whatever the number of occurrences in it; four blocks in a row without
// either move as they are. The blocks begin at multiples of 64 in the address space, so that
// no load is split between two cache lines.
TAVREL_AVX512_VBMI2 std::size_t DeleteRun(char const* in, std::size_t size, std::size_t* read,
                                          char* out, std::size_t write,
                                          Replacement64 const& pattern) {
    std::size_t const n = pattern.fromSize;
    __m512i const probes[3] = {Spread(static_cast<unsigned char>(pattern.from[0])),
                               Spread(static_cast<unsigned char>(pattern.from[(n - 1) / 2])),
                               Spread(static_cast<unsigned char>(pattern.from[n - 1]))};
    __m512i const from = _mm512_maskz_loadu_epi8(FirstLanes(n), pattern.from);
    // Each block reads n - 1 bytes behind itself for the last byte of a start.
    std::size_t const reach = 64 + n - 1;
    Deletion d{in, out, *read, write, 0};
    if (std::size_t const lead = AlignmentLead(in + d.read); lead != 0 && size - d.read >= reach) {
        DropOccurrences<false>(d, lead, pattern, probes, from);
    }
    while (size - d.read >= 3 * std::size_t{64} + reach) {
        char const* const at = in + d.read;
        if (size - d.read >= kPrefetchAhead + 256) {
            Prefetch256(at + kPrefetchAhead);
        }
        std::uint64_t const heads[4] = {_mm512_cmpeq_epi8_mask(Load(at), probes[0]),
                                        _mm512_cmpeq_epi8_mask(Load(at + 64), probes[0]),
                                        _mm512_cmpeq_epi8_mask(Load(at + 128), probes[0]),
                                        _mm512_cmpeq_epi8_mask(Load(at + 192), probes[0])};
        if ((heads[0] | heads[1] | heads[2] | heads[3] | d.carry) == 0) {
            for (std::size_t k = 0; k < 256; k += 64) {
                _mm512_storeu_si512(out + d.write + k, Load(at + k));
            }
            d.read += 256;
            d.write += 256;
            continue;
        }
        for (std::uint64_t const blockHeads : heads) {
            if ((blockHeads | d.carry) == 0) {
                _mm512_storeu_si512(out + d.write, Load(in + d.read));
                d.read += 64;
                d.write += 64;
            } else {
                DropOccurrences<true>(d, 64, pattern, probes, from);
            }
        }
    }
    while (size - d.read >= reach) {
        DropOccurrences<true>(d, 64, pattern, probes, from);
    }
    // What the last occurrence still covers is passed over; the rest is left to the caller.
    *read = d.read + static_cast<std::size_t>(_mm_popcnt_u64(d.carry));
    return d.write;
}

}  // namespace

Kernels const kAvx512Kernels = {AsciiRun,       PrintableRun, Utf8CheckedPrefix,
                                FindCandidates, ReplaceRun,   nullptr};
Kernels const kAvx512Vbmi2Kernels = {AsciiRun,       PrintableRun, Utf8CheckedPrefix,
                                     FindCandidates, ReplaceRun,   DeleteRun};

}  // namespace Tavrel::kernels

#endif
