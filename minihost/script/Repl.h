// Repl: minihost's interactive prompt. Opens with a banner, reads lines through the line editor
// (LineEditor.h: readline with completion and history, or plain lines), answers the commands
// help [NAME], quit and exit itself, and runs every other line through the interpreter, which
// shows the value of a line that is only an expression. A line that ends inside a call, after
// "(" or ",", goes on with the next (prompt "...> "). It goes on after faults and reports.
// Ctrl-C at the prompt drops what was typed (all lines of an unfinished statement); Ctrl-C
// while a statement runs interrupts it. quit, exit and the end of input leave.
// It loads nothing and holds no variables itself: the interpreter keeps them across lines.
#pragma once

#include "minihost/host/Context.h"
#include "minihost/script/Interpreter.h"
#include "minihost/script/ModuleSetup.h"

namespace minihost {

// Runs the prompt for the module until quit, exit or the end of input; gives the exit status,
// always 0.
int RunPrompt(Interpreter& interpreter, ReadyModule const& ready, Context& context);

}  // namespace minihost
