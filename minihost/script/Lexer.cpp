#include "minihost/script/Lexer.h"

#include <charconv>
#include <cmath>

#include "minihost/script/ValuePrinter.h"
#include "strings/Escape.h"

namespace minihost {

namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsNameStart(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool IsNameChar(char c) { return IsNameStart(c) || IsDigit(c); }

// The UTF-8 byte-order mark that some editors put in front of a text.
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// Script text as a message quotes it: non-printable bytes as \xNN, the rest as written.
std::string Shown(std::string_view text) {
    std::string out;
    Tavrel::EscapeNonPrint(text, out);
    return out;
}

// The value of a hex digit, or -1.
int HexValue(char c) {
    if (IsDigit(c)) {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

class Scanner {
public:
    Scanner(std::string_view source, int firstLine) : mSource(source) {
        mHere.line = firstLine;
        if (mSource.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
            mIndex = kByteOrderMark.size();
        }
    }

    std::vector<Token> Run() {
        std::vector<Token> tokens;
        while (SkipBlanksAndComments()) {
            std::size_t const begin = mIndex;
            tokens.push_back(NextToken());
            tokens.back().begin = begin;
            tokens.back().end = mIndex;
        }
        tokens.push_back(Token{TokenKind::kEnd, {}, 0.0, mHere, mIndex, mIndex});
        return tokens;
    }

private:
    bool AtEnd() const { return mIndex >= mSource.size(); }
    char Peek(std::size_t ahead = 0) const {
        return mIndex + ahead < mSource.size() ? mSource[mIndex + ahead] : '\0';
    }
    bool Has(std::size_t ahead) const { return mIndex + ahead < mSource.size(); }

    // Moves past one byte, keeping line and column.
    char Advance() {
        char const c = mSource[mIndex++];
        if (c == '\n') {
            ++mHere.line;
            mHere.column = 1;
        } else {
            ++mHere.column;
        }
        return c;
    }

    // Skips blanks, tabs, carriage returns and comments; true when a token follows.
    bool SkipBlanksAndComments() {
        while (!AtEnd()) {
            char const c = Peek();
            if (c == ' ' || c == '\t' || c == '\r') {
                Advance();
            } else if (c == '#') {
                while (!AtEnd() && Peek() != '\n') {
                    Advance();
                }
            } else {
                return true;
            }
        }
        return false;
    }

    Token NextToken() {
        SourcePosition const start = mHere;
        char const c = Peek();
        if (IsNameStart(c)) {
            return LexName(start);
        }
        if (IsDigit(c) || c == '-' || c == '+') {
            return LexNumber(start);
        }
        if (c == '"') {
            return LexString(start);
        }
        return LexPunctuation(start);
    }

    Token LexPunctuation(SourcePosition start) {
        char const c = Advance();
        switch (c) {
            case '(':
                return Token{TokenKind::kLeftParen, "(", 0.0, start};
            case ')':
                return Token{TokenKind::kRightParen, ")", 0.0, start};
            case ',':
                return Token{TokenKind::kComma, ",", 0.0, start};
            case '=':
                return Token{TokenKind::kEquals, "=", 0.0, start};
            case ';':
                return Token{TokenKind::kEndOfStatement, ";", 0.0, start};
            case '\n':
                return Token{TokenKind::kEndOfStatement, "\n", 0.0, start};
            default:
                throw ScriptError(start, "unexpected character '" + Shown({&c, 1}) + "'");
        }
    }

    // One part of a dotted name; the caller has checked its first byte.
    void SkipNamePart() {
        while (!AtEnd() && IsNameChar(Peek())) {
            Advance();
        }
    }

    Token LexName(SourcePosition start) {
        std::size_t const begin = mIndex;
        SkipNamePart();
        while (!AtEnd() && Peek() == '.') {
            Advance();
            if (AtEnd() || !IsNameStart(Peek())) {
                throw ScriptError(
                    start, "malformed name '" + Shown(mSource.substr(begin, mIndex - begin)) + "'");
            }
            SkipNamePart();
        }
        return Token{TokenKind::kName, std::string(mSource.substr(begin, mIndex - begin)), 0.0,
                     start};
    }

    // Skips a run of digits; false when there is none.
    bool SkipDigits() {
        bool any = false;
        while (!AtEnd() && IsDigit(Peek())) {
            Advance();
            any = true;
        }
        return any;
    }

    // sign? digits ('.' digits)? ([eE] sign? digits)?
    bool SkipNumberText() {
        if (Peek() == '-' || Peek() == '+') {
            Advance();
        }
        if (!SkipDigits()) {
            return false;
        }
        if (!AtEnd() && Peek() == '.') {
            Advance();
            if (!SkipDigits()) {
                return false;
            }
        }
        if (!AtEnd() && (Peek() == 'e' || Peek() == 'E')) {
            Advance();
            if (Peek() == '-' || Peek() == '+') {
                Advance();
            }
            return SkipDigits();
        }
        return true;
    }

    Token LexNumber(SourcePosition start) {
        std::size_t const begin = mIndex;
        if (!SkipNumberText()) {
            throw ScriptError(start, "malformed number");
        }
        std::string text(mSource.substr(begin, mIndex - begin));
        // NOTE: from_chars does not take a leading '+', so the sign is read apart.
        std::size_t const digits = (text[0] == '+' || text[0] == '-') ? 1 : 0;
        double value = 0.0;
        auto const result = std::from_chars(text.data() + digits, text.data() + text.size(), value);
        if (result.ec != std::errc() || std::isinf(value)) {
            throw ScriptError(start, "number out of range: " + text);
        }
        return Token{TokenKind::kNumber, text, text[0] == '-' ? -value : value, start};
    }

    // Decodes the escape at the backslash and appends its byte to bytes.
    void LexEscape(std::string& bytes) {
        SourcePosition const at = mHere;
        std::size_t const begin = mIndex;
        Advance();
        char const c = AtEnd() ? '\0' : Peek();
        if (AtEnd() || c == '\n') {
            return;  // the string is unterminated; the caller reports that
        }
        Advance();
        switch (c) {
            case 'n':
                bytes += '\n';
                return;
            case 't':
                bytes += '\t';
                return;
            case 'r':
                bytes += '\r';
                return;
            case '0':
                bytes += '\0';
                return;
            case '\\':
                bytes += '\\';
                return;
            case '"':
                bytes += '"';
                return;
            case 'x':
                break;
            default:
                throw ScriptError(
                    at, "bad escape '" + Shown(mSource.substr(begin, mIndex - begin)) + "'");
        }
        int const high = Has(0) ? HexValue(Peek()) : -1;
        int const low = Has(1) ? HexValue(Peek(1)) : -1;
        if (high < 0 || low < 0) {
            std::size_t const shown = high >= 0 ? 1 : 0;
            throw ScriptError(at, "bad escape '" + Shown(mSource.substr(begin, 2 + shown)) +
                                      "': \\x takes two hex digits");
        }
        Advance();
        Advance();
        bytes += static_cast<char>(high * 16 + low);
    }

    Token LexString(SourcePosition start) {
        Advance();
        std::string bytes;
        while (!AtEnd() && Peek() != '"' && Peek() != '\n') {
            if (Peek() == '\\') {
                LexEscape(bytes);
            } else {
                bytes += Advance();
            }
        }
        if (AtEnd() || Peek() != '"') {
            throw ScriptError(start, "unterminated string");
        }
        Advance();
        return Token{TokenKind::kString, bytes, 0.0, start};
    }

    std::string_view mSource;
    std::size_t mIndex = 0;
    SourcePosition mHere;
};

}  // namespace

std::vector<Token> Tokenize(std::string_view source, int firstLine) {
    return Scanner(source, firstLine).Run();
}

std::string DescribeToken(Token const& token) {
    switch (token.kind) {
        case TokenKind::kName:
            return "name '" + token.text + "'";
        case TokenKind::kNumber:
            return "number " + token.text;
        case TokenKind::kString:
            return "string " + QuoteBytes(token.text);
        case TokenKind::kEndOfStatement:
            return token.text == ";" ? "';'" : "end of line";
        case TokenKind::kEnd:
            return "end of script";
        default:
            return "'" + token.text + "'";
    }
}

}  // namespace minihost
