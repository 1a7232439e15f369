// DefinitionText: reads the definition text that a module returns from GetModuleDefinition
// into signatures: kind, result word, script name, parameter words and the exported entry
// that serves the script function. Each entry of the text has the form
//   " <kind> <result> <name> (<word>,<word>...) : <entry>"
// and entries follow one another with nothing but blanks between them. It calls nothing in
// the module and decides nothing about calls: FunctionTable does that.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace minihost {

struct Signature {
    std::string kind;                     // "CONST_FUNCTION" or "FUNCTION"
    std::string result;                   // "NUMBER", "STRING" or "DATAREF"
    std::string name;                     // "Binary.Slice"
    std::vector<std::string> parameters;  // {"DATAREF", "NUMBER"}
    std::string entry;                    // "tavrel_module_BinarySliceRight"
};

// The signatures of text, in its order, or false with error set (out is then unspecified).
// Empty parameter words are dropped, so the raw form "(DATAREF,)" reads as "(DATAREF)";
// blanks around words are skipped.
//   ""                                   => true, no signature
//   " CONST_FUNCTION NUMBER Size (DATAREF) : tavrel_module_BinarySize"
//                                        => one signature
//   " K STRING F () : e"                 => F with no parameters
//   " K NUMBER F (DATAREF) e"            => false, "expected ':' at offset 22"
//   " K NUMBER F (DATAREF"               => false, "expected ')' at offset 20"
//   " K NUMBER F (BYTES) : e"            => false, "unknown type word 'BYTES' at offset 13"
//   " K BYTES F (NUMBER) : e"            => false, "unknown type word 'BYTES' at offset 3"
bool ParseDefinitionText(std::string_view text, std::vector<Signature>& out, std::string& error);

// How a signature is shown: "Binary.Slice (DATAREF,NUMBER)";  no parameters => "Name ()".
std::string FormatSignature(Signature const& signature);

// The definition word of a variant type number: 5 => "NUMBER", 9 => "STRING",
// 13 => "DATAREF"; anything else => "" (which no parameter word equals).
std::string_view TypeWord(unsigned int typeNumber);

// The type of a value as messages name it: its definition word, else "type <number>".
//   9 => "STRING";  21 => "type 21";  0 (nothing assigned) => "type 0"
std::string TypeName(unsigned int typeNumber);

}  // namespace minihost
