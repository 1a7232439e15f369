// Full paths against a current directory of the test's own (the two resolutions alone:
// FSPathReferenceTest.cpp; traversal detection: the path fuzzer).
#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "path/FSPath.h"
#include "testing/TestFiles.h"

namespace Tavrel {
namespace {

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
    // clang-format off
    struct Row { std::string before; bool ok; std::string after; };
    Row const rows[] = {
        {"", false, drive},               {"a/../b/", false, drive + "/a/../b/"},
        {"/x/./y", true, "/x/y"},         {"\\x\\..\\y", true, "/y"},
        {"C:\\x", false, drive + "/C:/x"},
    };
    // clang-format on
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
    // clang-format off
    struct Row { std::string before; bool ok; std::string after; };
    Row const rows[] = {
        {"", true, mCwd},       {".", true, mCwd},      {"a/../b/", true, mCwd + "/b"},
        {"..", true, mCwd.substr(0, mCwd.rfind('/'))},  {up, true, "/"},
        {up + "..", false, ""}, {up + "../a", true, "a"}, {"/x/./y", true, "/x/y"},
        {"C:\\x", true, mCwd + "/C:/x"},
    };
    // clang-format on
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
