#include "strings/Trim.h"

#include <gtest/gtest.h>

#include <string>

namespace Tavrel {
namespace {

using namespace std::string_literals;

TEST(Trim, SetTable) {
    struct Row {
        std::string text;
        char const* set;
        std::string left, right, both;
    };
    Row const rows[] = {
        {"  ab  ", " ", "ab  ", "  ab", "ab"},  {"xyabyx", "xy", "abyx", "xyab", "ab"},
        {"yxayx", "xy", "ayx", "yxa", "a"},     {"a b", " ", "a b", "a b", "a b"},
        {"xxxx", "x", "", "", ""},              {"", "x", "", "", ""},
        {"ab", "", "ab", "ab", "ab"},           {"ab", nullptr, "ab", "ab", "ab"},
        {"\xC3" "a\xC3", "\xC3", "a\xC3", "\xC3" "a", "a"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(testing::Message() << "row '" << row.text << "' set "
                                        << (row.set ? row.set : "(null)"));
        std::string text = row.text;
        LTrim(text, row.set);
        EXPECT_EQ(text, row.left);
        text = row.text;
        RTrim(text, row.set);
        EXPECT_EQ(text, row.right);
        text = row.text;
        Trim(text, row.set);
        EXPECT_EQ(text, row.both);
    }
}

TEST(Trim, CharTable) {
    struct Row {
        std::string text;
        char c;
        std::string left, right, both;
    };
    Row const rows[] = {
        {"\0a\0"s, '\0', "a\0"s, "\0a"s, "a"}, {"--a-b--", '-', "a-b--", "--a-b", "a-b"},
        {"---", '-', "", "", ""},              {"", '-', "", "", ""},
        {"ab", 'x', "ab", "ab", "ab"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(testing::Message() << "row " << testing::PrintToString(row.text));
        std::string text = row.text;
        LTrim(text, row.c);
        EXPECT_EQ(text, row.left);
        text = row.text;
        RTrim(text, row.c);
        EXPECT_EQ(text, row.right);
        text = row.text;
        Trim(text, row.c);
        EXPECT_EQ(text, row.both);
    }
    std::string self = "xax";
    Trim(self, self[0]);
    EXPECT_EQ(self, "a");
}

}  // namespace
}  // namespace Tavrel
