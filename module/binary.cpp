// The module's face to the host: its static objects, the fixed texts that describe it,
// the definition text, and the 13 exported entries.
//
// NOTE: the path header comes first on purpose: its three empty constants are the first
// static objects of this unit, before the definition text is built.
#include <string>

#include "module/Entry.h"
#include "module/Operations.h"
#include "module/ReplaceAllStringsInPlace.h"
#include "module/Reports.h"
#include "path/FSPath.h"

namespace {

// The definition text: raw while the module loads, final after GetModuleDefinition.
std::string sInfo;

}  // namespace

// The script functions, in the order of their lines in the definition text.
TAVREL_MODULE_ENTRY(sInfo, 0, "CONST_FUNCTION", "Size", BinarySize);
TAVREL_MODULE_ENTRY(sInfo, 1, "CONST_FUNCTION", "Binary.ToDataRef", BinarySetFromString);
TAVREL_MODULE_ENTRY(sInfo, 2, "CONST_FUNCTION", "ToDataRef", ToDataRef);
TAVREL_MODULE_ENTRY(sInfo, 3, "CONST_FUNCTION", "ToDataRef", ToDataRefPart);
TAVREL_MODULE_ENTRY(sInfo, 4, "FUNCTION", "Binary.MapFile", BinaryMapFile);
TAVREL_MODULE_ENTRY(sInfo, 5, "CONST_FUNCTION", "Binary.Slice", BinarySlice);
TAVREL_MODULE_ENTRY(sInfo, 6, "CONST_FUNCTION", "Binary.Slice", BinarySliceRight);
TAVREL_MODULE_ENTRY(sInfo, 7, "CONST_FUNCTION", "Binary.PartToString", BinaryPartToString);
TAVREL_MODULE_ENTRY(sInfo, 8, "CONST_FUNCTION", "ToString", BinaryToString);
TAVREL_MODULE_ENTRY(sInfo, 9, "CONST_FUNCTION", "Binary.Copy", BinaryCopy);
TAVREL_MODULE_ENTRY(sInfo, 10, "CONST_FUNCTION", "Binary.Copy", BinaryCopyPart);
TAVREL_MODULE_ENTRY(sInfo, 11, "CONST_FUNCTION", "Binary.Append", BinaryAppend);
TAVREL_MODULE_ENTRY(sInfo, 12, "CONST_FUNCTION", "Binary.Append", BinaryAppendPart);

namespace Tavrel {

std::string const moduleName = "Binary";
std::string const kReason_NoBinaryDataGiven = "No binary data given!";

}  // namespace Tavrel

extern "C" {

// Hidden: a host that looks it up by name does not find it.
char const* GetTavrelModuleName() { return "Binary"; }

TAVREL_EXPORT char const* GetModuleVersion() { return "1.5.0.0"; }
TAVREL_EXPORT char const* GetSupportedPlatforms() { return "linux,mac,windows"; }
TAVREL_EXPORT char const* GetState() { return "stable"; }
TAVREL_EXPORT char const* GetDownwardsCompatibility() { return "1.1.0"; }
TAVREL_EXPORT char const* GetSDKDependency() { return "[1.20.13.0-]"; }
TAVREL_EXPORT char const* GetModuleDependencies() { return ""; }
TAVREL_EXPORT char const* GetModuleDependenciesOptional() { return ""; }
TAVREL_EXPORT char const* GetModuleDependenciesLoadBefore() { return ""; }
TAVREL_EXPORT char const* GetAlternativeFunctionDependencies() { return ""; }
TAVREL_EXPORT char const* GetAlternativeProcedureDependencies() { return ""; }
TAVREL_EXPORT char const* GetOptionalFunctionDependencies() { return ""; }
TAVREL_EXPORT char const* GetOptionalProcedureDependencies() { return ""; }
TAVREL_EXPORT char const* GetModuleTavrelVersion() { return "1.20.16.0-19"; }
TAVREL_EXPORT char const* GetTavrelSDKVersion() { return "1.20.16.0"; }

// Turns the raw definition text into its final form, in place and for good, and returns
// it. A later call finds nothing left to replace and returns the same pointer.
// NOTE: not thread-safe on its first call; the host asks for it once, at load.
TAVREL_EXPORT char const* GetModuleDefinition(void* /*ignored*/) {
    Tavrel::ReplaceAllStringsInPlace(sInfo, std::string(",,"), std::string(","));
    Tavrel::ReplaceAllStringsInPlace(sInfo, std::string(",)"), std::string(")"));
    Tavrel::ReplaceAllStringsInPlace(sInfo, std::string("(,"), std::string("( "));
    Tavrel::ReplaceAllStringsInPlace(sInfo, std::string("( ,"), std::string("( "));
    return sInfo.c_str();
}

}  // extern "C"
