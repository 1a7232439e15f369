// Comparing, prefix and suffix tests, stripping, and the sub-directory search.
#include <gtest/gtest.h>
#include <set>
#include <string>

#include "path/FSPath.h"
#include "testing/TrickyPaths.h"

namespace Tavrel {
namespace {

using tavrel_testing::Raw;
using tavrel_testing::TrickyPaths;

TEST(FSPathCompare, IsEqualUnderEachFlagPair) {
    // The four results: exact, ignoring end separators, ignoring case, ignoring both.
    struct Row { char const *mine, *other; bool exact, ignoreEnds, ignoreCase, ignoreBoth; };
    Row const rows[] = {
        {"a/b", "a/b/", false, true, false, true},   {"a/b/", "a/b//", false, true, false, true},
        {"a/B/", "A/b", false, false, false, true},  {"a\\b", "a/b", true, true, true, true},
        {"", "/", false, true, false, true},         {"", "", true, true, true, true},
        {"\xe9", "\xc9", false, false, false, false},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(std::string("'") + row.mine + "' vs '" + row.other + "'");
        FSPath const mine = Raw(row.mine);
        FSPath const other = Raw(row.other);
        EXPECT_EQ(mine.IsEqual(other, false, true), row.exact);
        EXPECT_EQ(mine.IsEqual(other, true, true), row.ignoreEnds);
        EXPECT_EQ(mine.IsEqual(other, false, false), row.ignoreCase);
        EXPECT_EQ(mine.IsEqual(other, true, false), row.ignoreBoth);
        EXPECT_EQ(mine == other, row.exact);
        EXPECT_EQ(mine != other, !row.exact);
        EXPECT_EQ(mine != std::string_view(row.other), !row.exact);
    }
    EXPECT_TRUE(FSPath("a/b") == "a\\b");
    std::set<FSPath> const set = {Raw("a/b"), Raw("a\\b"), Raw("a/b")};
    EXPECT_EQ(set.size(), 2u) << "the order looks at raw bytes";
}

TEST(FSPathCompare, Prefixes) {
    // The three results: StartsWith, StartsWithPath not strict, StartsWithPath strict.
    struct Row { char const *mine, *other; bool plain, path, strict; };
    Row const rows[] = {
        {"/a/b", "/a", true, true, false},  {"/a/b", "/a/", true, true, true},
        {"/ab", "/a", true, false, false},  {"/a", "/a", true, true, true},
        {"/a", "/a/", false, false, false}, {"/a/b", "/", true, true, true},
        {"/a", "", false, false, false},    {"", "", false, false, false},
        {"/a\\b", "/a", true, true, false},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(std::string("'") + row.mine + "' starts with '" + row.other + "'");
        FSPath const mine = Raw(row.mine);
        EXPECT_EQ(mine.StartsWith(FSPath(row.other)), row.plain);
        EXPECT_EQ(mine.StartsWithPath(row.other, false), row.path);
        EXPECT_EQ(mine.StartsWithPath(FSPath(row.other), true), row.strict);
    }
    FSPath const empty;
    EXPECT_TRUE(empty.StartsWith(empty) && empty.StartsWithPath(empty) && empty.EndsWith(empty));
    EXPECT_TRUE(Raw("/a\\b").StartsWith(std::string_view("/a\\")));
}

TEST(FSPathCompare, Suffixes) {
    struct Row { char const* mine; char const* text; bool ignoreEndSeps, expected; };
    Row const rows[] = {
        {"a/xb", "b", false, true},  {"a/b/", "b", false, false}, {"a/b/", "b", true, true},
        {"a/b", "b/", true, true},   {"a/b", "", false, false},   {"/", "/", true, false},
        {"a/b", "\\b", false, true}, {"a\\b", "\\b", false, false},
    };
    for (Row const& row : rows) {
        EXPECT_EQ(Raw(row.mine).EndsWith(row.text, row.ignoreEndSeps), row.expected)
            << "row '" << row.mine << "' ends with '" << row.text << "'";
    }
}

TEST(FSPathCompare, StripAndStripPath) {
    // Results of Strip, Strip with trim, StripPath, StripPath with trim and strict.
    struct Row { char const *mine, *other, *strip, *stripTrim, *stripPath, *stripPathStrict; };
    Row const rows[] = {
        {"/a/b", "/a", "/b", "b", "/b", "/a/b"},     {"/a/b", "/a/", "b", "b", "b", "b"},
        {"/ab", "/a", "b", "b", "/ab", "/ab"},       {"/a//b", "/a", "//b", "b", "//b", "/a//b"},
        {"/a", "", "/a", "/a", "/a", "/a"},          {"", "/a", "", "", "", ""},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(std::string("'") + row.mine + "' minus '" + row.other + "'");
        FSPath path(row.mine);
        EXPECT_TRUE(path.Strip(row.other, false));
        EXPECT_EQ(path.GetPathStr(), row.strip);
        EXPECT_TRUE(path.SetPath(row.mine).Strip(FSPath(row.other), true));
        EXPECT_EQ(path.GetPathStr(), row.stripTrim);
        EXPECT_TRUE(path.SetPath(row.mine).StripPath(row.other, false, false));
        EXPECT_EQ(path.GetPathStr(), row.stripPath);
        EXPECT_TRUE(path.SetPath(row.mine).StripPath(FSPath(row.other), true, true));
        EXPECT_EQ(path.GetPathStr(), row.stripPathStrict);
    }
    FSPath path("/a");
    EXPECT_TRUE(path.Strip(path) && path.IsEmpty());
    EXPECT_TRUE(path.SetPath("/a").StripPath(path) && path.IsEmpty());
}

TEST(FSPathCompare, FindSubDir) {
    struct Row { char const *path, *sub; std::size_t start, expected; };
    Row const rows[] = {
        {"/a/b/c/", "/b/", 0, 3},     {"/a/b/c/", "a/b", 0, 1},   {"/a/b/c", "c", 0, npos},
        {"a/b/c/", "b", 0, 2},        {"a/b/a/", "a", 0, npos},   {"/xb/b/", "b", 0, 4},
        {"/a/b/a/", "a", 2, 5},       {"/a/b/a/", "a", 6, npos},  {"/a/b/a/", "a", 7, npos},
        {"/a/b/", "/", 0, npos},      {"", "a", 0, npos},         {"\\a\\b\\", "b", 0, 3},
        {"\\a\\b\\", "a/b", 0, npos}, {"/a/b/", "b", npos, npos},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(std::string("'") + row.sub + "' in '" + row.path + "' from " +
                     std::to_string(row.start));
        FSPath path = Raw(row.path);
        EXPECT_EQ(path.FindSubDir(row.sub, row.start), row.expected);
        EXPECT_EQ(path.ContainsSubDir(FSPath(row.sub), row.start), row.expected != npos);
        EXPECT_EQ(path.ContainsSubDir(row.sub, row.start), row.expected != npos);
    }
    FSPath rooted("/a/"), relative("a/b"), empty;
    EXPECT_EQ(rooted.FindSubDir(rooted, 99), 1u) << "the object itself";
    EXPECT_EQ(relative.FindSubDir(relative, 99), 0u) << "the object itself";
    EXPECT_TRUE(empty.ContainsSubDir(empty, 99)) << "the object itself";
}

// Over every pair of tricky texts: equality ignores the kind of separator, stripping
// leaves a suffix of the old text, and a found sub-directory sits between separators.
TEST(FSPathCompare, PropertiesOverTrickyPairs) {
    for (std::string const& mine : TrickyPaths()) {
        std::string swapped = mine;
        for (char& c : swapped) {
            c = c == '/' ? '\\' : c == '\\' ? '/' : c;
        }
        for (bool ignore : {false, true}) {
            EXPECT_TRUE(Raw(mine).IsEqual(Raw(swapped), ignore, false)) << "'" << mine << "'";
        }
        for (std::string const& other : TrickyPaths()) {
            SCOPED_TRACE(testing::Message() << "'" << mine << "' with '" << other << "'");
            for (bool flag : {false, true}) {
                FSPath stripped = Raw(mine);
                FSPath strippedPath = Raw(mine);
                ASSERT_TRUE(stripped.Strip(other, flag));
                ASSERT_TRUE(strippedPath.StripPath(other, flag, !flag));
                EXPECT_TRUE(mine.ends_with(stripped.GetPathStr()));
                EXPECT_TRUE(mine.ends_with(strippedPath.GetPathStr()));
            }
            std::size_t const found = Raw(mine).FindSubDir(other);
            if (found != npos) {
                ASSERT_GT(found, 0u);
                EXPECT_TRUE(FSPath::IsPathSeparator(mine[found - 1]));
            }
        }
    }
}

}  // namespace
}  // namespace Tavrel
