// Suggestions: the known names closest to one that is not known, so that a message can say
// what to type instead. Names are compared without regard to case by edit distance (an
// inserted, deleted or changed byte, or two neighbours swapped, each count 1), whole and by
// their last dotted part, so that "Slice" finds "Binary.Slice" and "Binary.Size" finds "Size".
// It knows no module and no script: the caller gives the names.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace minihost {

// The edit distance of a and b, ignoring case (ASCII letters only).
//   ("Size", "size") => 0;  ("Sise", "Size") => 1;  ("Szie", "Size") => 1;  ("", "abc") => 3
std::size_t EditDistance(std::string_view a, std::string_view b);

// The names of known close to name, best first (the closer whole name, then the closer last
// part), at most three; ties keep the order of known. Close means a distance of at most 2
// (1 for a text of 3 to 5 bytes, 0 for a shorter one, so that only its case may differ),
// for the whole names or for their last parts. name itself is never suggested.
//   ("size", {"Size", "ToString"})                     => {"Size"}
//   ("Slice", {"Binary.Slice", "Size"})                => {"Binary.Slice"}
//   ("todataref", {"Binary.ToDataRef", "ToDataRef"})   => {"ToDataRef", "Binary.ToDataRef"}
//   ("x", {"y", "X"})                                  => {"X"}
//   ("Frobnicate", {"Size"}), ("", {"a"})              => {}
std::vector<std::string> ClosestNames(std::string_view name, std::vector<std::string> const& known);

// The question that offers names: {} => "";  {"A"} => "did you mean 'A'?";
// {"A", "B"} => "did you mean 'A' or 'B'?";  {"A", "B", "C"} => "did you mean 'A', 'B' or 'C'?"
std::string DidYouMean(std::vector<std::string> const& names);

}  // namespace minihost
