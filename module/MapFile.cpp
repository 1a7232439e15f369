#include <string>

#include "host/ErrorNames.h"
#include "host/IPolicy.h"
#include "module/Operations.h"
#include "module/Reports.h"

using Tavrel::AutoRefPtr;
using Tavrel::IContext;
using Tavrel::IDataRef;
using Tavrel::IPolicy;

namespace {

// The host policy's buffer for path; the policy is released before this returns.
AutoRefPtr<IDataRef> LoadThroughPolicy(std::string const& path, IContext* context) {
    AutoRefPtr<IPolicy> const policy = context->GetPolicy();
    // NOTE: a host always has a policy; one that gives none is treated as giving no data.
    if (!policy) {
        return AutoRefPtr<IDataRef>(nullptr);
    }
    return policy->LoadData(context, path.c_str());
}

}  // namespace

AutoRefPtr<IDataRef> BinaryMapFile(std::string const& path, IContext* context) {
    AutoRefPtr<IDataRef> result = LoadThroughPolicy(path, context);
    if (context->IsInterrupted()) {
        return result;
    }
    if (!result) {
        Tavrel::ReportError(context, Tavrel::SystemError::CantAccess(),
                            "Given File : '" + path + "' does not exist.");
    }
    return result;
}
