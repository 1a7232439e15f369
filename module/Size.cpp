#include <string>

#include "host/ErrorNames.h"
#include "module/Operations.h"
#include "module/Reports.h"

using Tavrel::AutoRefPtr;
using Tavrel::IContext;
using Tavrel::IDataRef;

unsigned long BinarySize(AutoRefPtr<IDataRef> const& data, IContext* context) {
    if (!data) {
        Tavrel::ReportError(context, std::string(Tavrel::TavrelError::InvalidUsage()),
                            Tavrel::kReason_NoBinaryDataGiven);
        return 0;
    }
    return data->GetSize();
}
