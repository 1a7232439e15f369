// The texts and the one helper through which every operation reports an error to the host.
#pragma once

#include <string>

#include "host/IContext.h"

namespace Tavrel {

// "Binary": the module name in every report.
extern std::string const moduleName;
// "No binary data given!": the reason for an empty buffer reference.
extern std::string const kReason_NoBinaryDataGiven;

// One report through the context: severity 2, moduleName, error, reason.
void ReportError(IContext* context, std::string const& error, std::string const& reason);

// The report for an empty buffer reference: TavrelError::InvalidUsage(),
// kReason_NoBinaryDataGiven.
void ReportNoBinaryData(IContext* context);

}  // namespace Tavrel
