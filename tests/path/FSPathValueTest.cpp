// The path value: conversion and arguments that are the object itself (joining and separators:
// FSPathReferenceTest.cpp; Replace, Erase and the stream: the path fuzzer).
#include <gtest/gtest.h>
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
    path = "a/b";
    EXPECT_TRUE(path.Replace(1, 1, path));
    EXPECT_EQ(path.GetPathStr(), "aa/bb");
}

}  // namespace
}  // namespace Tavrel
