// The functions of the string library that have a single, portable form.
#include <gtest/gtest.h>
#include <list>
#include <string>

#include "strings/Case.h"
#include "strings/Compare.h"
#include "strings/Escape.h"
#include "strings/Split.h"
#include "strings/Trim.h"

namespace Tavrel {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
using Parts = std::list<std::string>;

// The view forms copy and call the in-place ones, so they check both.
TEST(Case, UpperLowerAndCamelCase) {
    std::string_view const bytes = "aZ9_\xC3\xA9@[`{";
    EXPECT_EQ(ToUpper(bytes), "AZ9_\xC3\xA9@[`{");
    EXPECT_EQ(ToLower(bytes), "az9_\xC3\xA9@[`{");
    // clang-format off
    struct Row { std::string text, expected; };
    Row const rows[] = {
        {"", ""}, {"a", "A"}, {"-", "-"}, {"hello_world", "HelloWorld"},
        {"hello world", "HelloWorld"}, {"foo-bar.baz", "FooBarBaz"}, {"hello__world", "HelloWorld"},
        {"HELLO_WORLD", "HELLOWORLD"}, {"camelCase", "CamelCase"}, {"foo_Bar", "FooBar"},
        {"foo_1bar", "Foo1bar"}, {"foo 2 bar", "Foo2Bar"}, {"a1b", "A1b"}, {"9lives", "9lives"},
        {"a_b_c", "ABC"}, {"foo_bar_", "FooBar"}, {"a__", "A"}, {"_foo_bar", "_fooBar"},
        {"__foo", "_Foo"}, {" foo", " foo"}, {"a\xC3\xA9" "b", "AB"}, {"\xC3\xA9" "a", "\xC3" "A"},
    };
    // clang-format on
    for (Row const& row : rows) {
        std::string text = row.text;
        ToCamelCase(text);
        EXPECT_EQ(text, row.expected) << "row " << row.text;
    }
}

TEST(Compare, TextAndCharForms) {
    // clang-format off
    struct Row { std::string_view text, other; bool starts, ends, startsCi, endsCi, equalsCi; };
    Row const rows[] = {
        {"abc", "abc", 1, 1, 1, 1, 1}, {"abc", "bc", 0, 1, 0, 1, 0}, {"abc", "BC", 0, 0, 0, 1, 0},
        {"abc", "AB", 0, 0, 1, 0, 0},  {"abc", "ABC", 0, 0, 1, 1, 1}, {"abc", "", 0, 0, 0, 0, 0},
        {"", "", 0, 0, 0, 0, 1},       {"", "a", 0, 0, 0, 0, 0},     {"abc", "abcd", 0, 0, 0, 0, 0},
        // strncmp stops at the NUL both hold; the folding forms compare every byte.
        {"x\0b"sv, "x\0c"sv, 1, 1, 0, 0, 0}, {"a\0b"sv, "A\0B"sv, 0, 0, 1, 1, 1},
        {"\xC3\xA9", "\xC3\x89", 0, 0, 0, 0, 0},
    };
    // clang-format on
    for (Row const& row : rows) {
        SCOPED_TRACE(testing::Message() << "row " << row.text << " / " << row.other);
        EXPECT_EQ(StartsWith(row.text, row.other), row.starts);
        EXPECT_EQ(EndsWith(row.text, row.other), row.ends);
        EXPECT_EQ(StartsWithCaseInsensitive(row.text, row.other), row.startsCi);
        EXPECT_EQ(EndsWithCaseInsensitive(row.text, row.other), row.endsCi);
        EXPECT_EQ(EqualsCaseInsensitive(row.text, row.other), row.equalsCi);
    }
    // clang-format off
    struct CharRow { std::string_view text; char c; bool starts, ends; };
    CharRow const chars[] = {
        {"", '\0', 0, 0}, {"\0a"sv, '\0', 1, 0}, {"/a/", '/', 1, 1}, {"ab", 'b', 0, 1},
    };
    // clang-format on
    for (CharRow const& row : chars) {
        EXPECT_EQ(StartsWith(row.text, row.c), row.starts) << "row " << row.text;
        EXPECT_EQ(EndsWith(row.text, row.c), row.ends) << "row " << row.text;
    }
}

// A text with what LTrim, RTrim and Trim leave of it; Set is char const* or char.
template <class Set>
struct TrimRow {
    std::string text;
    Set set;
    std::string left, right, both;
};

template <class Set>
void CheckRows(std::initializer_list<TrimRow<Set>> rows) {
    for (TrimRow<Set> const& row : rows) {
        SCOPED_TRACE(testing::Message() << "row " << testing::PrintToString(row.text));
        std::string text[3] = {row.text, row.text, row.text};
        LTrim(text[0], row.set);
        RTrim(text[1], row.set);
        Trim(text[2], row.set);
        EXPECT_EQ(text[0] + "|" + text[1] + "|" + text[2],
                  row.left + "|" + row.right + "|" + row.both);
    }
}

TEST(Trim, SetAndCharTables) {
    // clang-format off
    CheckRows<char const*>({
        {"  ab  ", " ", "ab  ", "  ab", "ab"},  {"xyabyx", "xy", "abyx", "xyab", "ab"},
        {"yxayx", "xy", "ayx", "yxa", "a"},     {"a b", " ", "a b", "a b", "a b"},
        {"xxxx", "x", "", "", ""},              {"", "x", "", "", ""},
        {"ab", "", "ab", "ab", "ab"},           {"ab", nullptr, "ab", "ab", "ab"},
        {"\xC3" "a\xC3", "\xC3", "a\xC3", "\xC3" "a", "a"},
    });
    CheckRows<char>({
        {"\0a\0"s, '\0', "a\0"s, "\0a"s, "a"}, {"--a-b--", '-', "a-b--", "--a-b", "a-b"},
        {"---", '-', "", "", ""},              {"", '-', "", "", ""},
        {"ab", 'x', "ab", "ab", "ab"},
    });
    // clang-format on
    std::string self = "xax";
    Trim(self, self[0]);
    EXPECT_EQ(self, "a");
}

TEST(SplitString, Table) {
    // clang-format off
    struct Row { std::string text, delimiters; bool anyOf; Parts expected; };
    Row const rows[] = {
        {"/a/b/", "/\\", true, {"", "a", "b", ""}}, {"/", "/\\", true, {"", ""}},
        {"a", "/\\", true, {"a"}},                  {"", "/\\", true, {""}},
        {"\\a/b\\\\", "/\\", true, {"", "a", "b", "", ""}},
        {"a::b:::c", "::", false, {"a", "b", ":c"}}, {"::", "::", false, {"", ""}},
        {"a/b", "/\\", false, {"a/b"}},             {"a/b", "", false, {"a/b"}},
        {"a/b", "", true, {"a/b"}},
    };
    // clang-format on
    for (Row const& row : rows) {
        Parts out = {"old"};
        EXPECT_EQ(SplitString(row.text, out, row.delimiters, row.anyOf), row.expected.size())
            << "row " << row.text << " by " << row.delimiters;
        EXPECT_EQ(out, row.expected) << "row " << row.text << " by " << row.delimiters;
    }
    Parts out = {"x/y", "/"};  // the text and the delimiters are elements of out
    EXPECT_EQ(SplitString(out.front(), out, out.back(), true), 2u);
    EXPECT_EQ(out, (Parts{"x", "y"}));
}

// Escape and Unescape with ';' and '\': rows with an escaped form go both ways; the others
// (null) are texts that Escape never makes, which Unescape takes as plain replacements.
TEST(Escape, EscapeAndUnescapeTable) {
    // clang-format off
    struct Row { std::string text; char const* escaped; std::string unescaped; };
    Row const rows[] = {
        {"", "", ""}, {"a;b", "a\\;b", "a;b"}, {"a\\b", "a\\\\b", "a\\b"}, {";", "\\;", ";"},
        {"\\;", "\\\\\\;", "\\;"}, {"\\", "\\\\", "\\"}, {"abc\\", nullptr, "abc\\"},
        {"\\x", nullptr, "\\x"}, {"\\\\\\", nullptr, "\\\\"}, {"\\\\;", nullptr, ";"},
        {"a\\\\\\\\;b", nullptr, "a\\;b"},
    };
    // clang-format on
    for (Row const& row : rows) {
        std::string text = row.text;
        if (row.escaped != nullptr) {
            Escape(text, ';', '\\');
            EXPECT_EQ(text, row.escaped) << "row " << row.text;
        }
        Unescape(text, ';', '\\');
        EXPECT_EQ(text, row.unescaped) << "row " << row.text;
    }
    std::string same = "\\";
    Escape(same, '\\', '\\');
    EXPECT_EQ(same, "\\\\\\\\");
    Unescape(same, '\\', '\\');
    EXPECT_EQ(same, "\\");
}

// Each row through the out and the in-place forms; out may look into the text.
TEST(NonPrint, Table) {
    // clang-format off
    struct Row { std::string bytes, escaped, dropped, replaced, withChar; };
    Row const rows[] = {
        {"a\tb", "a\\x09b", "ab", "a[]b", "a?b"},     {"a\0b"s, "a\\x00b", "ab", "a[]b", "a?b"},
        {"\x7F", "\\x7f", "", "[]", "?"},             {"\xFF", "\\xff", "", "[]", "?"},
        {"\xC3\xA9", "\\xc3\\xa9", "", "[][]", "??"}, {"\\ ", "\\ ", "\\ ", "\\ ", "\\ "},
        {"", "", "", "", ""},
    };
    // clang-format on
    for (Row const& row : rows) {
        SCOPED_TRACE(testing::Message() << "row " << testing::PrintToString(row.bytes));
        std::string out = "old";
        EscapeNonPrint(row.bytes, out);
        EXPECT_EQ(out, row.escaped);
        RemoveNonPrint(row.bytes, out, false, "[]");
        EXPECT_EQ(out, row.dropped);
        RemoveNonPrint(row.bytes, out, true, "[]");
        EXPECT_EQ(out, row.replaced);
        RemoveNonPrint(row.bytes, out, '?');
        EXPECT_EQ(out, row.withChar);
        std::string text[3] = {row.bytes, row.bytes, row.bytes};
        EscapeNonPrint(text[0]);
        RemoveNonPrint(text[1], true, "[]");
        RemoveNonPrint(text[2], '?');
        EXPECT_EQ(text[0] + text[1] + text[2], row.escaped + row.replaced + row.withChar);
    }
    std::string out = "a\tb\x01";
    EscapeNonPrint(out, out);
    EXPECT_EQ(out, "a\\x09b\\x01");
    out = "x\ty";
    RemoveNonPrint(out, out, true, std::string_view(out).substr(0, 1));
    EXPECT_EQ(out, "xxy");
    out = "\x01z";
    RemoveNonPrint(out, out, out[1]);
    EXPECT_EQ(out, "zz");
}

}  // namespace
}  // namespace Tavrel
