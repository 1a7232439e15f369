// Describe: what `minihost --describe` prints about a loaded module: its name, the file it was
// loaded from, versions, state, platforms, dependencies, and a table of its script functions as the
// definition text gives them (kind, result, name, parameters, exported entry). It calls the
// module's fixed-text functions and no entry.
#pragma once

#include <ostream>

#include "minihost/host/ModuleLoader.h"
#include "minihost/script/FunctionTable.h"

namespace minihost {

// Writes the description. The file is named by its real path (links and ".." resolved) when
// the system gives one, else as it was loaded. A fixed text that is empty shows as "-"; one that
// the module gives as null shows as "(null)". The table's columns are as wide as their longest
// cell.
void Describe(LoadedModule const& module, FunctionTable const& table, std::ostream& out);

}  // namespace minihost
