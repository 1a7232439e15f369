#include <gtest/gtest.h>
#include <string>

#include "strings/Trim.h"

namespace Tavrel {
namespace {

using namespace std::string_literals;

// A text with what LTrim, RTrim and Trim leave of it; Set is char const* or char.
template <class Set>
struct Row {
    std::string text;
    Set set;
    std::string left, right, both;
};

template <class Set>
void CheckRows(std::initializer_list<Row<Set>> rows) {
    for (Row<Set> const& row : rows) {
        SCOPED_TRACE(testing::Message() << "row " << testing::PrintToString(row.text));
        std::string text[3] = {row.text, row.text, row.text};
        LTrim(text[0], row.set);
        RTrim(text[1], row.set);
        Trim(text[2], row.set);
        EXPECT_EQ(text[0], row.left);
        EXPECT_EQ(text[1], row.right);
        EXPECT_EQ(text[2], row.both);
    }
}

TEST(Trim, SetTable) {
    // clang-format off
    CheckRows<char const*>({
        {"  ab  ", " ", "ab  ", "  ab", "ab"},  {"xyabyx", "xy", "abyx", "xyab", "ab"},
        {"yxayx", "xy", "ayx", "yxa", "a"},     {"a b", " ", "a b", "a b", "a b"},
        {"xxxx", "x", "", "", ""},              {"", "x", "", "", ""},
        {"ab", "", "ab", "ab", "ab"},           {"ab", nullptr, "ab", "ab", "ab"},
        {"\xC3" "a\xC3", "\xC3", "a\xC3", "\xC3" "a", "a"},
    });
    // clang-format on
}

TEST(Trim, CharTable) {
    // clang-format off
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

}  // namespace
}  // namespace Tavrel
