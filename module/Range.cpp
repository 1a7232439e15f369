#include "module/Range.h"

#include <string>

#include "host/ErrorNames.h"
#include "module/Reports.h"

namespace Tavrel {

ByteRange CutToSize(long long offset, long long count, long long total) {
    if (offset >= total || count == 0) {
        return {};
    }
    long long const available = total - offset;
    return {static_cast<unsigned long long>(offset),
            static_cast<unsigned long long>(count < available ? count : available)};
}

void ReportNegativeRange(IContext* context, RangeWords const& words, long long offset,
                         long long count) {
    std::string reason(words.lead);
    reason.append(" Offset: \"").append(std::to_string(offset)).append("\" ");
    reason.append(words.countName).append(": \"").append(std::to_string(count)).append("\"");
    ReportError(context, TavrelError::InvalidArgument(), reason);
}

}  // namespace Tavrel
