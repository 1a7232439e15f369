#include "minihost/script/Repl.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <readline/history.h>
#include <readline/readline.h>
#include <string>

#include "minihost/script/Interruption.h"

namespace minihost {

namespace {

constexpr char const* kPrompt = "tvl> ";

Context* gPromptContext = nullptr;

// Reads one byte for readline. A Ctrl-C (the read comes back with EINTR and the flag set)
// drops what was typed and ends the line, so the prompt starts afresh.
int InterruptibleGetc(FILE* stream) {
    while (true) {
        unsigned char byte = 0;
        ssize_t const n = ::read(::fileno(stream), &byte, 1);
        if (n == 1) {
            return byte;
        }
        if (n == 0 || errno != EINTR) {
            return EOF;
        }
        if (gPromptContext != nullptr && gPromptContext->Interface_IsInterrupted()) {
            gPromptContext->ClearInterrupt();
            ArmInterruption(*gPromptContext);
            rl_replace_line("", 0);
            return '\n';
        }
    }
}

// One line from the prompt; false at end of input.
bool ReadLine(std::string& line) {
    std::unique_ptr<char, decltype(&std::free)> text(readline(kPrompt), &std::free);
    if (!text) {
        return false;
    }
    line = text.get();
    if (!line.empty()) {
        add_history(text.get());
    }
    return true;
}

}  // namespace

int RunPrompt(Interpreter& interpreter, Context& context) {
    gPromptContext = &context;
    // NOTE: readline must not install its own SIGINT handler: ours sets the flag, and the
    // reading function above turns it into an empty line.
    rl_catch_signals = 0;
    rl_getc_function = &InterruptibleGetc;
    std::string line;
    int lineNumber = 1;
    while (true) {
        context.ClearInterrupt();
        ArmInterruption(context);
        if (!ReadLine(line)) {
            break;
        }
        interpreter.Run(line, "stdin", lineNumber++);
    }
    // End the prompt's line, so the shell's prompt starts on a fresh one.
    std::cout << std::endl;
    gPromptContext = nullptr;
    return 0;
}

}  // namespace minihost
