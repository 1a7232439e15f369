#include <gtest/gtest.h>
#include <string>

#include "strings/Case.h"

namespace Tavrel {
namespace {

TEST(Case, UpperAndLowerAreAsciiOnly) {
    std::string const bytes = "aZ9_\xC3\xA9@[`{";
    std::string text = bytes;
    ToUpper(text);
    EXPECT_EQ(text, "AZ9_\xC3\xA9@[`{");
    EXPECT_EQ(ToUpper(std::string_view(bytes)), "AZ9_\xC3\xA9@[`{");
    text = bytes;
    ToLower(text);
    EXPECT_EQ(text, "az9_\xC3\xA9@[`{");
    EXPECT_EQ(ToLower(std::string_view(bytes)), "az9_\xC3\xA9@[`{");
    EXPECT_EQ(ToUpper(std::string_view()), "");
}

TEST(Case, CamelCaseTable) {
    struct Row {
        std::string text, expected;
    };
    // clang-format off
    Row const rows[] = {
        {"", ""},                       {"a", "A"},
        {"-", "-"},                     {"hello", "Hello"},
        {"hello_world", "HelloWorld"},  {"hello world", "HelloWorld"},
        {"foo-bar.baz", "FooBarBaz"},   {"hello__world", "HelloWorld"},
        {"HELLO_WORLD", "HELLOWORLD"},  {"camelCase", "CamelCase"},
        {"foo_Bar", "FooBar"},          {"foo_1bar", "Foo1bar"},
        {"foo 2 bar", "Foo2Bar"},       {"a1b", "A1b"},
        {"9lives", "9lives"},           {"a_b_c", "ABC"},
        {"foo_bar_", "FooBar"},         {"a__", "A"},
        {"_foo_bar", "_fooBar"},        {"__foo", "_Foo"},
        {" foo", " foo"},               {"a\xC3\xA9" "b", "AB"},
        {"\xC3\xA9" "a", "\xC3" "A"},
    };
    // clang-format on
    for (Row const& row : rows) {
        std::string text = row.text;
        ToCamelCase(text);
        EXPECT_EQ(text, row.expected) << "row " << row.text;
    }
}

}  // namespace
}  // namespace Tavrel
