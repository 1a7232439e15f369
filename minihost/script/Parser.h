// Parser: turns the text of a script into its tree (minihost/script/Ast.h). The grammar:
//
//   script     := { [statement] (line end | ';') }
//   statement  := "print" expression | name "=" expression | expression
//               | "dump" expression [ "," expression [ "," expression ] ]
//   expression := string | number | name | name "(" arguments ")"
//               | "call" name "(" arguments ")"
//   arguments  := [ expression { "," expression } ]   (a line may end after "(" or ",")
//
// "print", "dump" and "call" are reserved. A variable name has no dots. It does not check that
// names exist: the checker does that against the module and the variables assigned so far.
#pragma once

#include <array>
#include <string_view>

#include "minihost/script/Ast.h"

namespace minihost {

// The words that name no variable and no function.
inline constexpr std::array<std::string_view, 3> kReservedWords{"print", "dump", "call"};

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
//   "dump d, 1, 2, 3" => "expected end of line but found ','"
// Accepted: "" and "# only a comment" => no statements; "x = 1; print x" => two statements,
// with the texts "x = 1" and "print x"; "dump d, 0" => a dump with one bound.
Program Parse(std::string_view source, int firstLine = 1);

// Whether source stops inside a call, after a "(" or a "," where a line may end, so that a
// prompt should read another line before it runs the text. Malformed text does not.
//   "print Size(", "f(a,", "f(g(\n1,", "f( # c" => true
//   "", "print Size(d)", "f(a", "f(\"(", "x = 1,", "f(1))(" => false
bool EndsInsideCall(std::string_view source);

}  // namespace minihost
