// StatusWords: the status word that a module entry returns, put into words for a person. A
// word other than 0 means the binding failed: the high 16 bits give the argument's position
// (1-based), the low 16 bits one of the codes 1, 2 and 4. It judges nothing and calls nothing.
#pragma once

#include <string>

namespace minihost {

// The status word in words:
//   0       => "bound"
//   65537   => "argument 1: argument missing"
//   131074  => "argument 2: wrong argument"
//   65540   => "argument 1: empty user-defined value"
//   65539   => "argument 1: unknown code 3"       (no module gives code 3)
//   5       => "argument 0: unknown code 5"
std::string DescribeStatus(unsigned int status);

}  // namespace minihost
