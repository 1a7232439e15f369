#include <limits>
#include <optional>

#include "module/Operations.h"
#include "module/Range.h"
#include "module/Reports.h"
#include "object/Data.h"

using Tavrel::AutoRefPtr;
using Tavrel::Data;
using Tavrel::IContext;
using Tavrel::IDataRef;

namespace {

constexpr Tavrel::RangeWords kSliceRange{"Cannot slice with negative offset or size.", "Size"};

// total - offset for an offset below total; saturates instead of overflowing when a
// negative offset lies far below (offset -2^63 on a buffer of 10 bytes).
long long DistanceToEnd(long long total, long long offset) {
    long long distance = 0;
    if (__builtin_sub_overflow(total, offset, &distance)) {
        return std::numeric_limits<long long>::max();
    }
    return distance;
}

}  // namespace

AutoRefPtr<IDataRef> BinarySlice(AutoRefPtr<IDataRef> const& data, long long offset, long long size,
                                 IContext* context) {
    AutoRefPtr<Data> result(new Data());
    if (!data) {
        Tavrel::ReportNoBinaryData(context);
        return result;
    }
    std::optional<Tavrel::ByteRange> const range =
        Tavrel::TakeRange(context, kSliceRange, offset, size, [&data] { return data->GetSize(); });
    if (range) {
        // NOTE: the range goes straight into the result, zeroed first, with one Read, not
        // through a temporary block: the bytes are the same (what the Read wrote, zero
        // elsewhere), but a block copies every byte twice and, being a transient allocation as
        // large as the slice, can make the C library's heap shrink and regrow on every call of
        // a script loop.
        result->AppendRead(*data.get(), range->count, range->offset);
    }
    return result;
}

AutoRefPtr<IDataRef> BinarySliceRight(AutoRefPtr<IDataRef> const& data, long long offset,
                                      IContext* context) {
    long long const total = data ? static_cast<long long>(data->GetSize()) : 0;
    long long const size = offset < total ? DistanceToEnd(total, offset) : 0;
    return BinarySlice(data, offset, size, context);
}
