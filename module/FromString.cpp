#include <cassert>

#include "host/ErrorNames.h"
#include "module/Operations.h"
#include "module/Reports.h"
#include "object/Data.h"

using Tavrel::AutoRefPtr;
using Tavrel::Data;
using Tavrel::IContext;
using Tavrel::IDataRef;

AutoRefPtr<IDataRef> ToDataRef(std::string_view text) {
    AutoRefPtr<IDataRef> data(new Data(text));
    assert(data);
    return data;
}

AutoRefPtr<IDataRef> BinarySetFromString(std::string_view text) { return ToDataRef(text); }

AutoRefPtr<IDataRef> ToDataRefPart(std::string_view text, long long offset, long long count,
                                   IContext* context) {
    AutoRefPtr<IDataRef> data(nullptr);
    if (offset < 0 || count < 0) {
        Tavrel::ReportError(context, Tavrel::TavrelError::InvalidArgument(),
                            Tavrel::NegativeRangeReason(
                                "Cannot create DATAREF from string with negative offset or count.",
                                offset, "Count", count));
        data.reset(new Data());
        return data;
    }
    unsigned long long const size = text.size();
    unsigned long long const first = static_cast<unsigned long long>(offset);
    if (first >= size) {
        data.reset(new Data());
        return data;
    }
    unsigned long long n = static_cast<unsigned long long>(count);
    if (n > size - first) {
        n = size - first;
    }
    data.reset(new Data(text.data() + first, n));
    assert(data);
    return data;
}
