// ModuleSetup: finds the module that minihost runs by default and makes a loaded module
// ready for scripts: its definition text read into a FunctionTable, with every entry that
// the text names checked to be exported. It does not call any entry.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "minihost/script/FunctionTable.h"
#include "minihost/host/ModuleLoader.h"

namespace minihost {

// The file name of the module that minihost runs by default.
#if defined(_WIN32)
inline constexpr char kDefaultModuleFile[] = "Binary.dll";
#else
inline constexpr char kDefaultModuleFile[] = "Binary.so";
#endif

// Where the module is looked for when no --module is given, in this order, for a program at
// <dir>/minihost: the installed layout, then the build tree.
//   "/usr/local/bin" => {"/usr/local/bin/../lib/tavrel/modules/Binary.so",
//                        "/usr/local/bin/../module/Binary.so"}
//   Windows: "C:\m\bin" => {"C:\m\bin\..\lib\tavrel\modules\Binary.dll",
//                        "C:\m\bin\..\module\Binary.dll"}
std::vector<std::string> DefaultModuleCandidates(std::string const& programDirectory);

// The directory of the running program (ProgramPath: /proc/self/exe, GetModuleFileNameW on
// Windows), or "" when it cannot be read.
std::string ProgramDirectory();

// The first candidate that exists; "" when none does.
std::string FindDefaultModule(std::vector<std::string> const& candidates);

// A module ready to run scripts.
struct ReadyModule {
    std::unique_ptr<LoadedModule> module;
    FunctionTable table;
};

// Loads the module at path and reads its definition text; false with error set:
//   missing, not a shared object, lacking names => the loader's text
//   a malformed definition text   => "module '<path>' has a malformed definition text:
//                                     expected ')' at offset 20" (ParseDefinitionText's text)
//   an entry named but not exported => "module '<path>' does not export 'x', which its
//                                      definition text names for F (A)"
bool OpenModule(std::string const& path, ReadyModule& ready, std::string& error);

// The module's name: the file name of path without its extension.
//   "/x/Binary.so" => "Binary";  "Binary" => "Binary";  "/x/a.b.so" => "a.b"
//   Windows, where "\" separates too: "C:\x\Binary.dll" => "Binary"
std::string ModuleName(std::string const& path);

}  // namespace minihost
