// What the prompt makes of typed text without a terminal: suggestions, completion, commands,
// continued lines and the help. The prompt itself, on a terminal, is PromptTest_posix.cpp.
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "minihost/script/Completion.h"
#include "minihost/script/DefinitionText.h"
#include "minihost/script/Parser.h"
#include "minihost/script/PromptCommands.h"
#include "minihost/script/Suggestions.h"

namespace minihost {
namespace {

std::string Joined(std::vector<std::string> const& words) {
    std::string text;
    for (std::string const& word : words) {
        text += (text.empty() ? "" : " ") + word;
    }
    return text;
}

TEST(Suggestions, OfferOnlyCloseNamesBestFirst) {
    std::vector<std::string> const known{
        "Size", "Binary.ToDataRef", "ToDataRef", "Binary.Slice", "ToString", "Binary.Copy", "X"};
    struct Row {
        std::string name;
        std::string suggested;
    };
    Row const rows[] = {
        {"size", "Size"},
        {"Szie", "Size"},  // two neighbours swapped count once
        {"Sise", "Size"},
        {"Slice", "Binary.Slice"},
        {"Binary.Size", "Size Binary.Slice"},
        {"todataref", "ToDataRef Binary.ToDataRef"},
        {"Binary.copy", "Binary.Copy"},
        {"x", "X"},
        {"y", ""},  // a short name may differ only in case
        {"Sx", ""},
        {"ToStrings", "ToString"},
        {"ToStringsss", ""},  // three edits are too many
        {"Size", ""},         // the name itself is no suggestion
        {"", ""},
    };
    for (Row const& row : rows) {
        EXPECT_EQ(Joined(ClosestNames(row.name, known)), row.suggested) << "row " << row.name;
    }
    EXPECT_EQ(DidYouMean({"A", "B", "C"}), "did you mean 'A', 'B' or 'C'?");
}

FunctionTable SmallTable() {
    std::vector<Signature> signatures;
    std::string error;
    EXPECT_TRUE(ParseDefinitionText(
        " K NUMBER Size (DATAREF) : s K DATAREF Binary.Slice (DATAREF,NUMBER,NUMBER) : b3"
        " K DATAREF Binary.Slice (DATAREF,NUMBER) : b2 K STRING ToString (DATAREF) : t",
        signatures, error));
    return FunctionTable(std::move(signatures));
}

TEST(Completion, OffersFunctionsVariablesWordsAndCommands) {
    FunctionTable const table = SmallTable();
    std::set<std::string> const variables{"data", "dump2", "size"};
    struct Row {
        std::string line;  // the word to complete is its last one
        std::string offered;
    };
    Row const rows[] = {
        {"Binary.Sl", "Binary.Slice("},
        {"print Si", "Size("},
        {"x = Size(d", "data dump dump2"},
        {"s", "size"},
        {"q", "quit"},  // a command, at the start of a line only
        {"print q", ""},
        {"  he", "help"},
        {"print ", "Binary.Slice( Size( ToString( call data dump dump2 print size"},
    };
    for (Row const& row : rows) {
        std::size_t const start =
            row.line.find_last_of(" (") == std::string::npos ? 0 : row.line.find_last_of(" (") + 1;
        EXPECT_EQ(Joined(CompleteName(row.line, start, row.line.substr(start), table, variables)),
                  row.offered)
            << "row " << row.line;
    }
}

TEST(Completion, KnowsWhenTheWordIsInsideAString) {
    struct Row {
        std::string line;
        bool inside;
    };
    Row const rows[] = {
        {"Binary.MapFile(\"da", true}, {"f(\"a\", b", false}, {"f(\"a\\\"b", true},
        {"f(\"a\\\\\", b", false},     {"x # \"a", false},    {"f(\"#\", \"a", true},
    };
    for (Row const& row : rows) {
        EXPECT_EQ(InsideString(row.line, row.line.size()), row.inside) << "row " << row.line;
    }
}

TEST(PromptCommands, AreWholeLines) {
    struct Row {
        std::string line;
        CommandKind kind;
        std::string topic;
    };
    Row const rows[] = {
        {"help", CommandKind::kHelp, ""},
        {" help\t", CommandKind::kHelp, ""},
        {"help Binary.Slice ", CommandKind::kHelp, "Binary.Slice"},
        {"quit", CommandKind::kQuit, ""},
        {"  exit", CommandKind::kQuit, ""},
        {"help a b", CommandKind::kNone, ""},
        {"help = 1", CommandKind::kNone, ""},
        {"quit now", CommandKind::kNone, ""},
        {"exit=2", CommandKind::kNone, ""},
        {"print help", CommandKind::kNone, ""},
        {"", CommandKind::kNone, ""},
    };
    for (Row const& row : rows) {
        PromptCommand const command = ReadPromptCommand(row.line);
        EXPECT_EQ(command.kind, row.kind) << "row " << row.line;
        EXPECT_EQ(command.topic, row.topic) << "row " << row.line;
    }
}

TEST(PromptCommands, HelpGroupsTheFormsOfEachName) {
    FunctionTable const table = SmallTable();
    std::string const help = PromptHelp(table);
    EXPECT_NE(help.find("  Size          (DATAREF) -> NUMBER\n"
                        "  Binary.Slice  (DATAREF,NUMBER,NUMBER) -> DATAREF\n"
                        "                (DATAREF,NUMBER) -> DATAREF\n"
                        "  ToString      (DATAREF) -> STRING\n"),
              std::string::npos)
        << help;
    struct Row {
        std::string topic;
        std::string text;
    };
    Row const rows[] = {
        {"Binary.Slice",
         "Binary.Slice (DATAREF,NUMBER,NUMBER) -> DATAREF  K, entry b3\n"
         "Binary.Slice (DATAREF,NUMBER) -> DATAREF         K, entry b2\n"},
        {"dump", "  dump EXPR[, OFFSET[, COUNT]]  show the bytes of a DATAREF or STRING in hex\n"},
        {"exit", PromptHelp(table, "quit")},
        {"slice", "no function 'slice'; did you mean 'Binary.Slice'?\n"},
        {"Frob", "no function 'Frob' (help lists the module's functions)\n"},
    };
    for (Row const& row : rows) {
        EXPECT_EQ(PromptHelp(table, row.topic), row.text) << "row " << row.topic;
    }
}

TEST(Parse, KnowsWhenALineEndsInsideACall) {
    struct Row {
        std::string source;
        bool inside;
    };
    Row const rows[] = {
        {"print Size(", true}, {"f(a,", true},    {"f(g(\n1,", true},       {"f( # c", true},
        {"x = 1; f(", true},   {"", false},       {"print Size(d)", false}, {"f(a", false},
        {"f(\"(", false},      {"x = 1,", false}, {"f(1))(", false},        {"f(\"a", false},
    };
    for (Row const& row : rows) {
        EXPECT_EQ(EndsInsideCall(row.source), row.inside) << "row " << row.source;
    }
}

}  // namespace
}  // namespace minihost
