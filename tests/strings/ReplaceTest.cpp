#include <gtest/gtest.h>
#include <string>

#include "strings/Replace.h"
#include "testing/RandomText.h"
#include "testing/StringReferences.h"

namespace Tavrel {
namespace {

namespace ref = tavrel_testing::reference;
using tavrel_testing::RandomText;
using namespace std::string_literals;

std::string Repeat(std::string_view piece, int times) {
    std::string text;
    for (int k = 0; k < times; ++k) {
        text += piece;
    }
    return text;
}

TEST(ReplaceAll, StringTable) {
    struct Row {
        std::string text, from, to, expected;
    };
    // clang-format off
    Row const rows[] = {
        {"aaa", "a", "aa", "aaaaaa"}, {"aaaa", "aa", "b", "bb"},   {"abab", "ab", "", ""},
        {"aXbXc", "X", "--", "a--b--c"}, {"abc", "", "x", "abc"},  {"", "a", "b", ""},
        {"aaa", "aa", "xyz", "xyza"}, {"a\0b\0"s, "\0"s, "/", "a/b/"}, {"abc", "abcd", "", "abc"},
        {"xabcx", "abc", "ABC", "xABCx"},
        {std::string(5000, 'a'), "a", "bc", Repeat("bc", 5000)},  // every byte an occurrence
    };
    // clang-format on
    for (Row const& row : rows) {
        std::string text = row.text;
        ReplaceAll(text, row.from, row.to);
        EXPECT_EQ(text, row.expected) << "row " << row.text << " " << row.from;
        std::string pointers = row.text;
        ReplaceAll(pointers, row.from.c_str(), row.to.c_str());
        if (row.from.find('\0') == std::string::npos) {
            EXPECT_EQ(pointers, row.expected) << "row " << row.text << " " << row.from;
        }
    }
}

TEST(ReplaceAll, CharNullAndAliasedForms) {
    std::string text = "a.b.\0."s;
    ReplaceAll(text, '.', '/');
    EXPECT_EQ(text, "a/b/\0/"s);
    ReplaceAll(text, '\0', 'x');
    EXPECT_EQ(text, "a/b/x/");

    ReplaceAll(text, nullptr, "y");
    ReplaceAll(text, "a", nullptr);
    EXPECT_EQ(text, "a/b/x/");

    // from or to looking into text itself: held apart, so nothing reads moved bytes.
    std::string self = "abab";
    ReplaceAll(self, self, "x"s);
    EXPECT_EQ(self, "x");
    self = "abab";
    ReplaceAll(self, "b"s, self);
    EXPECT_EQ(self, "aababaabab");
    self = "abcabc";
    ReplaceAll(self, self.c_str() + 4, "");
    EXPECT_EQ(self, "aa");
    self = "ab";
    ReplaceAll(self, "b", self.c_str());
    EXPECT_EQ(self, "aab");
}

TEST(ReplaceAll, AgreesWithPlainProcedure) {
    RandomText random(11);
    for (int round = 0; round < 4000; ++round) {
        std::string const original = random.From("aab\0"s, round % 10 == 0 ? 2000 : 30);
        std::string const from = random.From("ab", 3);
        std::string const to = random.From("abc", 4);
        std::string text = original;
        ReplaceAll(text, from, to);
        ASSERT_EQ(text, ref::ReplaceAll(original, from, to))
            << "round " << round << " from " << from << " to " << to;
    }
}

}  // namespace
}  // namespace Tavrel
