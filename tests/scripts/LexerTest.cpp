#include <gtest/gtest.h>
#include <string>
#include <tuple>
#include <vector>

#include "minihost/script/Lexer.h"
#include "minihost/script/Parser.h"
#include "tests/scripts/Rows.h"

namespace minihost {
namespace {

using namespace std::string_literals;

// What Parse says about source: "" when it is accepted, else "<line>:<column>: <message>".
std::string ParseFault(std::string const& source) {
    try {
        Parse(source);
        return "";
    } catch (ScriptError const& error) {
        return error.Format("").substr(1);
    }
}

// n calls, each the argument of the one before.
std::string Nested(int n) {
    std::string source = "print ";
    for (int i = 0; i < n; ++i) {
        source += "F(";
    }
    return source + "1" + std::string(static_cast<std::size_t>(n), ')');
}

TEST(Parse, MalformedScriptsGiveOneMessageWithLineAndColumn) {
    rows::Expect<std::string, std::string>(
        {
            {"x = \"abc", "1:5: unterminated string"},
            {"x = \"ab\nc\"", "1:5: unterminated string"},
            {"x = \"ab\\", "1:5: unterminated string"},
            {"\n  print \"a\\qb\"", "2:11: bad escape '\\q'"},
            {"print \"\\x4\"", "1:8: bad escape '\\x4': \\x takes two hex digits"},
            {"print \"\\xg0\"", "1:8: bad escape '\\x': \\x takes two hex digits"},
            {"print \"\\x", "1:8: bad escape '\\x': \\x takes two hex digits"},
            {"print -x", "1:7: malformed number"},
            {"print 1.", "1:7: malformed number"},
            {"print 2e", "1:7: malformed number"},
            {"print 1e999", "1:7: number out of range: 1e999"},
            {"\xEF\xBB\xBFprint @", "1:7: unexpected character '@'"},
            {"print \"\\1\"", "1:8: bad escape '\\1'"},
            {"print Binary.", "1:7: malformed name 'Binary.'"},
            {"print \0"s, "1:7: unexpected character '\\x00'"},
            {"print Size(x", "1:13: expected ',' or ')' but found end of script"},
            {"print Size(x\n)", "1:13: expected ',' or ')' but found end of line"},
            {"print Size(x y)", "1:14: expected ',' or ')' but found name 'y'"},
            {"print Size(,)", "1:12: expected an expression but found ','"},
            {"x = ", "1:5: expected an expression but found end of script"},
            {"x =\t1 2", "1:7: expected end of line but found number 2"},  // a tab is one column
            {"a.b = 1", "1:1: a variable name has no dots: 'a.b'"},
            {"print = 1", "1:1: 'print' is reserved"},
            {"x = print", "1:5: 'print' is reserved"},
            {"call 5", "1:6: expected the name of an entry after 'call' but found number 5"},
            {"call f", "1:7: expected '(' but found end of script"},
            {"print Binary.Size",
             "1:18: expected '(' after the function name but found end of script"},
            {"print \"a\"; )", "1:12: expected an expression but found ')'"},
            {"x = 1 \xEF\xBB\xBF", "1:7: unexpected character '\\xef'"},
            {"dump d, 1, 2, 3", "1:13: expected end of line but found ','"},
            {Nested(257), "1:519: calls nested more than 256 deep"},
            {Nested(100000), "1:519: calls nested more than 256 deep"},
            // Accepted.
            {"", ""},
            {"# only a comment\n\n;;", ""},
            {"x = 1; print x # and a comment", ""},
            {"print F(\n  1,\n  \"a\")", ""},
            {"print F(\n)", ""},
            {"call e(1, x, \"s\")", ""},
            {"dump d; dump d, 1; dump F(d), x, 2", ""},
            {"Size = 1\nprint Size(Size)", ""},
            {Nested(256), ""},
        },
        ParseFault);
}

// The one token before the end: its kind, its decoded text and its number.
TEST(Tokenize, DecodesLiterals) {
    using Token1 = std::tuple<TokenKind, std::string, double>;
    rows::Expect<std::string, Token1>(
        {
            {"\"\"", {TokenKind::kString, "", 0}},
            {"\"\\x00\\\"\\\\\\n\\t\"", {TokenKind::kString, "\0\"\\\n\t"s, 0}},
            {"\"\\r\\0\\01\"", {TokenKind::kString, "\r\0\0"s + "1", 0}},
            {"\"\\xFF\\xAb\\x0A\"", {TokenKind::kString, "\xff\xab\n", 0}},
            {"\"\t raw\xc3\xa9\"", {TokenKind::kString, "\t raw\xc3\xa9", 0}},
            {"-1.5e3", {TokenKind::kNumber, "-1.5e3", -1500}},
            {"+0.25", {TokenKind::kNumber, "+0.25", 0.25}},
            {"2.5E-3", {TokenKind::kNumber, "2.5E-3", 0.0025}},
            {"-0", {TokenKind::kNumber, "-0", -0.0}},
            {"007", {TokenKind::kNumber, "007", 7}},
            {"Binary.Append_2", {TokenKind::kName, "Binary.Append_2", 0}},
            {"_xZ", {TokenKind::kName, "_xZ", 0}},
        },
        [](std::string const& source) {
            std::vector<Token> const tokens = Tokenize(source);
            return tokens.size() == 2
                       ? Token1{tokens[0].kind, tokens[0].text, tokens[0].number}
                       : Token1{TokenKind::kEnd, "tokens: " + std::to_string(tokens.size()), 0};
        });
}

}  // namespace
}  // namespace minihost
