// The functions of the string library with instruction-set paths, and the choice of the path.
// Their tests run once on every path that this build and processor have (EachPath), named by
// the path ("avx2"), and the property checks compare against the slow, literal references of
// testing/ on random and constructed texts, so that the faults of each path's kernels show.
#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "strings/Dispatch.h"
#include "strings/Replace.h"
#include "strings/Search.h"
#include "strings/Validate.h"
#include "testing/RandomText.h"
#include "testing/StringReferences.h"

namespace Tavrel {
namespace {

namespace ref = tavrel_testing::reference;
using tavrel_testing::RandomText;
using namespace std::string_literals;
using namespace std::string_view_literals;

// Runs a test on the path that its parameter names (the test's name ends with it: "avx2"),
// and puts the path that was in use back.
class OnEachPath : public testing::TestWithParam<StringsPath> {
protected:
    void SetUp() override {
        mBefore = ActiveStringsPath();
        ASSERT_TRUE(UseStringsPath(GetParam()));
    }
    void TearDown() override { UseStringsPath(mBefore); }

private:
    StringsPath mBefore = StringsPath::kPortable;
};
INSTANTIATE_TEST_SUITE_P(Path, OnEachPath, testing::ValuesIn(AvailableStringsPaths()),
                         [](testing::TestParamInfo<StringsPath> const& info) {
                             return std::string(StringsPathName(info.param));
                         });

// Each path by its name and back (the runs with TAVREL_STRINGS_PATH set read them too); the
// available paths are the portable one and every one up to the fastest, and a path that is
// not available cannot be put in use.
TEST(StringsPath, NamesAndAvailablePaths) {
    for (char const* unknown : {"", "AVX2", "avx-512", "portable "}) {
        EXPECT_EQ(ParseStringsPath(unknown), std::nullopt) << unknown;
    }
    std::vector<StringsPath> const available = AvailableStringsPaths();
    StringsPath const before = ActiveStringsPath();
    char const* const names[] = {"portable", "sse2", "avx2", "avx512"};
    for (int k = 0; k < 4; ++k) {
        StringsPath const path = static_cast<StringsPath>(k);
        EXPECT_EQ(ParseStringsPath(names[k]), path) << names[k];
        EXPECT_STREQ(StringsPathName(path), names[k]);
        bool const listed = k < static_cast<int>(available.size());
        EXPECT_TRUE(!listed || available[k] == path) << names[k];
        EXPECT_EQ(StringsPathAvailable(path), listed) << names[k];
        EXPECT_EQ(UseStringsPath(path), listed) << names[k];
        EXPECT_EQ(ActiveStringsPath(), listed ? path : available.back()) << names[k];
    }
    UseStringsPath(before);
#ifdef TAVREL_STRINGS_NO_SIMD
    EXPECT_EQ(available.size(), 1u);
#endif
}

// Run by CTest with TAVREL_STRINGS_PATH set (tests/strings/CMakeLists.txt). Every other test
// puts back the path it changed, so this sees the path chosen on first use: the one named,
// at most the fastest; the fastest for no variable or a name that is none.
TEST(StringsPath, FirstUseFollowsEnvironment) {
    StringsPath const fastest = AvailableStringsPaths().back();
    char const* const wanted = std::getenv("TAVREL_STRINGS_PATH");
    std::optional<StringsPath> const named = ParseStringsPath(wanted == nullptr ? "" : wanted);
    StringsPath const expected =
        named && static_cast<int>(*named) < static_cast<int>(fastest) ? *named : fastest;
    EXPECT_EQ(ActiveStringsPath(), expected) << "TAVREL_STRINGS_PATH=" << (wanted ? wanted : "");
}

// Only size bounds the text: a match behind a NUL byte is found, one past size is not.
TEST(StrnStr, SearchesTheFirstSizeBytes) {
    std::string const text("abcab\0bd", 8);
    struct Row {
        std::size_t size;
        char const* needle;
        std::size_t at;  // npos: null
    } const rows[] = {{5, "ca", 2}, {3, "ca", npos}, {8, "bd", 6}, {7, "bd", npos},
                      {8, "ab", 0}, {3, "", 0},      {0, "", npos}, {8, "abcd", npos}};
    for (Row const& row : rows) {
        char const* found = StrnStr(text.data(), row.size, row.needle);
        EXPECT_EQ(found == nullptr ? npos : static_cast<std::size_t>(found - text.data()), row.at)
            << row.needle << " in " << row.size;
    }
    EXPECT_EQ(StrnStr(text.data(), 8, nullptr), nullptr);
    EXPECT_EQ(StrnStr(nullptr, 3, "a"), nullptr);
}

// Ranges past the end and npos among them, through the forms with a range, with a first
// place and with neither.
TEST_P(OnEachPath, FindCaseInsensitiveAgreesWithReference) {
    RandomText random(7);
    std::string_view const alphabet = "aAbB\0\xC3\xE9-"sv;
    for (int round = 0; round < 3000; ++round) {
        // Long texts take the table and block paths, short ones the direct fold.
        std::string const text = random.From(alphabet, round % 3 == 0 ? 1200 : 40);
        std::string const needle = random.From(alphabet, 1 + round % 5);
        std::size_t const first = round % 11 == 0 ? npos : random.Below(text.size() + 2);
        std::size_t const last = round % 4 == 0    ? text.size()
                                 : round % 13 == 0 ? npos
                                                   : random.Below(text.size() + 2);
        ASSERT_EQ(FindCaseInsensitive(text, first, last, needle),
                  ref::FoldFind(text, first, last, needle))
            << "round " << round << " needle " << needle << " " << first << ".." << last;
        ASSERT_EQ(FindCaseInsensitive(text, first, needle),
                  ref::FoldFind(text, first, text.size(), needle))
            << "round " << round;
        ASSERT_EQ(FindCaseInsensitive(text, needle), ref::FoldFind(text, 0, text.size(), needle))
            << "round " << round;
    }
}

// A needle of each length at every place of a text long enough for the table and the
// candidate filter, among near misses (the needle with its middle byte changed, which pass
// the filter on the first and last byte), with ranges that end at it, behind it and before
// it, and in a text that ends with it (every size up to the whole).
TEST_P(OnEachPath, FindCaseInsensitiveNeedleAtEveryPlace) {
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
            std::string_view const ending = std::string_view(text).substr(0, end);
            ASSERT_EQ(FindCaseInsensitive(ending, needle), ref::FoldFind(ending, 0, end, needle))
                << needle << " ending at " << end;
        }
    }
}

