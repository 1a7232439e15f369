// StatusWords: the status word that a module entry returns, put into words for a person. A
// word other than 0 means the binding failed: the high 16 bits give the argument's position
// (1-based), the low 16 bits one of the codes 1 (argument missing), 2 (wrong argument) and 4
// (empty user-defined value). It judges nothing and calls nothing.
#pragma once

#include <string>
#include <vector>

#include "minihost/script/DefinitionText.h"

namespace minihost {

// The status word in words:
//   0       => "bound"
//   65537   => "argument 1: argument missing"
//   131074  => "argument 2: wrong argument"
//   65540   => "argument 1: empty user-defined value"
//   65539   => "argument 1: unknown code 3"       (no module gives code 3)
//   5       => "argument 0: unknown code 5"
std::string DescribeStatus(unsigned int status);

// Why a call of signature did not bind, from its status word (not 0) and the type names of
// the arguments given (TypeName): the place, what the signature expects there, what came.
// For Size (DATAREF):
//   {"STRING"}, 65538 => "argument 1 of Size (DATAREF): expected DATAREF, got STRING
//                         (status 65538)"
//   {}, 65537         => "argument 1 of Size (DATAREF): expected DATAREF, got no argument
//                         (status 65537)"
//   {"type 21"}, 65540 => "argument 1 of Size (DATAREF): expected DATAREF, got an empty
//                         user-defined value (status 65540)"
//   a position that the signature has no parameter for, or another code => DescribeStatus's
//                         words: "argument 2 of Size (DATAREF): wrong argument (status 131074)"
std::string DescribeBindingFailure(Signature const& signature,
                                   std::vector<std::string> const& given, unsigned int status);

}  // namespace minihost
