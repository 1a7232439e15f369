// The module's face to the host: its static objects, the fixed texts that describe it
// (module/Texts.def), the definition text, and the exported entries (module/Entries.def).
//
// NOTE: the path header comes first on purpose: its three empty constants are the first
// static objects of this unit, before the definition text is built.
#include "path/FSPath.h"

#include <iterator>
#include <string>

#include "module/Entry.h"
#include "module/Operations.h"
#include "module/ReplaceAllStringsInPlace.h"
#include "module/Reports.h"

namespace {

// The definition text: raw while the module loads, final after GetModuleDefinition.
std::string sInfo;

}  // namespace

// The script functions, in the order of their lines in the definition text.
#define TAVREL_ENTRY(index, kind, scriptName, function) \
    TAVREL_MODULE_ENTRY(sInfo, index, #kind, scriptName, function);
#include "module/Entries.def"
#undef TAVREL_ENTRY

namespace {

// NOTE: the indexes name the one-byte variables; they must count up with the lines, so that
// dummy<N> carries the N-th line of the definition text.
constexpr int kEntryIndexes[] = {
#define TAVREL_ENTRY(index, kind, scriptName, function) index,
#include "module/Entries.def"
#undef TAVREL_ENTRY
};

constexpr bool IndexesCountUp() {
    for (int i = 0; i < static_cast<int>(std::size(kEntryIndexes)); ++i) {
        if (kEntryIndexes[i] != i) {
            return false;
        }
    }
    return true;
}
static_assert(IndexesCountUp(), "module/Entries.def: the indexes count up from 0 line by line");

}  // namespace

namespace Tavrel {

std::string const moduleName = "Binary";
std::string const kReason_NoBinaryDataGiven = "No binary data given!";

}  // namespace Tavrel

extern "C" {

// Hidden: a host that looks it up by name does not find it. NOTE: marked used, since nothing
// in the module calls it and link-time optimisation would drop it.
__attribute__((used)) char const* GetTavrelModuleName() { return "Binary"; }

#define TAVREL_TEXT(function, text) \
    TAVREL_EXPORT char const* function() { return text; }
#include "module/Texts.def"
#undef TAVREL_TEXT

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
