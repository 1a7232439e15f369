#include "minihost/script/Parser.h"

#include <algorithm>
#include <utility>

#include "minihost/script/Lexer.h"

namespace minihost {

namespace {

constexpr std::string_view kPrint = kReservedWords[0];
constexpr std::string_view kDump = kReservedWords[1];
constexpr std::string_view kCall = kReservedWords[2];
// A dump takes an offset and a count at most.
constexpr std::size_t kDumpBounds = 2;

// NOTE: the parser, the checker and the interpreter all recurse into arguments, so a deeper
// nesting would let a hostile script exhaust the stack.
constexpr int kMaxNesting = 256;

bool IsReserved(std::string_view name) {
    return std::find(kReservedWords.begin(), kReservedWords.end(), name) != kReservedWords.end();
}

class Parser {
public:
    Parser(std::string_view source, std::vector<Token> tokens)
        : mSource(source), mTokens(std::move(tokens)) {}

    Program Run() {
        Program program;
        while (Current().kind != TokenKind::kEnd) {
            if (Current().kind == TokenKind::kEndOfStatement) {
                ++mIndex;
                continue;
            }
            program.push_back(ParseStatement());
            ExpectEndOfStatement();
        }
        return program;
    }

private:
    Token const& Current() const { return mTokens[mIndex]; }
    Token const& Next() const { return mTokens[mIndex + 1 < mTokens.size() ? mIndex + 1 : mIndex]; }
    bool IsName(Token const& token, std::string_view text) const {
        return token.kind == TokenKind::kName && token.text == text;
    }

    [[noreturn]] void Fail(std::string const& expected) const {
        throw ScriptError(Current().position,
                          "expected " + expected + " but found " + DescribeToken(Current()));
    }

    void Expect(TokenKind kind, std::string const& expected) {
        if (Current().kind != kind) {
            Fail(expected);
        }
        ++mIndex;
    }

    void ExpectEndOfStatement() {
        if (Current().kind != TokenKind::kEnd) {
            Expect(TokenKind::kEndOfStatement, "end of line");
        }
    }

    // A line that ends in '(' or ',' goes on with the next line.
    void SkipLineEnds() {
        while (Current().kind == TokenKind::kEndOfStatement && Current().text == "\n") {
            ++mIndex;
        }
    }

    // The statement with its text, from its first token to its last.
    Statement ParseStatement() {
        Token const& first = Current();
        Statement statement{first.position, ParseStatementNode(), {}, 1};
        Token const& last = mTokens[mIndex - 1];
        statement.text = std::string(mSource.substr(first.begin, last.end - first.begin));
        statement.lastLine = last.position.line;
        for (char const c : last.text) {
            statement.lastLine += c == '\n' ? 1 : 0;
        }
        return statement;
    }

    decltype(Statement::node) ParseStatementNode() {
        if (Current().kind == TokenKind::kName && Next().kind == TokenKind::kEquals) {
            return ParseAssignment();
        }
        if (IsName(Current(), kPrint)) {
            ++mIndex;
            return Print{ParseExpression()};
        }
        if (IsName(Current(), kDump)) {
            ++mIndex;
            Dump dump{ParseExpression(), {}};
            while (dump.range.size() < kDumpBounds && Current().kind == TokenKind::kComma) {
                ++mIndex;
                dump.range.push_back(ParseExpression());
            }
            return dump;
        }
        return ExpressionStatement{ParseExpression()};
    }

    Assignment ParseAssignment() {
        Token const& name = Current();
        if (IsReserved(name.text)) {
            throw ScriptError(name.position, "'" + name.text + "' is reserved");
        }
        if (name.text.find('.') != std::string::npos) {
            throw ScriptError(name.position, "a variable name has no dots: '" + name.text + "'");
        }
        std::string variable = name.text;
        mIndex += 2;
        return Assignment{std::move(variable), ParseExpression()};
    }

    Expression ParseExpression() {
        Token const& token = Current();
        SourcePosition const start = token.position;
        switch (token.kind) {
            case TokenKind::kString:
                ++mIndex;
                return Expression{start, StringLiteral{token.text}};
            case TokenKind::kNumber:
                ++mIndex;
                return Expression{start, NumberLiteral{token.number}};
            case TokenKind::kName:
                return ParseNameExpression();
            default:
                Fail("an expression");
        }
    }

    Expression ParseNameExpression() {
        SourcePosition const start = Current().position;
        if (IsName(Current(), kCall)) {
            ++mIndex;
            if (Current().kind != TokenKind::kName || IsReserved(Current().text)) {
                Fail("the name of an entry after 'call'");
            }
            return Expression{start, ParseCall(true)};
        }
        if (IsReserved(Current().text)) {
            throw ScriptError(start, "'" + Current().text + "' is reserved");
        }
        if (Next().kind == TokenKind::kLeftParen) {
            return Expression{start, ParseCall(false)};
        }
        if (Current().text.find('.') != std::string::npos) {
            ++mIndex;
            Fail("'(' after the function name");
        }
        std::string name = Current().text;
        ++mIndex;
        return Expression{start, VariableRef{std::move(name)}};
    }

    // name "(" arguments ")", with the name token current.
    Call ParseCall(bool direct) {
        if (mNesting == kMaxNesting) {
            throw ScriptError(Current().position,
                              "calls nested more than " + std::to_string(kMaxNesting) + " deep");
        }
        Call call{Current().text, direct, {}};
        ++mIndex;
        Expect(TokenKind::kLeftParen, "'('");
        SkipLineEnds();
        if (Current().kind == TokenKind::kRightParen) {
            ++mIndex;
            return call;
        }
        while (true) {
            ++mNesting;
            call.arguments.push_back(ParseExpression());
            --mNesting;
            if (Current().kind == TokenKind::kRightParen) {
                ++mIndex;
                return call;
            }
            Expect(TokenKind::kComma, "',' or ')'");
            SkipLineEnds();
        }
    }

    std::string_view mSource;
    std::vector<Token> mTokens;
    std::size_t mIndex = 0;
    int mNesting = 0;
};

}  // namespace

Program Parse(std::string_view source, int firstLine) {
    return Parser(source, Tokenize(source, firstLine)).Run();
}

bool EndsInsideCall(std::string_view source) {
    std::vector<Token> tokens;
    try {
        tokens = Tokenize(source);
    } catch (ScriptError const&) {
        return false;
    }
    int depth = 0;
    TokenKind last = TokenKind::kEnd;
    for (Token const& token : tokens) {
        bool const lineEnd = token.kind == TokenKind::kEndOfStatement && token.text == "\n";
        if (token.kind == TokenKind::kEnd || (lineEnd && depth > 0)) {
            continue;  // inside a call, a line end after "(" or "," is no end
        }
        depth += token.kind == TokenKind::kLeftParen ? 1 : 0;
        depth -= token.kind == TokenKind::kRightParen ? 1 : 0;
        if (depth < 0) {
            return false;  // a ")" too many: the parser will say so
        }
        last = token.kind;
    }
    return depth > 0 && (last == TokenKind::kLeftParen || last == TokenKind::kComma);
}

}  // namespace minihost
