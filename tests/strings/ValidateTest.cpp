#include <algorithm>
#include <gtest/gtest.h>
#include <string>

#include "strings/Validate.h"
#include "testing/RandomText.h"
#include "testing/StringReferences.h"
#include "tests/strings/EachPath.h"

namespace Tavrel {
namespace {

namespace ref = tavrel_testing::reference;
using tavrel_testing::RandomText;
using namespace std::string_literals;

constexpr std::size_t kUntouched = 999999;

class ValidUTF8Test : public EachPath {};
class ValidASCIITest : public EachPath {};
class ValidateTest : public EachPath {};
TAVREL_ON_EACH_PATH(ValidUTF8Test);
TAVREL_ON_EACH_PATH(ValidASCIITest);
TAVREL_ON_EACH_PATH(ValidateTest);

// Checks all three tests on text against the references.
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
}

TEST_P(ValidUTF8Test, Table) {
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
    }
}

TEST_P(ValidASCIITest, Tables) {
    struct Row {
        std::string bytes;
        std::size_t ascii, printable;  // failing index, or kUntouched for a pass
    };
    // clang-format off
    Row const rows[] = {
        {"", kUntouched, kUntouched},          {"\0\n\x7F"s, kUntouched, 0},
        {" ~", kUntouched, kUntouched},        {"ab\x80", 2, 2},
        {"a\tb", kUntouched, 1},               {"\x1F", kUntouched, 0},
        {"ok\x7F", kUntouched, 2},             {"\xFF", 0, 0},
    };
    // clang-format on
    for (Row const& row : rows) {
        SCOPED_TRACE(testing::Message() << "row " << testing::PrintToString(row.bytes));
        std::size_t position = kUntouched;
        EXPECT_EQ(ValidASCII(row.bytes, &position), row.ascii == kUntouched);
        EXPECT_EQ(position, row.ascii);
        position = kUntouched;
        EXPECT_EQ(ValidPrintableASCII(row.bytes, &position), row.printable == kUntouched);
        EXPECT_EQ(position, row.printable);
        EXPECT_EQ(ValidPrintableASCII(row.bytes, nullptr), row.printable == kUntouched);
    }
}

// Long runs of ASCII with line feeds, cut by a byte or sequence near a 16- or 64-byte
// boundary, and texts of mixed sequences.
std::string TrickyText(RandomText& random, int round) {
    std::string_view const pieces[] = {
        "a",       "\n",   "\xC3\xA9",         "\xE2\x82\xAC", "\xF0\x9F\x98\x80",
        "\x80",    "\xC3", "\xF8\x88\x80\x80", "\x7F",         "\x1F",
        "\xE2\x82"};
    std::string text;
    if (round % 2 == 0) {
        std::size_t const run = 64 * random.Below(4) + 16 * random.Below(4) + random.Below(16);
        for (std::size_t i = 0; i < run; ++i) {
            text.push_back(" x~"[i % 3]);
        }
        for (std::size_t i = 0; i < run; i += 1 + random.Below(90)) {
            text[i] = '\n';
        }
    }
    std::size_t const count = random.Below(round % 2 == 0 ? 3 : 80);
    for (std::size_t k = 0; k < count; ++k) {
        // Mostly valid pieces, so that a fault is often far into the text.
        std::size_t const choice = random.Below(80);
        text += pieces[choice < 78 ? choice % 5 : 5 + random.Below(6)];
    }
    // More ASCII behind, so that a fault also lies inside a block and not only in the rest.
    text.append(round % 2 == 0 ? random.Below(100) : 0, 'z');
    return text;
}

TEST_P(ValidateTest, AgreesWithReference) {
    RandomText random(3);
    for (int round = 0; round < 20000; ++round) {
        std::string const text = TrickyText(random, round);
        SCOPED_TRACE(testing::Message()
                     << "round " << round << " " << testing::PrintToString(text));
        ASSERT_NO_FATAL_FAILURE(ExpectAsReference(text));
        // Line feeds end printable runs at once, so the printable test also gets them as '~'.
        std::string tildes = text;
        std::replace(tildes.begin(), tildes.end(), '\n', '~');
        ASSERT_NO_FATAL_FAILURE(ExpectAsReference(tildes));
    }
}

// Every fault at every place of texts longer than several blocks, and every cut: the block
// checks, their carry from block to block and the last bytes behind the blocks. One text is
// mostly printable ASCII, one holds nothing but 2-, 3- and 4-byte sequences.
TEST_P(ValidateTest, FaultAtEveryPlace) {
    std::string_view const units[][4] = {
        {"Lorem ipsum ", "dolor\n", "sit amet, ", "\xC3\xA9"},
        {"\xD0\xBC\xD0\xB8", "\xE6\x97\xA5", "\xF0\x9F\x98\x80", "\xC3\xA9\xE2\x82\xAC"},
    };
    std::string const faults[] = {"\x80",         "\xFF", "\xC3", "\xE2\x82",
                                  "\xF0\x9F\x98", "\x7F", "\x1F", "\n"};
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
            }
        }
    }
}

}  // namespace
}  // namespace Tavrel