std::string Repeat(std::string_view piece, int times) {
    std::string text;
    for (int k = 0; k < times; ++k) {
        text += piece;
    }
    return text;
}

// The forms that take nothing to replace or nothing to put in, and from or to looking into
// text itself: held apart, so nothing reads moved bytes.
TEST_P(OnEachPath, ReplaceAllNullAndAliasedArguments) {
    std::string text = "a/b";
    ReplaceAll(text, nullptr, "y");
    ReplaceAll(text, "a", nullptr);
    EXPECT_EQ(text, "a/b");
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

// Random short and long texts, and long texts whose occurrences are dense in one part and
// sparse or absent in another, so that the room guessed for a growing result from its start
// is too small or too large, long stretches between occurrences go into the result at once,
// and a lone occurrence stands at the start or behind a stretch longer than four blocks.
TEST_P(OnEachPath, ReplaceAllAgreesWithReference) {
    RandomText random(11);
    for (int round = 0; round < 4000; ++round) {
        std::string const original = random.From("aab\0"s, round % 10 == 0 ? 2000 : 30);
        std::string const from = random.From("ab\0"s, 3);
        std::string const to = random.From("abc", 4);
        std::string text = original, pointers = original, chars = original;
        ReplaceAll(text, from, to);
        ASSERT_EQ(text, ref::ReplaceAll(original, from, to))
            << "round " << round << " from " << from << " to " << to;
        if (from.find('\0') == npos) {  // the pointer form ends from at its NUL
            ReplaceAll(pointers, from.c_str(), to.c_str());
            ASSERT_EQ(pointers, text) << "round " << round;
        }
        char const byte = "ab\0"[round % 3];
        ReplaceAll(chars, byte, '/');
        ASSERT_EQ(chars, ref::ReplaceAll(original, byte, '/')) << "round " << round;
    }
    std::string const dense = Repeat("ab-cd.efg ", 3000);
    std::string const sparse = Repeat("lorem ipsum dolor sit amet ", 1000) + "ab" +
                               Repeat("consectetur adipiscing elit ", 700);
    for (std::string const& original :
         {dense + sparse, sparse + dense, sparse + sparse + "ab", Repeat("ab", 2500),
          "ab" + Repeat("0123456789", 40), Repeat(".", 200) + "ab" + Repeat(".", 400)}) {
        for (std::string const& to : {"xyz"s, ""s, "ba"s, "x"s, Repeat("0123456789", 40)}) {
            std::string text = original;
            ReplaceAll(text, "ab"s, to);
            ASSERT_EQ(text, ref::ReplaceAll(original, "ab", to)) << "to " << to.size();
        }
    }
}

// One occurrence at every place of texts longer than a block, for patterns of every length up
// to 8 (the AVX-512 deletion has a loop of its own for each) and of the longer lengths the
// scanner treats apart, and every size up to a few blocks: the blocks of candidates, the last
// starts behind them, and a pattern that reaches the very end. The kernels replace patterns
// and replacements of up to 64 bytes in one loop and hand longer ones to the general one:
// both sides of that line are here.
TEST_P(OnEachPath, ReplaceAllOccurrenceAtEveryPlace) {
    std::string const patterns[] = {"#",
                                    "%%",
                                    "<b",
                                    "<b>",
                                    "<br>",
                                    "&amp;",
                                    "<abcd>",
                                    "</span>",
                                    "{{name}}",
                                    "0123456789abcdef0123456789ABCDEF!",
                                    "#" + Repeat("0123456789abcdef", 4).substr(1)};
    for (std::string const& from : patterns) {
        for (std::size_t size = from.size(); size <= 200; size += 1 + size / 40) {
            for (std::size_t place = 0; place + from.size() <= size; ++place) {
                // Near misses around it: the first and the last byte alone, or (every other
                // one, for a longer pattern, with nothing else over it) the whole pattern but
                // for one inner byte.
                std::string original(size, '.');
                std::size_t step = 13;
                for (std::size_t k = place % 7, miss = 0; k + from.size() <= size; k += step) {
                    bool const whole = from.size() > 2 && ++miss % 2 == 0;
                    if (whole) {
                        original.replace(k, from.size(), from);
                        original[k + 1 + (miss / 2 - 1) % (from.size() - 2)] = '.';
                    }
                    original[k] = from.front();
                    original[k + from.size() - 1] = from.back();
                    step = whole ? std::max<std::size_t>(13, from.size()) : 13;
                }
                original.replace(place, from.size(), from);
                // Behind a first occurrence too, where the loop that goes on from it meets
                // this one at every lane of a block.
                for (std::string const& before : {original, from + original}) {
                    for (std::string const& to : {""s, "x"s, from, from + "++"}) {
                        std::string text = before;
                        ReplaceAll(text, from, to);
                        ASSERT_EQ(text, ref::ReplaceAll(before, from, to))
                            << "from " << from << " to " << to << " at " << place << " of "
                            << size << (before == original ? "" : " behind one");
                    }
                }
            }
        }
    }
}

constexpr std::size_t kUntouched = 999999;

// Checks all three tests on text against the references, with and without a position.
void ExpectAsReference(std::string_view text) {
    ref::Utf8Verdict const expected = ref::CheckUtf8(text);
    std::string message;
    std::size_t position = kUntouched;
    ASSERT_EQ(ValidUTF8(text, message, &position), expected.valid);
    ASSERT_EQ(message, expected.message);
    ASSERT_EQ(position, expected.valid ? kUntouched : expected.position);
    std::size_t const nonAscii = ref::FirstNonAscii(text).value_or(kUntouched);
    std::size_t const nonPrintable = ref::FirstNonPrintableAscii(text).value_or(kUntouched);
    position = kUntouched;
    ASSERT_EQ(ValidASCII(text, &position), nonAscii == kUntouched);
    ASSERT_EQ(position, nonAscii);
    position = kUntouched;
    ASSERT_EQ(ValidPrintableASCII(text, &position), nonPrintable == kUntouched);
    ASSERT_EQ(position, nonPrintable);
    ASSERT_EQ(ValidASCII(text, nullptr), nonAscii == kUntouched);
    ASSERT_EQ(ValidPrintableASCII(text, nullptr), nonPrintable == kUntouched);
}

// The exact reports of the UTF-8 test; a passing text leaves message and position as they were.
TEST_P(OnEachPath, ValidUTF8Reports) {
    struct Row {
        std::string bytes;
        std::string message;  // empty: the text passes
        std::size_t position;
    };
    auto const fail = [](int sign, int line) {
        return "Sign: " + std::to_string(sign) + " in column: " + std::to_string(line) +
               " is not utf-8 conform.";
    };
    // clang-format off
    Row const rows[] = {
        {"", "", 0}, {"\xC3\xA9", "", 0}, {"\xE2\x82\xAC", "", 0}, {"\xF0\x9F\x98\x80", "", 0},
        {"\xC0\xAF", "", 0}, {"\xED\xA0\x80", "", 0}, {"\xF4\x90\x80\x80", "", 0},
        {"\xF7\xBF\xBF\xBF", "", 0}, {"a\0b"s, "", 0}, {"\x80", fail(1, 1), 0},
        {"\xF8\x88\x80\x80\x80", fail(1, 1), 0}, {"ab\xFF" "cd", fail(3, 1), 2},
        {"a\nb\x80", fail(2, 2), 3}, {"ab\xC3", fail(5, 1), 3}, {"x\xC3(y", fail(4, 1), 2},
        {"\xE2", fail(4, 1), 2}, {"\xE2\x82", fail(4, 1), 2}, {"\xE2\x82x", fail(4, 1), 2},
        {"\xF0\x9F\x98", fail(5, 1), 3}, {"\n\n\xC3x", fail(3, 3), 3},
        {"ab\xC3\xA9\xFF", fail(5, 1), 4}, {"\xC3\n", fail(3, 1), 1},
    };
    // clang-format on
    for (Row const& row : rows) {
        SCOPED_TRACE(testing::Message() << "row " << testing::PrintToString(row.bytes));
        std::string message = "before";
        std::size_t position = kUntouched;
        bool const valid = row.message.empty();
        EXPECT_EQ(ValidUTF8(row.bytes, message, &position), valid);
        EXPECT_EQ(message, valid ? "before" : row.message);
        EXPECT_EQ(position, valid ? kUntouched : row.position);
        message.clear();
        EXPECT_EQ(ValidUTF8(row.bytes, message, nullptr), valid);
        EXPECT_EQ(message, valid ? "" : row.message);
        ASSERT_NO_FATAL_FAILURE(ExpectAsReference(row.bytes));
    }
}

// Every fault at every place of texts longer than several blocks, and every cut: the block
// checks, their carry from block to block and the last bytes behind the blocks, alone and
// with a second fault behind. One text is printable ASCII (so that the ASCII and printable
// checks run long too), one mostly so with line feeds to count and one holds nothing but 2-,
// 3- and 4-byte sequences.
TEST_P(OnEachPath, ValidateFaultAtEveryPlace) {
    std::string_view const units[][4] = {
        {"Lorem ipsum ", "dolor~", "sit amet, ", "{x}"},
        {"Lorem ipsum ", "dolor\n", "sit amet, ", "\xC3\xA9"},
        {"\xD0\xBC\xD0\xB8", "\xE6\x97\xA5", "\xF0\x9F\x98\x80", "\xC3\xA9\xE2\x82\xAC"},
    };
    std::string const faults[] = {"\x80", "\xFF", "\xC3", "\xE2\x82",         "\xF0\x9F\x98",
                                  "\x7F", "\x1F", "\n",   "\xF8\x88\x80\x80", "\xEF\xBF\xBF\x80"};
    for (auto const& unit : units) {
        std::string base;
        for (std::size_t k = 0; base.size() < 300; ++k) {
            base += unit[k * 7 % 4];
        }
        for (std::size_t place = 0; place <= base.size(); ++place) {
            SCOPED_TRACE(testing::Message()
                         << "place " << place << " in " << testing::PrintToString(base));
            ASSERT_NO_FATAL_FAILURE(ExpectAsReference(std::string_view(base).substr(0, place)));
            for (std::string const& fault : faults) {
                std::string text = base;
                text.replace(place, std::min(fault.size(), text.size() - place), fault);
                ASSERT_NO_FATAL_FAILURE(ExpectAsReference(text));
                // NOTE: the same text behind 96 ASCII bytes, so that a kernel that reads
                // before the text finds clear bytes there rather than whatever the heap holds.
                std::string const led = std::string(96, 'a') + text;
                ASSERT_NO_FATAL_FAILURE(ExpectAsReference(std::string_view(led).substr(96)));
                if (place + 29 < text.size()) {
                    text[place + 29] = '\x80';
                    ASSERT_NO_FATAL_FAILURE(ExpectAsReference(text));
                }
            }
        }
    }
}

}  // namespace
}  // namespace Tavrel
