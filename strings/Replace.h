// Replacing every occurrence of a byte or a text, left to right, in place. Occurrences do not
// overlap and the text put in is never searched again. Runs in time linear in the size of the
// text and the result, whatever the number of occurrences. Does not interpret any character set.
// The occurrences are found on the instruction-set path that Dispatch.h chooses; every path
// gives the same result.
#pragma once

#include <string>

namespace Tavrel {

// Overwrites every byte equal to from with to; the size never changes. NUL is a byte like any
// other.
//   ("a.b.", '.', '/') => "a/b/"     ("", 'a', 'b') => ""
void ReplaceAll(std::string& text, char from, char to);
// Replaces each occurrence of from, found left to right from the end of the previous
// replacement, by to. An empty from leaves text unchanged; an empty to deletes.
//   ("aaa", "a", "aa")   => "aaaaaa"    ("aaaa", "aa", "b") => "bb"
//   ("abab", "ab", "")   => ""          ("abc", "", "x")    => "abc"
//   ("", "a", "b")       => ""          ("a/b/", "/", "::") => "a::b::"
// from and to should not refer to text's own storage; if they do, they are copied first.
void ReplaceAll(std::string& text, std::string const& from, std::string const& to);
// The same with NUL-terminated from and to. A null from or to leaves text unchanged.
//   (text, null, "x") => unchanged    (text, "x", null) => unchanged
void ReplaceAll(std::string& text, char const* from, char const* to);

}  // namespace Tavrel
