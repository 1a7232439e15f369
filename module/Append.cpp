#include "host/ErrorNames.h"
#include "module/Operations.h"
#include "module/Reports.h"
#include "object/Data.h"

using Tavrel::AutoRefPtr;
using Tavrel::Data;
using Tavrel::IContext;
using Tavrel::IDataRef;

namespace {

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

// Appends all of first, then all of second, to result, which is first given room for both
// so that the bytes of first are not moved again when second comes in. Each source is asked
// for its size twice and read once, as PushBack(source) does.
void AppendWhole(Data& result, AutoRefPtr<IDataRef> const& first,
                 AutoRefPtr<IDataRef> const& second) {
    unsigned long long const firstSize = first->GetSize();
    unsigned long long const secondSize = second->GetSize();
    unsigned long long total = 0;
    if (!__builtin_add_overflow(firstSize, secondSize, &total)) {
        result.Reserve(total);
    }
    result.PushBack(first, firstSize, 0);
    result.PushBack(second, secondSize, 0);
}

}  // namespace

AutoRefPtr<IDataRef> BinaryAppend(AutoRefPtr<IDataRef> const& first,
                                  AutoRefPtr<IDataRef> const& second, IContext* context) {
    AutoRefPtr<Data> result(new Data());
    if (ReportMissingArgument(first, second, context)) {
        return result;
    }
    AppendWhole(*result.get(), first, second);
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
    if (offset < 0 || count < 0) {
        Tavrel::ReportError(
            context, Tavrel::TavrelError::InvalidArgument(),
            Tavrel::NegativeRangeReason("Cannot append with negative offset or count.", offset,
                                        "Count", count));
        return result;
    }
    long long const total = static_cast<long long>(second->GetSize());
    if (offset >= total || count == 0) {
        return result;
    }
    if (count > total - offset) {
        count = total - offset;
    }
    result->PushBack(second, static_cast<unsigned long>(count), static_cast<unsigned long>(offset));
    return result;
}
