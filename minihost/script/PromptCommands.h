// PromptCommands: what the interactive prompt understands besides statements, and the texts it
// shows. The commands are `help`, `help NAME`, `quit` and `exit`, each alone on a line (blanks
// around it allowed); scripts have none of them. The texts: the banner that opens the prompt
// and the help, which lists the statements and, grouped by name, the script functions of the
// module's definition text with their forms. It reads no terminal and runs nothing.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "minihost/script/FunctionTable.h"

namespace minihost {

// The words of the commands.
inline constexpr std::array<std::string_view, 3> kPromptCommands{"help", "quit", "exit"};

enum class CommandKind { kNone, kHelp, kQuit };

struct PromptCommand {
    CommandKind kind = CommandKind::kNone;
    std::string topic;  // the NAME of `help NAME`, else ""
};

// The command that line is, if any:
//   "help", " help " => kHelp "";  "help Binary.Slice" => kHelp "Binary.Slice"
//   "quit", "exit" => kQuit
//   "help a b", "quit now", "help = 1", "print help", "" => kNone (a statement, or nothing)
PromptCommand ReadPromptCommand(std::string_view line);

// Whether name is one of the commands' words: "help", "quit", "exit" => true; "Help" => false.
bool IsPromptCommandName(std::string_view name);

// The line that opens the prompt, with the module's name and version and how to get help and
// to leave:
//   ("Binary", "1.5.0.0") => "Binary 1.5.0.0 on minihost. Type help for the functions and
//   statements, quit or Ctrl-D to leave.\n" (Ctrl-Z then Enter on Windows)
std::string Banner(std::string_view moduleName, std::string_view version);

// What `help` shows: the statements, the commands, then every script function of table, one
// name per line with its first form and a line for each further form, its result behind.
std::string PromptHelp(FunctionTable const& table);

// What `help NAME` shows: the forms of a script function with result, kind and exported entry,
// or the line of a statement or command ("print", "dump", "call", "help", "quit", "exit").
//   "Binary.Slice" => its two forms;  "dump" => "dump EXPR[, OFFSET[, COUNT]]  ..."
//   "slice" => "no function 'slice'; did you mean 'Binary.Slice'?\n"
//   "Frob"  => "no function 'Frob' (help lists the module's functions)\n"
std::string PromptHelp(FunctionTable const& table, std::string_view topic);

}  // namespace minihost
