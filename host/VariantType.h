// The type numbers that IVariant::GetType gives.
#pragma once

namespace Tavrel::VariantType {

inline constexpr unsigned int kNumber = 5;
inline constexpr unsigned int kString = 9;
inline constexpr unsigned int kDataRef = 13;
// This number and every number above it are user-defined types.
inline constexpr unsigned int kFirstUserDefined = 21;

}  // namespace Tavrel::VariantType
