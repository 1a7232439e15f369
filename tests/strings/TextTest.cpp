// The functions of the string library that have a single, portable form, against the slow,
// literal references of testing/ on every short text over alphabets that hold each kind of
// byte the rules tell apart; and the arguments that look into the text they change. (Escape
// and Unescape, and splitting, against the references: the strings fuzzer.)
#include <gtest/gtest.h>
#include <list>
#include <string>
#include <vector>

#include "strings/Case.h"
#include "strings/Compare.h"
#include "strings/Escape.h"
#include "strings/Split.h"
#include "strings/Trim.h"
#include "testing/StringReferences.h"
#include "testing/AllTexts.h"

namespace Tavrel {
namespace {

namespace ref = tavrel_testing::reference;
using tavrel_testing::AllTexts;
using namespace std::string_literals;
using Parts = std::list<std::string>;

std::string Shown(std::string const& text) { return testing::PrintToString(text); }

// The view forms copy and call the in-place ones, so they check both. The alphabet holds the
// bytes on either side of both letter ranges, a digit, separators and a byte above 0x7F.
TEST(Case, AgreesWithReference) {
    for (std::string const& text : AllTexts("azAZ@[`{1_ -.\xC3\xE9", 3)) {
        ASSERT_EQ(ToUpper(text), ref::Upper(text)) << Shown(text);
        ASSERT_EQ(ToLower(text), ref::Lower(text)) << Shown(text);
    }
    for (std::string const& text : AllTexts("aZ09_ -.\xC3", 5)) {
        std::string camel = text;
        ToCamelCase(camel);
        ASSERT_EQ(camel, ref::CamelCase(text)) << Shown(text);
    }
}

// Case, a NUL inside (where strncmp stops) and bytes above 0x7F that have no fold.
TEST(Compare, AgreesWithReference) {
    std::vector<std::string> const texts = AllTexts("aAb\0\xC3\xE3"s, 3);
    for (std::string const& text : texts) {
        for (std::string const& other : texts) {
            SCOPED_TRACE(Shown(text) + " / " + Shown(other));
            ASSERT_EQ(StartsWith(text, other), ref::StartsWithUpToNul(text, other));
            ASSERT_EQ(EndsWith(text, other), ref::EndsWithUpToNul(text, other));
            ASSERT_EQ(StartsWithCaseInsensitive(text, other), ref::StartsWithFolded(text, other));
            ASSERT_EQ(EndsWithCaseInsensitive(text, other), ref::EndsWithFolded(text, other));
            ASSERT_EQ(EqualsCaseInsensitive(text, other), ref::EqualsFolded(text, other));
        }
        for (char const c : "aA\0"s) {
            ASSERT_EQ(StartsWith(text, c), !text.empty() && text.front() == c) << Shown(text);
            ASSERT_EQ(EndsWith(text, c), !text.empty() && text.back() == c) << Shown(text);
        }
    }
}

TEST(Trim, AgreesWithReference) {
    for (std::string const& text : AllTexts("xa \xC3\0"s, 4)) {
        auto const check = [&text](auto set) {  // a C set or one byte
            std::string trimmed[3] = {text, text, text};
            LTrim(trimmed[0], set);
            RTrim(trimmed[1], set);
            Trim(trimmed[2], set);
            std::string const right = ref::RightTrimmed(text, set);
            ASSERT_EQ(
                trimmed[0] + "|" + trimmed[1] + "|" + trimmed[2],
                ref::LeftTrimmed(text, set) + "|" + right + "|" + ref::LeftTrimmed(right, set))
                << Shown(text) << " by " << testing::PrintToString(set);
        };
        for (char const* set : {"", " ", "x ", "\xC3"}) {
            check(set);
        }
        check('\0');
        check('x');
    }
    std::string text = "ab";  // a null set trims nothing
    LTrim(text, nullptr);
    RTrim(text, nullptr);
    Trim(text, nullptr);
    EXPECT_EQ(text, "ab");
    text = "xax";  // the byte lies in the text it trims
    Trim(text, text[0]);
    EXPECT_EQ(text, "a");
}

// Against the references: the strings fuzzer. Here the text and the delimiters are elements of
// the list that takes the pieces.
TEST(SplitString, ArgumentsInsideTheOutput) {
    Parts out = {"x/y", "/"};
    EXPECT_EQ(SplitString(out.front(), out, out.back(), true), 2u);
    EXPECT_EQ(out, (Parts{"x", "y"}));
}

// Each text through the out and the in-place forms; out may look into the text.
TEST(NonPrint, AgreesWithReference) {
    std::vector<std::string> texts = AllTexts("a \t\0\x1F~\x7F\x80\xFF\\"s, 2);
    for (int byte = 0; byte < 256; ++byte) {
        texts.push_back(std::string(1, static_cast<char>(byte)) + "x");
    }
    for (std::string const& text : texts) {
        SCOPED_TRACE(Shown(text));
        std::string out = "old";
        EscapeNonPrint(text, out);
        ASSERT_EQ(out, ref::NonPrintEscaped(text));
        RemoveNonPrint(text, out, false, "[]");
        ASSERT_EQ(out, ref::WithoutNonPrint(text, false, "[]"));
        RemoveNonPrint(text, out, true, "[]");
        ASSERT_EQ(out, ref::WithoutNonPrint(text, true, "[]"));
        RemoveNonPrint(text, out, '?');
        ASSERT_EQ(out, ref::NonPrintReplaced(text, '?'));
        ASSERT_EQ(out.c_str()[out.size()], '\0') << "nothing written behind the result";
        std::string inPlace[3] = {text, text, text};
        EscapeNonPrint(inPlace[0]);
        RemoveNonPrint(inPlace[1], true, "[]");
        RemoveNonPrint(inPlace[2], '?');
        ASSERT_EQ(inPlace[0] + inPlace[1] + inPlace[2], ref::NonPrintEscaped(text) +
                                                            ref::WithoutNonPrint(text, true, "[]") +
                                                            ref::NonPrintReplaced(text, '?'));
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
