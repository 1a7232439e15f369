// Splitting a text at delimiters into a container of strings, keeping empty elements: a text
// with k delimiters gives k + 1 elements. Defined in Split.cpp and instantiated there for
// std::list<std::string>.
#pragma once

#include <list>
#include <string>

namespace Tavrel {

// Clears out and fills it with the pieces of text between delimiters; returns out's size.
// anyOf true: every single byte of delimiters splits. anyOf false: the whole delimiters text
// splits.
//   ("/a/b/", "/\\", true) => {"", "a", "b", ""}, 4     ("/", "/\\", true) => {"", ""}, 2
//   ("a", "/\\", true)     => {"a"}, 1                   ("", "/", true)    => {""}, 1
//   ("a::b", "::", false)  => {"a", "b"}, 2              ("a/b", "", false) => {"a/b"}, 1
template <class Container>
typename Container::size_type SplitString(std::string const& text, Container& out,
                                          std::string const& delimiters, bool anyOf);

extern template std::list<std::string>::size_type SplitString<std::list<std::string>>(
    std::string const&, std::list<std::string>&, std::string const&, bool);

}  // namespace Tavrel
