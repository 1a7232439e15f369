// The path value: conversion, the in-place edits that no reference describes, and arguments
// that are the object itself (joining and separators: FSPathReferenceTest.cpp).
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
constexpr auto kWin = FSPath::kWindowsPathSep;

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

TEST(FSPathValue, ReplaceAndErase) {
    // clang-format off
    struct Row { std::size_t pos, len; char const* with; bool ok; char const* expected; };
    Row const rows[] = {  // with null: Erase
        {1, 1, "\\", true, "a\\b"},   {1, 100, "c", true, "ac"},      {3, 0, "c", true, "a/bc"},
        {4, 0, "c", false, "a/b"},    {npos, 1, "c", false, "a/b"},   {1, npos, nullptr, true, "a"},
        {3, 1, nullptr, true, "a/b"}, {4, 0, nullptr, false, "a/b"},
    };
    // clang-format on
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
