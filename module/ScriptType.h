// ScriptTypeOf<T>: one trait per C++ type that a typed function may take or return, naming
// the script type it stands for: the word of the definition text, the variant's type number,
// and whether it may be a parameter, a result, or the context. The binding's type tests, its
// checks for whoever adds an entry, and the words of the definition text all read from here,
// so a type is described once. It converts nothing itself (that is CheckAndConvert and
// SetReturn in module/Binding.h).
#pragma once

#include <string>
#include <string_view>

#include "host/IContext.h"
#include "host/VariantType.h"
#include "object/AutoRefPtr.h"
#include "object/IDataRef.h"

namespace Tavrel {

// A type that stands for no script type: neither a parameter nor a result.
template <class T>
struct ScriptTypeOf {
    static constexpr bool kKnown = false;
    static constexpr bool kParameter = false;
    static constexpr bool kResult = false;
    static constexpr bool kContext = false;
    static constexpr char const* kWord = "";
    static constexpr unsigned int kTypeNumber = 0;
};

namespace script_type_detail {

// The fields of a script type: word, type number, parameter, result.
template <unsigned int TypeNumber, bool Parameter, bool Result>
struct Described {
    static constexpr bool kKnown = true;
    static constexpr bool kParameter = Parameter;
    static constexpr bool kResult = Result;
    static constexpr bool kContext = false;
    static constexpr unsigned int kTypeNumber = TypeNumber;
};

}  // namespace script_type_detail

// NUMBER: long long as a parameter (truncated toward zero), std::size_t as a result.
template <>
struct ScriptTypeOf<long long> : script_type_detail::Described<VariantType::kNumber, true, false> {
    static constexpr char const* kWord = "NUMBER";
};
template <>
struct ScriptTypeOf<std::size_t>
    : script_type_detail::Described<VariantType::kNumber, false, true> {
    static constexpr char const* kWord = "NUMBER";
};
// STRING: a copy (std::string, also as a result) or a view of the host's bytes.
template <>
struct ScriptTypeOf<std::string> : script_type_detail::Described<VariantType::kString, true, true> {
    static constexpr char const* kWord = "STRING";
};
template <>
struct ScriptTypeOf<std::string_view>
    : script_type_detail::Described<VariantType::kString, true, false> {
    static constexpr char const* kWord = "STRING";
};
// DATAREF: a counted buffer, possibly null, as parameter and result.
template <>
struct ScriptTypeOf<AutoRefPtr<IDataRef>>
    : script_type_detail::Described<VariantType::kDataRef, true, true> {
    static constexpr char const* kWord = "DATAREF";
};
// The calling context: the last parameter, bound to no script argument.
// NOTE: its word is empty, which leaves a trailing comma in the raw definition text.
template <>
struct ScriptTypeOf<IContext*> : ScriptTypeOf<void> {
    static constexpr bool kKnown = true;
    static constexpr bool kContext = true;
};

}  // namespace Tavrel
