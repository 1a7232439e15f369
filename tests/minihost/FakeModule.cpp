// A stand-in module for the loader tests, made from the module's own list of exported names.
// Whole, it exports all 28 names: a text function returns its own name and an entry its place
// among the entries. With FAKE_MODULE_PARTIAL it lacks GetState, GetModuleDefinition and
// tavrel_module_BinaryCopy.
#include "host/IContext.h"
#include "host/IModuleInfo.h"
#include "host/IVariant.h"

#if defined(_WIN32)
#define FAKE_EXPORT extern "C" __declspec(dllexport)
#else
#define FAKE_EXPORT extern "C" __attribute__((visibility("default")))
#endif

#ifdef FAKE_MODULE_PARTIAL
// NOTE: the names come through the macros below fully expanded, so these three are defined
// under other names and the module lacks them.
#define GetState GetState_absent
#define GetModuleDefinition GetModuleDefinition_absent
#define tavrel_module_BinaryCopy tavrel_module_BinaryCopy_absent
#endif

namespace {

// The place of the next entry among the entries.
unsigned int gNextPlace = 0;

}  // namespace

#define FAKE_NAMED(name) FAKE_EXPORT char const* name()
#define TAVREL_EXPORTED_TEXT(name) \
    FAKE_NAMED(name) { return #name; }
#define TAVREL_EXPORTED_DEFINITION(name)                                          \
    FAKE_EXPORT char const* name(void* argument) {                                \
        return argument == nullptr ? "fake definition" : "argument was not null"; \
    }
#define TAVREL_EXPORTED_ENTRY(name)                                           \
    static unsigned int const kPlaceOf_##name = gNextPlace++;                 \
    FAKE_EXPORT unsigned int name(int, Tavrel::IVariant**, Tavrel::IVariant*, \
                                  Tavrel::IModuleInfo*, Tavrel::IContext*) {  \
        return kPlaceOf_##name;                                               \
    }
#include "generated/ExportedNames.def"
