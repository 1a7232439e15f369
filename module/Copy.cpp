#include "host/ErrorNames.h"
#include "module/Operations.h"
#include "module/Reports.h"
#include "object/Data.h"

using Tavrel::AutoRefPtr;
using Tavrel::Data;
using Tavrel::IContext;
using Tavrel::IDataRef;

AutoRefPtr<IDataRef> BinaryCopy(AutoRefPtr<IDataRef> const& data, IContext* context) {
    if (!data) {
        Tavrel::ReportNoBinaryData(context);
        return AutoRefPtr<IDataRef>(nullptr);
    }
    return data->Clone();
}

AutoRefPtr<IDataRef> BinaryCopyPart(AutoRefPtr<IDataRef> const& data, long long offset,
                                    long long count, IContext* context) {
    if (!data) {
        Tavrel::ReportNoBinaryData(context);
        return AutoRefPtr<IDataRef>(nullptr);
    }
    AutoRefPtr<Data> result(new Data());
    if (offset < 0 || count < 0) {
        Tavrel::ReportError(
            context, Tavrel::TavrelError::InvalidArgument(),
            Tavrel::NegativeRangeReason("Cannot copy with negative offset or count.", offset,
                                        "Count", count));
        return result;
    }
    long long const total = static_cast<long long>(data->GetSize());
    if (offset >= total || count == 0) {
        return result;
    }
    if (count > total - offset) {
        count = total - offset;
    }
    result->PushBack(data, static_cast<unsigned long>(count), static_cast<unsigned long>(offset));
    return result;
}
