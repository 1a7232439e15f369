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

constexpr Tavrel::RangeWords kCopyRange{"Cannot copy with negative offset or count.", "Count"};

}  // namespace

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
    std::optional<Tavrel::ByteRange> const range =
        Tavrel::TakeRange(context, kCopyRange, offset, count, [&data] { return data->GetSize(); });
    if (range && range->count > 0) {
        result->PushBack(data, range->count, range->offset);
    }
    return result;
}
