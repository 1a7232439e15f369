// The module's definition text: one entry per script function, each naming its kind, its
// result, its parameters and the exported entry that serves it. The words come from the
// typed function's signature, so an entry's line and its binding cannot disagree.
// Builds the raw form only; GetModuleDefinition turns it into the final form.
#pragma once

#include <string>
#include <string_view>
#include <type_traits>

#include "host/IContext.h"
#include "object/AutoRefPtr.h"
#include "object/IDataRef.h"

namespace Tavrel {

namespace definition_detail {

template <class T>
struct ParameterWordOf {
    static_assert(sizeof(T) == 0,
                  "No definition word for this parameter type: a typed function takes "
                  "AutoRefPtr<IDataRef>, long long, std::string, std::string_view or IContext*.");
};
template <>
struct ParameterWordOf<long long> {
    static constexpr char const* kWord = "NUMBER";
};
template <>
struct ParameterWordOf<std::string> {
    static constexpr char const* kWord = "STRING";
};
template <>
struct ParameterWordOf<std::string_view> {
    static constexpr char const* kWord = "STRING";
};
template <>
struct ParameterWordOf<AutoRefPtr<IDataRef>> {
    static constexpr char const* kWord = "DATAREF";
};
// NOTE: the context has an empty word, which leaves a trailing comma in the raw form.
template <>
struct ParameterWordOf<IContext*> {
    static constexpr char const* kWord = "";
};

template <class R>
struct ResultWordOf {
    static_assert(sizeof(R) == 0,
                  "No definition word for this result type: a typed function returns "
                  "unsigned long, std::string or AutoRefPtr<IDataRef>.");
};
template <>
struct ResultWordOf<unsigned long> {
    static constexpr char const* kWord = "NUMBER";
};
template <>
struct ResultWordOf<std::string> {
    static constexpr char const* kWord = "STRING";
};
template <>
struct ResultWordOf<AutoRefPtr<IDataRef>> {
    static constexpr char const* kWord = "DATAREF";
};

template <class P>
using Plain = std::remove_cv_t<std::remove_reference_t<P>>;

}  // namespace definition_detail

// Appends one raw entry for function to text, one append per piece:
//   " ", kind, " ", result word, opening, the parameter words joined by ",", closing.
// BinarySize, "CONST_FUNCTION", " Size (", ") : tavrel_module_BinarySize"
//   => " CONST_FUNCTION NUMBER Size (DATAREF,) : tavrel_module_BinarySize"
// Returns 0, the value of the one-byte variable whose initialiser calls it.
template <class R, class... P>
char AppendDefinition(std::string& text, R (*)(P...), char const* kind, char const* opening,
                      char const* closing) {
    text.append(" ");
    text.append(kind);
    text.append(" ");
    text.append(definition_detail::ResultWordOf<R>::kWord);
    text.append(opening);
    bool first = true;
    for (char const* word :
         {definition_detail::ParameterWordOf<definition_detail::Plain<P>>::kWord...}) {
        if (!first) {
            text.append(",");
        }
        text.append(word);
        first = false;
    }
    text.append(closing);
    return 0;
}

}  // namespace Tavrel
