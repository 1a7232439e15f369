// Absolute and simplified paths: component resolution, the text filter, traversal
// detection and full paths against a current directory of the test's own.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "path/FSPath.h"
#include "tests/path/PathTestSupport.h"

namespace Tavrel {
namespace {

using test::Raw;
using test::TrickyTexts;

bool IsSep(char c) { return c == '/' || c == '\\'; }

// The resolution written as literally as possible: split at every separator, then rescan
// from the front after every removal. False leaves text empty or, if relative, unchanged.
bool ReferenceCorrect(std::string& text) {
    if (text.empty() || !IsSep(text[0])) {
        return false;
    }
    std::vector<std::string> parts(1);
    for (char c : text) {
        IsSep(c) ? parts.emplace_back() : parts.back().append(1, c);
    }
    for (auto it = parts.begin(); it != parts.end();) {
        if (*it == "." || (*it == ".." && it != parts.begin())) {
            parts.erase(*it == "." ? it : it - 1, it + 1);
            it = parts.begin();  // rescan from the front
        } else if (*it == "..") {
            parts.clear();
            break;
        } else {
            ++it;
        }
    }
    text = !parts.empty() && parts[0].empty() ? "/" : "";
    for (std::string const& part : parts) {
        if (!part.empty()) {
            text += (text.empty() || text.back() == '/' ? "" : "/") + part;
        }
    }
    return !parts.empty();
}

// The filter written as the erase loop that the one-pass version replaces.
std::string ReferenceSimplify(std::string text) {
    for (std::size_t i = 0; i < text.size();) {
        std::size_t const n = text.size();
        bool const dotDot = text[i] == '.' && i + 1 < n && text[i + 1] == '.';
        if ((text[i] == '.' && i + 1 < n && IsSep(text[i + 1])) || (dotDot && i + 2 == n)) {
            text.erase(i, 2);
        } else if (dotDot && IsSep(text[i + 2])) {
            text.erase(i, 3);
        } else {
            ++i;
        }
    }
    return text;
}

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

// Every list of up to five components drawn from names, dots and empties, joined with
// either separator, resolves as the rescanning reference does; a success leaves no "." or
// ".." component and no doubled, trailing or backslash separator.
TEST(FSPathAbsolute, CorrectAbsolutePathMatchesRescanReference) {
    std::vector<std::string> texts = {"/"}, ends;
    for (std::size_t i = 0; texts.size() < 4000; ++i) {
        for (char const* token : {"", ".", "..", "a", "..."}) {
            texts.push_back(texts[i] + token + (i % 2 ? "\\" : "/"));
            ends.push_back(texts[i] + token);
        }
    }
    texts.insert(texts.end(), ends.begin(), ends.end());
    texts.insert(texts.end(), TrickyTexts().begin(), TrickyTexts().end());
    for (std::string const& text : texts) {
        SCOPED_TRACE("text '" + text + "'");
        std::string expected = text;
        bool const ok = ReferenceCorrect(expected);
        FSPath path = Raw(text);
        ASSERT_EQ(path.CorrectAbsolutePath(), ok);
        ASSERT_EQ(path.GetPathStr(), expected);
        if (!ok) {
            continue;
        }
        std::string const& out = path.GetPathStr();  // never empty after a success
        std::string const framed = (out[0] == '/' ? "" : "/") + out + "/";
        EXPECT_EQ(out.find('\\'), std::string::npos);
        EXPECT_EQ(framed.find("/./"), std::string::npos);
        EXPECT_EQ(framed.find("/../"), std::string::npos);
        EXPECT_TRUE(out == "/" || framed.find("//") == std::string::npos);
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

// Every text of up to seven bytes over dot, both separators and a letter, and the tricky ones.
TEST(FSPathAbsolute, SimplifyPathMatchesEraseLoop) {
    std::vector<std::string> texts = {""};
    for (std::size_t i = 0; texts[i].size() < 7; ++i) {
        for (char c : {'.', '/', '\\', 'a'}) {
            texts.push_back(texts[i] + c);
        }
    }
    texts.insert(texts.end(), TrickyTexts().begin(), TrickyTexts().end());
    for (std::string const& text : texts) {
        std::string const expected = ReferenceSimplify(text);
        ASSERT_EQ(Raw(text).SimplifyPath().GetPathStr(),
                  expected.empty() && !text.empty() ? "." : expected)
            << "text '" << text << "'";
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
        ASSERT_NE(getcwd(mOldDir, sizeof mOldDir), nullptr);
        char pattern[] = "/tmp/fspath-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        mTempDir = pattern;
        ASSERT_EQ(chdir(pattern), 0);
        mCwd = FSPath::GetCurrDir();
        ASSERT_FALSE(mCwd.empty());
    }
    void TearDown() override {
        EXPECT_EQ(chdir(mOldDir), 0);
        std::filesystem::remove_all(mTempDir);
    }

    char mOldDir[4096] = {};
    std::string mTempDir, mCwd;
};

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
    ASSERT_EQ(chdir("/"), 0);
    FSPath relative("a"), empty;
    EXPECT_TRUE(relative.GetFullPath() && empty.GetFullPath());
    EXPECT_EQ(relative.GetPathStr() + empty.GetPathStr(), "/a/");
}

TEST_F(FSPathFullPath, FailsWhenTheCurrentDirectoryDoesNotFit) {
    std::string const name(200, 'd');
    for (int level = 0; level < 6; ++level) {
        ASSERT_EQ(mkdir(name.c_str(), 0700), 0);
        ASSERT_EQ(chdir(name.c_str()), 0);
    }
    EXPECT_EQ(FSPath::GetCurrDir(), "");
    FSPath relative("a"), absolute("/x/./y");
    EXPECT_FALSE(relative.GetFullPath());
    EXPECT_EQ(relative.GetPathStr(), "a");
    EXPECT_TRUE(absolute.GetFullPath());
    EXPECT_EQ(absolute.GetPathStr(), "/x/y");
}

}  // namespace
}  // namespace Tavrel
