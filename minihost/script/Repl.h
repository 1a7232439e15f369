// Repl: minihost's interactive prompt. Reads lines with line editing and history (GNU
// readline; where there is none, as on Windows, plain lines), runs each one through the
// interpreter, echoes the value of a line that is only an expression, and goes on after faults
// and reports. Ctrl-C at the prompt drops the line being typed; Ctrl-C while a line runs sets
// the context's interruption flag. Ctrl-D ends (on Windows, Ctrl-Z and Enter).
// It loads nothing and holds no variables itself: the interpreter keeps them across lines.
#pragma once

#include "minihost/host/Context.h"
#include "minihost/script/Interpreter.h"

namespace minihost {

// Runs the prompt until end of input; gives the exit status, always 0.
int RunPrompt(Interpreter& interpreter, Context& context);

}  // namespace minihost
