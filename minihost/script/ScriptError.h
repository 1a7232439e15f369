// ScriptError: a fault that stops a script, with the place in the script where it was found:
// a malformed script (from the lexer or the parser), a name the checker cannot resolve, or a
// call that cannot be made when the script runs. It knows no file name; whoever prints it
// puts the name of the script in front.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace minihost {

// A place in a script: 1-based line and column. Columns count bytes, so a tab is one column
// and a multi-byte character several.
struct SourcePosition {
    int line = 1;
    int column = 1;
};

// "<file>:<line>:<column>: <message>".
//   ("t.tvl", {3, 7}, "unknown variable 'x'") => "t.tvl:3:7: unknown variable 'x'"
//   ("", {1, 1}, "m")                         => ":1:1: m"
std::string FormatAt(std::string_view file, SourcePosition position, std::string_view message);

class ScriptError : public std::runtime_error {
public:
    // message is the text without the place: "unterminated string".
    ScriptError(SourcePosition position, std::string const& message);

    SourcePosition position() const { return mPosition; }
    // FormatAt(file, position(), what()).
    std::string Format(std::string_view file) const;

private:
    SourcePosition mPosition;
};

}  // namespace minihost
