#include <cctype>
#include <gtest/gtest.h>
#include <string>

#include "strings/Search.h"
#include "testing/RandomText.h"
#include "testing/StringReferences.h"
#include "tests/strings/EachPath.h"

namespace Tavrel {
namespace {

namespace ref = tavrel_testing::reference;
using tavrel_testing::RandomText;
using namespace std::string_view_literals;

TEST(StrnStr, Table) {
    struct Row {
        std::string_view text;
        std::size_t size;
        char const* needle;
        long expected;  // index of the match, -1 for null
    };
    // clang-format off
    Row const rows[] = {
        {"abcabc", 6, "ca", 2},   {"abcabc", 4, "ca", 2},   {"abcabc", 3, "ca", -1},
        {"aab", 3, "ab", 1},      {"abc", 3, "", 0},        {"abc", 0, "", -1},
        {"abc", 3, "abcd", -1},   {"a\0bc"sv, 4, "bc", 2},  {"abc", 3, nullptr, -1},
        {"xyz", 3, "z", 2},
    };
    // clang-format on
    for (Row const& row : rows) {
        char const* found = StrnStr(row.text.data(), row.size, row.needle);
        long const at = found == nullptr ? -1 : found - row.text.data();
        EXPECT_EQ(at, row.expected) << "row " << row.text << " " << row.size;
    }
    EXPECT_EQ(StrnStr(nullptr, 3, "a"), nullptr);
}

class FindCaseInsensitiveTest : public EachPath {};
TAVREL_ON_EACH_PATH(FindCaseInsensitiveTest);

TEST_P(FindCaseInsensitiveTest, HelloWorldRanges) {
    struct Row {
        std::size_t first, last;
        std::string_view needle;
        std::size_t expected;
    };
    // clang-format off
    Row const rows[] = {
        {0, 10, "WORLD", 6}, {0, 9, "WORLD", npos}, {6, 10, "world", 6}, {7, 10, "world", npos},
        {0, 11, "world", 6}, {0, 12, "world", npos}, {4, 3, "o", npos},   {4, 4, "O", 4},
        {5, 7, "o", 7},      {10, 10, "D", 10},      {11, 11, "d", npos}, {0, 10, "", npos},
        {npos, npos, "d", npos},
    };
    // clang-format on
    std::string_view const text = "Hello World";
    for (Row const& row : rows) {
        EXPECT_EQ(FindCaseInsensitive(text, row.first, row.last, row.needle), row.expected)
            << "row " << row.first << ".." << row.last << " " << row.needle;
    }
    EXPECT_EQ(FindCaseInsensitive(text, 5, "O"), 7u);
    EXPECT_EQ(FindCaseInsensitive(text, 11, "d"), npos);
    EXPECT_EQ(FindCaseInsensitive(text, "LL"), 2u);
    EXPECT_EQ(FindCaseInsensitive("", 0, 0, "a"), npos);
    EXPECT_EQ(FindCaseInsensitive("", ""), npos);
    EXPECT_EQ(FindCaseInsensitive("a\0B"sv, "\0b"sv), 1u);
    EXPECT_EQ(FindCaseInsensitive("\xC3\xA9", "\xC3\x89"), npos);  // no fold above 0x7F
}

TEST_P(FindCaseInsensitiveTest, AgreesWithPlainProcedure) {
    RandomText random(7);
    std::string_view const alphabet = "aAbB\0\xC3\xE9-"sv;
    for (int round = 0; round < 3000; ++round) {
        // Long texts take the table and block paths, short ones the direct fold.
        std::string const text = random.From(alphabet, round % 3 == 0 ? 1200 : 40);
        std::string const needle = random.From(alphabet, 1 + round % 5);
        std::size_t const first = random.Below(text.size() + 2);
        std::size_t const last = round % 4 == 0 ? text.size() : random.Below(text.size() + 2);
        ASSERT_EQ(FindCaseInsensitive(text, first, last, needle),
                  ref::FoldFind(text, first, last, needle))
            << "round " << round << " needle " << needle << " " << first << ".." << last;
    }
}

TEST_P(FindCaseInsensitiveTest, FindsNeedleAtEveryEndOfLongText) {
    for (std::size_t size = 256; size < 300; ++size) {
        std::string text(size, 'x');
        text.replace(size - 3, 3, "AbC");
        EXPECT_EQ(FindCaseInsensitive(text, "abc"), size - 3) << "size " << size;
        EXPECT_EQ(FindCaseInsensitive(text, 0, size - 2, "abc"), npos) << "size " << size;
    }
}

// A needle of each length at every place of a text long enough for the table and the
// candidate filter, among near misses (the needle with its middle byte changed, which pass
// the filter on the first and last byte), with ranges that end at it, behind it and before it.
TEST_P(FindCaseInsensitiveTest, NeedleAtEveryPlace) {
    std::string_view const needles[] = {"Q", "aNt", "NeEdLe42", "the Quick brown fox jumps over t"};
    for (std::string_view const needle : needles) {
        std::string nearMiss = ref::Upper(needle);
        nearMiss[needle.size() / 2] = '#';
        std::string base(330, '.');
        for (std::size_t k = 0; needle.size() >= 3 && k + needle.size() <= base.size(); k += 9) {
            base.replace(k, needle.size(), nearMiss);
        }
        for (std::size_t place = 0; place + needle.size() <= base.size(); ++place) {
            std::string text = base;
            text.replace(place, needle.size(), ref::Upper(needle));
            std::size_t const end = place + needle.size();
            for (std::size_t const last : {end - 1, end, text.size(), end - 2}) {
                ASSERT_EQ(FindCaseInsensitive(text, 0, last, needle),
                          ref::FoldFind(text, 0, last, needle))
                    << needle << " at " << place << " last " << last;
            }
        }
    }
}

}  // namespace
}  // namespace Tavrel
