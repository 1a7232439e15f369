// EntrySignatures: the entries fuzzer's own reading of the module's surface. It parses the
// definition text into one signature per exported entry and predicts, from the binding
// rules alone, the status word that an entry gives for a list of arguments. It shares no
// code with the module or with minihost's parser of the same text, so that a fault in
// either shows as a disagreement. It does not call entries.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavrel_testing {

// A script type named in the definition text.
enum class ScriptType { kNumber, kString, kDataRef };

// The type number of a script type: NUMBER => 5, STRING => 9, DATAREF => 13.
unsigned int TypeNumber(ScriptType type);

// One entry of the definition text.
struct Signature {
    std::string entry;                   // "tavrel_module_BinarySize"
    ScriptType result;                   // NUMBER
    std::vector<ScriptType> parameters;  // {DATAREF}
};

// Parses a text of entries " KIND RESULT NAME (WORD,...) : ENTRY" joined without separators.
// Any other shape, an unknown word or an empty parameter word => nullopt.
//   " CONST_FUNCTION NUMBER Size (DATAREF) : tavrel_module_BinarySize" => one signature
//   ""                                                               => no signature
//   " CONST_FUNCTION NUMBER Size (DATAREF,) : tavrel_module_BinarySize" => nullopt
std::optional<std::vector<Signature>> ParseDefinition(std::string_view text);

// What the binding can see of one script argument.
struct ArgumentShape {
    bool present = false;    // false: a null IVariant* in the arguments array
    unsigned int type = 0;   // the variant's type number
    bool hasObject = false;  // a user-defined value holds an object
};

// The status word that the binding rules give: 0, or the first failure as
// ((index + 1) << 16) | code with code 1 (missing), 2 (wrong) or 4 (empty user-defined).
//   (DATAREF), count 0                    => 65537
//   (DATAREF), a NUMBER                   => 65538
//   (DATAREF), type 21 without an object  => 65540
//   (DATAREF,NUMBER), a DATAREF, count 1  => 131073
unsigned int PredictStatus(Signature const& signature, int count,
                           std::vector<ArgumentShape> const& arguments);

}  // namespace tavrel_testing
