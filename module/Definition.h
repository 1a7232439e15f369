// The module's definition text: one entry per script function, each naming its kind, its
// result, its parameters and the exported entry that serves it. The words come from the
// typed function's signature (module/ScriptType.h), so an entry's line and its binding cannot
// disagree.
// Builds the raw form only; GetModuleDefinition turns it into the final form.
#pragma once

#include <string>
#include <string_view>
#include <type_traits>

#include "module/ScriptType.h"

namespace Tavrel {

namespace definition_detail {

template <class P>
using Plain = std::remove_cv_t<std::remove_reference_t<P>>;

template <class P>
inline constexpr bool kHasParameterWord =
    ScriptTypeOf<Plain<P>>::kParameter || ScriptTypeOf<Plain<P>>::kContext;

}  // namespace definition_detail

// Appends one raw entry for function to text, one append per piece:
//   " ", kind, " ", result word, opening, the parameter words joined by ",", closing.
// BinarySize, "CONST_FUNCTION", " Size (", ") : tavrel_module_BinarySize"
//   => " CONST_FUNCTION NUMBER Size (DATAREF,) : tavrel_module_BinarySize"
// Returns 0, the value of the one-byte variable whose initialiser calls it.
template <class R, class... P>
char AppendDefinition(std::string& text, R (*)(P...), char const* kind, char const* opening,
                      char const* closing) {
    static_assert(ScriptTypeOf<R>::kResult,
                  "No definition word for this result type: a typed function returns "
                  "std::size_t, std::string or AutoRefPtr<IDataRef>.");
    static_assert((definition_detail::kHasParameterWord<P> && ...),
                  "No definition word for this parameter type: a typed function takes "
                  "AutoRefPtr<IDataRef>, long long, std::string, std::string_view or IContext*.");
    text.append(" ");
    text.append(kind);
    text.append(" ");
    text.append(ScriptTypeOf<R>::kWord);
    text.append(opening);
    bool first = true;
    for (char const* word :
         {ScriptTypeOf<definition_detail::Plain<P>>::kWord...}) {
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
