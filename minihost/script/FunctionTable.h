// FunctionTable: the script functions that a module offers, as read from its definition
// text, and overload resolution over them. A call is resolved by its script name, then by
// its number of arguments, then by the types of its arguments. The first two steps depend on
// the script's text alone and run before the script does; the last needs the values.
// It calls nothing: it only picks signatures.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "minihost/script/DefinitionText.h"

namespace minihost {

class FunctionTable {
public:
    FunctionTable() = default;
    explicit FunctionTable(std::vector<Signature> signatures);

    std::vector<Signature> const& signatures() const { return mSignatures; }

    // The script names, each once, in the order of the definition text.
    //   {"Size", "Binary.ToDataRef", "ToDataRef", ...} (13 signatures, 9 names)
    std::vector<std::string> Names() const;

    // The signatures of that name that take count arguments, in the order of the definition
    // text. When there is none, the result is empty and error says why: an unknown name with
    // the closest names (Suggestions.h), a known one with the signatures of that name on the
    // lines below it (each indented by two blanks):
    //   unknown name       => "no function 'size'; did you mean 'Size'?"
    //   ... whose closest name takes another count => "no function 'size'; did you mean 'Size'?
    //                         But no form of 'Size' takes 2 arguments; there is:\n  Size (DATAREF)"
    //   nothing close      => "no function 'Frob' (help lists the module's functions)"
    //   no form with count => "no form of 'Binary.Slice' takes 1 argument; there are:\n
    //                          Binary.Slice (DATAREF,NUMBER,NUMBER)\n  Binary.Slice
    //                          (DATAREF,NUMBER)"
    std::vector<Signature const*> Candidates(std::string_view name, std::size_t count,
                                             std::string& error) const;

    // The error for a name that no signature has, with the closest names (Suggestions.h):
    //   "size" => "no function 'size'; did you mean 'Size'?"
    //   "Frob" => "no function 'Frob' (help lists the module's functions)"
    std::string UnknownFunction(std::string_view name) const;

    // The one candidate to call for arguments of these type words (see TypeWord):
    //   exactly one candidate         => it, whether the types fit or not, so that the
    //                                    module's binding answers with its status word
    //   several                       => the first whose parameter words equal typeWords
    //   several and none fits, or none => null
    static Signature const* Choose(std::vector<Signature const*> const& candidates,
                                   std::vector<std::string_view> const& typeWords);

    // The signature whose exported entry is entry, or null.
    //   "tavrel_module_BinarySize" => Size (DATAREF);  "BinarySize", "" => null
    Signature const* FindEntry(std::string_view entry) const;

    // Every signature, one per line, each line indented by two blanks and ended by '\n'.
    static std::string ListSignatures(std::vector<Signature const*> const& signatures);

private:
    // The signatures of that name, in order.
    std::vector<Signature const*> Named(std::string_view name) const;
    // The error for a name that no signature has: the closest names, and the forms of the
    // closest when none takes count arguments.
    std::string UnknownName(std::string_view name, std::size_t count) const;

    std::vector<Signature> mSignatures;
};

}  // namespace minihost
