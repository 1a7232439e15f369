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

}  // namespace Tavrel
