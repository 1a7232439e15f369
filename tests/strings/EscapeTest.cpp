#include <gtest/gtest.h>
#include <string>

#include "strings/Escape.h"
#include "testing/RandomText.h"

namespace Tavrel {
namespace {

using tavrel_testing::RandomText;
using namespace std::string_literals;

TEST(Escape, RoundTripTable) {
    struct Row {
        std::string text, escaped;
    };
    // clang-format off
    Row const rows[] = {
        {"", ""}, {"a;b", "a\\;b"}, {"a\\b", "a\\\\b"}, {";", "\\;"}, {"\\", "\\\\"},
        {"\\;", "\\\\\\;"},
    };
    // clang-format on
    for (Row const& row : rows) {
        std::string text = row.text;
        Escape(text, ';', '\\');
        EXPECT_EQ(text, row.escaped) << "row " << row.text;
        Unescape(text, ';', '\\');
        EXPECT_EQ(text, row.text) << "row " << row.text;
    }
    std::string same = "\\";
    Escape(same, '\\', '\\');
    EXPECT_EQ(same, "\\\\\\\\");
    Unescape(same, '\\', '\\');
    EXPECT_EQ(same, "\\");
}

TEST(Unescape, IsPlainReplacement) {
    struct Row {
        std::string text, expected;
    };
    // clang-format off
    Row const rows[] = {
        {"\\", "\\"},       {"abc\\", "abc\\"}, {"\\x", "\\x"},  {"\\\\", "\\"},
        {"\\\\\\", "\\\\"}, {";", ";"},         {"\\\\;", ";"},  {"\\\\\\;", "\\;"},
        {"a\\\\\\\\;b", "a\\;b"},
    };
    // clang-format on
    for (Row const& row : rows) {
        std::string text = row.text;
        Unescape(text, ';', '\\');
        EXPECT_EQ(text, row.expected) << "row " << row.text;
    }
}

TEST(Escape, UnescapeUndoesEscapeForEveryPair) {
    std::string const alphabet = "a;\\\0"s;
    RandomText random(5);
    for (char const special : alphabet) {
        for (char const escape : alphabet) {
            for (int round = 0; round < 300; ++round) {
                std::string const original = random.From(alphabet, 12);
                std::string text = original;
                Escape(text, special, escape);
                Unescape(text, special, escape);
                ASSERT_EQ(text, original) << "special " << int(special) << " escape " << int(escape)
                                          << " round " << round;
            }
        }
    }
}

TEST(NonPrint, Table) {
    struct Row {
        std::string bytes, escaped, dropped, replaced, withChar;
    };
    // clang-format off
    Row const rows[] = {
        {"a\tb", "a\\x09b", "ab", "a[]b", "a?b"},
        {"a\0b"s, "a\\x00b", "ab", "a[]b", "a?b"},
        {"\x7F", "\\x7f", "", "[]", "?"},
        {"\xFF", "\\xff", "", "[]", "?"},
        {"\xC3\xA9", "\\xc3\\xa9", "", "[][]", "??"},
        {"\\", "\\", "\\", "\\", "\\"},
        {" ", " ", " ", " ", " "},
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
}

TEST(NonPrint, OutLookingIntoTextIsHeldApart) {
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
