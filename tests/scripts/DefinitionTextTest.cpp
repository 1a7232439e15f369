#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "minihost/script/DefinitionText.h"
#include "minihost/script/FunctionTable.h"
#include "minihost/script/StatusWords.h"

namespace minihost {
namespace {

// "Name (A,B)" for each signature, to compare whole parses in one line.
std::vector<std::string> Shown(std::vector<Signature> const& signatures) {
    std::vector<std::string> shown;
    shown.reserve(signatures.size());
    for (Signature const& signature : signatures) {
        shown.push_back(signature.kind + " " + signature.result + " " + FormatSignature(signature) +
                        " : " + signature.entry);
    }
    return shown;
}

TEST(DefinitionText, ParsesEntriesOrSaysWhereItFails) {
    struct Row {
        std::string text;
        std::vector<std::string> expected;  // empty with an error
        std::string error;
    };
    Row const rows[] = {
        {"", {}, ""},
        {" CONST_FUNCTION NUMBER Size (DATAREF) : tavrel_module_BinarySize",
         {"CONST_FUNCTION NUMBER Size (DATAREF) : tavrel_module_BinarySize"},
         ""},
        // The raw form: an empty word for the context, dropped.
        {" CONST_FUNCTION NUMBER Size (DATAREF,) : e FUNCTION DATAREF Binary.MapFile (STRING,) : m",
         {"CONST_FUNCTION NUMBER Size (DATAREF) : e",
          "FUNCTION DATAREF Binary.MapFile (STRING) : m"},
         ""},
        {" K STRING F () : e", {"K STRING F () : e"}, ""},
        {" K STRING F ( NUMBER , STRING ) : e", {"K STRING F (NUMBER,STRING) : e"}, ""},
        {" K NUMBER F (DATAREF) e", {}, "expected ':' at offset 22"},
        {" K NUMBER F (DATAREF", {}, "expected ')' at offset 20"},
        {" K NUMBER F DATAREF) : e", {}, "expected '(' at offset 12"},
        {" K NUMBER F (BYTES) : e", {}, "unknown type word 'BYTES' at offset 13"},
        {" K BYTES F (NUMBER) : e", {}, "unknown type word 'BYTES' at offset 3"},
        {" K NUMBER F (NUMBER) : ", {}, "expected an entry name at offset 23"},
        {" K NUMBER", {}, "expected a script name at offset 9"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE("row \"" + row.text + "\"");
        std::vector<Signature> signatures;
        std::string error = "stale";
        bool const ok = ParseDefinitionText(row.text, signatures, error);
        EXPECT_EQ(ok, row.error.empty());
        EXPECT_EQ(error, row.error);
        if (ok) {
            EXPECT_EQ(Shown(signatures), row.expected);
        }
    }
}

// Two names with overloads: F is told apart only by types, G by the number of arguments.
FunctionTable MadeUpTable() {
    std::vector<Signature> signatures;
    std::string error;
    EXPECT_TRUE(
        ParseDefinitionText(" K NUMBER F (STRING,NUMBER) : f1 K NUMBER F (NUMBER,STRING) : f2"
                            " K DATAREF G (DATAREF) : g1 K DATAREF G (DATAREF,NUMBER) : g2",
                            signatures, error));
    return FunctionTable(std::move(signatures));
}

TEST(FunctionTable, ResolvesByNameThenCountThenTypes) {
    struct Row {
        std::string name;
        std::vector<std::string_view> types;
        std::string entry;  // "" when nothing can be called
        std::string error;  // the first line of the static error, "" when there is none
    };
    Row const rows[] = {
        {"F", {"STRING", "NUMBER"}, "f1", ""},
        {"F", {"NUMBER", "STRING"}, "f2", ""},
        // Several forms with that count and none fits: nothing is chosen.
        {"F", {"STRING", "STRING"}, "", ""},
        // One form with that count: it is called even though the types do not fit.
        {"G", {"STRING"}, "g1", ""},
        {"G", {"DATAREF", ""}, "g2", ""},
        {"G", {}, "", "no form of 'G' takes 0 arguments; there are:"},
        {"F", {"NUMBER"}, "", "no form of 'F' takes 1 argument; there are:"},
        {"H", {}, "", "no function 'H' (help lists the module's functions)"},
        {"f", {"STRING", "NUMBER"}, "", "no function 'f'; did you mean 'F'?"},
    };
    FunctionTable const table = MadeUpTable();
    for (Row const& row : rows) {
        SCOPED_TRACE("row " + row.name + " with " + std::to_string(row.types.size()));
        std::string error;
        auto const candidates = table.Candidates(row.name, row.types.size(), error);
        EXPECT_EQ(error.substr(0, error.find('\n')), row.error);
        Signature const* chosen = FunctionTable::Choose(candidates, row.types);
        EXPECT_EQ(chosen != nullptr ? chosen->entry : "", row.entry);
    }
}

// The whole list of an unknown function is shown by the script case error_function.
TEST(FunctionTable, ListsTheSignaturesOfTheNameInItsErrors) {
    FunctionTable const table = MadeUpTable();
    std::string error;
    table.Candidates("G", 3, error);
    EXPECT_EQ(error,
              "no form of 'G' takes 3 arguments; there are:\n  G (DATAREF)\n  G (DATAREF,NUMBER)");
    EXPECT_EQ(table.FindEntry("g2")->name, "G");
    EXPECT_EQ(table.FindEntry("G"), nullptr);
}

// The codes that the module gives (bound, argument missing, wrong argument) are shown by the
// script case call_entries.
TEST(StatusWords, NameThePlaceAndTheCode) {
    struct Row {
        unsigned int status;
        std::string words;
    };
    Row const rows[] = {
        {65540, "argument 1: empty user-defined value"},
        {(4u << 16) | 4u, "argument 4: empty user-defined value"},
        {65539, "argument 1: unknown code 3"},
        {5, "argument 0: unknown code 5"},
        {0xFFFF0002u, "argument 65535: wrong argument"},
    };
    for (Row const& row : rows) {
        EXPECT_EQ(DescribeStatus(row.status), row.words) << "row " << row.status;
    }
}

// A wrong type is shown by the interpreter's test; the other codes cannot come from a script.
TEST(StatusWords, BindingFailuresSayWhatWasExpectedAndWhatCame) {
    Signature const slice{"K", "DATAREF", "Slice", {"DATAREF", "NUMBER"}, "e"};
    struct Row {
        std::vector<std::string> given;
        unsigned int status;
        std::string words;
    };
    Row const rows[] = {
        {{"DATAREF"},
         131073,
         "argument 2 of Slice (DATAREF,NUMBER): expected NUMBER, got no "
         "argument (status 131073)"},
        {{"type 21"},
         65540,
         "argument 1 of Slice (DATAREF,NUMBER): expected DATAREF, got an "
         "empty user-defined value (status 65540)"},
        {{"DATAREF"},
         131074,
         "argument 2 of Slice (DATAREF,NUMBER): expected NUMBER, got no "
         "argument (status 131074)"},
        {{}, 196610, "argument 3 of Slice (DATAREF,NUMBER): wrong argument (status 196610)"},
        {{"STRING"}, 2, "argument 0 of Slice (DATAREF,NUMBER): wrong argument (status 2)"},
        {{"STRING"}, 65539, "argument 1 of Slice (DATAREF,NUMBER): unknown code 3 (status 65539)"},
    };
    for (Row const& row : rows) {
        EXPECT_EQ(DescribeBindingFailure(slice, row.given, row.status), row.words)
            << "row " << row.status;
    }
}

}  // namespace
}  // namespace minihost
