#include "module/Operations.h"
#include "module/Reports.h"

using Tavrel::AutoRefPtr;
using Tavrel::IContext;
using Tavrel::IDataRef;

std::size_t BinarySize(AutoRefPtr<IDataRef> const& data, IContext* context) {
    if (!data) {
        Tavrel::ReportNoBinaryData(context);
        return 0;
    }
    return data->GetSize();
}
