#include "minihost/script/Completion.h"

#include "minihost/script/Parser.h"
#include "minihost/script/PromptCommands.h"

namespace minihost {

namespace {

bool BeginsWith(std::string_view text, std::string_view prefix) {
    return text.substr(0, prefix.size()) == prefix;
}

}  // namespace

bool InsideString(std::string_view line, std::size_t start) {
    bool inside = false;
    for (std::size_t i = 0; i < start && i < line.size(); ++i) {
        char const c = line[i];
        if (inside && c == '\\') {
            ++i;  // the escaped byte, a quote among them, does not close the string
        } else if (c == '"') {
            inside = !inside;
        } else if (!inside && c == '#') {
            return false;
        }
    }
    return inside;
}

std::vector<std::string> CompleteName(std::string_view line, std::size_t start,
                                      std::string_view word, FunctionTable const& table,
                                      std::set<std::string> const& variables) {
    std::set<std::string> found;
    for (std::string const& name : table.Names()) {
        if (BeginsWith(name, word)) {
            found.insert(name + "(");
        }
    }
    for (std::string_view const name : kReservedWords) {
        if (BeginsWith(name, word)) {
            found.insert(std::string(name));
        }
    }
    bool const firstWord = line.substr(0, start).find_first_not_of(" \t") == std::string_view::npos;
    for (std::string_view const name : kPromptCommands) {
        if (firstWord && BeginsWith(name, word)) {
            found.insert(std::string(name));
        }
    }
    for (std::string const& name : variables) {
        if (BeginsWith(name, word)) {
            found.insert(name);
        }
    }
    return std::vector<std::string>(found.begin(), found.end());
}

}  // namespace minihost
