// Absolute and simplified paths: component resolution, the text filter, traversal
// detection and full paths against a current directory of the test's own.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "path/FSPath.h"
#include "testing/PathReferences.h"
#include "testing/TestFiles.h"
#include "testing/TrickyPaths.h"

namespace Tavrel {
namespace {

namespace ref = tavrel_testing::reference;
using tavrel_testing::Raw;
using tavrel_testing::TrickyPaths;

TEST(FSPathAbsolute, CorrectAbsolutePath) {
    struct Row { char const* before; bool ok; char const* after; };
    Row const rows[] = {
        {"", false, ""},          {"a/b", false, "a/b"},     {"C:/x", false, "C:/x"},
        {"//", true, "/"},        {"/a/b/c/../../d/", true, "/a/d"}, {"/.../a", true, "/.../a"},
        {"/a//../b", true, "/a/b"}, {"//..", true, "/"},     {"/..", false, ""},
        {"/../a", true, "a"},     {"/a/../../b", true, "b"}, {"/../../a", false, ""},
        {"\\a\\..\\b", true, "/b"}, {"\\a/./b\\c", true, "/a/b/c"},
    };
    for (Row const& row : rows) {
        FSPath path = Raw(row.before);
        EXPECT_EQ(path.CorrectAbsolutePath(), row.ok) << "row " << row.before;
        EXPECT_EQ(path.GetPathStr(), row.after) << "row " << row.before;
    }
}

TEST(FSPathAbsolute, SimplifyPathAndContainsTraversal) {
    struct Row { char const *before, *after; };
    Row const rows[] = {
        {"", ""},        {"..", "."},    {"...", "."},   {"../../a", "a"}, {"a/b/..", "a/b/"},
        {"a/.", "a/."},  {"/../", "/"},  {"a./b", "ab"}, {".../a", ".a"},  {"a...", "a."},
        {"a..b", "a..b"}, {".\\a\\..\\b", "a\\b"},
    };
    for (Row const& row : rows) {
        EXPECT_EQ(Raw(row.before).SimplifyPath().GetPathStr(), row.after) << "row " << row.before;
    }
    struct TraversalRow { char const* text; bool expected; };
    for (TraversalRow const row : {TraversalRow{"a../", true}, TraversalRow{"a..\\b", true},
                                   TraversalRow{"a/..", false}, TraversalRow{"...", false}}) {
        EXPECT_EQ(Raw(row.text).ContainsTraversal(), row.expected) << "row " << row.text;
    }
}

// Every text of up to seven bytes over dot, both separators and a letter, every list of up
// to five components drawn from names, dots and empties behind a separator of either kind,
// and the tricky texts: both resolutions give what the literal references give.
TEST(FSPathAbsolute, ResolutionsMatchReferences) {
    std::vector<std::string> texts = {""};
    for (std::size_t i = 0; texts[i].size() < 7; ++i) {
        for (char c : {'.', '/', '\\', 'a'}) {
            texts.push_back(texts[i] + c);
        }
    }
    std::vector<std::string> components = {"/"};
    for (std::size_t i = 0; components.size() < 4000; ++i) {
        for (char const* token : {"", ".", "..", "a", "..."}) {
            components.push_back(components[i] + token + (i % 2 ? "\\" : "/"));
            texts.push_back(components[i] + token);
        }
    }
    texts.insert(texts.end(), components.begin(), components.end());
    texts.insert(texts.end(), TrickyPaths().begin(), TrickyPaths().end());
    for (std::string const& text : texts) {
        SCOPED_TRACE("text '" + text + "'");
        ref::Corrected const expected = ref::CorrectedAbsolute(text);
        FSPath path = Raw(text);
        ASSERT_EQ(path.CorrectAbsolutePath(), expected.ok);
        ASSERT_EQ(path.GetPathStr(), expected.text);
        ASSERT_EQ(Raw(text).SimplifyPath().GetPathStr(), ref::Simplified(text));
    }
}

TEST(FSPathAbsolute, LongPathsResolveInOnePass) {
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

// Runs each test in a fresh temporary directory and returns to the old one afterwards.
class FSPathFullPath : public ::testing::Test {
protected:
    void SetUp() override {
        mOldDir = std::filesystem::current_path();
        std::filesystem::current_path(mTempDir.Root());
        mCwd = FSPath::GetCurrDir();
        ASSERT_FALSE(mCwd.empty());
    }
    void TearDown() override { std::filesystem::current_path(mOldDir); }

    tavrel_testing::TempDir mTempDir{"fspath"};
    std::filesystem::path mOldDir;
    std::string mCwd;
};

#if defined(_WIN32)

// NOTE: the current directory begins with a drive ("C:\Users\u"), which the class takes as
// the first component of a relative path: a relative path is joined to it, in slash form, but
// cannot be made absolute. Paths that begin with a separator resolve as anywhere else.
TEST_F(FSPathFullPath, ResolvesOnlyWhatBeginsWithASeparator) {
    std::string const drive = FSPath(mCwd).GetPathStr();  // "C:/Users/u"
    ASSERT_TRUE(drive.size() > 2 && drive[1] == ':') << drive;
    struct Row { std::string before; bool ok; std::string after; };
    Row const rows[] = {
        {"", false, drive},               {"a/../b/", false, drive + "/a/../b/"},
        {"/x/./y", true, "/x/y"},         {"\\x\\..\\y", true, "/y"},
        {"C:\\x", false, drive + "/C:/x"},
    };
    for (Row const& row : rows) {
        FSPath path(row.before);
        EXPECT_EQ(path.GetFullPath(), row.ok) << "row " << row.before;
        EXPECT_EQ(path.GetPathStr(), row.after) << "row " << row.before;
    }
}

#else

TEST_F(FSPathFullPath, ResolvesAgainstTheCurrentDirectory) {
    std::string up;
    for (long i = std::count(mCwd.begin(), mCwd.end(), '/'); i > 0; --i) {
        up += "../";
    }
    struct Row { std::string before; bool ok; std::string after; };
    Row const rows[] = {
        {"", true, mCwd},       {".", true, mCwd},      {"a/../b/", true, mCwd + "/b"},
        {"..", true, mCwd.substr(0, mCwd.rfind('/'))},  {up, true, "/"},
        {up + "..", false, ""}, {up + "../a", true, "a"}, {"/x/./y", true, "/x/y"},
        {"C:\\x", true, mCwd + "/C:/x"},
    };
    for (Row const& row : rows) {
        FSPath path(row.before);
        EXPECT_EQ(path.GetFullPath(), row.ok) << "row " << row.before;
        EXPECT_EQ(path.GetPathStr(), row.after) << "row " << row.before;
    }
    std::filesystem::current_path("/");
    FSPath relative("a"), empty;
    EXPECT_TRUE(relative.GetFullPath() && empty.GetFullPath());
    EXPECT_EQ(relative.GetPathStr() + empty.GetPathStr(), "/a/");
}

// NOTE: Windows cannot make a directory this deep with its plain file functions.
TEST_F(FSPathFullPath, FailsWhenTheCurrentDirectoryDoesNotFit) {
    std::string const name(200, 'd');
    for (int level = 0; level < 6; ++level) {
        std::filesystem::create_directory(name);
        std::filesystem::current_path(name);
    }
    EXPECT_EQ(FSPath::GetCurrDir(), "");
    FSPath relative("a"), absolute("/x/./y");
    EXPECT_FALSE(relative.GetFullPath());
    EXPECT_EQ(relative.GetPathStr(), "a");
    EXPECT_TRUE(absolute.GetFullPath());
    EXPECT_EQ(absolute.GetPathStr(), "/x/y");
}

#endif

}  // namespace
}  // namespace Tavrel
