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
#include "tests/scripts/Rows.h"

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
    rows::Expect<std::string, std::string>(
        {
            {"Szie", "Size"},  // two neighbours swapped count once
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
        },
        [&known](std::string const& name) { return Joined(ClosestNames(name, known)); });
    EXPECT_EQ(Joined(ClosestNames("Sie", {"Size", "Sine", "Side", "Site"})), "Size Sine Side");
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

// The word to complete is the last one of the line.
TEST(Completion, OffersFunctionsVariablesWordsAndCommands) {
    FunctionTable const table = SmallTable();
    std::set<std::string> const variables{"data", "dump2", "size"};
    rows::Expect<std::string, std::string>(
        {
            {"Binary.Sl", "Binary.Slice("},
            {"print Si", "Size("},
            {"x = Size(d", "data dump dump2"},
            {"s", "size"},
            {"q", "quit"},  // a command, at the start of a line only
            {"print q", ""},
            {"  he", "help"},
            {"print ", "Binary.Slice( Size( ToString( call data dump dump2 print size"},
        },
        [&](std::string const& line) {
            std::size_t const start = line.find_last_of(" (") + 1;  // npos + 1 is 0
            return Joined(CompleteName(line, start, line.substr(start), table, variables));
        });
}

TEST(Completion, KnowsWhenTheWordIsInsideAString) {
    rows::Expect<std::string, bool>(
        {{"Binary.MapFile(\"da", true},
         {"f(\"a\", b", false},
         {"f(\"a\\\"b", true},
         {"f(\"a\\\\\", b", false},
         {"x # \"a", false},
         {"f(\"#\", \"a", true}},
        [](std::string const& line) { return InsideString(line, line.size()); });
}

TEST(PromptCommands, AreWholeLines) {
    rows::Expect<std::string, std::pair<CommandKind, std::string>>(
        {
            {" help\t", {CommandKind::kHelp, ""}},
            {"help Binary.Slice ", {CommandKind::kHelp, "Binary.Slice"}},
            {"quit", {CommandKind::kQuit, ""}},
            {"  exit", {CommandKind::kQuit, ""}},
            {"help a b", {CommandKind::kNone, ""}},
            {"help = 1", {CommandKind::kNone, ""}},
            {"quit now", {CommandKind::kNone, ""}},
            {"print help", {CommandKind::kNone, ""}},
            {"", {CommandKind::kNone, ""}},
        },
        [](std::string const& line) {
            PromptCommand const command = ReadPromptCommand(line);
            return std::pair(command.kind, command.topic);
        });
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
    rows::Expect<std::string, std::string>(
        {
            {"Binary.Slice",
             "Binary.Slice (DATAREF,NUMBER,NUMBER) -> DATAREF  K, entry b3\n"
             "Binary.Slice (DATAREF,NUMBER) -> DATAREF         K, entry b2\n"},
            {"dump",
             "  dump EXPR[, OFFSET[, COUNT]]  show the bytes of a DATAREF or STRING in hex\n"},
            {"exit", PromptHelp(table, "quit")},
            {"slice", "no function 'slice'; did you mean 'Binary.Slice'?\n"},
        },
        [&table](std::string const& topic) { return PromptHelp(table, topic); });
}

TEST(Parse, KnowsWhenALineEndsInsideACall) {
    rows::Expect<std::string, bool>(
        {
            {"print Size(", true},
            {"f(a,", true},
            {"f(\n", true},
            {"f(1,;", false},
            {"f(g(\n1,", true},
            {"f( # c", true},
            {"x = 1; f(", true},
            {"", false},
            {"print Size(d)", false},
            {"f(a", false},
            {"f(\"(", false},
            {"x = 1,", false},
            {"f(1))(", false},
            {"f(\"a", false},
        },
        [](std::string const& source) { return EndsInsideCall(source); });
}

}  // namespace
}  // namespace minihost
