// Context: the stand-in host's calling context, handed to every module entry as an
// IContext. It gives the module the host's policy, hands each error report to a handler
// that the program or a test installs, and carries the interruption flag that a SIGINT
// handler sets. It neither prints nor stores reports itself.
#pragma once

#include <atomic>
#include <functional>
#include <string>

#include "host/ErrorSeverity.h"
#include "host/IContext.h"
#include "host/IPolicy.h"
#include "object/AutoRefPtr.h"

namespace minihost {

// One error report, as the module made it.
struct ErrorReport {
    Tavrel::ErrorSeverity severity;
    std::string module;
    std::string error;
    std::string reason;
};

class Context final : public Tavrel::IContext {
public:
    // Shares policy. An empty policy is replaced by a new FilePolicy, since a context
    // always has one.
    explicit Context(Tavrel::AutoRefPtr<Tavrel::IPolicy> policy);
    ~Context() = default;

    Context(Context const&) = delete;
    Context& operator=(Context const&) = delete;

    // Every report goes to handler from now on; an empty handler drops them.
    void SetErrorHandler(std::function<void(ErrorReport const&)> handler);

    // Sets the interruption flag. Async-signal-safe: one lock-free atomic store.
    void Interrupt() noexcept { mInterrupted.store(true); }
    void ClearInterrupt() noexcept { mInterrupted.store(false); }

    // The policy held, without adding a reference for the caller.
    Tavrel::IPolicy* policy() const { return mPolicy.get(); }

    bool Interface_IsInterrupted() const override { return mInterrupted.load(); }
    // The policy with one added reference, which the caller adopts. Never null.
    Tavrel::IPolicy* Interface_GetPolicy() const override;
    // Hands one report to the handler; a null text becomes "".
    void Interface_TriggerErrorHandler(Tavrel::ErrorSeverity severity, char const* module,
                                       char const* error, char const* reason) override;

private:
    static_assert(std::atomic<bool>::is_always_lock_free,
                  "Interrupt must be callable from a signal handler");

    Tavrel::AutoRefPtr<Tavrel::IPolicy> mPolicy;
    std::function<void(ErrorReport const&)> mHandler;
    std::atomic<bool> mInterrupted{false};
};

}  // namespace minihost
