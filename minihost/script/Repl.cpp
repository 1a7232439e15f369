#include "minihost/script/Repl.h"

#include <iostream>
#include <string>

#include "minihost/script/Completion.h"
#include "minihost/script/Interruption.h"
#include "minihost/script/LineEditor.h"
#include "minihost/script/Parser.h"
#include "minihost/script/PromptCommands.h"

namespace minihost {

namespace {

constexpr char const* kPrompt = "tvl> ";
constexpr char const* kMorePrompt = "...> ";
// The name that messages give to what was typed.
constexpr char const* kInputName = "stdin";

std::string BannerOf(ReadyModule const& ready) {
    char const* version = ready.module->Text("GetModuleVersion");
    return Banner(ModuleName(ready.module->Path()), version != nullptr ? version : "");
}

// Answers a command of the prompt; false when line is none.
bool AnswerCommand(std::string const& line, FunctionTable const& table, bool& quit) {
    PromptCommand const command = ReadPromptCommand(line);
    if (command.kind == CommandKind::kNone) {
        return false;
    }
    quit = command.kind == CommandKind::kQuit;
    if (command.kind == CommandKind::kHelp) {
        std::cout << (command.topic.empty() ? PromptHelp(table) : PromptHelp(table, command.topic))
                  << std::flush;
    }
    return true;
}

int LinesOf(std::string const& text) {
    int lines = 1;
    for (char const c : text) {
        lines += c == '\n' ? 1 : 0;
    }
    return lines;
}

}  // namespace

int RunPrompt(Interpreter& interpreter, ReadyModule const& ready, Context& context) {
    StartEditing(context, [&](std::string_view line, std::size_t start, std::string_view word) {
        return CompleteName(line, start, word, ready.table, interpreter.VariableNames());
    });
    std::cout << BannerOf(ready) << std::flush;
    std::string statement;  // the lines of an unfinished statement
    std::string line;
    int lineNumber = 0;  // of the last line read
    bool quit = false;
    while (!quit) {
        context.ClearInterrupt();
        ArmInterruption(context);
        LineRead const read = ReadLine(statement.empty() ? kPrompt : kMorePrompt, line);
        if (read == LineRead::kEnd) {
            break;
        }
        if (read == LineRead::kDropped) {
            statement.clear();
            continue;
        }
        ++lineNumber;
        RememberLine(line);
        if (statement.empty() && AnswerCommand(line, ready.table, quit)) {
            continue;
        }
        statement += statement.empty() ? line : "\n" + line;
        if (!EndsInsideCall(statement)) {
            interpreter.Run(statement, kInputName, lineNumber - LinesOf(statement) + 1);
            statement.clear();
        }
    }
    // End the prompt's line after the end of input, so the shell's prompt starts on a fresh one.
    std::cout << (quit ? "" : "\n") << std::flush;
    EndEditing();
    return 0;
}

}  // namespace minihost
