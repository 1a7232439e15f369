// ErrorSeverity: how grave an error report is, 8 bits wide. The module always reports
// with kErrorSeverityError.
#pragma once

#include <cstdint>

namespace Tavrel {

using ErrorSeverity = std::uint8_t;

inline constexpr ErrorSeverity kErrorSeverityError = 2;

}  // namespace Tavrel
