// The hot loops of the string library, once per instruction-set path, behind one table of
// function pointers per path (see Dispatch.h for how a path is chosen). Only the library's own
// sources use this header. The validation kernels only find where the exact, byte-by-byte
// rules have to start, and the search kernels only name candidates that their caller compares
// in full, so positions, lines and places never come from a fast path; replaceRun, where a
// path has it, does a whole replacement. Kernels read only the bytes they are given: no load
// reaches behind a text's end, not even within a page (masked loads leave out what they do
// not read).
#pragma once

#include <cstddef>
#include <cstdint>

#include "strings/Dispatch.h"

#if !defined(TAVREL_STRINGS_NO_SIMD) && defined(__GNUC__) && defined(__x86_64__)
#define TAVREL_STRINGS_X86 1
#endif

namespace Tavrel::kernels {

// A filter on the starts of a pattern of tailOffset + 1 bytes: the byte at a start must equal
// head[0] or head[1], the byte middleOffset further middle[0] or middle[1], and the byte
// tailOffset further tail[0] or tail[1]. An exact pattern repeats each of its bytes in both
// places; a short one may probe the same byte twice.
struct StartFilter {
    unsigned char head[2];
    unsigned char middle[2];
    unsigned char tail[2];
    std::size_t middleOffset;
    std::size_t tailOffset;
};

// Whether the start at at passes filter, one byte at a time.
inline bool Passes(unsigned char const* at, StartFilter const& filter) {
    auto const either = [](unsigned char b, unsigned char const* allowed) {
        return b == allowed[0] || b == allowed[1];
    };
    return either(at[0], filter.head) && either(at[filter.middleOffset], filter.middle) &&
           either(at[filter.tailOffset], filter.tail);
}

// Whether filter allows one byte in each place, as it does for an exact pattern.
inline bool IsExact(StartFilter const& filter) {
    return filter.head[0] == filter.head[1] && filter.middle[0] == filter.middle[1] &&
           filter.tail[0] == filter.tail[1];
}

// The starts from block to at most 63 bytes behind it, and never behind lastStart, that pass,
// tried one by one so that no load reaches behind the text: bit k for start block + k.
//   ("xaxa", 1, 3, {a,a,a,a,0}) => 0b101
inline std::uint64_t PassingStarts(char const* text, std::size_t block, std::size_t lastStart,
                                   StartFilter const& filter) {
    auto const* const at = reinterpret_cast<unsigned char const*>(text) + block;
    std::size_t const count = lastStart - block < 63 ? lastStart - block + 1 : 64;
    std::uint64_t bits = 0;
    for (std::size_t k = 0; k < count; ++k) {
        bits |= std::uint64_t{Passes(at + k, filter)} << k;
    }
    return bits;
}

// A pattern of 1 to 64 bytes and its replacement of 0 to 64 bytes, for replaceRun.
struct Replacement64 {
    char const* from;
    std::size_t fromSize;
    char const* to;
    std::size_t toSize;
};

// How much room replaceRun needs before outEnd to go on with the next piece.
inline constexpr std::size_t kRunRoom = 192;

struct Kernels {
    // The length of the leading run of bytes below 0x80.
    //   ("ab\x80", 3) => 2     ("", 0) => 0     ("abc", 3) => 3
    std::size_t (*asciiRun)(char const* bytes, std::size_t size);
    // The length of the leading run of bytes from 0x20 to 0x7E.   ("a\tb", 3) => 1
    std::size_t (*printableRun)(char const* bytes, std::size_t size);
    // An index s at which a sequence begins (or size) such that bytes [0, s) are well-formed
    // UTF-8 in the form-only sense of ValidUTF8; the first fault, if there is one, lies at or
    // behind s, so the walk by sequences may start there.
    //   valid text of 200 bytes => some s <= 200     ("\x80", 1) => 0
    std::size_t (*utf8CheckedPrefix)(char const* bytes, std::size_t size);
    // The next starts from pos to lastStart that pass filter: returns a block start b >= pos
    // such that no start from pos to b - 1 passes, and sets *mask to the starts from b to
    // b + 63 that pass (bit k: start b + k; never a start behind lastStart), with bit 0 or a
    // later bit set. npos when no start from pos to lastStart passes. Needs pos <= lastStart
    // and lastStart + filter.tailOffset < the size of text.
    //   ("xaxa", 0, 3, {a,a,a,a,0}) => 0 and mask 0b1010, or 1 and mask 0b101
    //   ("xaxa", 0, 0, {a,a,a,a,0}) => npos
    std::size_t (*findCandidates)(char const* text, std::size_t pos, std::size_t lastStart,
                                  StartFilter const& filter, std::uint64_t* mask);
    // The whole replacement where a path has a loop for it (null elsewhere): copies in from
    // *read to size to out from write on, with each occurrence of pattern.from (left to right,
    // without overlaps, searched from *read on) replaced by pattern.to, and returns the end of
    // what it wrote. It stops between pieces when fewer than kRunRoom bytes are left before
    // outEnd; *read is then where it stopped, and size when it is done. out may be in itself
    // when toSize <= fromSize and write <= *read.
    //   ("a-b-", 4, 0, out, 0, 400, {"-", 1, "+=", 2}) => 6, out "a+=b+=", *read 4
    std::size_t (*replaceRun)(char const* in, std::size_t size, std::size_t* read, char* out,
                              std::size_t write, std::size_t outEnd, Replacement64 const& pattern);
    // The deletion of a pattern without a border (no proper prefix of it is also a suffix, so
    // its occurrences never overlap), where a path has a loop for it (null elsewhere): copies
    // in from *read on to out from write on without the occurrences of pattern.from, as far as
    // whole blocks reach, and returns the end of what it wrote; *read is then where it
    // stopped, behind any occurrence it began, and the caller goes on from there (replaceRun
    // does the rest). out may be in itself when write <= *read. pattern.toSize must be 0.
    //   ("a-b-" to 400 bytes, 0, out, 0, {"-", 1, "", 0}) => *read / 2, out "abab...",
    //                                                       *read within the last 64 bytes
    //   (40 bytes, 0, out, 0, {"-", 1, "", 0})            => 0, *read 0 (no whole block)
    std::size_t (*deleteRun)(char const* in, std::size_t size, std::size_t* read, char* out,
                             std::size_t write, Replacement64 const& pattern);
};

// The table of the path in use; the table of a given available path.
Kernels const& ActiveKernels();
Kernels const& KernelsOf(StringsPath path);

extern Kernels const kPortableKernels;
#ifdef TAVREL_STRINGS_X86
extern Kernels const kSse2Kernels;
extern Kernels const kAvx2Kernels;
extern Kernels const kAvx512Kernels;
extern Kernels const kAvx512Vbmi2Kernels;  // the same with deleteRun, for AVX-512 VBMI2
#endif

// What the kernels share: the UTF-8 form rules, one byte at a time.

inline bool IsContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

// The length of the sequence that c begins: 1 for ASCII, 2 to 4 for a lead byte, 0 for a byte
// that cannot begin one (0x80-0xBF, 0xF8-0xFF).
inline std::size_t SequenceLength(char c) {
    unsigned char const b = static_cast<unsigned char>(c);
    if (b < 0x80) {
        return 1;
    }
    if (b < 0xC0) {
        return 0;
    }
    if (b < 0xE0) {
        return 2;
    }
    if (b < 0xF0) {
        return 3;
    }
    return b < 0xF8 ? 4 : 0;
}

// Given that bytes [0, at) are well-formed, the start of the sequence still open at at (whose
// lead lies at most 3 bytes before it), or at itself when none is open.
inline std::size_t OpenSequenceStart(char const* bytes, std::size_t at) {
    for (std::size_t back = 1; back <= 3 && back <= at; ++back) {
        char const c = bytes[at - back];
        if (!IsContinuation(c)) {
            return SequenceLength(c) > back ? at - back : at;
        }
    }
    return at;
}

}  // namespace Tavrel::kernels
