#include "tests/module/ModuleHarness.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <iomanip>
#include <memory>
#include <sstream>

#include "host/VariantType.h"
#include "minihost/host/FilePolicy.h"

namespace tavrel_testing {

minihost::LoadedModule& Module() {
    static std::unique_ptr<minihost::LoadedModule> module = [] {
        std::string error;
        auto loaded = minihost::LoadedModule::Load(TAVREL_MODULE_PATH, error);
        if (!loaded) {
            ADD_FAILURE() << error;
            std::abort();
        }
        return loaded;
    }();
    return *module;
}

unsigned int CallEntry(std::string_view name, std::vector<Tavrel::IVariant*> arguments,
                       Tavrel::IVariant* result, Tavrel::IContext* context) {
    std::string const entryName = "tavrel_module_" + std::string(name);
    minihost::EntryFunction const entry = Module().Entry(entryName);
    if (entry == nullptr) {
        ADD_FAILURE() << "no entry " << entryName;
        return ~0u;
    }
    return entry(static_cast<int>(arguments.size()), arguments.data(), result, Module().Info(),
                 context);
}

CallResult Call(std::string_view name, std::vector<minihost::Variant> arguments,
                std::vector<bool> nullArguments, std::optional<AutoRefPtr<Tavrel::IPolicy>> policy,
                bool interrupted) {
    CallResult call;
    minihost::Context context(
        policy.value_or(Tavrel::AutoRefPtr<Tavrel::IPolicy>(new minihost::FilePolicy())));
    context.SetErrorHandler([&call](minihost::ErrorReport const& report) {
        call.reports.push_back({report.severity, report.module, report.error, report.reason});
    });
    if (interrupted) {
        context.Interrupt();
    }
    std::vector<Tavrel::IVariant*> pointers;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        bool const isNull = i < nullArguments.size() && nullArguments[i];
        pointers.push_back(isNull ? nullptr : &arguments[i]);
    }
    call.status = CallEntry(name, pointers, &call.result, &context);
    return call;
}

Tavrel::AutoRefPtr<Tavrel::IDataRef> ModuleBuffer(std::string_view bytes) {
    CallResult made = Call("ToDataRef", {minihost::Variant::String(bytes)});
    return made.result.data();
}

std::string BytesOf(Tavrel::IDataRef const* data) {
    std::string bytes(data->GetSize(), '\0');
    if (!bytes.empty()) {
        data->Read(bytes.data(), bytes.size(), 0);
    }
    return bytes;
}

std::string Shown(minihost::Variant const& result) {
    std::ostringstream shown;
    shown << result.type() << ':';
    if (result.type() == Tavrel::VariantType::kNumber) {
        shown << std::setprecision(17) << result.number();
    } else if (result.type() == Tavrel::VariantType::kString) {
        shown << result.string();
    } else if (result.type() == Tavrel::VariantType::kDataRef) {
        shown << (result.dataPointer() == nullptr ? "null" : BytesOf(result.dataPointer()));
    }
    return shown.str();
}

Report InvalidUsage(std::string reason) {
    return {2, "Binary", "Error.Tavrel.InvalidUsage", std::move(reason)};
}

std::vector<Report> InvalidArguments(std::string reason) {
    if (reason.empty()) {
        return {};
    }
    return {{2, "Binary", "Error.Tavrel.InvalidArgument", std::move(reason)}};
}

}  // namespace tavrel_testing
