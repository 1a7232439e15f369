#include <optional>
#include <string>

#include "module/Operations.h"
#include "module/Range.h"
#include "module/Reports.h"
#include "object/AppendFromRead.h"

using Tavrel::AutoRefPtr;
using Tavrel::IContext;
using Tavrel::IDataRef;

namespace {

constexpr Tavrel::RangeWords kPartToStringRange{"Cannot convert binary part to string.", "Size"};

}  // namespace

std::string BinaryPartToString(AutoRefPtr<IDataRef> const& data, long long offset, long long size,
                               IContext* context) {
    std::string result;
    if (!data) {
        Tavrel::ReportNoBinaryData(context);
        return result;
    }
    std::optional<Tavrel::ByteRange> const range = Tavrel::TakeRange(
        context, kPartToStringRange, offset, size, [&data] { return data->GetSize(); });
    if (range) {
        // One Read of the whole range into the result; what it does not write stays zero.
        Tavrel::AppendFromRead(result, *data.get(), range->count, range->offset);
    }
    return result;
}

std::string BinaryToString(AutoRefPtr<IDataRef> const& data, IContext* context) {
    if (!data) {
        Tavrel::ReportNoBinaryData(context);
        return std::string();
    }
    return BinaryPartToString(data, 0, static_cast<long long>(data->GetSize()), context);
}
