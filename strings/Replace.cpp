#include "strings/Replace.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <new>
#include <string_view>

#if defined(__SSE2__) && !defined(TAVREL_STRINGS_NO_SIMD)
#include <emmintrin.h>
#define TAVREL_REPLACE_SSE2 1
#endif

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

// Whether from (at least one byte) occurs at at. A plain loop: candidates are rare, and short
// compares are cheaper inline than through a call.
bool OccursAt(char const* at, std::string_view const& from) {
    for (std::size_t k = 0; k < from.size(); ++k) {
        if (at[k] != from[k]) {
            return false;
        }
    }
    return true;
}

// Copies n bytes from source to target, which may overlap in either direction. Up to 16 bytes
// are copied inline (all loads before all stores); this is the common case between occurrences.
void MoveBytes(char* target, char const* source, std::size_t n) {
    auto const move = [&](auto word) {
        decltype(word) head, tail;
        std::memcpy(&head, source, sizeof head);
        std::memcpy(&tail, source + n - sizeof tail, sizeof tail);
        std::memcpy(target, &head, sizeof head);
        std::memcpy(target + n - sizeof tail, &tail, sizeof tail);
    };
    if (n > 16) {
        std::memmove(target, source, n);
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

// Finds the occurrences of from (not empty) in text one after another, left to right. The
// positions asked for never decrease, so a block of candidates is kept between calls.
class OccurrenceScanner {
public:
    OccurrenceScanner(std::string_view const& text, std::string_view const& from)
        : mText(text), mFrom(from) {
#ifdef TAVREL_REPLACE_SSE2
        mHead = _mm_set1_epi8(from.front());
        mTail = _mm_set1_epi8(from.back());
#endif
    }

    // The first occurrence at or after pos, or kNotFound.
    std::size_t Next(std::size_t pos) {
        if (pos > mText.size() || mText.size() - pos < mFrom.size()) {
            return kNotFound;
        }
#ifdef TAVREL_REPLACE_SSE2
        return NextInBlocks(pos);
#else
        return NextByMemchr(pos);
#endif
    }

    // The number of occurrences at or after pos, as Next would find them one after another.
    std::size_t Count(std::size_t pos) {
#ifdef TAVREL_REPLACE_SSE2
        if (mFrom.size() == 1 || (mFrom.size() == 2 && mFrom[0] != mFrom[1])) {
            bool const room = mText.size() >= mFrom.size() && pos <= LastStart();
            return room ? CountCandidates(pos) : 0;
        }
#endif
        std::size_t count = 0;
        for (std::size_t at = Next(pos); at != kNotFound; at = Next(at + mFrom.size())) {
            ++count;
        }
        return count;
    }

private:
#ifdef TAVREL_REPLACE_SSE2
    // Candidates are the starts whose byte equals from's first byte and whose byte m - 1 further
    // equals its last byte, found 16 at a time; only they are compared in full.
    std::size_t NextInBlocks(std::size_t pos) {
        if (mHasBlock && pos - mBlock < 16) {
            mMask &= ~0u << (pos - mBlock);
        } else {
            LoadBlock(pos);
        }
        for (;;) {
            for (; mMask != 0; mMask &= mMask - 1) {
                std::size_t const start = mBlock + static_cast<std::size_t>(__builtin_ctz(mMask));
                if (OccursAt(mText.data() + start, mFrom)) {
                    mMask &= mMask - 1;
                    return start;
                }
            }
            if (LastStart() - mBlock < 16) {
                return kNotFound;
            }
            LoadBlock(mBlock + 16);
        }
    }

    std::size_t LastStart() const { return mText.size() - mFrom.size(); }

    // The candidates among the starts block..block + 15 that exist; near the end of text they
    // are looked at one by one, so no load reaches behind it.
    void LoadBlock(std::size_t block) {
        mHasBlock = true;
        mBlock = block;
        if (LastStart() - block >= 15) {
            mMask = static_cast<unsigned>(_mm_movemask_epi8(Hits(block)));
            return;
        }
        mMask = 0;
        for (std::size_t k = 0; k <= LastStart() - block; ++k) {
            if (IsCandidate(block + k)) {
                mMask |= 1u << k;
            }
        }
    }

    // Lanes of the 16 starts from block on whose first and last bytes agree with from's.
    __m128i Hits(std::size_t block) const {
        auto const load = [](char const* p) {
            return _mm_loadu_si128(reinterpret_cast<__m128i const*>(p));
        };
        char const* const at = mText.data() + block;
        return _mm_and_si128(_mm_cmpeq_epi8(load(at), mHead),
                             _mm_cmpeq_epi8(load(at + mFrom.size() - 1), mTail));
    }

    bool IsCandidate(std::size_t start) const {
        return mText[start] == mFrom.front() && mText[start + mFrom.size() - 1] == mFrom.back();
    }

    // With one byte, or two different bytes, a candidate is an occurrence and two occurrences
    // cannot overlap, so the count is the number of candidates: summed 16 lanes at a time in
    // byte counters that are added up before they can overflow.
    std::size_t CountCandidates(std::size_t pos) const {
        std::size_t total = 0;
        std::size_t p = pos;
        while (p <= LastStart() && LastStart() - p >= 15) {
            __m128i counters = _mm_setzero_si128();
            for (int round = 0; round < 255 && p <= LastStart() && LastStart() - p >= 15;
                 ++round, p += 16) {
                counters = _mm_sub_epi8(counters, Hits(p));  // a hit lane holds -1
            }
            __m128i const sums = _mm_sad_epu8(counters, _mm_setzero_si128());
            total += static_cast<std::size_t>(_mm_cvtsi128_si32(sums)) +
                     static_cast<std::size_t>(_mm_cvtsi128_si32(_mm_srli_si128(sums, 8)));
        }
        for (; p <= LastStart(); ++p) {
            total += IsCandidate(p) ? 1 : 0;
        }
        return total;
    }

    __m128i mHead, mTail;
    bool mHasBlock = false;
    std::size_t mBlock = 0;
    unsigned mMask = 0;  // candidates at mBlock + bit index not yet looked at
#else
    // memchr finds each candidate for the first byte and the whole of from is then compared.
    std::size_t NextByMemchr(std::size_t pos) const {
        char const* const begin = mText.data();
        char const* const lastStart = begin + (mText.size() - mFrom.size());
        for (char const* at = begin + pos; at <= lastStart; ++at) {
            std::size_t const span = static_cast<std::size_t>(lastStart - at) + 1;
            at = static_cast<char const*>(std::memchr(at, mFrom.front(), span));
            if (at == nullptr) {
                return kNotFound;
            }
            if (OccursAt(at, mFrom)) {
                return static_cast<std::size_t>(at - begin);
            }
        }
        return kNotFound;
    }
#endif

    std::string_view mText;
    std::string_view mFrom;
};

// Replaces, when to is not longer than from, by compacting text in place: each kept stretch
// moves down once, so the tail is not moved at every occurrence. The scanner reads only bytes
// behind the last occurrence, which the writes never reach.
void ReplaceShrinking(std::string& text, std::string_view const& from, std::string_view const& to,
                      std::size_t at) {
    OccurrenceScanner scanner(text, from);
    char* const bytes = text.data();
    std::size_t read = 0;
    std::size_t write = 0;
    for (; at != kNotFound; at = scanner.Next(read)) {
        if (write != read) {  // equal sizes keep every byte in place
            MoveBytes(bytes + write, bytes + read, at - read);
        }
        write += at - read;
        MoveBytes(bytes + write, to.data(), to.size());
        write += to.size();
        read = at + from.size();
    }
    std::size_t const rest = text.size() - read;
    if (write != read) {
        MoveBytes(bytes + write, bytes + read, rest);
    }
    text.resize(write + rest);
}

// The size of the result of count replacements; a size that cannot exist cannot be allocated.
std::size_t GrownSize(std::string const& text, std::size_t count, std::size_t growth) {
    std::size_t const room = text.max_size() - text.size();
    if (count > room / growth) {
        throw std::bad_alloc();
    }
    return text.size() + count * growth;
}

// Replaces, when to is longer than from, by counting the occurrences first and then building
// the result once in a string of the exact final size, which is swapped in.
void ReplaceGrowing(std::string& text, std::string_view const& from, std::string_view const& to,
                    std::size_t first) {
    std::size_t const count = OccurrenceScanner(text, from).Count(first);
    std::string result(GrownSize(text, count, to.size() - from.size()), '\0');
    char* const out = result.data();
    char const* const in = text.data();
    OccurrenceScanner scanner(text, from);
    std::size_t read = 0;
    std::size_t write = 0;
    for (std::size_t at = first; at != kNotFound; at = scanner.Next(read)) {
        MoveBytes(out + write, in + read, at - read);
        write += at - read;
        MoveBytes(out + write, to.data(), to.size());
        write += to.size();
        read = at + from.size();
    }
    MoveBytes(out + write, in + read, text.size() - read);
    text.swap(result);
}

// The whole-text replacement for views that do not look into text.
void ReplaceViews(std::string& text, std::string_view const& from, std::string_view const& to) {
    if (text.empty() || from.empty()) {
        return;
    }
    std::size_t const first = OccurrenceScanner(text, from).Next(0);
    if (first == kNotFound) {
        return;
    }
    if (to.size() <= from.size()) {
        ReplaceShrinking(text, from, to, first);
    } else {
        ReplaceGrowing(text, from, to, first);
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
