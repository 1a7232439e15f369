// The path class against the literal references of testing/ (which the path fuzzer compares
// against too): every text of a list, and every pair of them, through the functions that a
// reference describes; and the two resolutions on every short text.
#include <algorithm>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <vector>

#include "path/FSPath.h"
#include "testing/AllTexts.h"
#include "testing/PathReferences.h"
#include "testing/StringReferences.h"
#include "testing/TrickyPaths.h"

namespace Tavrel {
namespace {

namespace ref = tavrel_testing::reference;
using tavrel_testing::Raw;

// The tricky texts and texts that take each comparison to its edges: a prefix that ends
// inside a component, a repeated component, case, bytes above 0x7F, mixed separators.
std::vector<std::string> Texts() {
    std::vector<std::string> texts = tavrel_testing::TrickyPaths();
    // clang-format off
    for (char const* text : {"/ab", "/a/b", "/a/", "/a/b/", "/a/b/c/", "a/b/a/", "/xb/b/", "a/xb",
                             "\\a\\b\\", "a/B/", "A/b", "\xe9", "\xc9", "a\\b\\c", "a/\\/", "b",
                             "c", "b/", "/b", "/b/", "\\b", "b\\c", "a/b/", "a/b//", "a//b", "x/a",
                             "/\\a", "a/b\\c", "x\\a", "a.tar.gz", ".bashrc", "dir.d/a", "dir/.",
                             "dir/.bashrc", "/.x", "a.txt/", "a\\b.c", "a.txt\\", "c/", "x"}) {
        // clang-format on
        texts.emplace_back(text);
    }
    return texts;
}

// The text MakeDirPath(dir) gives for text.
std::string DirForm(std::string_view text, bool dir) {
    if (!dir) {
        return ref::WithoutEndSeparators(text, ref::kAnySeparator);
    }
    bool const endsInSeparator = !text.empty() && ref::IsSeparator(text.back());
    return endsInSeparator ? std::string(text) : ref::Slashed(std::string(text) + "/");
}

// The separators of each kind, as the references name them.
struct Kind {
    FSPath::EPathSepType type;
    std::string_view separators;
};
Kind const kKinds[] = {{FSPath::kAnyPathSep, ref::kAnySeparator},
                       {FSPath::kUnixPathSep, ref::kSlash},
                       {FSPath::kWindowsPathSep, ref::kBackslash}};

TEST(FSPathReference, EveryTextAndEveryPair) {
    std::vector<std::string> const texts = Texts();
    for (std::string const& a : texts) {
        SCOPED_TRACE("text '" + a + "'");
        FSPath const path = Raw(a);
        ASSERT_EQ(FSPath(a).GetPathStr(), ref::Slashed(a));
        for (Kind const& kind : kKinds) {
            EXPECT_EQ(path.FindFirstPathSep(kind.type), ref::FirstSeparator(a, kind.separators));
            EXPECT_EQ(path.FindLastPathSep(kind.type), ref::LastSeparator(a, kind.separators));
            EXPECT_EQ(Raw(a).RemPathSepsAtEnd(kind.type).GetPathStr(),
                      ref::WithoutEndSeparators(a, kind.separators));
            EXPECT_EQ(Raw(a).RemPathSepsAtStart(kind.type).GetPathStr(),
                      ref::WithoutStartSeparators(a, kind.separators));
        }
        EXPECT_EQ(path.IsDirPath(), !a.empty() && ref::IsSeparator(a.back()));
        EXPECT_EQ(path.IsFilePath(), !path.IsDirPath());
        std::string const bare = ref::WithoutEndSeparators(a, ref::kAnySeparator);
        for (bool const dir : {false, true}) {
            EXPECT_EQ(Raw(a).MakeDirPath(dir).GetPathStr(), DirForm(a, dir));
            EXPECT_EQ(Raw(a).MakeFilePath(dir).GetPathStr(), DirForm(a, !dir));
        }
        std::string out = "stale";
        std::optional<std::string> const leaf = ref::Leaf(a);
        EXPECT_EQ(path.ExtractLeaf(out), leaf.has_value());
        EXPECT_EQ(out, leaf.value_or(""));
        std::optional<std::string> const root = ref::Root(a);
        EXPECT_EQ(path.ExtractRoot(out), root.has_value());
        EXPECT_EQ(out, root.value_or(""));
        // ExtractAndEraseLeaf leaves what comes up to the separator in front of the leaf, and
        // EraseLeaf that with the separator or without it.
        std::string const trimmed = ref::WithoutEndSeparators(a, ref::kAnySeparator);
        std::size_t const cut = ref::LastSeparator(trimmed, ref::kAnySeparator);
        std::string const kept = cut == npos ? trimmed : trimmed.substr(0, cut + 1);
        std::string const moved = cut == npos ? "" : ref::Slashed(trimmed.substr(cut + 1));
        FSPath erased = path, into = Raw("stale");
        EXPECT_EQ(erased.ExtractAndEraseLeaf(into), cut != npos);
        EXPECT_EQ(erased.GetPathStr() + "|" + into.GetPathStr(), kept + "|" + moved);
        erased = path;
        EXPECT_EQ(erased.ExtractAndEraseLeaf(erased), cut != npos);
        EXPECT_EQ(erased.GetPathStr(), moved);
        EXPECT_EQ(FSPath(path).EraseLeaf(true).GetPathStr(), kept);
        EXPECT_EQ(FSPath(path).EraseLeaf(false).GetPathStr(),
                  cut == npos ? kept : kept.substr(0, cut));
        EXPECT_EQ(FSPath(path).EraseLeaf().GetPathStr(),
                  FSPath(path).EraseLeaf(false).GetPathStr());
        erased = path;
        EXPECT_EQ(erased.ReplaceLeaf(erased).GetPathStr(), ref::Joined(kept, a, false));
        // The extension: behind the last dot of the leaf of a text that does not end in a
        // separator; RemoveExtension cuts it off with its dot.
        std::string const slashed = ref::Slashed(a);
        bool const named = !slashed.empty() && !ref::IsSeparator(slashed.back());
        std::string const name = named ? leaf.value_or(slashed) : "";
        std::size_t const dot = name.rfind('.');
        std::string const extension = dot == npos ? "" : name.substr(dot + 1);
        EXPECT_EQ(FSPath::GetExtension(a), extension);
        std::string removed = a;
        EXPECT_EQ(FSPath::RemoveExtension(removed), dot != npos);
        EXPECT_EQ(removed,
                  dot == npos ? a : slashed.substr(0, slashed.size() - extension.size() - 1));
        // The same object: a prefix, a suffix and a sub-directory of itself, stripped to nothing.
        FSPath self = path;
        EXPECT_TRUE(self.StartsWith(self) && self.StartsWithPath(self, true) &&
                    self.EndsWith(self));
        EXPECT_EQ(self.FindSubDir(self, 99), !a.empty() && ref::IsSeparator(a[0]) ? 1u : 0u);
        EXPECT_TRUE(self.ContainsSubDir(self, 99));
        EXPECT_TRUE(self.Strip(self) && self.IsEmpty());
        self = path;
        EXPECT_TRUE(self.StripPath(self) && self.IsEmpty());
        std::string swapped = a;
        for (char& c : swapped) {
            c = c == '/' ? '\\' : c == '\\' ? '/' : c;
        }
        EXPECT_TRUE(path.IsEqual(Raw(swapped), false, true) && path.IsEqual(Raw(swapped), true));
        for (std::string const& b : texts) {
            SCOPED_TRACE("other '" + b + "'");
            FSPath const other = Raw(b);
            std::string const joined = ref::Joined(a, b, false);
            EXPECT_EQ(FSPath(a, b).GetPathStr(), joined);
            EXPECT_EQ(FSPath(path, other).GetPathStr(), joined);
            EXPECT_EQ(FSPath().SetPath(a, b).GetPathStr(), joined);
            EXPECT_EQ(Raw(a).AppendPath(b, true).GetPathStr(), ref::Joined(a, b, true));
            EXPECT_EQ(Raw(a).ReplaceLeaf(b).GetPathStr(), ref::Joined(kept, b, false));
            // AppendString continues the last component, AppendExt adds the text unchanged.
            for (bool const flag : {false, true}) {
                EXPECT_EQ(Raw(a).AppendString(b, flag).GetPathStr(),
                          DirForm(bare + b, flag && path.IsDirPath()));
                EXPECT_EQ(Raw(a).AppendExt(b, flag).GetPathStr(), (flag ? bare : a) + b);
            }
            for (bool const ignore : {false, true}) {
                for (bool const caseSensitive : {false, true}) {
                    EXPECT_EQ(path.IsEqual(other, ignore, caseSensitive),
                              ref::ComparedForm(a, ignore, caseSensitive) ==
                                  ref::ComparedForm(b, ignore, caseSensitive));
                }
                EXPECT_EQ(path.StartsWithPath(other, ignore), ref::StartsWithPath(a, b, ignore));
                EXPECT_EQ(path.StartsWithPath(b, ignore),
                          ref::StartsWithPath(a, ref::Slashed(b), ignore));
                EXPECT_EQ(path.EndsWith(b, ignore), ref::EndsWithPath(a, b, ignore));
                EXPECT_EQ(path.EndsWith(other, ignore), ref::EndsWithPath(a, b, ignore));
                // Strip and StripPath leave what follows a prefix, without its separators
                // when asked to; the text forms build a path from the text first.
                auto const rest = [&](bool matches) {
                    std::string const after = matches ? a.substr(b.size()) : a;
                    return matches && ignore ? ref::WithoutStartSeparators(after, "/\\") : after;
                };
                for (bool const text : {false, true}) {
                    std::string const prefix = text ? ref::Slashed(b) : b;
                    FSPath plain = path, asPath = path;
                    EXPECT_TRUE(text ? plain.Strip(b, ignore) : plain.Strip(other, ignore));
                    EXPECT_TRUE(text ? asPath.StripPath(b, ignore, !ignore)
                                     : asPath.StripPath(other, ignore, !ignore));
                    EXPECT_EQ(plain.GetPathStr(), rest(ref::StartsWithUpToNul(a, prefix)));
                    EXPECT_EQ(asPath.GetPathStr(), rest(ref::StartsWithPath(a, prefix, !ignore)));
                }
                if (!ignore) {  // the text form trims no separators unless asked to
                    FSPath byDefault = path;
                    byDefault.Strip(b);
                    EXPECT_EQ(byDefault.GetPathStr(),
                              rest(ref::StartsWithUpToNul(a, ref::Slashed(b))));
                }
            }
            EXPECT_EQ(path.StartsWith(other), ref::StartsWithUpToNul(a, b));
            EXPECT_EQ(path.StartsWith(std::string_view(b)), ref::StartsWithUpToNul(a, b));
            EXPECT_EQ(path == std::string_view(b), path.IsEqual(b, false, true));
            EXPECT_EQ(path == other, path.IsEqual(other, false, true));
            EXPECT_EQ(path != std::string_view(b), !path.IsEqual(b, false, true));
            EXPECT_EQ(path != other, !path.IsEqual(other, false, true));
            EXPECT_EQ(path < other, std::lexicographical_compare(
                                        a.begin(), a.end(), b.begin(), b.end(),
                                        [](char x, char y) {
                                            return static_cast<unsigned char>(x) <
                                                   static_cast<unsigned char>(y);
                                        }));
            FSPath mine = path;  // FindSubDir is not const
            for (std::size_t const start :
                 {std::size_t{0}, std::size_t{2}, std::size_t{5}, std::size_t{6}, npos}) {
                std::size_t const place = ref::SubDirectoryPlace(a, b, start);
                EXPECT_EQ(mine.FindSubDir(other, start), place) << "from " << start;
                EXPECT_EQ(mine.ContainsSubDir(other, start), place != npos) << "from " << start;
                EXPECT_EQ(mine.ContainsSubDir(b, start),
                          ref::SubDirectoryPlace(a, ref::Slashed(b), start) != npos);
            }
        }
    }
    std::set<FSPath> const set = {Raw("a/b"), Raw("a\\b"), Raw("a/b")};
    EXPECT_EQ(set.size(), 2u) << "the order looks at raw bytes";
}

// Every text of up to seven bytes over dot, both separators and a letter, every list of up
// to five components drawn from names, dots and empties behind a separator of either kind,
// and the tricky texts: both resolutions give what the literal references give.
TEST(FSPathReference, ResolutionsOfEveryShortText) {
    std::vector<std::string> texts = tavrel_testing::AllTexts("./\\a", 7);
    std::vector<std::string> components = {"/"};
    for (std::size_t i = 0; components.size() < 4000; ++i) {
        for (char const* token : {"", ".", "..", "a", "..."}) {
            components.push_back(components[i] + token + (i % 2 ? "\\" : "/"));
            texts.push_back(components[i] + token);
        }
    }
    texts.insert(texts.end(), components.begin(), components.end());
    std::vector<std::string> const more = Texts();
    texts.insert(texts.end(), more.begin(), more.end());
    for (std::string const& text : texts) {
        SCOPED_TRACE("text '" + text + "'");
        ref::Corrected const expected = ref::CorrectedAbsolute(text);
        FSPath path = Raw(text);
        ASSERT_EQ(path.CorrectAbsolutePath(), expected.ok);
        ASSERT_EQ(path.GetPathStr(), expected.text);
        ASSERT_EQ(Raw(text).SimplifyPath().GetPathStr(), ref::Simplified(text));
    }
}

TEST(FSPathReference, LongPathsResolveInOnePass) {
    std::string climbs = "/";
    std::string dots;
    for (int i = 0; i < 200000; ++i) {
        climbs += "a/../";
        dots += "./../";
    }
    FSPath path = Raw(climbs + "z");
    EXPECT_TRUE(path.CorrectAbsolutePath());
    EXPECT_EQ(path.GetPathStr(), "/z");
    EXPECT_EQ(Raw(dots + "z").SimplifyPath().GetPathStr(), "z");
}

}  // namespace
}  // namespace Tavrel
