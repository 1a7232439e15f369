#include "minihost/script/Repl.h"

#include <cstdio>
#include <iostream>
#include <string>

#if defined(TAVREL_HAVE_READLINE)
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <readline/history.h>
#include <readline/readline.h>
#else
#include <chrono>
#include <thread>
#endif

#include "minihost/script/Interruption.h"

namespace minihost {

namespace {

constexpr char const* kPrompt = "tvl> ";

#if defined(TAVREL_HAVE_READLINE)

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

void StartPrompt(Context& context) {
    gPromptContext = &context;
    // NOTE: readline must not install its own SIGINT handler: ours sets the flag, and the
    // reading function above turns it into an empty line.
    rl_catch_signals = 0;
    rl_getc_function = &InterruptibleGetc;
}

void EndPrompt() { gPromptContext = nullptr; }

// One line from the prompt, with line editing and history; false at end of input.
bool ReadLine(std::string& line, Context& /*context*/) {
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

#else

// The end-of-input line of a Windows console: Ctrl-Z, then Enter.
constexpr char kEndOfInput = '\x1a';

void StartPrompt(Context& /*context*/) {}

void EndPrompt() {}

// Whether a read that gave nothing was cut short by Ctrl-C rather than ended.
// NOTE: on Windows the Ctrl-C handler runs on a thread of its own and may set the flag only
// after the console read has returned, so the flag is awaited for a moment.
bool CutShortByCtrlC(Context const& context) {
    auto const deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(200);
    while (!context.Interface_IsInterrupted()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

// One plain line from standard input, without line editing; false at end of input. A Ctrl-C
// drops what was typed and shows a fresh prompt.
// NOTE: a console that does not cut its read short at Ctrl-C (wine's) still sets the flag;
// the line that then ends with Enter is dropped as well.
bool ReadLine(std::string& line, Context& context) {
    std::cout << kPrompt << std::flush;
    while (true) {
        bool const got = static_cast<bool>(std::getline(std::cin, line));
        if (!(got ? context.Interface_IsInterrupted() : CutShortByCtrlC(context))) {
            if (!got) {
                return false;
            }
            break;
        }
        std::cin.clear();
        std::clearerr(stdin);
        context.ClearInterrupt();
        ArmInterruption(context);
        std::cout << '\n' << kPrompt << std::flush;
    }
    if (!line.empty() && line.back() == '\r') {
        line.pop_back();
    }
    return line.empty() || line.front() != kEndOfInput;
}

#endif

}  // namespace

int RunPrompt(Interpreter& interpreter, Context& context) {
    StartPrompt(context);
    std::string line;
    int lineNumber = 1;
    while (true) {
        context.ClearInterrupt();
        ArmInterruption(context);
        if (!ReadLine(line, context)) {
            break;
        }
        interpreter.Run(line, "stdin", lineNumber++);
    }
    // End the prompt's line, so the shell's prompt starts on a fresh one.
    std::cout << std::endl;
    EndPrompt();
    return 0;
}

}  // namespace minihost
