// Splitting a text at delimiters into a container of strings, keeping empty elements.
#pragma once

#include <list>
#include <string>

namespace Tavrel {

template <class Container>
typename Container::size_type SplitString(std::string const& text, Container& out,
                                          std::string const& delimiters, bool anyOf);

extern template std::list<std::string>::size_type SplitString<std::list<std::string>>(
    std::string const&, std::list<std::string>&, std::string const&, bool);

}  // namespace Tavrel
