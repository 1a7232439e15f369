// LineEditor with GNU readline.
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <memory>
#include <readline/history.h>
#include <readline/readline.h>
#include <system_error>
#include <utility>

#include "minihost/script/Completion.h"
#include "minihost/script/Interruption.h"
#include "minihost/script/LineEditor.h"

namespace minihost {

namespace {

// The bytes that end a word for completion: a call's punctuation, blanks and the quote (which
// also starts a file name to complete).
constexpr char const* kWordBreaks = " \t\n\"(),=;#";

Context* gContext = nullptr;
Completer gComplete;
std::string gHistoryFile;
bool gDropped = false;
std::vector<std::string> gMatches;
std::size_t gNextMatch = 0;

bool Interrupted() { return gContext != nullptr && gContext->Interface_IsInterrupted(); }

// Waits until fd has input; false when a Ctrl-C (or another signal) came first.
// NOTE: SIGINT is blocked from the look at the flag until ppoll lets it in for the wait, so a
// Ctrl-C that comes in between cuts the wait short, instead of leaving the prompt asleep with
// the flag set until the next key.
bool AwaitInput(int fd) {
    sigset_t interrupt;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    sigset_t open;
    ::pthread_sigmask(SIG_BLOCK, &interrupt, &open);
    bool ready = !Interrupted();
    if (ready) {
        pollfd input{fd, POLLIN, 0};
        ready = ::ppoll(&input, 1, nullptr, &open) >= 0 || errno != EINTR;
    }
    ::pthread_sigmask(SIG_SETMASK, &open, nullptr);
    return ready;
}

// Reads one byte for readline. A Ctrl-C (the flag set) drops what was typed and ends the
// line, so the prompt starts afresh.
int InterruptibleGetc(FILE* stream) {
    int const fd = ::fileno(stream);
    while (true) {
        if (AwaitInput(fd)) {
            unsigned char byte = 0;
            ssize_t const n = ::read(fd, &byte, 1);
            if (n == 1) {
                return byte;
            }
            if (n == 0 || errno != EINTR) {
                return EOF;
            }
        }
        if (Interrupted()) {
            gContext->ClearInterrupt();
            ArmInterruption(*gContext);
            rl_replace_line("", 0);
            gDropped = true;
            return '\n';
        }
    }
}

// One completion after another, as readline asks for them; state 0 starts again.
char* NextMatch(char const* /*text*/, int state) {
    if (state == 0) {
        gNextMatch = 0;
    }
    if (gNextMatch >= gMatches.size()) {
        return nullptr;
    }
    // NOTE: readline frees each match with free(), so it must come from malloc.
    return ::strdup(gMatches[gNextMatch++].c_str());
}

char** Complete(char const* text, int start, int /*end*/) {
    rl_attempted_completion_over = 1;  // no file names unless asked for below
    rl_completion_append_character = '\0';
    std::string_view const line(rl_line_buffer);
    auto const at = static_cast<std::size_t>(start);
    if (InsideString(line, at)) {
        return rl_completion_matches(text, rl_filename_completion_function);
    }
    gMatches = gComplete ? gComplete(line, at, text) : std::vector<std::string>{};
    return rl_completion_matches(text, NextMatch);
}

// $XDG_STATE_HOME/minihost/history, else ~/.local/state/minihost/history; "" without a home.
// NOTE: a relative $XDG_STATE_HOME is ignored, as the base directory rules ask.
std::string HistoryFile() {
    char const* state = std::getenv("XDG_STATE_HOME");
    if (state != nullptr && state[0] == '/') {
        return std::string(state) + "/minihost/history";
    }
    char const* home = std::getenv("HOME");
    if (home == nullptr || home[0] == '\0') {
        return "";
    }
    return std::string(home) + "/.local/state/minihost/history";
}

// The history file, its directory made; "" after a line that says why when there is none.
std::string PrepareHistoryFile() {
    std::string file = HistoryFile();
    std::error_code error;
    if (!file.empty()) {
        std::filesystem::create_directories(std::filesystem::path(file).parent_path(), error);
    }
    if (file.empty() || error) {
        std::cerr << "minihost: the history is not kept: "
                  << (file.empty() ? "neither XDG_STATE_HOME nor HOME is set"
                                   : file + ": " + error.message())
                  << '\n';
        return "";
    }
    return file;
}

}  // namespace

void StartEditing(Context& context, Completer complete) {
    gContext = &context;
    gComplete = std::move(complete);
    // NOTE: readline must not install its own SIGINT handler: ours sets the flag, and the
    // reading function above turns it into a dropped line.
    rl_catch_signals = 0;
    rl_getc_function = &InterruptibleGetc;
    rl_readline_name = "minihost";
    rl_attempted_completion_function = &Complete;
    rl_basic_word_break_characters = kWordBreaks;
    rl_completer_quote_characters = "\"";
    stifle_history(kHistoryLines);
    gHistoryFile = PrepareHistoryFile();
    // A missing file is a first session; any other failure shows when it is written.
    if (!gHistoryFile.empty()) {
        (void)read_history(gHistoryFile.c_str());
    }
}

LineRead ReadLine(char const* prompt, std::string& line) {
    gDropped = false;
    std::unique_ptr<char, decltype(&std::free)> text(readline(prompt), &std::free);
    if (!text) {
        return LineRead::kEnd;
    }
    line = text.get();
    return gDropped ? LineRead::kDropped : LineRead::kLine;
}

void RememberLine(std::string const& line) {
    HIST_ENTRY const* last =
        history_length > 0 ? history_get(history_base + history_length - 1) : nullptr;
    if (line.empty() || (last != nullptr && line == last->line)) {
        return;
    }
    add_history(line.c_str());
    if (!gHistoryFile.empty()) {
        int const error = write_history(gHistoryFile.c_str());
        if (error != 0) {
            std::cerr << "minihost: the history is not kept: " << gHistoryFile << ": "
                      << std::strerror(error) << '\n';
            gHistoryFile.clear();
        }
    }
}

void EndEditing() {
    rl_attempted_completion_function = nullptr;
    gComplete = nullptr;
    gContext = nullptr;
}

}  // namespace minihost
