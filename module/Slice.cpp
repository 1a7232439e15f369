#include <cassert>
#include <cstring>
#include <limits>
#include <memory>

#include "host/ErrorNames.h"
#include "module/Operations.h"
#include "module/Reports.h"
#include "object/Data.h"

using Tavrel::AutoRefPtr;
using Tavrel::Data;
using Tavrel::IContext;
using Tavrel::IDataRef;

namespace {

// total - offset for an offset below total; saturates instead of overflowing when a
// negative offset lies far below (offset -2^63 on a buffer of 10 bytes).
long long DistanceToEnd(long long total, long long offset) {
    long long distance = 0;
    if (__builtin_sub_overflow(total, offset, &distance)) {
        return std::numeric_limits<long long>::max();
    }
    return distance;
}

// Copies size bytes from offset into a temporary block, then into result.
void CopyThroughBlock(IDataRef const& source, long long offset, long long size, Data& result) {
    auto const n = static_cast<unsigned long long>(size);
    std::unique_ptr<char[]> buffer(new char[n]);
    assert(buffer);
    unsigned long long const delivered =
        source.Read(buffer.get(), n, static_cast<unsigned long long>(offset));
    // NOTE: bytes a short read leaves out are zeroed rather than left as they were, so no
    // stale heap content reaches a script.
    if (delivered < n) {
        std::memset(buffer.get() + delivered, 0, n - delivered);
    }
    result.Assign(buffer.get(), n);
}

}  // namespace

AutoRefPtr<IDataRef> BinarySlice(AutoRefPtr<IDataRef> const& data, long long offset,
                                 long long size, IContext* context) {
    AutoRefPtr<Data> result(new Data());
    if (!data) {
        Tavrel::ReportError(context, Tavrel::TavrelError::InvalidUsage(),
                            Tavrel::kReason_NoBinaryDataGiven);
        return result;
    }
    if (offset < 0 || size < 0) {
        Tavrel::ReportError(context, Tavrel::TavrelError::InvalidArgument(),
                            Tavrel::NegativeRangeReason("Cannot slice with negative offset or size.",
                                                        offset, "Size", size));
        return result;
    }
    long long const total = static_cast<long long>(data->GetSize());
    if (offset >= total || size == 0) {
        return result;
    }
    if (size > total - offset) {
        size = total - offset;
    }
    CopyThroughBlock(*data.get(), offset, size, *result.get());
    return result;
}

AutoRefPtr<IDataRef> BinarySliceRight(AutoRefPtr<IDataRef> const& data, long long offset,
                                      IContext* context) {
    long long const total = data ? static_cast<long long>(data->GetSize()) : 0;
    long long const size = offset < total ? DistanceToEnd(total, offset) : 0;
    return BinarySlice(data, offset, size, context);
}
