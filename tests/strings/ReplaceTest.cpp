#include <gtest/gtest.h>
#include <string>

#include "strings/Replace.h"
#include "testing/RandomText.h"
#include "testing/StringReferences.h"
#include "tests/strings/EachPath.h"

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

class ReplaceAllTest : public EachPath {};
TAVREL_ON_EACH_PATH(ReplaceAllTest);

TEST_P(ReplaceAllTest, StringTable) {
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

TEST_P(ReplaceAllTest, CharNullAndAliasedForms) {
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

TEST_P(ReplaceAllTest, AgreesWithPlainProcedure) {
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

// One occurrence at every place of texts longer than a block, for patterns of each length the
// scanner treats apart, and every size up to a few blocks: the blocks of candidates, the last
// starts behind them, and a pattern that reaches the very end.
TEST_P(ReplaceAllTest, OccurrenceAtEveryPlace) {
    // The kernels replace patterns and replacements of up to 64 bytes in one loop and hand
    // longer ones to the general one: both sides of that line are here.
    std::string const patterns[] = {"#",
                                    "%%",
                                    "<b",
                                    "<b>",
                                    "{{name}}",
                                    "0123456789abcdef0123456789ABCDEF!",
                                    "#" + Repeat("0123456789abcdef", 4).substr(1)};
    for (std::string const& from : patterns) {
        for (std::size_t size = from.size(); size <= 200; size += 1 + size / 40) {
            for (std::size_t place = 0; place + from.size() <= size; ++place) {
                // Near misses around it: the first and the last byte alone.
                std::string original(size, '.');
                for (std::size_t k = place % 7; k + from.size() <= size; k += 13) {
                    original[k] = from.front();
                    original[k + from.size() - 1] = from.back();
                }
                original.replace(place, from.size(), from);
                for (std::string const& to : {""s, "x"s, from, from + "++"}) {
                    std::string text = original;
                    ReplaceAll(text, from, to);
                    ASSERT_EQ(text, ref::ReplaceAll(original, from, to))
                        << "from " << from << " to " << to << " at " << place << " of " << size;
                }
            }
        }
    }
}

// Long texts, whose occurrences are dense in one part and sparse or absent in another, so
// that the room guessed for a growing result from its start is too small or too large, and
// long stretches between occurrences go into the result at once.
TEST_P(ReplaceAllTest, LongTextsOfChangingDensity) {
    RandomText random(5);
    std::string const dense = Repeat("ab-cd.efg ", 3000);
    std::string const sparse = Repeat("lorem ipsum dolor sit amet ", 1000) + "ab" +
                               Repeat("consectetur adipiscing elit ", 700);
    for (std::string const& original : {dense + sparse, sparse + dense, sparse + sparse + "ab"}) {
        for (std::string const& to : {"xyz"s, ""s, "ba"s, Repeat("0123456789", 40)}) {
            std::string text = original;
            ReplaceAll(text, "ab"s, to);
            ASSERT_EQ(text, ref::ReplaceAll(original, "ab", to)) << "to " << to.size();
        }
    }
}

}  // namespace
}  // namespace Tavrel
