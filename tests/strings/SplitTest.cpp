#include <gtest/gtest.h>
#include <list>
#include <string>

#include "strings/Split.h"

namespace Tavrel {
namespace {

using Parts = std::list<std::string>;

TEST(SplitString, Table) {
    struct Row {
        std::string text, delimiters;
        bool anyOf;
        Parts expected;
    };
    // clang-format off
    Row const rows[] = {
        {"/a/b/", "/\\", true, {"", "a", "b", ""}},
        {"/", "/\\", true, {"", ""}},
        {"a", "/\\", true, {"a"}},
        {"", "/\\", true, {""}},
        {"\\a/b\\\\", "/\\", true, {"", "a", "b", "", ""}},
        {"a::b:::c", "::", false, {"a", "b", ":c"}},
        {"::", "::", false, {"", ""}},
        {"a/b", "/\\", false, {"a/b"}},
        {"a/b", "", false, {"a/b"}},
        {"a/b", "", true, {"a/b"}},
    };
    // clang-format on
    for (Row const& row : rows) {
        Parts out = {"old"};
        EXPECT_EQ(SplitString(row.text, out, row.delimiters, row.anyOf), row.expected.size())
            << "row " << row.text << " by " << row.delimiters;
        EXPECT_EQ(out, row.expected) << "row " << row.text << " by " << row.delimiters;
    }
}

TEST(SplitString, TextMayBeAnElementOfOut) {
    Parts out = {"x/y", "/"};
    EXPECT_EQ(SplitString(out.front(), out, out.back(), true), 2u);
    EXPECT_EQ(out, (Parts{"x", "y"}));
}

}  // namespace
}  // namespace Tavrel
