#include <cassert>
#include <optional>

#include "module/Operations.h"
#include "module/Range.h"
#include "object/Data.h"

using Tavrel::AutoRefPtr;
using Tavrel::Data;
using Tavrel::IContext;
using Tavrel::IDataRef;

namespace {

constexpr Tavrel::RangeWords kFromStringRange{
    "Cannot create DATAREF from string with negative offset or count.", "Count"};

}  // namespace

AutoRefPtr<IDataRef> ToDataRef(std::string_view text) {
    AutoRefPtr<IDataRef> data(new Data(text));
    assert(data);
    return data;
}

AutoRefPtr<IDataRef> BinarySetFromString(std::string_view text) { return ToDataRef(text); }

AutoRefPtr<IDataRef> ToDataRefPart(std::string_view text, long long offset, long long count,
                                   IContext* context) {
    std::optional<Tavrel::ByteRange> const range =
        Tavrel::TakeRange(context, kFromStringRange, offset, count, [text] { return text.size(); });
    AutoRefPtr<IDataRef> data(range ? new Data(text.data() + range->offset, range->count)
                                    : new Data());
    assert(data);
    return data;
}
