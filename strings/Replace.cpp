#include "strings/Replace.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string_view>

#include "strings/Kernels.h"

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

// Copies n bytes from source to target, which may overlap in either direction. Up to 64 bytes
// are copied inline, as words that may overlap each other, all loads before all stores; this is
// the common case between occurrences.
inline __attribute__((always_inline)) void MoveBytes(char* target, char const* source,
                                                     std::size_t n) {
    struct Word16 {
        unsigned char bytes[16];
    };
    auto const move = [&](auto word) {
        decltype(word) head, tail;
        std::memcpy(&head, source, sizeof head);
        std::memcpy(&tail, source + n - sizeof tail, sizeof tail);
        std::memcpy(target, &head, sizeof head);
        std::memcpy(target + n - sizeof tail, &tail, sizeof tail);
    };
    if (n > 64) {
        std::memmove(target, source, n);
    } else if (n > 32) {
        Word16 words[4];
        std::memcpy(&words[0], source, 16);
        std::memcpy(&words[1], source + 16, 16);
        std::memcpy(&words[2], source + n - 32, 16);
        std::memcpy(&words[3], source + n - 16, 16);
        std::memcpy(target, &words[0], 16);
        std::memcpy(target + 16, &words[1], 16);
        std::memcpy(target + n - 32, &words[2], 16);
        std::memcpy(target + n - 16, &words[3], 16);
    } else if (n > 16) {
        move(Word16{});
    } else if (n >= 8) {
        move(std::uint64_t{});
    } else if (n >= 4) {
        move(std::uint32_t{});
    } else if (n > 0) {
        char const first = source[0], middle = source[n / 2], last = source[n - 1];
        target[0] = first;
        target[n / 2] = middle;
        target[n - 1] = last;
    }
}

// Whether the n bytes at a and b are equal; up to 64 bytes are compared inline, 8 at a time
// with the last word overlapping, reading no byte outside them.
inline __attribute__((always_inline)) bool EqualBytes(char const* a, char const* b, std::size_t n) {
    auto const word = [](char const* at) {
        std::uint64_t value;
        std::memcpy(&value, at, sizeof value);
        return value;
    };
    if (n > 64) {
        return std::memcmp(a, b, n) == 0;
    }
    if (n >= 8) {
        std::uint64_t differ = word(a + n - 8) ^ word(b + n - 8);
        for (std::size_t k = 0; k + 8 < n; k += 8) {
            differ |= word(a + k) ^ word(b + k);
        }
        return differ == 0;
    }
    if (n >= 4) {
        std::uint32_t a1, a2, b1, b2;
        std::memcpy(&a1, a, 4);
        std::memcpy(&b1, b, 4);
        std::memcpy(&a2, a + n - 4, 4);
        std::memcpy(&b2, b + n - 4, 4);
        return ((a1 ^ b1) | (a2 ^ b2)) == 0;
    }
    return n == 0 || (a[0] == b[0] && a[n / 2] == b[n / 2] && a[n - 1] == b[n - 1]);
}

// A chunk of bytes copied through registers: every byte is read before any is written.
constexpr std::size_t kChunk = 64;
struct Chunk {
    unsigned char bytes[kChunk];
};

// Copies n bytes from source to target, which may overlap. When room (the bytes that may be
// read at source and written at target) holds a whole chunk, a piece of up to kChunk bytes is
// copied as the whole chunk, with no branch on its length; the bytes behind the piece then
// hold whatever followed source.
inline __attribute__((always_inline)) void CopyPiece(char* target, char const* source,
                                                     std::size_t n, std::size_t room) {
    if (n <= kChunk && room >= kChunk) {
        Chunk chunk;
        std::memcpy(&chunk, source, kChunk);
        std::memcpy(target, &chunk, kChunk);
        return;
    }
    MoveBytes(target, source, n);
}

