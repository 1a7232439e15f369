// Completion: what Tab offers at the prompt for the word being typed. Inside a string literal
// that is a file name (the line editor lists the files); elsewhere the script functions, with
// the "(" that a call needs behind them, the variables assigned so far, the reserved words,
// and at the start of a line the prompt's commands. It reads no terminal and no directory.
#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "minihost/script/FunctionTable.h"

namespace minihost {

// Whether position start of line lies inside a string literal: after an opening quote whose
// closing one has not come yet (a quote after a backslash inside the string does not close
// it); a "#" outside a string starts a comment, where nothing is inside a string.
//   ("f(\"da", 3) => true;  ("f(\"a\", ", 8) => false;  ("\"a\\\"b", 5) => true;
//   ("x # \"", 5) => false
bool InsideString(std::string_view line, std::size_t start);

// The completions of word, which starts at position start of line, sorted and without repeats:
// every script function, reserved word and variable that begins with word (case counts), and
// when word is the first on its line, the prompt's commands. A function gets a "(" behind.
//   ("Binary.Sl", 0, "Binary.Sl") => {"Binary.Slice("}
//   ("print gr", 6, "gr") with the variable greeting => {"greeting"}
//   ("q", 0, "q") => {"quit"};  ("print q", 6, "q") => {}
std::vector<std::string> CompleteName(std::string_view line, std::size_t start,
                                      std::string_view word, FunctionTable const& table,
                                      std::set<std::string> const& variables);

}  // namespace minihost
