// The strings fuzzer: every function of the string library, on texts, needles, replacements,
// sets, characters and ranges that the input chooses, against the plain references of
// StringReferences. Besides agreeing with the references, escaping must round-trip, the
// in-place and output forms must agree, out-parameters must be cleared or left alone as
// their contracts say, and nothing may touch memory it was not given (the sanitizers watch).
// Each input is checked on every instruction-set path the processor has (strings/Dispatch.h),
// or only on the one that TAVREL_STRINGS_PATH names, when it is set.
#include <cstdint>
#include <cstdlib>
#include <fuzzer/FuzzedDataProvider.h>
#include <list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/FuzzCheck.h"
#include "strings/Case.h"
#include "strings/Compare.h"
#include "strings/Dispatch.h"
#include "strings/Escape.h"
#include "strings/Replace.h"
#include "strings/Search.h"
#include "strings/Split.h"
#include "strings/Trim.h"
#include "strings/Validate.h"
#include "testing/StringReferences.h"

namespace {

namespace ref = tavrel_testing::reference;

// The path the checks run on, named in every broken rule.
char const* gPathName = "";

void Require(bool holds, char const* rule, char const* where) {
    if (!holds) {
        tavrel_testing::Fail(rule, std::string(where) + " on the " + gPathName + " path");
    }
}

// Long enough for several blocks of 256 bytes, which the fast paths take at once.
constexpr std::size_t kMaxText = 2048;
constexpr std::size_t kMaxPiece = 8;

// Everything one input chooses.
struct Inputs {
    std::string text;
    std::string other;  // needle, prefix, replacement: kept short so that it matches often
    std::string from;
    std::string to;
    char special = 0;
    char escape = 0;
    std::size_t first = 0;
    std::size_t last = 0;
    std::size_t limit = 0;  // how many bytes of text StrnStr may look at
};

// An index around the text's edges, or far behind it.
std::size_t IndexNear(FuzzedDataProvider& input, std::size_t size) {
    if (input.ConsumeIntegralInRange(0, 7) == 0) {
        return input.ConsumeIntegral<std::size_t>();
    }
    return input.ConsumeIntegralInRange<std::size_t>(0, size + 2);
}

Inputs ReadInputs(FuzzedDataProvider& input) {
    Inputs in;
    in.other = input.ConsumeRandomLengthString(kMaxPiece);
    in.from = input.ConsumeRandomLengthString(kMaxPiece);
    in.to = input.ConsumeRandomLengthString(kMaxPiece);
    in.special = input.ConsumeIntegral<char>();
    in.escape = input.ConsumeIntegral<char>();
    in.text = input.ConsumeRandomLengthString(kMaxText);
    in.first = IndexNear(input, in.text.size());
    in.last = IndexNear(input, in.text.size());
    in.limit = input.ConsumeIntegralInRange<std::size_t>(0, in.text.size());
    return in;
}

void CheckStrnStr(Inputs const& in) {
    char const* const found = Tavrel::StrnStr(in.text.data(), in.limit, in.other.c_str());
    std::size_t const expected =
        ref::CountedFind(std::string_view(in.text).substr(0, in.limit), in.other.c_str());
    std::size_t const got =
        found == nullptr ? ref::kNotFound : static_cast<std::size_t>(found - in.text.data());
    Require(got == expected, "StrnStr finds the first counted match", "StrnStr");
    Require(Tavrel::StrnStr(nullptr, in.limit, in.other.c_str()) == nullptr, "null text",
            "StrnStr");
    Require(Tavrel::StrnStr(in.text.data(), in.limit, nullptr) == nullptr, "null needle",
            "StrnStr");
}

void CheckFindCaseInsensitive(Inputs const& in) {
    std::string_view const text = in.text;
    std::size_t const lastOfText = text.empty() ? 0 : text.size() - 1;
    Require(Tavrel::FindCaseInsensitive(text, in.first, in.last, in.other) ==
                ref::FoldFind(text, in.first, in.last, in.other),
            "first match inside [first, last]", "FindCaseInsensitive");
    Require(Tavrel::FindCaseInsensitive(text, in.first, in.other) ==
                ref::FoldFind(text, in.first, lastOfText, in.other),
            "first match from first", "FindCaseInsensitive");
    Require(
        Tavrel::FindCaseInsensitive(text, in.other) == ref::FoldFind(text, 0, lastOfText, in.other),
        "first match", "FindCaseInsensitive");
}

void CheckReplaceAll(Inputs const& in) {
    std::string text = in.text;
    Tavrel::ReplaceAll(text, in.from, in.to);
    Require(text == ref::ReplaceAll(in.text, in.from, in.to), "string form", "ReplaceAll");

    text = in.text;
    Tavrel::ReplaceAll(text, in.from.c_str(), in.to.c_str());
    Require(text == ref::ReplaceAll(in.text, in.from.c_str(), in.to.c_str()), "NUL-terminated form",
            "ReplaceAll");

    text = in.text;
    Tavrel::ReplaceAll(text, static_cast<char const*>(nullptr), in.to.c_str());
    Tavrel::ReplaceAll(text, in.from.c_str(), static_cast<char const*>(nullptr));
    Require(text == in.text, "a null from or to changes nothing", "ReplaceAll");

    text = in.text;
    Tavrel::ReplaceAll(text, in.special, in.escape);
    Require(text == ref::ReplaceAll(in.text, in.special, in.escape), "byte form", "ReplaceAll");
}

void CheckCompare(Inputs const& in) {
    std::string_view const text = in.text;
    std::string_view const affix = in.other;
    Require(Tavrel::StartsWith(text, affix) == ref::StartsWithUpToNul(text, affix), "prefix",
            "StartsWith");
    Require(Tavrel::EndsWith(text, affix) == ref::EndsWithUpToNul(text, affix), "suffix",
            "EndsWith");
    Require(Tavrel::StartsWith(text, in.special) == (!text.empty() && text.front() == in.special),
            "first byte", "StartsWith");
    Require(Tavrel::EndsWith(text, in.special) == (!text.empty() && text.back() == in.special),
            "last byte", "EndsWith");
    Require(Tavrel::StartsWithCaseInsensitive(text, affix) == ref::StartsWithFolded(text, affix),
            "folded prefix", "StartsWithCaseInsensitive");
    Require(Tavrel::EndsWithCaseInsensitive(text, affix) == ref::EndsWithFolded(text, affix),
            "folded suffix", "EndsWithCaseInsensitive");
    Require(Tavrel::EqualsCaseInsensitive(text, affix) == ref::EqualsFolded(text, affix),
            "folded equality", "EqualsCaseInsensitive");
    // A text folds equal to its own upper-case form, whatever its bytes.
    Require(Tavrel::EqualsCaseInsensitive(text, ref::Upper(text)), "equal to its upper case",
            "EqualsCaseInsensitive");
}

void CheckValidUtf8(std::string_view text) {
    ref::Utf8Verdict const expected = ref::CheckUtf8(text);
    std::string message = "left alone";
    std::size_t position = 12345;
    bool const valid = Tavrel::ValidUTF8(text, message, &position);
    Require(valid == expected.valid, "verdict", "ValidUTF8");
    if (valid) {
        Require(message == "left alone" && position == 12345, "out-parameters kept on success",
                "ValidUTF8");
        return;
    }
    Require(message == expected.message, "message", "ValidUTF8");
    Require(position == expected.position, "position", "ValidUTF8");
    std::string again;
    Require(!Tavrel::ValidUTF8(text, again, nullptr) && again == expected.message,
            "a null position still gives the message", "ValidUTF8");
}

// A byte test with an optional failing index against its reference.
template <class Library>
void CheckByteTest(std::string_view text, Library library, std::optional<std::size_t> expected,
                   char const* where) {
    std::size_t position = 12345;
    bool const valid = library(text, &position);
    Require(valid == !expected.has_value(), "verdict", where);
    Require(position == (valid ? 12345 : *expected), "position", where);
    Require(library(text, nullptr) == valid, "a null position", where);
}

void CheckValidation(Inputs const& in) {
    CheckValidUtf8(in.text);
    CheckByteTest(
        in.text,
        [](std::string_view const& t, std::size_t* p) { return Tavrel::ValidASCII(t, p); },
        ref::FirstNonAscii(in.text), "ValidASCII");
    CheckByteTest(
        in.text,
        [](std::string_view const& t, std::size_t* p) {
            return Tavrel::ValidPrintableASCII(t, p);
        },
        ref::FirstNonPrintableAscii(in.text), "ValidPrintableASCII");
}

void CheckEscaping(Inputs const& in) {
    std::string text = in.text;
    Tavrel::Escape(text, in.special, in.escape);
    Require(text == ref::Escaped(in.text, in.special, in.escape), "escaped text", "Escape");
    Tavrel::Unescape(text, in.special, in.escape);
    Require(text == in.text, "what Escape made comes back", "Unescape");

    text = in.text;
    Tavrel::Unescape(text, in.special, in.escape);
    Require(text == ref::Unescaped(in.text, in.special, in.escape), "unescaped text", "Unescape");
}

void CheckNonPrint(Inputs const& in) {
    std::string_view const text = in.text;
    for (bool const replace : {false, true}) {
        std::string out = "stale";
        Tavrel::RemoveNonPrint(text, out, replace, in.other);
        Require(out == ref::WithoutNonPrint(text, replace, in.other), "output form",
                "RemoveNonPrint");
        std::string inPlace = in.text;
        Tavrel::RemoveNonPrint(inPlace, replace, in.other);
        Require(inPlace == out, "in place as output", "RemoveNonPrint");
    }
    std::string out = "stale";
    Tavrel::RemoveNonPrint(text, out, in.special);
    Require(out == ref::NonPrintReplaced(text, in.special), "byte replacement", "RemoveNonPrint");
    std::string inPlace = in.text;
    Tavrel::RemoveNonPrint(inPlace, in.special);
    Require(inPlace == out, "byte replacement in place", "RemoveNonPrint");

    out = "stale";
    Tavrel::EscapeNonPrint(text, out);
    Require(out == ref::NonPrintEscaped(text), "hexadecimal forms", "EscapeNonPrint");
    inPlace = in.text;
    Tavrel::EscapeNonPrint(inPlace);
    Require(inPlace == out, "in place as output", "EscapeNonPrint");
}

void CheckTrim(Inputs const& in) {
    char const* const set = in.other.c_str();
    std::string_view const setBytes = set;  // up to its first NUL
    std::string text = in.text;
    Tavrel::LTrim(text, set);
    Require(text == ref::LeftTrimmed(in.text, setBytes), "set", "LTrim");
    text = in.text;
    Tavrel::RTrim(text, set);
    Require(text == ref::RightTrimmed(in.text, setBytes), "set", "RTrim");
    text = in.text;
    Tavrel::Trim(text, set);
    Require(text == ref::LeftTrimmed(ref::RightTrimmed(in.text, setBytes), setBytes), "set",
            "Trim");
    text = in.text;
    Tavrel::Trim(text, static_cast<char const*>(nullptr));
    Require(text == in.text, "a null set changes nothing", "Trim");

    char const c = in.special;
    text = in.text;
    Tavrel::LTrim(text, c);
    Require(text == ref::LeftTrimmed(in.text, c), "byte", "LTrim");
    text = in.text;
    Tavrel::RTrim(text, c);
    Require(text == ref::RightTrimmed(in.text, c), "byte", "RTrim");
    text = in.text;
    Tavrel::Trim(text, c);
    Require(text == ref::LeftTrimmed(ref::RightTrimmed(in.text, c), c), "byte", "Trim");
}

void CheckCase(Inputs const& in) {
    std::string_view const view = in.text;
    std::string text = in.text;
    Tavrel::ToUpper(text);
    Require(text == ref::Upper(view) && Tavrel::ToUpper(view) == text, "both forms", "ToUpper");
    text = in.text;
    Tavrel::ToLower(text);
    Require(text == ref::Lower(view) && Tavrel::ToLower(view) == text, "both forms", "ToLower");
    text = in.text;
    Tavrel::ToCamelCase(text);
    Require(text == ref::CamelCase(view), "joined runs", "ToCamelCase");
}

void CheckSplit(Inputs const& in) {
    std::list<std::string> pieces{"stale"};
    auto const count = Tavrel::SplitString(in.text, pieces, in.from, true);
    Require(pieces == ref::Split(in.text, in.from, true) && count == pieces.size(),
            "any one byte splits", "SplitString");
    if (in.from.empty()) {
        return;  // a whole-text delimiter must not be empty
    }
    Tavrel::SplitString(in.text, pieces, in.from, false);
    Require(pieces == ref::Split(in.text, in.from, false), "the whole text splits", "SplitString");
}

// The paths each input is checked on: the one chosen at start when TAVREL_STRINGS_PATH names
// one, every available one otherwise.
std::vector<Tavrel::StringsPath> const& PathsToCheck() {
    static std::vector<Tavrel::StringsPath> const paths =
        std::getenv("TAVREL_STRINGS_PATH") != nullptr
            ? std::vector<Tavrel::StringsPath>{Tavrel::ActiveStringsPath()}
            : Tavrel::AvailableStringsPaths();
    return paths;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    Inputs const in = ReadInputs(input);
    for (Tavrel::StringsPath const path : PathsToCheck()) {
        gPathName = Tavrel::StringsPathName(path);
        Require(Tavrel::UseStringsPath(path), "an available path can be used", "UseStringsPath");
        CheckStrnStr(in);
        CheckFindCaseInsensitive(in);
        CheckReplaceAll(in);
        CheckCompare(in);
        CheckValidation(in);
        CheckEscaping(in);
        CheckNonPrint(in);
        CheckTrim(in);
        CheckCase(in);
        CheckSplit(in);
    }
    return 0;
}
