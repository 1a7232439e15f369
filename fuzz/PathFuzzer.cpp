// The path fuzzer: every operation of FSPath, on two texts, flags, positions and a separator
// kind that the input chooses, against the plain references of PathReferences, plus the
// invariants that hold whatever the details: a successful CorrectAbsolutePath leaves no ".",
// ".." or repeated separator, IsEqual ignores the kind of separator, Strip leaves a suffix of
// the old text, a failed Replace or Erase changes nothing.
// The texts are mostly separators, dots and a few letters, so that paths have structure.
#include <algorithm>
#include <cstdint>
#include <fuzzer/FuzzedDataProvider.h>
#include <sstream>
#include <string>
#include <string_view>

#include "fuzz/FuzzCheck.h"
#include "path/FSPath.h"
#include "testing/PathReferences.h"
#include "testing/StringReferences.h"

namespace {

namespace ref = tavrel_testing::reference;
using Tavrel::FSPath;
using tavrel_testing::Require;

constexpr std::size_t kMaxPath = 48;

struct Inputs {
    std::string a;
    std::string b;
    std::string aSwapped;  // a with some separators turned into the other kind
    bool flag1 = false;
    bool flag2 = false;
    bool rawA = false;  // a stored through operator= (kept as it is), else built (slashed)
    bool rawB = false;
    FSPath::EPathSepType type = FSPath::kAnyPathSep;
    std::size_t pos = 0;
    std::size_t len = 0;
    std::size_t start = 0;
};

// A path text: separators, dots and a few letters stay; every other byte becomes one of
// them, except the highest bytes, which stay raw.
std::string PathText(FuzzedDataProvider& input) {
    constexpr std::string_view kAlphabet = "//\\..aAb";
    std::string text = input.ConsumeRandomLengthString(kMaxPath);
    for (char& c : text) {
        auto const byte = static_cast<unsigned char>(c);
        if (byte < 0xF0 && kAlphabet.find(c) == std::string_view::npos) {
            c = kAlphabet[byte % kAlphabet.size()];
        }
    }
    return text;
}

std::string SeparatorsSwapped(std::string_view text, std::uint64_t mask) {
    std::string swapped(text);
    for (std::size_t i = 0; i < swapped.size(); ++i) {
        if (ref::IsSeparator(swapped[i]) && ((mask >> (i % 64)) & 1u) != 0) {
            swapped[i] = swapped[i] == '/' ? '\\' : '/';
        }
    }
    return swapped;
}

Inputs ReadInputs(FuzzedDataProvider& input) {
    Inputs in;
    in.flag1 = input.ConsumeBool();
    in.flag2 = input.ConsumeBool();
    in.rawA = input.ConsumeBool();
    in.rawB = input.ConsumeBool();
    in.type = static_cast<FSPath::EPathSepType>(input.ConsumeIntegralInRange(0, 2));
    std::uint64_t const mask = input.ConsumeIntegral<std::uint64_t>();
    in.a = PathText(input);
    in.b = PathText(input);
    in.aSwapped = SeparatorsSwapped(in.a, mask);
    in.pos = input.ConsumeIntegralInRange<std::size_t>(0, in.a.size() + 2);
    in.len = input.ConsumeIntegralInRange<std::size_t>(0, in.a.size() + 2);
    in.start = input.ConsumeIntegralInRange<std::size_t>(0, in.a.size() + 2);
    return in;
}

FSPath Stored(std::string_view text) {
    FSPath path;
    path = text;
    return path;
}

FSPath Made(std::string_view text, bool raw) { return raw ? Stored(text) : FSPath(text); }

std::string_view SeparatorsOf(FSPath::EPathSepType type) {
    switch (type) {
        case FSPath::kUnixPathSep:
            return ref::kSlash;
        case FSPath::kWindowsPathSep:
            return ref::kBackslash;
        default:
            return ref::kAnySeparator;
    }
}

void CheckConstruction(Inputs const& in) {
    Require(FSPath(in.a).GetPathStr() == ref::Slashed(in.a), "built from text: slashes", "FSPath");
    FSPath stored = Stored(in.a);
    Require(stored.GetPathStr() == in.a && stored.Length() == in.a.size() &&
                stored.IsEmpty() == in.a.empty(),
            "operator= keeps the text", "FSPath");
    std::string const joined = ref::Joined(in.a, in.b, false);
    Require(FSPath(in.a, in.b).GetPathStr() == joined, "two texts join", "FSPath");
    Require(FSPath(stored, Stored(in.b)).GetPathStr() == joined, "two paths join", "FSPath");
    FSPath set;
    Require(set.SetPath(in.a, in.b).GetPathStr() == joined, "two texts join", "SetPath");
    Require(set.SetPath(in.a).GetPathStr() == ref::Slashed(in.a), "slashes", "SetPath");
    std::string const twice = ref::Joined(set.GetPathStr(), set.GetPathStr(), false);
    Require(set.SetPath(set, set).GetPathStr() == twice, "itself twice", "SetPath");
    std::string out = "stale";
    stored.GetPathStr(out);
    Require(out == in.a, "copied out", "GetPathStr");
    Require(stored.GetPathStr(FSPath::kAnyPathSep) == in.a, "any kind converts nothing",
            "GetPathStr");
    std::string const windows = ref::ReplaceAll(in.a, '/', '\\');
    Require(stored.GetPathStr(FSPath::kWindowsPathSep) == windows && stored.GetPathStr() == windows,
            "the conversion stays", "GetPathStr");
    std::ostringstream stream;
    stream << Stored(in.b);
    Require(stream.str() == in.b, "writes the stored text", "operator<<");
}

void CheckSeparators(Inputs const& in) {
    std::string_view const separators = SeparatorsOf(in.type);
    FSPath const path = Stored(in.a);
    bool const endsWith = !in.a.empty() && separators.find(in.a.back()) != std::string::npos;
    bool const startsWith = !in.a.empty() && separators.find(in.a.front()) != std::string::npos;
    Require(path.EndsWithPathSep(in.type) == endsWith, "last byte", "EndsWithPathSep");
    Require(path.StartsWithPathSep(in.type) == startsWith, "first byte", "StartsWithPathSep");
    Require(path.FindFirstPathSep(in.type) == ref::FirstSeparator(in.a, separators), "slash first",
            "FindFirstPathSep");
    Require(path.FindLastPathSep(in.type) == ref::LastSeparator(in.a, separators), "slash first",
            "FindLastPathSep");
    Require(path.IsDirPath() == (!in.a.empty() && ref::IsSeparator(in.a.back())) &&
                path.IsFilePath() == !path.IsDirPath(),
            "ends in a separator", "IsDirPath");
    for (char const c : {'/', '\\', in.b.empty() ? 'a' : in.b[0]}) {
        Require(FSPath::IsPathSeparator(c, in.type) == (separators.find(c) != std::string::npos),
                "kind", "IsPathSeparator");
    }
    FSPath trimmed = path;
    Require(trimmed.RemPathSepsAtEnd(in.type).GetPathStr() ==
                ref::WithoutEndSeparators(in.a, separators),
            "only that kind", "RemPathSepsAtEnd");
    trimmed = path;
    Require(trimmed.RemPathSepsAtStart(in.type).GetPathStr() ==
                ref::WithoutStartSeparators(in.a, separators),
            "only that kind", "RemPathSepsAtStart");
    FSPath converted = path;
    converted.ConvertPathSep(in.type);
    Require(converted.GetPathStr() == (in.type == FSPath::kWindowsPathSep
                                           ? ref::ReplaceAll(in.a, '/', '\\')
                                           : ref::Slashed(in.a)),
            "one kind left", "ConvertPathSep");
}

// The text MakeDirPath(dir) gives for text.
std::string DirForm(std::string_view text, bool dir) {
    if (!dir) {
        return ref::WithoutEndSeparators(text, ref::kAnySeparator);
    }
    bool const endsInSeparator = !text.empty() && ref::IsSeparator(text.back());
    return endsInSeparator ? std::string(text) : ref::Slashed(std::string(text) + "/");
}

void CheckBuilding(Inputs const& in) {
    FSPath path = Stored(in.a);
    Require(path.MakeDirPath(in.flag1).GetPathStr() == DirForm(in.a, in.flag1) &&
                path.IsDirPath() == in.flag1,
            "directory or not", "MakeDirPath");
    path = Stored(in.a);
    Require(path.MakeFilePath(in.flag1).GetPathStr() == DirForm(in.a, !in.flag1), "file or not",
            "MakeFilePath");
    path = Stored(in.a);
    Require(path.AppendPath(in.b, in.flag1).GetPathStr() == ref::Joined(in.a, in.b, in.flag1),
            "joins", "AppendPath");
    path = Stored(in.a);
    bool const wasDir = in.flag1 && !in.a.empty() && ref::IsSeparator(in.a.back());
    std::string const continued = ref::WithoutEndSeparators(in.a, ref::kAnySeparator) + in.b;
    Require(path.AppendString(in.b, in.flag1).GetPathStr() == DirForm(continued, wasDir),
            "continues the last component", "AppendString");
    path = Stored(in.a);
    std::string const base = in.flag1 ? ref::WithoutEndSeparators(in.a, ref::kAnySeparator) : in.a;
    Require(path.AppendExt(in.b, in.flag1).GetPathStr() == base + in.b, "adds unchanged",
            "AppendExt");
    path = Stored(in.a);
    Require(path.Clear().IsEmpty(), "empties", "Clear");
}

void CheckReplaceAndErase(Inputs const& in) {
    bool const fits = in.pos <= in.a.size();
    std::string expected = in.a;
    if (fits) {
        expected.replace(in.pos, in.len, in.b);
    }
    FSPath path = Stored(in.a);
    std::string error;
    Require(path.Replace(in.pos, in.len, in.b, &error) == fits && path.GetPathStr() == expected,
            "replaces up to len bytes, or nothing", "Replace");
    Require(fits || error == "Replace failed", "says why", "Replace");
    path = Stored(in.a);
    expected = in.a;
    if (fits) {
        expected.replace(in.pos, in.len, Stored(in.b).GetPathStr());
    }
    Require(path.Replace(in.pos, in.len, Stored(in.b), nullptr) == fits &&
                path.GetPathStr() == expected,
            "with a path's text as it is", "Replace");
    path = Stored(in.a);
    error.clear();
    expected = in.a;
    if (fits) {
        expected.erase(in.pos, in.len);
    }
    Require(path.Erase(in.pos, in.len, &error) == fits && path.GetPathStr() == expected,
            "removes up to len bytes, or nothing", "Erase");
    Require(fits || error == "Erase failed", "says why", "Erase");
}

// The rules that every successful CorrectAbsolutePath leaves, whatever the input was.
void CheckCorrectedShape(std::string const& text) {
    Require(text.find('\\') == std::string::npos, "slashes only", "CorrectAbsolutePath");
    Require(text.find("//") == std::string::npos, "no repeated separator", "CorrectAbsolutePath");
    Require(text == "/" || text.empty() || text.back() != '/', "no trailing separator",
            "CorrectAbsolutePath");
    std::string const framed = "/" + text + "/";
    Require(framed.find("/./") == std::string::npos && framed.find("/../") == std::string::npos,
            "no \".\" or \"..\" component", "CorrectAbsolutePath");
}

void CheckAbsolute(Inputs const& in) {
    FSPath path = Stored(in.a);
    Require(path.IsAbsolute() == (!in.a.empty() && ref::IsSeparator(in.a[0])), "first byte",
            "IsAbsolute");
    ref::Corrected const expected = ref::CorrectedAbsolute(in.a);
    Require(path.CorrectAbsolutePath() == expected.ok && path.GetPathStr() == expected.text,
            "component reduction", "CorrectAbsolutePath");
    if (expected.ok) {
        CheckCorrectedShape(path.GetPathStr());
    }
    path = Stored(in.a);
    std::string const cwd = FSPath::GetCurrDir();
    ref::Corrected full = expected;
    if (!path.IsAbsolute()) {
        full = cwd.empty() ? ref::Corrected{false, in.a}
                           : ref::CorrectedAbsolute(ref::Joined(ref::Slashed(cwd), in.a, false));
    }
    Require(path.GetFullPath() == full.ok && path.GetPathStr() == full.text,
            "the current directory in front", "GetFullPath");
    path = Stored(in.a);
    Require(path.SimplifyPath().GetPathStr() == ref::Simplified(in.a), "erase loop",
            "SimplifyPath");
    bool const traversal =
        in.a.find("../") != std::string::npos || in.a.find("..\\") != std::string::npos;
    Require(Stored(in.a).ContainsTraversal() == traversal, "dot-dot-separator",
            "ContainsTraversal");
}

// The object and the leaf that ExtractAndEraseLeaf leaves (the leaf empty on false).
struct Erased {
    bool found;
    std::string object;
    std::string leaf;
};

Erased ErasedLeaf(std::string_view text) {
    std::string const trimmed = ref::WithoutEndSeparators(text, ref::kAnySeparator);
    std::size_t const place = ref::LastSeparator(trimmed, ref::kAnySeparator);
    if (place == ref::kNoPlace) {
        return {false, trimmed, ""};
    }
    return {true, trimmed.substr(0, place + 1), ref::Slashed(trimmed.substr(place + 1))};
}

void CheckLeafAndRoot(Inputs const& in) {
    FSPath const path = Stored(in.a);
    std::string out = "stale";
    std::optional<std::string> const leaf = ref::Leaf(in.a);
    Require(path.ExtractLeaf(out) == leaf.has_value() && out == leaf.value_or(""), "leaf",
            "ExtractLeaf");
    std::optional<std::string> const root = ref::Root(in.a);
    Require(path.ExtractRoot(out) == root.has_value() && out == root.value_or(""), "root",
            "ExtractRoot");

    Erased const erased = ErasedLeaf(in.a);
    FSPath object = path;
    FSPath moved = Stored("stale");
    Require(object.ExtractAndEraseLeaf(moved) == erased.found &&
                object.GetPathStr() == erased.object && moved.GetPathStr() == erased.leaf,
            "moved out", "ExtractAndEraseLeaf");
    object = path;
    Require(object.ExtractAndEraseLeaf(out) == erased.found && out == erased.leaf, "as text",
            "ExtractAndEraseLeaf");
    object = path;
    Require(
        object.ExtractAndEraseLeaf(object) == erased.found && object.GetPathStr() == erased.leaf,
        "into itself", "ExtractAndEraseLeaf");

    object = path;
    std::string const& kept = erased.object;  // ends in the separator in front of the leaf
    std::string const dropped = erased.found ? kept.substr(0, kept.size() - 1) : kept;
    Require(object.EraseLeaf(in.flag1).GetPathStr() == (in.flag1 ? kept : dropped),
            "one separator kept or not", "EraseLeaf");
    object = path;
    Require(object.ReplaceLeaf(in.b).GetPathStr() == ref::Joined(kept, in.b, false),
            "erase, then join", "ReplaceLeaf");
    object = path;
    Require(object.ReplaceLeaf(object).GetPathStr() == ref::Joined(kept, in.a, false),
            "with itself", "ReplaceLeaf");
}

std::string ExtensionOf(std::string_view text) {
    std::string const slashed = ref::Slashed(text);
    if (slashed.empty() || ref::IsSeparator(slashed.back())) {
        return "";
    }
    std::string const name = ref::Leaf(text).value_or(slashed);
    std::size_t const dot = name.rfind('.');
    return dot == std::string::npos || dot + 1 == name.size() ? "" : name.substr(dot + 1);
}

void CheckExtension(Inputs const& in) {
    std::string const extension = ExtensionOf(in.a);
    Require(FSPath::GetExtension(in.a) == extension, "behind the last dot of the leaf",
            "GetExtension");
    std::string text = in.a;
    bool const removed = FSPath::RemoveExtension(text);
    std::string const slashed = ref::Slashed(in.a);
    bool const hasDot = !slashed.empty() && !ref::IsSeparator(slashed.back()) &&
                        ref::Leaf(in.a).value_or(slashed).find('.') != std::string::npos;
    Require(removed == hasDot, "a dot in the leaf", "RemoveExtension");
    if (removed) {
        Require(text + "." + extension == slashed, "cut at the last dot", "RemoveExtension");
    } else {
        Require(text == in.a, "left exactly as it came", "RemoveExtension");
    }
}

bool BytesBefore(std::string_view a, std::string_view b) {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        return static_cast<unsigned char>(x) < static_cast<unsigned char>(y);
    });
}

