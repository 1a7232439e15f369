// LoadedBinary: the built module, loaded once per test program through minihost's loader
// (dlopen, as the host loads it), its entries by their short names, and one table of calls
// that reaches every entry with typical arguments and with arguments that it reports. A
// module that does not load fails the test program at once. It checks no result itself:
// the tests do.
#pragma once

#include <string_view>
#include <vector>

#include "minihost/host/ModuleLoader.h"
#include "minihost/host/Variant.h"
#include "testing/TestFiles.h"

namespace tavrel_testing {

minihost::LoadedModule& Binary();

// "BinarySize" => tavrel_module_BinarySize; a name that is not an entry aborts.
minihost::EntryFunction EntryOf(std::string_view name);

// The argument values of the calls: buffers of the module and of the host (one that hides
// its bytes), a null DATAREF, a string, a file that exists and one that does not, numbers.
struct CallValues {
    CallValues();
    // The three buffers that the calls share, and their reference counts now.
    std::vector<Tavrel::IDataRef*> Buffers() const;
    std::vector<int> Counts() const;

    TempDir directory;  // of the file, a fresh one for each program run
    minihost::Variant module, host, hidden, missing, text, file, noFile;
    minihost::Variant three, many, negative;  // 3, 500 (past every end), -1
};

struct EntryCall {
    char const* name;
    char const* entry;
    std::vector<Tavrel::IVariant*> arguments;
    int reports;  // error reports that the call makes
};

// Every entry, each with typical arguments and most also with arguments that it reports.
std::vector<EntryCall> EveryEntryCall(CallValues& v);

}  // namespace tavrel_testing
