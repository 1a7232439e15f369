#include "minihost/script/DefinitionText.h"

#include "host/VariantType.h"

namespace minihost {

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

bool IsTypeWord(std::string_view word) {
    return word == "NUMBER" || word == "STRING" || word == "DATAREF";
}

// A cursor over the text that reads words and punctuation, and says where it failed.
class Reader {
public:
    explicit Reader(std::string_view text) : mText(text) {}

    void SkipBlanks() {
        while (mAt < mText.size() && IsBlank(mText[mAt])) {
            ++mAt;
        }
    }
    bool AtEnd() {
        SkipBlanks();
        return mAt >= mText.size();
    }
    std::size_t Offset() const { return mAt; }

    // The next run of bytes up to a blank or one of stops; empty when there is none.
    std::string_view Word(std::string_view stops) {
        SkipBlanks();
        std::size_t const begin = mAt;
        while (mAt < mText.size() && !IsBlank(mText[mAt]) &&
               stops.find(mText[mAt]) == std::string_view::npos) {
            ++mAt;
        }
        return mText.substr(begin, mAt - begin);
    }

    // Takes c after blanks; false when something else stands there.
    bool Take(char c) {
        SkipBlanks();
        if (mAt < mText.size() && mText[mAt] == c) {
            ++mAt;
            return true;
        }
        return false;
    }

private:
    std::string_view mText;
    std::size_t mAt = 0;
};

std::string At(std::string const& what, std::size_t offset) {
    return what + " at offset " + std::to_string(offset);
}

// A word that must be there; false with error set when it is missing.
bool RequireWord(Reader& reader, std::string const& what, std::string& word, std::string& error) {
    std::size_t const offset = (reader.SkipBlanks(), reader.Offset());
    word = std::string(reader.Word("(),:"));
    if (word.empty()) {
        error = At("expected " + what, offset);
        return false;
    }
    return true;
}

bool RequireTypeWord(std::string const& word, std::size_t offset, std::string& error) {
    if (!IsTypeWord(word)) {
        error = At("unknown type word '" + word + "'", offset);
        return false;
    }
    return true;
}

bool RequireChar(Reader& reader, char c, std::string& error) {
    if (!reader.Take(c)) {
        error = At(std::string("expected '") + c + "'", reader.Offset());
        return false;
    }
    return true;
}

// "(" word { "," word } ")", dropping empty words.
bool ReadParameters(Reader& reader, std::vector<std::string>& parameters, std::string& error) {
    if (!RequireChar(reader, '(', error)) {
        return false;
    }
    do {
        std::size_t const offset = (reader.SkipBlanks(), reader.Offset());
        std::string word(reader.Word("(),:"));
        if (word.empty()) {
            continue;
        }
        if (!RequireTypeWord(word, offset, error)) {
            return false;
        }
        parameters.push_back(std::move(word));
    } while (reader.Take(','));
    return RequireChar(reader, ')', error);
}

bool ReadSignature(Reader& reader, Signature& signature, std::string& error) {
    if (!RequireWord(reader, "a kind", signature.kind, error)) {
        return false;
    }
    std::size_t const resultOffset = (reader.SkipBlanks(), reader.Offset());
    if (!RequireWord(reader, "a result word", signature.result, error) ||
        !RequireTypeWord(signature.result, resultOffset, error) ||
        !RequireWord(reader, "a script name", signature.name, error) ||
        !ReadParameters(reader, signature.parameters, error) || !RequireChar(reader, ':', error)) {
        return false;
    }
    return RequireWord(reader, "an entry name", signature.entry, error);
}

}  // namespace

bool ParseDefinitionText(std::string_view text, std::vector<Signature>& out, std::string& error) {
    out.clear();
    Reader reader(text);
    while (!reader.AtEnd()) {
        Signature signature;
        if (!ReadSignature(reader, signature, error)) {
            return false;
        }
        out.push_back(std::move(signature));
    }
    error.clear();
    return true;
}

std::string FormatSignature(Signature const& signature) {
    std::string text = signature.name + " (";
    for (std::size_t i = 0; i < signature.parameters.size(); ++i) {
        text += (i == 0 ? "" : ",") + signature.parameters[i];
    }
    return text + ")";
}

std::string_view TypeWord(unsigned int typeNumber) {
    switch (typeNumber) {
        case Tavrel::VariantType::kNumber:
            return "NUMBER";
        case Tavrel::VariantType::kString:
            return "STRING";
        case Tavrel::VariantType::kDataRef:
            return "DATAREF";
        default:
            return "";
    }
}

}  // namespace minihost

namespace minihost {

std::string TypeName(unsigned int typeNumber) {
    std::string_view const word = TypeWord(typeNumber);
    return word.empty() ? "type " + std::to_string(typeNumber) : std::string(word);
}

}  // namespace minihost