void CheckEquality(Inputs const& in) {
    FSPath const a = Made(in.a, in.rawA);
    FSPath const b = Made(in.b, in.rawB);
    std::string const& ta = a.GetPathStr();
    std::string const& tb = b.GetPathStr();
    for (bool const ignore : {false, true}) {
        for (bool const caseSensitive : {false, true}) {
            bool const equal = ref::ComparedForm(ta, ignore, caseSensitive) ==
                               ref::ComparedForm(tb, ignore, caseSensitive);
            Require(a.IsEqual(b, ignore, caseSensitive) == equal, "compared forms", "IsEqual");
            Require(a.IsEqual(in.b, ignore, caseSensitive) ==
                        (ref::ComparedForm(ta, ignore, caseSensitive) ==
                         ref::ComparedForm(ref::Slashed(in.b), ignore, caseSensitive)),
                    "against text", "IsEqual");
            Require(Stored(in.a).IsEqual(Stored(in.aSwapped), ignore, caseSensitive),
                    "the kind of separator does not count", "IsEqual");
        }
    }
    Require((a == b) == a.IsEqual(b, false, true) && (a != b) == !(a == b), "is IsEqual",
            "operator==");
    Require((a == std::string_view(in.b)) == a.IsEqual(in.b, false, true) &&
                (a != std::string_view(in.b)) == !a.IsEqual(in.b, false, true),
            "is IsEqual", "operator==");
    Require((a < b) == BytesBefore(ta, tb), "raw bytes", "operator<");
}