// Finds the occurrences of from (not empty) in text, left to right and without overlaps. The
// kernel of the path in use names the starts whose first, middle and last bytes agree with
// from's, 64 at a time, and only they are compared in full (up to three bytes, each of them
// is an occurrence).
class OccurrenceScanner {
public:
    OccurrenceScanner(std::string_view const& text, std::string_view const& from)
        : mText(text),
          mFrom(from),
          mKernels(kernels::ActiveKernels()),
          mLastStart(text.size() >= from.size() ? text.size() - from.size() : kNotFound),
          mFilter{{Byte(from.front()), Byte(from.front())},
                  {Byte(from[from.size() / 2]), Byte(from[from.size() / 2])},
                  {Byte(from.back()), Byte(from.back())},
                  from.size() / 2,
                  from.size() - 1} {}

    // The first occurrence at or after pos, or kNotFound.
    std::size_t First(std::size_t pos) const {
        std::size_t found = kNotFound;
        Visit(pos, [&found](std::size_t at) {
            found = at;
            return false;
        });
        return found;
    }

    // Calls visit(at) for each occurrence from first on, in order; first must be one.
    // NOTE: visit may write into the text below the end of the occurrence it is given: the
    // scanner never reads there again.
    template <class Visitor>
    void EachFrom(std::size_t first, Visitor const& visit) const {
        visit(first);
        Visit(first + mFrom.size(), [&visit](std::size_t at) {
            visit(at);
            return true;
        });
    }

private:
    static unsigned char Byte(char c) { return static_cast<unsigned char>(c); }

    // Whether the bytes between the first and the last agree, at a start whose first, middle
    // and last bytes do.
    bool IsOccurrence(std::size_t start) const {
        return mFrom.size() <= 3 ||
               EqualBytes(mText.data() + start + 1, mFrom.data() + 1, mFrom.size() - 2);
    }

    // Calls more(at) for each occurrence at or after pos while it returns true.
    template <class More>
    void Visit(std::size_t pos, More const& more) const {
        std::size_t const size = mFrom.size();
        while (mLastStart != kNotFound && pos <= mLastStart) {
            std::uint64_t mask = 0;
            std::size_t const block =
                mKernels.findCandidates(mText.data(), pos, mLastStart, mFilter, &mask);
            if (block == kNotFound) {
                return;
            }
            pos = block + 64;
            while (mask != 0) {
                std::size_t const at = block + static_cast<std::size_t>(__builtin_ctzll(mask));
                if (!IsOccurrence(at)) {
                    mask &= mask - 1;
                    continue;
                }
                if (!more(at)) {
                    return;
                }
                std::size_t const skip = at + size - block;  // no overlaps: go on behind it
                if (skip >= 64) {
                    pos = at + size;
                    break;
                }
                mask &= ~std::uint64_t{0} << skip;
            }
        }
    }

    std::string_view mText;
    std::string_view mFrom;
    kernels::Kernels const& mKernels;
    std::size_t mLastStart;  // the last start at which from fits, or kNotFound
    kernels::StartFilter mFilter;
};

// to, with room behind it for a whole chunk when it is short.
struct Replacement {
    explicit Replacement(std::string_view const& to) : text(to), chunked(to.size() <= kChunk) {
        if (chunked) {
            std::memcpy(padded.bytes, to.data(), to.size());
        }
    }
    char const* Bytes() const {
        return chunked ? reinterpret_cast<char const*>(padded.bytes) : text.data();
    }
    // How many bytes may be read at Bytes().
    std::size_t Readable() const { return chunked ? kChunk : text.size(); }

    std::string_view text;
    bool chunked;
    Chunk padded{};
};

// Replaces, when to is as long as from, by overwriting each occurrence: nothing else moves.
void ReplaceSameSize(std::string& text, std::string_view const& to,
                     OccurrenceScanner const& scanner, std::size_t first) {
    char* const bytes = text.data();
    scanner.EachFrom(first, [&](std::size_t at) { MoveBytes(bytes + at, to.data(), to.size()); });
}

