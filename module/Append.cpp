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

}  // namespace

AutoRefPtr<IDataRef> BinaryAppend(AutoRefPtr<IDataRef> const& first,
                                  AutoRefPtr<IDataRef> const& second, IContext* context) {
    AutoRefPtr<Data> result(new Data());
    if (ReportMissingArgument(first, second, context)) {
        return result;
    }
    result->PushBack(first);
    result->PushBack(second);
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
