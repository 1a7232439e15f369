// Range: the one rule by which every ranged operation takes an offset and a count of bytes.
// A negative number is an error, reported once; an offset at or past the end, a count of 0
// and a count past the end are not: the range is cut to what exists and may be empty. It
// reads no bytes and knows nothing of the operation's result.
#pragma once

#include <optional>

#include "host/IContext.h"

namespace Tavrel {

// count bytes from offset, cut to what exists; count 0 means there is nothing to take.
struct ByteRange {
    unsigned long long offset = 0;
    unsigned long long count = 0;
};

// How an operation words the report of a negative number: its lead sentence and the name it
// gives the count ("Size" or "Count").
struct RangeWords {
    char const* lead;
    char const* countName;
};

// offset and count (neither negative) cut to total bytes. total is signed: a size beyond
// the range of long long reads as negative, and so as nothing.
//   (2, 5, 10) => {2, 5}    (8, 5, 10) => {8, 2}    (0, LLONG_MAX, 10) => {0, 10}
//   (10, 1, 10) => {}       (99, 1, 10) => {}       (3, 0, 10) => {}    (0, 1, -1) => {}
ByteRange CutToSize(long long offset, long long count, long long total);

// Reports a negative offset or count through context, as the operation words it:
//   ({"Cannot slice with negative offset or size.", "Size"}, -1, 5) => InvalidArgument,
//   "Cannot slice with negative offset or size. Offset: \"-1\" Size: \"5\""
void ReportNegativeRange(IContext* context, RangeWords const& words, long long offset,
                         long long count);

// The range rule: offset or count negative => one report, and nullopt, without asking total;
// otherwise the range cut to total(), which is asked once (a host buffer's size is asked only
// for a range that is not refused).
template <class Total>
std::optional<ByteRange> TakeRange(IContext* context, RangeWords const& words, long long offset,
                                   long long count, Total const& total) {
    if (offset < 0 || count < 0) {
        ReportNegativeRange(context, words, offset, count);
        return std::nullopt;
    }
    return CutToSize(offset, count, static_cast<long long>(total()));
}

}  // namespace Tavrel
