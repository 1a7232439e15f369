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
// not changed. With a table offering only "Size (DATAREF)" and known = {"d"}:
//   "print x"                 => "unknown variable 'x'"
//   "x = x"                   => "unknown variable 'x'" (the value is checked first)
//   "print Size()"            => "no form of 'Size' takes 0 arguments; there is:\n  Size (DATAREF)"
//   "print Sise(d)"           => "unknown function 'Sise'; the module offers:\n  Size (DATAREF)"
//   "call nope(d)"            => "unknown entry 'nope'; the entries are:\n
//   tavrel_module_BinarySize"
// Accepted: "x = Size(d)\nprint x";  "call tavrel_module_BinarySize()" (any count).
void CheckProgram(Program const& program, FunctionTable const& table,
                  std::set<std::string> const& known);

}  // namespace minihost