// Replaces, when to is shorter than from, by compacting text in place: each kept stretch
// moves down once, so the tail is not moved at every occurrence. A chunk may be written
// wherever it ends before the end of the occurrence just found: the scanner has read
// everything there, and what the chunk leaves behind the piece is written over later or cut.
void ReplaceShrinking(std::string& text, std::string_view const& from, std::string_view const& to,
                      OccurrenceScanner const& scanner, std::size_t first) {
    char* const bytes = text.data();
    std::size_t const size = text.size();
    Replacement const replacement(to);
    // The bytes before the first occurrence stay where they are.
    std::size_t read = first;
    std::size_t write = first;
    scanner.EachFrom(first, [&](std::size_t at) {
        std::size_t const end = at + from.size();
        CopyPiece(bytes + write, bytes + read, at - read, std::min(end - write, size - read));
        write += at - read;
        CopyPiece(bytes + write, replacement.Bytes(), to.size(),
                  std::min(end - write, replacement.Readable()));
        write += to.size();
        read = end;
    });
    std::size_t const rest = size - read;
    MoveBytes(bytes + write, bytes + read, rest);
    text.resize(write + rest);
}

// Appends pieces to a string: short ones gather in a buffer of its own and go in together,
// long ones go in at once, so that a text with an occurrence every few bytes does not pay a
// call to append for each piece.
class PieceWriter {
public:
    explicit PieceWriter(std::string& out) : mOut(out) {}

    // Appends n bytes from bytes, of which readable may be read.
    void Put(char const* bytes, std::size_t n, std::size_t readable) {
        if (n <= kChunk && readable >= kChunk) {
            if (mUsed > kBufferSize) {
                Flush();
            }
            CopyPiece(mBuffer + mUsed, bytes, n, kChunk);
            mUsed += n;
            return;
        }
        if (n > kDirect) {
            Flush();
            mOut.append(bytes, n);
            return;
        }
        if (kBufferSize + kChunk - mUsed < n) {
            Flush();
        }
        MoveBytes(mBuffer + mUsed, bytes, n);
        mUsed += n;
    }

    void Flush() {
        mOut.append(mBuffer, mUsed);
        mUsed = 0;
    }

private:
    static constexpr std::size_t kBufferSize = 4096;
    static constexpr std::size_t kDirect = 256;

    std::string& mOut;
    std::size_t mUsed = 0;  // at most kBufferSize before a chunk is written
    char mBuffer[kBufferSize + kChunk];
};

// The occurrences in the first kSample bytes from the first one, counted to guess the size of
// a growing result. A wrong guess costs time, never a wrong result.
struct Sample {
    static constexpr std::size_t kSample = 16384;

    Sample(std::string_view const& text, std::string_view const& from, std::size_t first)
        : span(text.size() - first), sampled(std::min(span, kSample)) {
        OccurrenceScanner(text.substr(0, first + sampled), from)
            .EachFrom(first, [this](std::size_t) { ++count; });
    }

    // How many occurrences the whole text likely holds.
    std::size_t LikelyCount() const {
        if (sampled == span) {
            return count;
        }
        return count / 8 +
               static_cast<std::size_t>(static_cast<double>(count) * static_cast<double>(span) /
                                        static_cast<double>(sampled));
    }

    std::size_t span;     // the bytes from the first occurrence on
    std::size_t sampled;  // how many of them were looked at
    std::size_t count = 0;
};

// How many bytes the result of growing text likely needs.
std::size_t LikelyResultSize(std::string const& text, Sample const& sample, std::size_t growth) {
    std::size_t const room = (text.max_size() - text.size()) / growth;
    return text.size() + std::min(sample.LikelyCount(), room) * growth;
}

// Replaces, when to is longer than from, by building the result in a new string, which is
// swapped in; the text is read once, from left to right.
void ReplaceGrowing(std::string& text, std::string_view const& from, std::string_view const& to,
                    OccurrenceScanner const& scanner, std::size_t first, Sample const& sample) {
    std::string result;
    result.reserve(LikelyResultSize(text, sample, to.size() - from.size()));
    {
        PieceWriter writer(result);
        Replacement const replacement(to);
        char const* const in = text.data();
        std::size_t const size = text.size();
        std::size_t read = 0;
        scanner.EachFrom(first, [&](std::size_t at) {
            writer.Put(in + read, at - read, size - read);
            writer.Put(replacement.Bytes(), to.size(), replacement.Readable());
            read = at + from.size();
        });
        writer.Put(in + read, size - read, size - read);
        writer.Flush();
    }
    text.swap(result);
}

