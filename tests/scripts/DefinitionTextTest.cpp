#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include "minihost/script/DefinitionText.h"
#include "minihost/script/FunctionTable.h"
#include "minihost/script/StatusWords.h"
#include "tests/scripts/Rows.h"

namespace minihost {
namespace {

// "Kind Result Name (A,B) : entry" for each signature read, then "error: <text>" when the
// text was refused or left an error behind.
std::vector<std::string> Read(std::string const& text) {
    std::vector<Signature> signatures;
    std::string error = "stale";
    bool const ok = ParseDefinitionText(text, signatures, error);
    std::vector<std::string> shown;
    for (Signature const& signature : ok ? signatures : std::vector<Signature>{}) {
        shown.push_back(signature.kind + " " + signature.result + " " + FormatSignature(signature) +
                        " : " + signature.entry);
    }
    if (!ok || !error.empty()) {
        shown.push_back("error: " + error);
    }
    return shown;
}

TEST(DefinitionText, ParsesEntriesOrSaysWhereItFails) {
    rows::Expect<std::string, std::vector<std::string>>(
        {
            {"", {}},
            // The final form is what every script case reads; the raw form has an empty word
            // for the context, dropped.
            {" CONST_FUNCTION NUMBER Size (DATAREF,) : e FUNCTION DATAREF Binary.MapFile (STRING,) "
             ": m",
             {"CONST_FUNCTION NUMBER Size (DATAREF) : e",
              "FUNCTION DATAREF Binary.MapFile (STRING) : m"}},
            {"\tK STRING F () :\r\ne", {"K STRING F () : e"}},  // every blank
            {" K STRING F ( NUMBER , STRING ) : e", {"K STRING F (NUMBER,STRING) : e"}},
            {" K NUMBER F (DATAREF) e", {"error: expected ':' at offset 22"}},
            {" K NUMBER F (DATAREF", {"error: expected ')' at offset 20"}},
            {" K NUMBER F DATAREF) : e", {"error: expected '(' at offset 12"}},
            {" K NUMBER F (BYTES) : e", {"error: unknown type word 'BYTES' at offset 13"}},
            {" K BYTES F (NUMBER) : e", {"error: unknown type word 'BYTES' at offset 3"}},
            {" K NUMBER F (NUMBER) : ", {"error: expected an entry name at offset 23"}},
            {" K NUMBER", {"error: expected a script name at offset 9"}},
        },
        Read);
}

// Two names with overloads: F is told apart only by types, G by the number of arguments.
TEST(FunctionTable, ResolvesByNameThenCountThenTypes) {
    std::vector<Signature> signatures;
    std::string error;
    ASSERT_TRUE(
        ParseDefinitionText(" K NUMBER F (STRING,NUMBER) : f1 K NUMBER F (NUMBER,STRING) : f2"
                            " K DATAREF G (DATAREF) : g1 K DATAREF G (DATAREF,NUMBER) : g2",
                            signatures, error));
    FunctionTable const table(std::move(signatures));
    // The name and the argument types; the entry chosen ("" when none can be called) and the
    // static error.
    using Call = std::pair<std::string, std::vector<std::string_view>>;
    rows::Expect<Call, std::pair<std::string, std::string>>(
        {
            {{"F", {"STRING", "NUMBER"}}, {"f1", ""}},
            {{"F", {"NUMBER", "STRING"}}, {"f2", ""}},
            // Several forms with that count and none fits: nothing is chosen.
            {{"F", {"STRING", "STRING"}}, {"", ""}},
            // One form with that count: it is called even though the types do not fit.
            {{"G", {"STRING"}}, {"g1", ""}},
            {{"G", {"DATAREF", ""}}, {"g2", ""}},
            {{"G", {}},
             {"",
              "no form of 'G' takes 0 arguments; there are:\n  G (DATAREF)\n  G (DATAREF,NUMBER)"}},
            {{"F", {"NUMBER"}},
             {"",
              "no form of 'F' takes 1 argument; there are:\n  F (STRING,NUMBER)\n  F "
              "(NUMBER,STRING)"}},
            {{"H", {}}, {"", "no function 'H' (help lists the module's functions)"}},
            {{"f", {"STRING", "NUMBER"}}, {"", "no function 'f'; did you mean 'F'?"}},
        },
        [&table](Call const& call) {
            std::string error;
            auto const candidates = table.Candidates(call.first, call.second.size(), error);
            Signature const* chosen = FunctionTable::Choose(candidates, call.second);
            return std::pair<std::string, std::string>(chosen != nullptr ? chosen->entry : "",
                                                       error);
        });
    EXPECT_EQ(table.FindEntry("g2")->name, "G");
    EXPECT_EQ(table.FindEntry("G"), nullptr);
}

// The codes that the module gives (bound, argument missing, wrong argument) are shown by the
// script case call_entries, an unknown code by the binding failures below.
TEST(StatusWords, NameThePlaceAndTheCode) {
    rows::Expect<unsigned int, std::string>({{65540, "argument 1: empty user-defined value"},
                                             {0xFFFF0002u, "argument 65535: wrong argument"}},
                                            DescribeStatus);
}

// A wrong type is shown by the interpreter's test; the other codes cannot come from a script.
TEST(StatusWords, BindingFailuresSayWhatWasExpectedAndWhatCame) {
    Signature const slice{"K", "DATAREF", "Slice", {"DATAREF", "NUMBER"}, "e"};
    using Given = std::pair<std::vector<std::string>, unsigned int>;
    rows::Expect<Given, std::string>(
        {
            {{{"DATAREF"}, 131073},
             "argument 2 of Slice (DATAREF,NUMBER): expected NUMBER, got no argument (status "
             "131073)"},
            {{{"type 21"}, 65540},
             "argument 1 of Slice (DATAREF,NUMBER): expected DATAREF, got an empty user-defined "
             "value (status 65540)"},
            {{{"DATAREF"}, 131074},
             "argument 2 of Slice (DATAREF,NUMBER): expected NUMBER, got no argument (status "
             "131074)"},
            {{{}, 196610}, "argument 3 of Slice (DATAREF,NUMBER): wrong argument (status 196610)"},
            {{{"STRING"}, 2}, "argument 0 of Slice (DATAREF,NUMBER): wrong argument (status 2)"},
            {{{"STRING"}, 65539},
             "argument 1 of Slice (DATAREF,NUMBER): unknown code 3 (status 65539)"},
        },
        [&slice](Given const& given) {
            return DescribeBindingFailure(slice, given.first, given.second);
        });
}

}  // namespace
}  // namespace minihost
