#include <optional>

#include "host/ErrorNames.h"
#include "module/Operations.h"
#include "module/Range.h"
#include "module/Reports.h"
#include "object/Data.h"

using Tavrel::AutoRefPtr;
using Tavrel::Data;
using Tavrel::IContext;
using Tavrel::IDataRef;

namespace {

constexpr Tavrel::RangeWords kAppendRange{"Cannot append with negative offset or count.", "Count"};

// Reports a missing argument, the first one before the second; true when one was missing.
bool ReportMissingArgument(AutoRefPtr<IDataRef> const& first, AutoRefPtr<IDataRef> const& second,
                           IContext* context) {
    if (!first) {
        Tavrel::ReportError(context, Tavrel::TavrelError::InvalidUsage(),
                            "First parameter is invalid!");
        return true;
    }
    if (!second) {
        Tavrel::ReportError(context, Tavrel::TavrelError::InvalidUsage(),
                            "Second parameter is invalid!");
        return true;
    }
    return false;
}

// Appends all of first, then all of second, to result. Each source is asked for its size
// twice and read once, as PushBack(source) does, and first is read before second is asked
// anything, so a host sees the calls in the order of the two appends.
// NOTE: the size of second is not known when first comes in, so the result is given room
// for twice first, as a string grown by appending would have; second then moves no byte of
// first when it is no larger. The module writes nothing into the room that stays unused.
void AppendBoth(Data& result, AutoRefPtr<IDataRef> const& first,
                AutoRefPtr<IDataRef> const& second) {
    unsigned long long const firstSize = first->GetSize();
    unsigned long long room = 0;
    if (!__builtin_mul_overflow(firstSize, 2ULL, &room)) {
        result.Reserve(room);
    }
    result.PushBack(first, firstSize, 0);
    result.PushBack(second);
}

}  // namespace

AutoRefPtr<IDataRef> BinaryAppend(AutoRefPtr<IDataRef> const& first,
                                  AutoRefPtr<IDataRef> const& second, IContext* context) {
    AutoRefPtr<Data> result(new Data());
    if (ReportMissingArgument(first, second, context)) {
        return result;
    }
    AppendBoth(*result.get(), first, second);
    return result;
}

AutoRefPtr<IDataRef> BinaryAppendPart(AutoRefPtr<IDataRef> const& first,
                                      AutoRefPtr<IDataRef> const& second, long long offset,
                                      long long count, IContext* context) {
    AutoRefPtr<Data> result(new Data());
    if (ReportMissingArgument(first, second, context)) {
        return result;
    }
    // NOTE: first goes in before the numbers are looked at, so a bad range still gives it.
    result->PushBack(first);
    std::optional<Tavrel::ByteRange> const range = Tavrel::TakeRange(
        context, kAppendRange, offset, count, [&second] { return second->GetSize(); });
    if (range && range->count > 0) {
        result->PushBack(second, range->count, range->offset);
    }
    return result;
}