// Whether a proper prefix of from is also a suffix of it, so that two occurrences may overlap.
//   "aa" => true     "abab" => true     "<b>" => false     "x" => false
bool HasBorder(std::string_view const& from) {
    for (std::size_t shift = 1; shift < from.size(); ++shift) {
        if (from.substr(shift) == from.substr(0, from.size() - shift)) {
            return true;
        }
    }
    return false;
}

// The replacement by the path's own loop (kernels::Kernels::replaceRun). In place when to is
// not longer than from; a deletion whose occurrences cannot overlap goes through the path's
// deletion loop first, where it has one, which leaves only the last bytes to replaceRun.
// A longer to builds the result in a new string, written straight into its storage from a
// likely size; where that proves short, the string grows and the loop goes on from where it
// stopped.
void ReplaceByRun(std::string& text, std::string_view const& from, std::string_view const& to,
                  std::size_t first, kernels::Kernels const& kernels, Sample const* sample) {
    kernels::Replacement64 const pattern{from.data(), from.size(), to.data(), to.size()};
    std::size_t const size = text.size();
    std::size_t read = first;
    if (sample == nullptr) {
        char* const bytes = text.data();
        std::size_t write = first;
        if (to.empty() && kernels.deleteRun != nullptr && !HasBorder(from)) {
            write = kernels.deleteRun(bytes, size, &read, bytes, write, pattern);
        }
        std::size_t const end = kernels.replaceRun(bytes, size, &read, bytes, write,
                                                   static_cast<std::size_t>(-1), pattern);
        text.resize(end);
        return;
    }
    std::string result;
    // NOTE: the loop stops where fewer than kRunRoom bytes are left, also before the last ones.
    std::size_t room = LikelyResultSize(text, *sample, to.size() - from.size()) + kernels::kRunRoom;
    std::size_t written = 0;
    while (read < size) {
        // NOTE: resize_and_overwrite keeps the bytes written so far and leaves the rest of the
        // storage as it is, so that each byte of the result is written once.
        result.resize_and_overwrite(room, [&](char* out, std::size_t capacity) {
            if (written == 0) {
                std::memcpy(out, text.data(), first);
                written = first;
            }
            written = kernels.replaceRun(text.data(), size, &read, out, written, capacity, pattern);
            return written;
        });
        room = room < result.max_size() / 2 ? room * 2 : result.max_size();
    }
    text.swap(result);
}

// The whole-text replacement for views that do not look into text.
void ReplaceViews(std::string& text, std::string_view const& from, std::string_view const& to) {
    if (text.empty() || from.empty()) {
        return;
    }
    OccurrenceScanner const scanner(text, from);
    std::size_t const first = scanner.First(0);
    if (first == kNotFound) {
        return;
    }
    // The path's own loop where it has one and the pieces fit it.
    kernels::Kernels const& kernels = kernels::ActiveKernels();
    if (kernels.replaceRun != nullptr && from.size() <= 64 && to.size() <= 64) {
        if (to.size() <= from.size()) {
            ReplaceByRun(text, from, to, first, kernels, nullptr);
        } else {
            Sample const sample(text, from, first);
            ReplaceByRun(text, from, to, first, kernels, &sample);
        }
    } else if (to.size() == from.size()) {
        ReplaceSameSize(text, to, scanner, first);
    } else if (to.size() < from.size()) {
        ReplaceShrinking(text, from, to, scanner, first);
    } else {
        ReplaceGrowing(text, from, to, scanner, first, Sample(text, from, first));
    }
}

// NOTE: from and to must not look into text, since text changes while they are read. When a
// caller breaks that rule anyway, they are copied first so that nothing reads freed or moved
// bytes; the result is then that of the same texts held apart.
void ReplaceDetached(std::string& text, std::string_view const& from, std::string_view const& to) {
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