void CheckPrefixes(Inputs const& in) {
    FSPath const a = Made(in.a, in.rawA);
    FSPath const b = Made(in.b, in.rawB);
    std::string const& ta = a.GetPathStr();
    std::string const& tb = b.GetPathStr();
    Require(a.StartsWith(in.b) == ref::StartsWithUpToNul(ta, in.b), "text as it comes",
            "StartsWith");
    Require(a.StartsWith(b) == ref::StartsWithUpToNul(ta, tb) && a.StartsWith(a), "path",
            "StartsWith");
    for (bool const strict : {false, true}) {
        bool const expected = ref::StartsWithPath(ta, tb, strict);
        Require(a.StartsWithPath(b, strict) == expected, "ends at a separator", "StartsWithPath");
        Require(!expected || a.StartsWith(b), "implies StartsWith", "StartsWithPath");
        Require(
            a.StartsWithPath(in.b, strict) == ref::StartsWithPath(ta, ref::Slashed(in.b), strict),
            "text", "StartsWithPath");
        Require(a.StartsWithPath(a, strict), "itself", "StartsWithPath");
    }
    for (bool const ignore : {false, true}) {
        Require(a.EndsWith(in.b, ignore) == ref::EndsWithPath(ta, in.b, ignore), "text",
                "EndsWith");
        Require(a.EndsWith(b, ignore) == ref::EndsWithPath(ta, tb, ignore) && a.EndsWith(a, ignore),
                "path", "EndsWith");
    }
}

