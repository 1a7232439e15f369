// Parser: turns the text of a script into its tree (minihost/script/Ast.h). The grammar:
//
//   script     := { [statement] (line end | ';') }
//   statement  := "print" expression | name "=" expression | expression
//   expression := string | number | name | name "(" arguments ")"
//               | "call" name "(" arguments ")"
//   arguments  := [ expression { "," expression } ]   (a line may end after "(" or ",")
//
// "print" and "call" are reserved. A variable name has no dots. It does not check that names
// exist: the checker does that against the module and the variables assigned so far.
#pragma once

#include <string_view>

#include "minihost/script/Ast.h"

namespace minihost {

// The statements of source; line numbers start at firstLine. Throws ScriptError with the
// place of the first fault (the lexer's faults included):
//   "print Size(x"   => "expected ',' or ')' but found end of script" (at the end)
//   "f(x\n)"         => "expected ',' or ')' but found end of line"
//   "x = "           => "expected an expression but found end of script"
//   "a.b = 1"        => "a variable name has no dots: 'a.b'"
//   "print = 1"      => "'print' is reserved"
//   "x y"            => "expected end of line but found name 'y'"
//   "call 5"         => "expected the name of an entry after 'call' but found number 5"
//   257 nested calls => "calls nested more than 256 deep" (at the innermost call's name)
// Accepted: "" and "# only a comment" => no statements; "x = 1; print x" => two statements.
Program Parse(std::string_view source, int firstLine = 1);

}  // namespace minihost
