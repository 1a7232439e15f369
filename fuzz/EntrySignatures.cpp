#include "fuzz/EntrySignatures.h"

namespace tavrel_testing {

namespace {

constexpr unsigned int kArgumentMissing = 1;
constexpr unsigned int kWrongArgument = 2;
constexpr unsigned int kEmptyUserDefined = 4;
constexpr unsigned int kFirstUserDefined = 21;
// kind, result, script name, "(words)", ":", entry name.
constexpr std::size_t kTokensPerEntry = 6;

// The pieces of text between single blanks; "" around a doubled or outer blank.
std::vector<std::string_view> SplitOnBlanks(std::string_view text) {
    std::vector<std::string_view> pieces;
    std::size_t start = 0;
    for (std::size_t blank = text.find(' '); blank != std::string_view::npos;
         blank = text.find(' ', start)) {
        pieces.push_back(text.substr(start, blank - start));
        start = blank + 1;
    }
    pieces.push_back(text.substr(start));
    return pieces;
}

std::optional<ScriptType> TypeOfWord(std::string_view word) {
    if (word == "NUMBER") {
        return ScriptType::kNumber;
    }
    if (word == "STRING") {
        return ScriptType::kString;
    }
    if (word == "DATAREF") {
        return ScriptType::kDataRef;
    }
    return std::nullopt;
}

// "(DATAREF,NUMBER)" => {DATAREF, NUMBER}; "()" => {}; "(DATAREF,)" => nullopt.
std::optional<std::vector<ScriptType>> ParseParameterList(std::string_view list) {
    if (list.size() < 2 || list.front() != '(' || list.back() != ')') {
        return std::nullopt;
    }
    list = list.substr(1, list.size() - 2);
    std::vector<ScriptType> types;
    if (list.empty()) {
        return types;
    }
    std::size_t start = 0;
    while (true) {
        std::size_t const comma = list.find(',', start);
        std::optional<ScriptType> type = TypeOfWord(list.substr(start, comma - start));
        if (!type) {
            return std::nullopt;
        }
        types.push_back(*type);
        if (comma == std::string_view::npos) {
            return types;
        }
        start = comma + 1;
    }
}

bool IsKind(std::string_view word) { return word == "CONST_FUNCTION" || word == "FUNCTION"; }

std::optional<Signature> ParseEntry(std::vector<std::string_view> const& tokens, std::size_t at) {
    std::optional<ScriptType> result = TypeOfWord(tokens[at + 1]);
    std::optional<std::vector<ScriptType>> parameters = ParseParameterList(tokens[at + 3]);
    if (!IsKind(tokens[at]) || !result || tokens[at + 2].empty() || !parameters ||
        tokens[at + 4] != ":" || tokens[at + 5].empty()) {
        return std::nullopt;
    }
    return Signature{std::string(tokens[at + 5]), *result, std::move(*parameters)};
}

unsigned int StatusWord(std::size_t index, unsigned int code) {
    return ((static_cast<unsigned int>(index + 1) & 0xFFFFu) << 16) | code;
}

// The code of an argument that does not fit a parameter of type expected, or 0 if it fits.
unsigned int MismatchCode(ArgumentShape const& argument, ScriptType expected) {
    if (!argument.present) {
        return kWrongArgument;
    }
    if (argument.type == TypeNumber(expected)) {
        return 0;
    }
    if (argument.type >= kFirstUserDefined && !argument.hasObject) {
        return kEmptyUserDefined;
    }
    return kWrongArgument;
}

}  // namespace

unsigned int TypeNumber(ScriptType type) {
    switch (type) {
        case ScriptType::kNumber:
            return 5;
        case ScriptType::kString:
            return 9;
        case ScriptType::kDataRef:
            return 13;
    }
    return 0;
}

std::optional<std::vector<Signature>> ParseDefinition(std::string_view text) {
    std::vector<Signature> signatures;
    if (text.empty()) {
        return signatures;
    }
    std::vector<std::string_view> const tokens = SplitOnBlanks(text);
    // The text opens with a blank, so the first piece is empty.
    if (!tokens.front().empty() || (tokens.size() - 1) % kTokensPerEntry != 0) {
        return std::nullopt;
    }
    for (std::size_t at = 1; at < tokens.size(); at += kTokensPerEntry) {
        std::optional<Signature> signature = ParseEntry(tokens, at);
        if (!signature) {
            return std::nullopt;
        }
        signatures.push_back(std::move(*signature));
    }
    return signatures;
}

unsigned int PredictStatus(Signature const& signature, int count,
                           std::vector<ArgumentShape> const& arguments) {
    for (std::size_t index = 0; index < signature.parameters.size(); ++index) {
        if (count <= 0 || index >= static_cast<std::size_t>(count)) {
            return StatusWord(index, kArgumentMissing);
        }
        unsigned int const code = MismatchCode(arguments[index], signature.parameters[index]);
        if (code != 0) {
            return StatusWord(index, code);
        }
    }
    return 0;
}

}  // namespace tavrel_testing
