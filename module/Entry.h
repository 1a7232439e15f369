// TAVREL_MODULE_ENTRY: declares one script function in one line: the exported entry
// tavrel_module_<function>, which binds the host's call to the typed function, and the
// one-byte variable whose load-time initialiser appends the function's raw line to the
// definition text. The lines are appended in the order in which the entries stand.
// NOTE: the variable has external linkage so that the compiler keeps it (nothing reads it);
// like everything that is not exported, it is hidden from the host.
#pragma once

#include "module/Binding.h"
#include "module/Definition.h"

// Gives a name default visibility; everything else of the module is hidden. On Windows the
// module definition file made from the lists decides what the DLL exports.
#if defined(_WIN32)
#define TAVREL_EXPORT
#else
#define TAVREL_EXPORT __attribute__((visibility("default")))
#endif

// definition: the std::string that collects the raw definition text.
// index:      the number of the one-byte variable (dummy<index>).
// kind:       "CONST_FUNCTION" or "FUNCTION".
// scriptName: the name scripts call, as a string literal.
// function:   the typed function in the global namespace.
#define TAVREL_MODULE_ENTRY(definition, index, kind, scriptName, function)            \
    extern "C" TAVREL_EXPORT unsigned int tavrel_module_##function(                   \
        int count, Tavrel::IVariant** arguments, Tavrel::IVariant* result,            \
        Tavrel::IModuleInfo* info, Tavrel::IContext* context) {                       \
        return Tavrel::CallEntry(&function, count, arguments, result, info, context); \
    }                                                                                 \
    __attribute__((used)) char dummy##index = Tavrel::AppendDefinition(               \
        definition, &function, kind, " " scriptName " (", ") : tavrel_module_" #function)