void CheckStrip(Inputs const& in) {
    FSPath const original = Made(in.a, in.rawA);
    FSPath const other = Made(in.b, in.rawB);
    std::string const& before = original.GetPathStr();
    for (bool const strict : {false, true}) {
        for (bool const isPath : {false, true}) {
            FSPath path = original;
            bool const matches =
                isPath ? path.StartsWithPath(other, strict) : path.StartsWith(other);
            bool const done =
                isPath ? path.StripPath(other, in.flag1, strict) : path.Strip(other, in.flag1);
            std::string expected = matches ? before.substr(other.Length()) : before;
            if (matches && in.flag1) {
                expected = ref::WithoutStartSeparators(expected, ref::kAnySeparator);
            }
            std::string const& after = path.GetPathStr();
            Require(done && after == expected, "prefix removed when there", "Strip");
            Require(after.size() <= before.size() &&
                        before.compare(before.size() - after.size(), after.size(), after) == 0,
                    "leaves a suffix of the old text", "Strip");
        }
    }
    FSPath self = original;
    Require(self.Strip(self) && self.IsEmpty(), "itself", "Strip");
    self = original;
    Require(self.StripPath(self, in.flag1, in.flag2) && self.IsEmpty(), "itself", "StripPath");
}

void CheckSubDirectories(Inputs const& in) {
    FSPath path = Made(in.a, in.rawA);
    FSPath const sub = Made(in.b, in.rawB);
    std::size_t const expected =
        ref::SubDirectoryPlace(path.GetPathStr(), sub.GetPathStr(), in.start);
    Require(path.FindSubDir(sub, in.start) == expected &&
                path.ContainsSubDir(sub, in.start) == (expected != Tavrel::npos),
            "whole components", "FindSubDir");
    std::size_t const fromText =
        ref::SubDirectoryPlace(path.GetPathStr(), ref::Slashed(in.b), in.start);
    Require(path.FindSubDir(in.b, in.start) == fromText &&
                path.ContainsSubDir(in.b, in.start) == (fromText != Tavrel::npos),
            "text", "FindSubDir");
    std::size_t const self = path.StartsWithPathSep(FSPath::kAnyPathSep) ? 1 : 0;
    Require(path.FindSubDir(path, in.start) == self && path.ContainsSubDir(path, in.start),
            "itself", "FindSubDir");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    Inputs const in = ReadInputs(input);
    CheckConstruction(in);
    CheckSeparators(in);
    CheckBuilding(in);
    CheckReplaceAndErase(in);
    CheckAbsolute(in);
    CheckLeafAndRoot(in);
    CheckExtension(in);
    CheckEquality(in);
    CheckPrefixes(in);
    CheckStrip(in);
    CheckSubDirectories(in);
    return 0;
}
