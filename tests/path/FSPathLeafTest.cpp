// Taking a path apart: leaf, root and extension.
#include <gtest/gtest.h>
#include <string>

#include "path/FSPath.h"
#include "testing/TrickyPaths.h"

namespace Tavrel {
namespace {

using tavrel_testing::Raw;
using tavrel_testing::TrickyPaths;

TEST(FSPathLeaf, LeafAndRoot) {
    // leaf and root null: none found. afterExtract: the object after ExtractAndEraseLeaf.
    struct Row { char const *text, *leaf, *root, *afterExtract, *eraseKeep, *eraseDrop; };
    Row const rows[] = {
        {"a/", nullptr, nullptr, "a", "a", "a"}, {"//", nullptr, nullptr, "", "", ""},
        {"/a/", "a", "/", "/", "/", ""},         {"a/b//", "b", "a", "a/", "a/", "a"},
        {"a//b", "b", "a", "a//", "a//", "a/"},  {"a\\b", "b", "a", "a\\", "a\\", "a"},
        {"\\a", "a", "/", "\\", "\\", ""},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(std::string("text '") + row.text + "'");
        FSPath const path = Raw(row.text);
        std::string out = "stale";
        EXPECT_EQ(path.ExtractLeaf(out), row.leaf != nullptr);
        EXPECT_EQ(out, row.leaf ? row.leaf : "");
        EXPECT_EQ(path.ExtractRoot(out), row.root != nullptr);
        EXPECT_EQ(out, row.root ? row.root : "");
        FSPath erased(path);
        FSPath leaf("stale");
        EXPECT_EQ(erased.ExtractAndEraseLeaf(leaf), row.leaf != nullptr);
        EXPECT_EQ(leaf.GetPathStr(), row.leaf ? row.leaf : "");
        EXPECT_EQ(erased.GetPathStr(), row.afterExtract);
        EXPECT_EQ(FSPath(path).EraseLeaf(true).GetPathStr(), row.eraseKeep);
        EXPECT_EQ(FSPath(path).EraseLeaf(false).GetPathStr(), row.eraseDrop);
    }
    FSPath path("a/b");
    EXPECT_TRUE(path.ExtractAndEraseLeaf(path));
    EXPECT_EQ(path.GetPathStr(), "b");
    EXPECT_FALSE(path.ExtractAndEraseLeaf(path));
    EXPECT_TRUE(path.IsEmpty());
    EXPECT_EQ(path.SetPath("x/a").ReplaceLeaf(path).GetPathStr(), "x/x/a");
}

TEST(FSPathLeaf, ReplaceLeaf) {
    struct Row { char const *path, *leaf, *expected; };
    Row const rows[] = {
        {"a", "b", "a/b"},    {"/", "b", "b"},      {"/a/", "b", "/b"},  {"x/a/", "b/", "x/b/"},
        {"x/a", "/b", "x//b"}, {"x/a", "", "x/"},   {"x\\a", "b\\c", "x/b/c"},
    };
    for (Row const& row : rows) {
        EXPECT_EQ(Raw(row.path).ReplaceLeaf(row.leaf).GetPathStr(), row.expected)
            << "row " << row.path << " + " << row.leaf;
    }
}

TEST(FSPathLeaf, Extensions) {
    struct Row { char const *text, *extension; bool removed; char const* after; };
    Row const rows[] = {
        {"a", "", false, "a"},              {"a.tar.gz", "gz", true, "a.tar"},
        {".bashrc", "bashrc", true, ""},    {"a.", "", true, "a"},
        {"..", "", true, "."},              {"dir.d/a", "", false, "dir.d/a"},
        {"dir/.bashrc", "bashrc", true, "dir/"}, {"dir/.", "", true, "dir/"},
        {"/.x", "x", true, "/"},            {"a.txt/", "", false, "a.txt/"},
        {"a\\b.c", "c", true, "a/b"},       {"x\\y", "", false, "x\\y"},
        {"a.txt\\", "", false, "a.txt\\"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(std::string("text '") + row.text + "'");
        EXPECT_EQ(FSPath::GetExtension(row.text), row.extension);
        std::string text = row.text;
        EXPECT_EQ(FSPath::RemoveExtension(text), row.removed);
        EXPECT_EQ(text, row.after);
    }
}

// A found leaf and the erased object put back together give the trimmed text again, and
// a found extension is what RemoveExtension cut off.
TEST(FSPathLeaf, PartsReassembleOnTrickyTexts) {
    for (std::string const& text : TrickyPaths()) {
        SCOPED_TRACE("text '" + text + "'");
        FSPath whole(text);
        FSPath rest(whole);
        std::string leaf;
        if (rest.ExtractAndEraseLeaf(leaf)) {
            EXPECT_EQ(rest.GetPathStr() + leaf, whole.RemPathSepsAtEnd().GetPathStr());
        }
        std::string const extension = FSPath::GetExtension(text);
        std::string cut = text;
        if (!extension.empty()) {
            ASSERT_TRUE(FSPath::RemoveExtension(cut));
            EXPECT_EQ(cut.append(".").append(extension), FSPath(text).GetPathStr());
        }
    }
}

}  // namespace
}  // namespace Tavrel
