// ASCII case changes and camel-casing. Only 0x41-0x5A and 0x61-0x7A are letters, whatever the
// locale; every byte from 0x80 up is left alone (and counts as a separator for camel-casing).
// No table and no call into the C library.
#pragma once

#include <string>
#include <string_view>

namespace Tavrel {

// Makes a-z upper case in place.   "aZ9_\xC3\xA9" => "AZ9_\xC3\xA9"     "" => ""
void ToUpper(std::string& text);
// A copy of text with a-z made upper case; text is not touched.
std::string ToUpper(std::string_view const& text);
// Makes A-Z lower case in place.   "aZ9_\xC3\xA9" => "az9_\xC3\xA9"
void ToLower(std::string& text);
// A copy of text with A-Z made lower case; text is not touched.
std::string ToLower(std::string_view const& text);
// Joins the alphanumeric runs into one word: the first byte is kept (upper-cased if a
// lower-case letter), later non-alphanumeric bytes are dropped, and a lower-case letter right
// behind dropped bytes is upper-cased. No letter is ever made lower case.
//   "" => ""     "-" => "-"     "hello_world" => "HelloWorld"     "foo_1bar" => "Foo1bar"
//   "_foo_bar" => "_fooBar"     "foo_bar_" => "FooBar"     "a\xC3\xA9" "b" => "AB"
void ToCamelCase(std::string& text);

}  // namespace Tavrel
