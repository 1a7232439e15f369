// LineEditor: how the prompt reads what a person types, one line at a time after a prompt
// text. LineEditor_posix.cpp edits lines with GNU readline: Tab asks the completer, and the
// history is kept between sessions in $XDG_STATE_HOME/minihost/history (or
// ~/.local/state/minihost/history), its last kHistoryLines lines. LineEditor_win.cpp reads plain
// lines from the console: no completion, no history. Either way Ctrl-C while a line is typed
// drops it. It runs nothing: the prompt (Repl) decides what a line means.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "minihost/host/Context.h"

namespace minihost {

// The most lines that the history file keeps.
inline constexpr int kHistoryLines = 1000;

// The completions of word, which starts at position start of line (see Completion.h).
using Completer = std::function<std::vector<std::string>(std::string_view line, std::size_t start,
                                                         std::string_view word)>;

enum class LineRead {
    kLine,     // a line was typed (without its line end)
    kDropped,  // Ctrl-C dropped what was being typed
    kEnd,      // the end of input (Ctrl-D; Ctrl-Z and Enter on Windows)
};

// Starts editing for context (whose interruption flag a Ctrl-C sets): loads the history and
// installs complete. A history that cannot be read or written leaves the prompt working
// without it, after one line on the error stream that says why.
void StartEditing(Context& context, Completer complete);

// Shows prompt and reads one line into line.
LineRead ReadLine(char const* prompt, std::string& line);

// Keeps line in the history (not an empty one, nor the same line twice in a row).
void RememberLine(std::string const& line);

// Ends editing; Start may be called again.
void EndEditing();

}  // namespace minihost
