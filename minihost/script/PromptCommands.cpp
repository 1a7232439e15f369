#include "minihost/script/PromptCommands.h"

#include <algorithm>
#include <array>
#include <vector>

#include "minihost/script/Suggestions.h"

namespace minihost {

namespace {

// How the end of input is typed at a console, and what Tab does there (a plain Windows
// console line completes nothing).
#if defined(_WIN32)
#define MINIHOST_END_OF_INPUT "Ctrl-Z then Enter"
#define MINIHOST_TAB_HINT ""
#else
#define MINIHOST_END_OF_INPUT "Ctrl-D"
#define MINIHOST_TAB_HINT "; Tab completes names"
#endif

// One line of the help about a statement or a command. names: the words, separated by blanks,
// that `help WORD` finds it by.
struct Usage {
    std::string_view names;
    std::string_view form;
    std::string_view what;
};

constexpr std::array<Usage, 5> kStatements{{
    {"print", "print EXPR", "show a value"},
    {"", "NAME = EXPR", "keep a value in a variable"},
    {"dump", "dump EXPR[, OFFSET[, COUNT]]", "show the bytes of a DATAREF or STRING in hex"},
    {"call", "call ENTRY(ARG, ...)", "call an exported entry directly; shows its status word"},
    {"", "EXPR", "show the value of a call, a variable or a literal"},
}};

constexpr std::array<Usage, 2> kCommands{{
    {"help", "help [NAME]", "list the functions, or show the forms of one"},
    {"quit exit", "quit, exit", "leave with status 0 (so does " MINIHOST_END_OF_INPUT ")"},
}};

constexpr std::size_t kFormWidth = 30;

std::string_view Trimmed(std::string_view text) {
    std::size_t const first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

std::string Padded(std::string text, std::size_t width) {
    text.resize(std::max(width, text.size() + 1), ' ');
    return text;
}

std::string UsageLine(Usage const& usage) {
    return "  " + Padded(std::string(usage.form), kFormWidth) + std::string(usage.what) + '\n';
}

bool IsNamedBy(Usage const& usage, std::string_view topic) {
    std::string_view names = usage.names;
    while (!names.empty()) {
        std::size_t const blank = std::min(names.find(' '), names.size());
        if (names.substr(0, blank) == topic) {
            return true;
        }
        names.remove_prefix(std::min(blank + 1, names.size()));
    }
    return false;
}

// "(DATAREF,NUMBER) -> DATAREF"
std::string FormText(Signature const& signature) {
    std::string const full = FormatSignature(signature);
    return full.substr(signature.name.size() + 1) + " -> " + signature.result;
}

std::string FunctionList(FunctionTable const& table) {
    std::vector<std::string> const names = table.Names();
    std::size_t width = 0;
    for (std::string const& name : names) {
        width = std::max(width, name.size() + 2);
    }
    std::string text;
    for (std::string const& name : names) {
        std::string shownName = name;
        for (Signature const& signature : table.signatures()) {
            if (signature.name == name) {
                text += "  " + Padded(shownName, width) + FormText(signature) + '\n';
                shownName.clear();
            }
        }
    }
    return text;
}

// The forms of one function, with kind and entry; "" when there is no such name.
std::string FunctionForms(FunctionTable const& table, std::string_view name) {
    std::vector<std::string> forms;
    std::size_t width = 0;
    for (Signature const& signature : table.signatures()) {
        if (signature.name == name) {
            forms.push_back(signature.name + " " + FormText(signature));
            width = std::max(width, forms.back().size() + 2);
        }
    }
    std::string text;
    std::size_t index = 0;
    for (Signature const& signature : table.signatures()) {
        if (signature.name == name) {
            text += Padded(forms[index++], width) + signature.kind + ", entry " + signature.entry +
                    '\n';
        }
    }
    return text;
}

}  // namespace

PromptCommand ReadPromptCommand(std::string_view line) {
    std::string_view const text = Trimmed(line);
    std::size_t const blank = text.find_first_of(" \t");
    std::string_view const word = text.substr(0, blank);
    std::string_view const rest =
        blank == std::string_view::npos ? std::string_view{} : Trimmed(text.substr(blank));
    if (word == "help" && rest.find_first_of(" \t=") == std::string_view::npos) {
        return PromptCommand{CommandKind::kHelp, std::string(rest)};
    }
    if ((word == "quit" || word == "exit") && rest.empty()) {
        return PromptCommand{CommandKind::kQuit, {}};
    }
    return PromptCommand{};
}

bool IsPromptCommandName(std::string_view name) {
    return std::find(kPromptCommands.begin(), kPromptCommands.end(), name) != kPromptCommands.end();
}

std::string Banner(std::string_view moduleName, std::string_view version) {
    return std::string(moduleName) + " " + std::string(version) +
           " on minihost. Type help for the functions and statements, quit "
           "or " MINIHOST_END_OF_INPUT " to leave.\n";
}

std::string PromptHelp(FunctionTable const& table) {
    std::string text = "Statements:\n";
    for (Usage const& usage : kStatements) {
        text += UsageLine(usage);
    }
    text += "Commands of the prompt:\n" + UsageLine(kCommands[0]) + UsageLine(kCommands[1]);
    return text + "Script functions (help NAME shows one" MINIHOST_TAB_HINT "):\n" +
           FunctionList(table);
}

std::string PromptHelp(FunctionTable const& table, std::string_view topic) {
    for (Usage const& usage : kStatements) {
        if (IsNamedBy(usage, topic)) {
            return UsageLine(usage);
        }
    }
    for (Usage const& usage : kCommands) {
        if (IsNamedBy(usage, topic)) {
            return UsageLine(usage);
        }
    }
    std::string forms = FunctionForms(table, topic);
    if (!forms.empty()) {
        return forms;
    }
    return table.UnknownFunction(topic) + '\n';
}

}  // namespace minihost
