// LineEditor without readline (Windows): plain lines from the console, no completion and no
// history.
#include <chrono>
#include <cstdio>
#include <iostream>
#include <thread>

#include "minihost/script/Interruption.h"
#include "minihost/script/LineEditor.h"

namespace minihost {

namespace {

// The end-of-input line of a Windows console: Ctrl-Z, then Enter.
constexpr char kEndOfInput = '\x1a';

Context* gContext = nullptr;

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

}  // namespace

void StartEditing(Context& context, Completer /*complete*/) { gContext = &context; }

// NOTE: a console that does not cut its read short at Ctrl-C (wine's) still sets the flag;
// the line that then ends with Enter is dropped as well.
LineRead ReadLine(char const* prompt, std::string& line) {
    std::cout << prompt << std::flush;
    bool const got = static_cast<bool>(std::getline(std::cin, line));
    if (gContext != nullptr &&
        (got ? gContext->Interface_IsInterrupted() : CutShortByCtrlC(*gContext))) {
        std::cin.clear();
        std::clearerr(stdin);
        gContext->ClearInterrupt();
        ArmInterruption(*gContext);
        std::cout << '\n';
        return LineRead::kDropped;
    }
    if (!got) {
        return LineRead::kEnd;
    }
    if (!line.empty() && line.back() == '\r') {
        line.pop_back();
    }
    return !line.empty() && line.front() == kEndOfInput ? LineRead::kEnd : LineRead::kLine;
}

void RememberLine(std::string const& /*line*/) {}

void EndEditing() { gContext = nullptr; }

}  // namespace minihost
