#include <gtest/gtest.h>

#include "strings/Compare.h"

namespace Tavrel {
namespace {

using namespace std::string_view_literals;

TEST(Compare, TextForms) {
    struct Row {
        std::string_view text, other;
        bool starts, ends, startsCi, endsCi, equalsCi;
    };
    // clang-format off
    Row const rows[] = {
        {"abc", "abc", true, true, true, true, true},
        {"abc", "bc", false, true, false, true, false},
        {"abc", "BC", false, false, false, true, false},
        {"abc", "AB", false, false, true, false, false},
        {"abc", "ABC", false, false, true, true, true},
        {"abc", "", false, false, false, false, false},
        {"", "", false, false, false, false, true},
        {"", "a", false, false, false, false, false},
        {"abc", "abcd", false, false, false, false, false},
        // strncmp stops at the NUL both hold; the folding forms compare every byte.
        {"x\0b"sv, "x\0c"sv, true, true, false, false, false},
        {"a\0b"sv, "A\0B"sv, false, false, true, true, true},
        {"\xC3\xA9", "\xC3\x89", false, false, false, false, false},
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
}

TEST(Compare, CharForms) {
    struct Row {
        std::string_view text;
        char c;
        bool starts, ends;
    };
    // clang-format off
    Row const rows[] = {
        {"", '\0', false, false}, {"\0a"sv, '\0', true, false}, {"/a/", '/', true, true},
        {"ab", 'b', false, true}, {"a", 'a', true, true},
    };
    // clang-format on
    for (Row const& row : rows) {
        EXPECT_EQ(StartsWith(row.text, row.c), row.starts) << "row " << row.text;
        EXPECT_EQ(EndsWith(row.text, row.c), row.ends) << "row " << row.text;
    }
}

}  // namespace
}  // namespace Tavrel
