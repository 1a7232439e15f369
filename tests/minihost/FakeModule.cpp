// A stand-in module for the loader tests. Whole, it exports all 28 names: a text function
// returns its own name and an entry its place among the entries. With FAKE_MODULE_PARTIAL
// it lacks GetState, GetModuleDefinition and tavrel_module_BinaryCopy.
#include "host/IContext.h"
#include "host/IModuleInfo.h"
#include "host/IVariant.h"

#define FAKE_EXPORT extern "C" __attribute__((visibility("default")))
#define FAKE_TEXT(name) \
    FAKE_EXPORT char const* name() { return #name; }
#define FAKE_ENTRY(name, place)                                                               \
    FAKE_EXPORT unsigned int tavrel_module_##name(int, Tavrel::IVariant**, Tavrel::IVariant*, \
                                                  Tavrel::IModuleInfo*, Tavrel::IContext*) {  \
        return place;                                                                         \
    }

// clang-format off
FAKE_TEXT(GetModuleVersion) FAKE_TEXT(GetSupportedPlatforms) FAKE_TEXT(GetSDKDependency)
FAKE_TEXT(GetDownwardsCompatibility) FAKE_TEXT(GetModuleDependencies)
FAKE_TEXT(GetModuleDependenciesOptional) FAKE_TEXT(GetModuleDependenciesLoadBefore)
FAKE_TEXT(GetAlternativeFunctionDependencies)
FAKE_TEXT(GetAlternativeProcedureDependencies) FAKE_TEXT(GetOptionalFunctionDependencies)
FAKE_TEXT(GetOptionalProcedureDependencies) FAKE_TEXT(GetModuleTavrelVersion)
FAKE_TEXT(GetTavrelSDKVersion)

FAKE_ENTRY(BinarySize, 0) FAKE_ENTRY(BinarySetFromString, 1) FAKE_ENTRY(ToDataRef, 2)
FAKE_ENTRY(ToDataRefPart, 3) FAKE_ENTRY(BinaryMapFile, 4) FAKE_ENTRY(BinarySlice, 5)
FAKE_ENTRY(BinarySliceRight, 6) FAKE_ENTRY(BinaryPartToString, 7) FAKE_ENTRY(BinaryToString, 8)
FAKE_ENTRY(BinaryCopyPart, 10) FAKE_ENTRY(BinaryAppend, 11) FAKE_ENTRY(BinaryAppendPart, 12)
// clang-format on

#ifndef FAKE_MODULE_PARTIAL
                                                                FAKE_TEXT(GetState)
                                                                    FAKE_ENTRY(BinaryCopy,
                                                                               9) FAKE_EXPORT
    char const* GetModuleDefinition(void* argument) {
    return argument == nullptr ? "fake definition" : "argument was not null";
}
#endif
