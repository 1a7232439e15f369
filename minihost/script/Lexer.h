// Lexer: splits the text of a script into tokens: names (dotted, as in Binary.Slice), numbers
// with sign and fraction, string literals with their escapes decoded, the punctuation
// ( ) , = and the ends of statements (a line end or ';'). Comments run from '#' to the end of
// the line and make no token; a UTF-8 byte-order mark at the very start is skipped. It knows
// no keywords and no grammar: that is the parser's work.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "minihost/script/ScriptError.h"

namespace minihost {

enum class TokenKind {
    kName,    // text: the name, dots included
    kNumber,  // text: the literal as written; number: its value
    kString,  // text: the bytes after decoding the escapes
    kLeftParen,
    kRightParen,
    kComma,
    kEquals,
    kEndOfStatement,  // a line end or ';'
    kEnd,             // the end of the script, always the last token
};

struct Token {
    TokenKind kind = TokenKind::kEnd;
    std::string text;
    double number = 0.0;
    SourcePosition position;
    // The token's bytes in the source: [begin, end) (for kEnd: the end of the source).
    std::size_t begin = 0;
    std::size_t end = 0;
};

// The tokens of source, ending with one kEnd token. Line numbers start at firstLine.
// Throws ScriptError at the first malformed token, placed where that token starts (for a bad
// escape: where the backslash stands):
//   "\"abc"          => "unterminated string" at the opening quote (also when a line end
//                       comes before the closing quote)
//   "\"a\\qb\""      => "bad escape '\q'";  "\"\\x4\"" => "bad escape '\x4': \x takes two
//                       hex digits"
//   "-x", "1.", "1e" => "malformed number"
//   "1e999"          => "number out of range: 1e999" (beyond what a double holds)
//   "Binary."        => "malformed name 'Binary.'"
//   "@", "\0"        => "unexpected character '@'" / "unexpected character '\x00'"
// Accepted: "" => [kEnd];  "x = -1.5e3 # c" => name, '=', number -1500, kEnd;
//   "\"\\x00\\\"\"" => one string of the two bytes NUL and '"';  "\"\\r\\0\"" => CR and NUL;
//   "\xEF\xBB\xBFx" => name 'x' at column 1 (the byte-order mark takes no column).
std::vector<Token> Tokenize(std::string_view source, int firstLine = 1);

// How a token is named in a message: "name 'x'", "number 1.5", "string \"ab\"", "'('",
// "end of line", "';'", "end of script".
std::string DescribeToken(Token const& token);

}  // namespace minihost
