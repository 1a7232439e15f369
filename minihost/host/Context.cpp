#include "minihost/host/Context.h"

#include <utility>

#include "minihost/host/FilePolicy.h"

namespace minihost {

namespace {

// A text from the module, or "" for null.
std::string TextOrEmpty(char const* text) {
    return text != nullptr ? std::string(text) : std::string();
}

// The given policy, or a new FilePolicy when none is given.
Tavrel::AutoRefPtr<Tavrel::IPolicy> PolicyOrDefault(Tavrel::AutoRefPtr<Tavrel::IPolicy> policy) {
    if (policy) {
        return policy;
    }
    return Tavrel::AutoRefPtr<Tavrel::IPolicy>(new FilePolicy());
}

}  // namespace

Context::Context(Tavrel::AutoRefPtr<Tavrel::IPolicy> policy)
    : mPolicy(PolicyOrDefault(std::move(policy))) {}

void Context::SetErrorHandler(std::function<void(ErrorReport const&)> handler) {
    mHandler = std::move(handler);
}

Tavrel::IPolicy* Context::Interface_GetPolicy() const {
    mPolicy.AddRefImpl();
    return mPolicy.get();
}

void Context::Interface_TriggerErrorHandler(Tavrel::ErrorSeverity severity, char const* module,
                                            char const* error, char const* reason) {
    if (!mHandler) {
        return;
    }
    mHandler(ErrorReport{severity, TextOrEmpty(module), TextOrEmpty(error), TextOrEmpty(reason)});
}

}  // namespace minihost
