#include "module/Reports.h"

#include "host/ErrorNames.h"
#include "host/ErrorSeverity.h"

namespace Tavrel {

void ReportError(IContext* context, std::string const& error, std::string const& reason) {
    context->TriggerErrorHandler(kErrorSeverityError, moduleName, error, reason);
}

void ReportNoBinaryData(IContext* context) {
    ReportError(context, TavrelError::InvalidUsage(), kReason_NoBinaryDataGiven);
}

std::string NegativeRangeReason(char const* lead, long long offset, char const* sizeName,
                                long long size) {
    std::string reason(lead);
    reason.append(" Offset: \"").append(std::to_string(offset)).append("\" ");
    reason.append(sizeName).append(": \"").append(std::to_string(size)).append("\"");
    return reason;
}

}  // namespace Tavrel
