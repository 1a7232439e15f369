// IContext: the calling context of one entry call. The module reports its errors through
// it, asks it for the policy that loads files, and asks whether the run was interrupted.
#pragma once

#include <string>

#include "host/ErrorSeverity.h"
#include "host/IPolicy.h"
#include "object/AutoRefPtr.h"

namespace Tavrel {

class IContext {
public:
    bool IsInterrupted() const { return Interface_IsInterrupted(); }
    // The host's policy, never empty; adopts the reference that comes back.
    AutoRefPtr<IPolicy> GetPolicy() const { return AutoRefPtr<IPolicy>(Interface_GetPolicy()); }
    // Reports one error; the texts go over as NUL-terminated text, so each ends at its
    // first NUL byte. The host returns, and the caller goes on.
    void TriggerErrorHandler(ErrorSeverity severity, std::string const& module,
                             std::string const& error, std::string const& reason) {
        Interface_TriggerErrorHandler(severity, module.c_str(), error.c_str(), reason.c_str());
    }

    virtual bool Interface_IsInterrupted() const = 0;
    virtual IPolicy* Interface_GetPolicy() const = 0;
    virtual void Interface_TriggerErrorHandler(ErrorSeverity severity, char const* module,
                                               char const* error, char const* reason) = 0;

protected:
    IContext() = default;
    IContext(IContext const&) = default;
    IContext& operator=(IContext const&) = default;
    ~IContext() = default;
};

}  // namespace Tavrel
