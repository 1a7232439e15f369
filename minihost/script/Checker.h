// Checker: looks over a parsed script before any of it runs, so a script with a fault does
// nothing at all. It finds variables used before they are assigned, functions that the
// module does not offer or not with that number of arguments, and entries for `call` that
// the definition text does not name. The types of the arguments are not known until the
// script runs, so that last step of overload resolution is left to the interpreter.
#pragma once

#include <set>
#include <string>

#include "minihost/script/Ast.h"
#include "minihost/script/FunctionTable.h"

namespace minihost {

// Throws ScriptError at the first fault, placed at the name that causes it. known holds the
// variables assigned before this script (by earlier lines of an interactive session); it is
// not changed. Unknown names come with the closest known ones (Suggestions.h). With a table
// offering only "Size (DATAREF)" and known = {"data"}:
//   "print x"                 => "unknown variable 'x'"
//   "print dta"               => "unknown variable 'dta'; did you mean 'data'?"
//   "x = x"                   => "unknown variable 'x'" (the value is checked first)
//   "quit", "print help"      => "unknown variable 'quit'; help, quit and exit are commands of
//                                 the interactive prompt, alone on a line"
//   "print Size()"            => "no form of 'Size' takes 0 arguments; there is:\n  Size (DATAREF)"
//   "print Sise(data)"        => "no function 'Sise'; did you mean 'Size'?"
//   "call tavrel_module_BinarySise(1)" => "unknown entry 'tavrel_module_BinarySise'; did you
//                                 mean 'tavrel_module_BinarySize'?"
//   "call nope(data)"         => "unknown entry 'nope'; the entries are:\n
//   tavrel_module_BinarySize"
// Accepted: "x = Size(data)\nprint x";  "call tavrel_module_BinarySize()" (any count).
void CheckProgram(Program const& program, FunctionTable const& table,
                  std::set<std::string> const& known);

}  // namespace minihost
