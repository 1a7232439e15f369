#include <string>

#include "host/ErrorNames.h"
#include "module/Operations.h"
#include "module/Reports.h"
#include "object/AppendFromRead.h"

using Tavrel::AutoRefPtr;
using Tavrel::IContext;
using Tavrel::IDataRef;

std::string BinaryPartToString(AutoRefPtr<IDataRef> const& data, long long offset, long long size,
                               IContext* context) {
    std::string result;
    if (!data) {
        Tavrel::ReportNoBinaryData(context);
        return result;
    }
    if (offset < 0 || size < 0) {
        Tavrel::ReportError(context, Tavrel::TavrelError::InvalidArgument(),
                            Tavrel::NegativeRangeReason("Cannot convert binary part to string.",
                                                        offset, "Size", size));
        return result;
    }
    // NOTE: a size beyond the signed range turns negative here and reads as "nothing".
    long long const total = static_cast<long long>(data->GetSize());
    if (offset >= total || size < 1) {
        return result;
    }
    long long const n = size > total - offset ? total - offset : size;
    // One Read of the whole range straight into the result; what it leaves out is zero.
    Tavrel::AppendFromRead(result, *data.get(), static_cast<unsigned long long>(n),
                           static_cast<unsigned long long>(offset));
    return result;
}

std::string BinaryToString(AutoRefPtr<IDataRef> const& data, IContext* context) {
    if (!data) {
        Tavrel::ReportNoBinaryData(context);
        return std::string();
    }
    return BinaryPartToString(data, 0, static_cast<long long>(data->GetSize()), context);
}
