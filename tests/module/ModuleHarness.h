// ModuleHarness: drives the built module the way a host does: dlopen through the minihost
// loader, then entries called with host variants and a context that records every error
// report. It judges nothing itself (a missing entry aside, which fails the test): the tests
// compare what it gives. It serves the module and hardening tests.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "minihost/host/Context.h"
#include "minihost/host/ModuleLoader.h"
#include "minihost/host/Variant.h"
#include "object/AutoRefPtr.h"
#include "object/IDataRef.h"

namespace tavrel_testing {

using minihost::Variant;
using Tavrel::AutoRefPtr;
using Tavrel::IDataRef;

struct Report {
    unsigned severity;
    std::string module;
    std::string error;
    std::string reason;
    bool operator==(Report const&) const = default;
};

struct CallResult {
    unsigned int status = 0;
    minihost::Variant result;
    std::vector<Report> reports;
};

// The module under test, loaded once per test program.
minihost::LoadedModule& Module();

// Calls entry "tavrel_module_<name>" with arguments; a null entry in nullArguments makes
// that place a null IVariant*. The context's policy is a FilePolicy unless one is given (null
// for none), and it is interrupted before the call when asked.
CallResult Call(std::string_view name, std::vector<minihost::Variant> arguments,
                std::vector<bool> nullArguments = {},
                std::optional<AutoRefPtr<Tavrel::IPolicy>> policy = std::nullopt,
                bool interrupted = false);

// Calls entry "tavrel_module_<name>" as given, for tests that bring their own variants,
// result or context; gives the status word.
unsigned int CallEntry(std::string_view name, std::vector<Tavrel::IVariant*> arguments,
                       Tavrel::IVariant* result, Tavrel::IContext* context);

// Builds a module buffer from bytes through the ToDataRef entry.
Tavrel::AutoRefPtr<Tavrel::IDataRef> ModuleBuffer(std::string_view bytes);

// All bytes of a buffer, read through its interface.
std::string BytesOf(Tavrel::IDataRef const* data);

// A result as type and value: "5:6" (a number in all its digits: "5:5368709130"), "9:<bytes>",
// "13:<bytes>" or "13:null".
std::string Shown(minihost::Variant const& result);

Report InvalidUsage(std::string reason);
// The reports of a call that reports reason as an invalid argument; none for "".
std::vector<Report> InvalidArguments(std::string reason);

}  // namespace tavrel_testing
