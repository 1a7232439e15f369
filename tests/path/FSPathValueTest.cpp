// The path value: construction, joining, separator handling and in-place edits.
#include <gtest/gtest.h>
#include <iomanip>
#include <sstream>
#include <string>

#include "path/FSPath.h"
#include "testing/TrickyPaths.h"

namespace Tavrel {
namespace {

using tavrel_testing::Raw;
constexpr auto kAny = FSPath::kAnyPathSep;
constexpr auto kUnix = FSPath::kUnixPathSep;
constexpr auto kWin = FSPath::kWindowsPathSep;

TEST(FSPathValue, JoinsAsConstructorAndAppendPath) {
    struct Row { char const *path, *more; bool dir; char const* expected; };
    Row const rows[] = {
        {"", "b", false, "b"},     {"a", "", true, "a/"},      {"a/", "", true, "a//"},
        {"", "", false, ""},       {"", "", true, "/"},        {"a", "b", true, "a/b/"},
        {"a", "b/", true, "a/b/"}, {"a", "/b", false, "a/b"},  {"a/", "/b", false, "a//b"},
        {"/", "/", false, "//"},   {"/a", "b\\c", false, "/a/b/c"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(std::string("path '") + row.path + "' more '" + row.more + "'");
        EXPECT_EQ(FSPath(row.path).AppendPath(row.more, row.dir).GetPathStr(), row.expected);
        if (!row.dir) {
            EXPECT_EQ(FSPath(row.path, row.more).GetPathStr(), row.expected);
            EXPECT_EQ(FSPath(FSPath(row.path), FSPath(row.more)).GetPathStr(), row.expected);
            EXPECT_EQ(FSPath().SetPath(row.path, row.more).GetPathStr(), row.expected);
        }
    }
}

TEST(FSPathValue, ConvertsOnlyWhereItShould) {
    EXPECT_EQ(FSPath("a\\b/c").GetPathStr(), "a/b/c");
    EXPECT_EQ(Raw("a\\b").GetPathStr(), "a\\b");
    EXPECT_EQ(FSPath(Raw("a\\b")).GetPathStr(), "a\\b");
    EXPECT_EQ(FSPath(Raw("a\\b"), FSPath()).GetPathStr(), "a/b");
    FSPath path("a/b");
    EXPECT_EQ(path.GetPathStr(kWin), "a\\b");
    EXPECT_EQ(path.GetPathStr(kAny), "a\\b") << "the conversion stays in the object";
    std::string out = "old text";
    path.GetPathStr(out);
    EXPECT_EQ(out, "a\\b");
    EXPECT_EQ(path.ConvertPathSep(kAny).GetPathStr(), "a/b");
}

TEST(FSPathValue, AppendStringAppendExtAndMakeDirPath) {
    struct Row { char const *path, *text; bool flag; char const *appendString, *appendExt; };
    Row const rows[] = {
        {"a/b/", "c", false, "a/bc", "a/b/c"},  {"a/b/", "c", true, "a/bc/", "a/bc"},
        {"a/b", "c/", false, "a/bc", "a/bc/"},  {"a/b", "c/", true, "a/bc", "a/bc/"},
        {"/", "x", false, "x", "/x"},           {"/", "x", true, "x/", "x"},
        {"//", "", false, "", "//"},            {"a", "\\b", false, "a\\b", "a\\b"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(std::string("path '") + row.path + "' text '" + row.text + "'");
        EXPECT_EQ(FSPath(row.path).AppendString(row.text, row.flag).GetPathStr(),
                  row.appendString);
        EXPECT_EQ(FSPath(row.path).AppendExt(row.text, row.flag).GetPathStr(), row.appendExt);
    }
    struct DirRow { char const* path; bool dir; char const* expected; };
    for (DirRow const& row : {DirRow{"", true, "/"}, DirRow{"a//", true, "a//"},
                              DirRow{"a\\", true, "a\\"}, DirRow{"a/\\", false, "a"}}) {
        EXPECT_EQ(Raw(row.path).MakeDirPath(row.dir).GetPathStr(), row.expected) << row.path;
        EXPECT_EQ(Raw(row.path).MakeFilePath(!row.dir).GetPathStr(), row.expected) << row.path;
    }
    // Only a final separator of either kind makes a directory path.
    struct KindRow { char const* path; bool dir; };
    for (KindRow const& row : {KindRow{"", false}, KindRow{"/", true}, KindRow{"a\\", true},
                               KindRow{"a/b", false}, KindRow{"a/.", false}}) {
        EXPECT_EQ(Raw(row.path).IsDirPath(), row.dir) << row.path;
        EXPECT_EQ(Raw(row.path).IsFilePath(), !row.dir) << row.path;
    }
}

TEST(FSPathValue, SeparatorSearchAndTrimOnMixedText) {
    struct Row { char const* text; FSPath::EPathSepType type; std::size_t first, last; };
    Row const rows[] = {
        {"a\\b/c", kAny, 3, 3}, {"a\\b/c", kWin, 1, 1},   {"a/b\\c", kAny, 1, 1},
        {"a\\b\\c", kAny, 1, 3}, {"a\\b\\c", kUnix, npos, npos}, {"", kAny, npos, npos},
    };
    for (Row const& row : rows) {
        EXPECT_EQ(Raw(row.text).FindFirstPathSep(row.type), row.first) << "row " << row.text;
        EXPECT_EQ(Raw(row.text).FindLastPathSep(row.type), row.last) << "row " << row.text;
    }
    EXPECT_EQ(Raw("a/\\/").RemPathSepsAtEnd(kUnix).GetPathStr(), "a/\\");
    EXPECT_EQ(Raw("a/\\/").RemPathSepsAtEnd(kWin).GetPathStr(), "a/\\/");
    EXPECT_EQ(Raw("/\\a").RemPathSepsAtStart(kUnix).GetPathStr(), "\\a");
    EXPECT_EQ(Raw("\\/").RemPathSepsAtStart(kAny).GetPathStr(), "");
}

TEST(FSPathValue, ReplaceAndErase) {
    struct Row { std::size_t pos, len; char const* with; bool ok; char const* expected; };
    Row const rows[] = {  // with null: Erase
        {1, 1, "\\", true, "a\\b"},   {1, 100, "c", true, "ac"},      {3, 0, "c", true, "a/bc"},
        {4, 0, "c", false, "a/b"},    {npos, 1, "c", false, "a/b"},   {1, npos, nullptr, true, "a"},
        {3, 1, nullptr, true, "a/b"}, {4, 0, nullptr, false, "a/b"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE("pos " + std::to_string(row.pos) + (row.with ? " replace" : " erase"));
        FSPath path("a/b");
        std::string error = "untouched";
        bool const ok = row.with ? path.Replace(row.pos, row.len, std::string(row.with), &error)
                                 : path.Erase(row.pos, row.len, &error);
        EXPECT_EQ(ok, row.ok);
        EXPECT_EQ(path.GetPathStr(), row.expected);
        EXPECT_EQ(error, row.ok ? "untouched" : row.with ? "Replace failed" : "Erase failed");
    }
    FSPath path("a/b");
    EXPECT_FALSE(path.Erase(9, 1)) << "a null error pointer is allowed";
    EXPECT_TRUE(path.Replace(1, 1, path));
    EXPECT_EQ(path.GetPathStr(), "aa/bb");
}

TEST(FSPathValue, ArgumentsThatAreTheObjectItself) {
    FSPath path("x");
    EXPECT_EQ(path.SetPath(kEmptyFSPath, path).GetPathStr(), "x");
    EXPECT_EQ(path.SetPath(FSPath("a"), path).GetPathStr(), "a/x");
    path = "x";
    EXPECT_EQ(path.SetPath(path, path).GetPathStr(), "x/x");
    EXPECT_EQ(path.AppendPath(path, true).GetPathStr(), "x/x/x/x/");
    path = "a\\b";
    FSPath const& same = path;
    path = same;
    EXPECT_EQ(path.GetPathStr(), "a\\b");
    // Views into the object's own text.
    path.SetPath(std::string_view(path.GetPathStr()).substr(2), path.GetPathStr());
    EXPECT_EQ(path.GetPathStr(), "b/a/b");
    EXPECT_EQ(path.AppendString(path.GetPathStr()).GetPathStr(), "b/a/bb/a/b");
}

TEST(FSPathValue, StreamsAndConstants) {
    std::ostringstream out;
    out << std::setw(5) << std::left << Raw("a\\b") << '|';
    EXPECT_EQ(out.str(), "a\\b  |");
    EXPECT_TRUE(kEmptyFSPath.IsEmpty() && kEmptyFSPathList.empty() && kEmptyFSPathSet.empty());
}

}  // namespace
}  // namespace Tavrel
